#include "MIDITranslator/MIDITranslatorVariable.h"
#include "support/TestHelpers.h"

#include <QtTest>

namespace
{
cMIDITranslatorVariable Load(const QString& json, bool& ok)
{
    return cMIDITranslatorVariable::FromJsonObject(QJsonDocument::fromJson(json.toUtf8()).object(), ok);
}

// A variable "x" with the given default and values.
cMIDITranslatorVariable LoadX(const QString& defaultValue, const QString& values, bool& ok)
{
    return Load(QStringLiteral(R"({"name": "x", "variable_name": "x", "default": %1, "values": [%2]})")
                    .arg(defaultValue, values), ok);
}

const char* const SOURCE = "MIDITranslator/MIDITranslatorVariable.cpp";
}

class tVariables : public QObject
{
    Q_OBJECT
private slots:
    void LoadsNamesValuesAndDefault()
    {
        cStdoutCapture capture;
        bool ok = false;
        cMIDITranslatorVariable variable = Load(R"({"name": "Fader bank", "variable_name": "k", "default": 8,
            "values": [{"name": "Bank 1", "value": 0}, {"name": "Bank 2", "value": 8}]})", ok);
        QVERIFY(ok);
        QCOMPARE(variable.GetDescriptiveName(), QStringLiteral("Fader bank"));
        QCOMPARE(variable.GetVariableName(), QStringLiteral("k"));
        QCOMPARE(variable.GetNumberOfValues(), 2);
        QCOMPARE(variable.GetCurrentValueIndex(), 1);
        QCOMPARE(variable.GetCurrentValue(), UBYTE(8));
        QCOMPARE(variable.GetNameAtIndex(0), QStringLiteral("Bank 1"));

        // Values without a number and a name are skipped.
        variable = LoadX("7", R"({"value": "3", "name": "text"}, 4, {"value": 5}, {"name": "no value"},
                                 {"value": 7, "name": "seven"})", ok);
        QVERIFY(ok);
        QCOMPARE(variable.GetNumberOfValues(), 1);
        QCOMPARE(variable.GetNameAtIndex(0), QStringLiteral("seven"));
        QCOMPARE(capture.ErrorLines(), QStringList());

        // A hexadecimal digit is a valid name here, though no rule can use it.
        Load(R"({"name": "x", "variable_name": "F", "default": 0, "values": []})", ok);
        QVERIFY(ok);
    }

    void RoundsNumbersToBytes_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<int>("byte");
        QTest::newRow("half up") << "1.5" << 2;
        QTest::newRow("300 keeps low bits") << "300" << 44;
        QTest::newRow("negative, truncated towards zero") << "-1.5" << 0xFF;
        QTest::newRow("beyond 32 bits") << "1e300" << 0;
    }

    void RoundsNumbersToBytes()
    {
        QFETCH(QString, number);
        QFETCH(int, byte);
        bool ok = false;
        cMIDITranslatorVariable variable =
            LoadX(number, QStringLiteral(R"({"name": "other", "value": 99}, {"name": "rounded", "value": %1})").arg(number), ok);
        QVERIFY(ok);
        QCOMPARE(int(variable.GetValueAtIndex(1)), byte);
        // The default is rounded alike, so it selects the value.
        QCOMPARE(variable.GetCurrentValueIndex(), 1);
    }

    void RejectsMalformedObjects_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("message");
        const QString values = QStringLiteral(R"("values": [{"name": "one", "value": 1}])");
        QTest::newRow("no name") << R"({"variable_name": "k", "default": 1, )" + values + "}"
                                 << QStringLiteral(R"(No "name" string value for variable)");
        QTest::newRow("no variable name") << R"({"name": "x", "default": 1, )" + values + "}"
                                          << QStringLiteral(R"(No "variable_name" string value for variable)");
        for (const char* name : {"ab", "1", ""})
        {
            QTest::newRow(qPrintable(QStringLiteral("variable name '%1'").arg(QLatin1String(name))))
                << QStringLiteral(R"({"name": "x", "variable_name": "%1", "default": 1, )").arg(QLatin1String(name)) +
                       values + "}"
                << QStringLiteral(R"(Invalid "variable_name": %1)").arg(QLatin1String(name));
        }
        QTest::newRow("default as text") << R"({"name": "x", "variable_name": "k", "default": "3", )" + values + "}"
                                         << QStringLiteral(R"(No "default" double value for variable)");
        QTest::newRow("values as object")
            << QStringLiteral(R"({"name": "x", "variable_name": "k", "default": 1, "values": {"one": 1}})")
            << QStringLiteral(R"(No "values" array for variable)");
    }

    void RejectsMalformedObjects()
    {
        QFETCH(QString, json);
        QFETCH(QString, message);
        bool ok = true;
        int values = -1;
        const QStringList errors = ErrorLinesOf([&] { values = Load(json, ok).GetNumberOfValues(); });
        QVERIFY(!ok);
        QCOMPARE(values, 0);
        QCOMPARE(errors, QStringList{ErrorFrom(SOURCE, message)});
    }

    // The first of two equal values is the one found; an unknown value, or a
    // default none of the values has, is reported and reads as the first. Only
    // an index above the count is reported, but none reads outside the list.
    void LooksValuesUp()
    {
        cStdoutCapture capture;
        bool ok = false;
        cMIDITranslatorVariable variable =
            LoadX("7", R"({"value": 5, "name": "first"}, {"value": 7, "name": "b"}, {"value": 5, "name": "again"})", ok);
        QCOMPARE(variable.GetCurrentValueIndex(), 1);
        variable.SetCurrentValue(9);
        QCOMPARE(variable.GetCurrentValueIndex(), 1);
        variable.SetCurrentValue(5);
        QCOMPARE(variable.GetCurrentValueIndex(), 0);
        for (int index : {4, 3, -1})
        {
            QCOMPARE(variable.GetValueAtIndex(index), UBYTE(0));
            QCOMPARE(variable.GetNameAtIndex(index), QString());
        }

        cMIDITranslatorVariable empty = LoadX("3", "", ok);
        QVERIFY(ok);
        QCOMPARE(empty.GetCurrentValue(), UBYTE(0));
        cMIDITranslatorVariable unmatched = LoadX("3", R"({"value": 9, "name": "nine"})", ok);
        QVERIFY(ok);
        QCOMPARE(unmatched.GetCurrentValueIndex(), 0);
        QCOMPARE(unmatched.GetCurrentValue(), UBYTE(9));

        const QString outside = ErrorFrom(SOURCE, QStringLiteral("Invalid index: 4 Number of values: 3"));
        const QString three = ErrorFrom(SOURCE, QStringLiteral("Invalid value: 3"));
        QCOMPARE(WithoutLineNumbers(capture.ErrorLines()),
                 QStringList({ErrorFrom(SOURCE, QStringLiteral("Invalid value: 9")), outside, outside, three, three}));
    }
};

QTEST_GUILESS_MAIN(tVariables)
#include "test_variables.moc"
