// The window's small widgets: the address validator and the activity lamp as
// it is painted. The window's own tests drive both inside the window.

#include "Application/IPAddressValidator.h"
#include "Application/MIDIActiveWidget.h"

#include <QTest>

namespace
{
// The lamp's pixels as painted, '#' for black and '.' for anything else.
QStringList Pixels(cMIDIActiveWidget& lamp)
{
    const QImage image = lamp.grab().toImage();
    QStringList rows;
    for (int y = 0; y < image.height(); ++y)
    {
        QString row;
        for (int x = 0; x < image.width(); ++x)
        {
            row += image.pixelColor(x, y) == Qt::black ? QLatin1Char('#') : QLatin1Char('.');
        }
        rows.append(row);
    }
    return rows;
}
}

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

    void LampPaintsFrameAndFlashes()
    {
        cMIDIActiveWidget lamp;
        lamp.setFixedSize(10, 10);

        const QStringList dark = {
            "#########.", "#.......#.", "#.......#.", "#.......#.", "#.......#.",
            "#.......#.", "#.......#.", "#.......#.", "#########.", ".........."};
        const QStringList lit = {
            "#########.", "#.......#.", "#.#####.#.", "#.#####.#.", "#.#####.#.",
            "#.#####.#.", "#.#####.#.", "#.......#.", "#########.", ".........."};
        QCOMPARE(Pixels(lamp), dark);

        lamp.MIDIActive();
        QCOMPARE(Pixels(lamp), lit);
        lamp.TimerFired();
        QCOMPARE(Pixels(lamp), dark);

        // Activity restarts the timer, which then goes on clearing the lamp.
        lamp.MIDIActive();
        QCOMPARE(Pixels(lamp), lit);
        QTRY_COMPARE_WITH_TIMEOUT(Pixels(lamp), dark, 2000);
        lamp.MIDIActive();
        QTRY_COMPARE_WITH_TIMEOUT(Pixels(lamp), dark, 2000);
    }
};

QTEST_MAIN(cTestGuiWidgets)
#include "test_gui_widgets.moc"
