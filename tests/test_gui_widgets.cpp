// The address validator on its own; the window's tests drive it, and the
// activity lamps, inside the window.

#include "Application/IPAddressValidator.h"

#include <QTest>

class cTestGuiWidgets : public QObject
{
    Q_OBJECT

private slots:
    void ValidatorRatesAddresses_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("state");
        QTest::newRow("plain") << "192.168.1.1" << int(QValidator::Acceptable);
        QTest::newRow("group above 255") << "256.1.1.1" << int(QValidator::Invalid);
        QTest::newRow("empty group") << "192.168..1" << int(QValidator::Intermediate);
        QTest::newRow("blanks around digits") << " 10. 0 .0  .7 " << int(QValidator::Acceptable);
        QTest::newRow("all zero") << "0.0.0.0" << int(QValidator::Invalid);
        QTest::newRow("zero but the last") << "0.0.0.1" << int(QValidator::Acceptable);
        QTest::newRow("letters") << "10.a.0.1" << int(QValidator::Invalid);
        QTest::newRow("leading zeros") << "010.001.000.255" << int(QValidator::Acceptable);
        QTest::newRow("empty") << "" << int(QValidator::Intermediate);
    }

    void ValidatorRatesAddresses()
    {
        QFETCH(QString, text);
        QFETCH(int, state);
        cIPAddressValidator validator;
        QString edited = text;
        int pos = 3;
        QCOMPARE(int(validator.validate(edited, pos)), state);
        QCOMPARE(edited, text);
        QCOMPARE(pos, 3);
    }
};

QTEST_MAIN(cTestGuiWidgets)
#include "test_gui_widgets.moc"
