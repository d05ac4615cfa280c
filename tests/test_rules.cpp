#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "support/TestHelpers.h"

#include <QJsonDocument>
#include <QtTest>

#include <algorithm>
#include <memory>

typedef std::vector<unsigned char> tBytes;
Q_DECLARE_METATYPE(tBytes)

namespace
{
cMIDITranslatorRule RuleNamed(const cMIDITranslatorConfiguration& configuration, const QString& name)
{
    const QList<cMIDITranslatorRule> rules = configuration.GetMIDITranslatorRules();
    auto rule = std::find_if(rules.begin(), rules.end(), [&](const cMIDITranslatorRule& r) { return r.GetName() == name; });
    if (rule == rules.end())
    {
        qFatal("No rule %s", qPrintable(name));
    }
    return *rule;
}

// "B 3 0 7 * *": one character per nibble, "*" for a wildcard.
QString PatternText(const sMIDIMatchByteListIdentifier& pattern)
{
    QStringList nibbles;
    for (const sMIDIMatchNibble& nibble : pattern.nibbles)
    {
        nibbles << (nibble.matchAny ? QStringLiteral("*") : QString::number(nibble.value, 16).toUpper());
    }
    return nibbles.join(QLatin1Char(' '));
}

const char* const SOURCE = "MIDITranslator/MIDITranslatorRule.cpp";
}

class tRules : public QObject
{
    Q_OBJECT
private slots:
    // The rule file every test here works with: globals "n" at 3 and "k" at
    // 0x25, and one rule per case of the language.
    void initTestCase()
    {
        cStdoutCapture capture;
        configuration = std::make_unique<cMIDITranslatorConfiguration>(new cSystemMIDIConfigurationMemory);
        configuration->LoadFromFile(TestDataFile("rules/compile.json"));
        loadErrors = WithoutLineNumbers(capture.ErrorLines());
    }

    // Strings that compile are in the rule file; these are the edges.
    void ValidatesTheLanguage_data()
    {
        QTest::addColumn<QString>("midi");
        QTest::addColumn<bool>("incomingValid");
        QTest::addColumn<QStringList>("locals");
        QTest::addColumn<bool>("outgoingValid");
        QTest::newRow("unknown local out") << QStringLiteral("9x 40 v") << true << QStringList{"x", "v"} << false;
        QTest::newRow("captured twice") << QStringLiteral("E*n v v") << false << QStringList{"v"} << true;
        QTest::newRow("captured twice, other case") << QStringLiteral("9x 0X") << false << QStringList{"x"} << false;
        QTest::newRow("hex digit behind mark") << QStringLiteral("B*c 07") << false << QStringList{} << false;
        QTest::newRow("three units") << QStringLiteral("B0 123") << false << QStringList{} << false;
        QTest::newRow("extra spaces") << QStringLiteral(" B0  07   v ") << true << QStringList{"v"} << true;
        QTest::newRow("global and local share a letter") << QStringLiteral("*k k") << true << QStringList{"k"} << false;
        QTest::newRow("globals are case-sensitive") << QStringLiteral("*K") << false << QStringList{} << false;
        QTest::newRow("local in upper case") << QStringLiteral("V") << true << QStringList{"V"} << true;
        QTest::newRow("double mark") << QStringLiteral("**k") << false << QStringList{} << false;
        QTest::newRow("tab is no separator") << QStringLiteral("B0\t07") << false << QStringList{} << false;
    }

    void ValidatesTheLanguage()
    {
        QFETCH(QString, midi);
        QFETCH(bool, incomingValid);
        QFETCH(QStringList, locals);
        QFETCH(bool, outgoingValid);
        const QList<cMIDITranslatorVariable>& variables = configuration->GetMIDITranslatorVariables();
        const QStringList tokens = midi.split(QLatin1Char(' '), Qt::SkipEmptyParts);

        QStringList collected;
        QCOMPARE(cMIDITranslatorRule::ValidateIncomingMidiByteStringList(tokens, variables, collected), incomingValid);
        QCOMPARE(collected, locals);
        // The outgoing column is checked against the locals of "B*n 07 v".
        QCOMPARE(cMIDITranslatorRule::ValidateOutgoingMidiByteStringList(tokens, variables, {"v"}), outgoingValid);
    }

    void CompilesAndTranslates_data()
    {
        QTest::addColumn<QString>("rule");
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<tBytes>("input");
        QTest::addColumn<tBytes>("output");
        QTest::newRow("worked example") << QStringLiteral("worked example") << QStringLiteral("B 3 0 7 * *") << tBytes{0xB3, 0x07, 0x64}
                                        << tBytes{0xE3, 0x04, 0x64};
        QTest::newRow("9x to 8x") << QStringLiteral("nibble variable reads the high nibble") << QStringLiteral("9 *") << tBytes{0x95} << tBytes{0x89};
        QTest::newRow("*kx to 8x") << QStringLiteral("nibble variable behind a global") << QStringLiteral("2 *") << tBytes{0x27} << tBytes{0x87};
        QTest::newRow("9v to V0") << QStringLiteral("upper case repeats a local") << QStringLiteral("9 *") << tBytes{0x95} << tBytes{0x90};
        QTest::newRow("v to 9v") << QStringLiteral("whole byte as low nibble") << QStringLiteral("* *") << tBytes{0x64} << tBytes{0x94};
        QTest::newRow("v to v*n") << QStringLiteral("whole byte before a global") << QStringLiteral("* *") << tBytes{0x64} << tBytes{0x63};
        QTest::newRow("u to u5") << QStringLiteral("whole byte as high nibble") << QStringLiteral("* *") << tBytes{0x64} << tBytes{0x45};
        QTest::newRow("lone F found") << QStringLiteral("lone digit found in a lone token") << QStringLiteral("C 5 F *") << tBytes{0xC5, 0xF7}
                                      << tBytes{0xFC};
        QTest::newRow("lone F not found") << QStringLiteral("lone digit not found") << QStringLiteral("9 0 4 0") << tBytes{0x90, 0x40} << tBytes{0x00};
        QTest::newRow("*k") << QStringLiteral("whole global") << QStringLiteral("F 0 2 5") << tBytes{0xF0, 0x25} << tBytes{0x25};
        QTest::newRow("*k*k") << QStringLiteral("global twice") << QStringLiteral("F 0") << tBytes{0xF0} << tBytes{0x55};
        QTest::newRow("*k*n") << QStringLiteral("two globals") << QStringLiteral("2 3") << tBytes{0x23} << tBytes{0x53};
        QTest::newRow("*k k to k") << QStringLiteral("global and local share a letter") << QStringLiteral("2 5 * *") << tBytes{0x25, 0x31}
                                   << tBytes{0x31};
        QTest::newRow("*kk to k") << QStringLiteral("letter first seen behind a global") << QStringLiteral("2 *") << tBytes{0x2A} << tBytes{0x02};
        QTest::newRow("input shorter than the pattern") << QStringLiteral("worked example") << QStringLiteral("B 3 0 7 * *")
                                                        << tBytes{0xB3} << tBytes{};
        QTest::newRow("9x 40 v to B0 x") << QStringLiteral("lone nibble variable") << QStringLiteral("9 * 4 0 * *")
                                         << tBytes{0x93, 0x40, 0x64} << tBytes{0xB0, 0x09};
    }

    void CompilesAndTranslates()
    {
        QFETCH(QString, rule);
        QFETCH(QString, pattern);
        QFETCH(tBytes, input);
        QFETCH(tBytes, output);
        const cMIDITranslatorRule loaded = RuleNamed(*configuration, rule);
        QCOMPARE(PatternText(loaded.GetMIDIMatchNibbleListIdentifier()), pattern);

        tBytes produced{0x11};
        loaded.GetMIDIOutputFromMIDIInput(produced, input);
        output.insert(output.begin(), 0x11);
        QCOMPARE(produced, output);
    }

    void ReportsVariablesMissingFromIncomingMIDI()
    {
        QCOMPARE(configuration->GetMIDITranslatorRules().size(), 17);
        const QString missingF = ErrorFrom(SOURCE, R"(Could not find variable "F" in incoming MIDI)");
        const QString missingK = ErrorFrom(SOURCE, R"(Could not find variable "k" in incoming MIDI)");
        QCOMPARE(loadErrors, QStringList({missingF, missingK, missingK, missingF}));
    }

    void RejectsMalformedRules_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("message");
        const QString incoming = QStringLiteral(R"("incoming": {"midi": "B*n 07 v", "ports": ["Mixer In"]})");
        const QString outgoing = QStringLiteral(R"("outgoing": {"midi": "E*n 0v v", "ports": ["Port 1"]})");
        QTest::newRow("no name") << "{" + incoming + "," + outgoing + "}" << QStringLiteral(R"(No "name" string for rule)");
        QTest::newRow("incoming string") << R"({"name": "R", "incoming": "B0 07", )" + outgoing + "}"
                                         << QStringLiteral(R"(No "incoming" object for rule "R")");
        QTest::newRow("no incoming midi") << R"({"name": "R", "incoming": {"ports": []}, )" + outgoing + "}"
                                          << QStringLiteral(R"(No incoming "midi" string for rule "R")");
        QTest::newRow("no incoming ports") << R"({"name": "R", "incoming": {"midi": "B*n 07 v"}, )" + outgoing + "}"
                                           << QStringLiteral(R"(No incoming "ports" array for rule "R")");
        QTest::newRow("no outgoing") << R"({"name": "R", )" + incoming + "}"
                                     << QStringLiteral(R"(No "outgoing" object for rule "R")");
        QTest::newRow("numeric outgoing midi") << R"({"name": "R", )" + incoming +
                                                      R"(, "outgoing": {"midi": 7, "ports": []}})"
                                               << QStringLiteral(R"(No outgoing "midi" string for rule "R")");
        QTest::newRow("unknown local out") << R"({"name": "R", )" + incoming +
                                                  R"(, "outgoing": {"midi": "9x", "ports": []}})"
                                           << QStringLiteral(R"(Invalid outgoing midi string for rule "R")");
        QTest::newRow("outgoing ports text") << R"({"name": "R", )" + incoming +
                                                    R"(, "outgoing": {"midi": "v", "ports": "Port 1"}})"
                                             << QStringLiteral(R"(No outgoing "ports" array for rule "R")");
    }

    void RejectsMalformedRules()
    {
        QFETCH(QString, json);
        QFETCH(QString, message);
        bool ok = true;
        const QStringList errors = ErrorLinesOf([&] {
            cMIDITranslatorRule::FromJsonObject(QJsonDocument::fromJson(json.toUtf8()).object(), configuration.get(), ok);
        });
        QVERIFY(!ok);
        QCOMPARE(errors, QStringList{ErrorFrom(SOURCE, message)});
    }

private:
    std::unique_ptr<cMIDITranslatorConfiguration> configuration;
    QStringList loadErrors;
};

QTEST_GUILESS_MAIN(tRules)
#include "test_rules.moc"
