#include "support/TestHelpers.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QtTest>

namespace
{
struct sRun
{
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs the shipped executable from bin/, beside this test's tests/ folder.
sRun RunTool(const QStringList& arguments, const QByteArray& input = QByteArray())
{
    QProcess process;
    process.start(QCoreApplication::applicationDirPath() + QStringLiteral("/../bin/tessera-rules"), arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit)
    {
        return sRun();
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

const QString CLEAN = TestDataFile("tessera-rules/clean.json");

// The checker's warning and error lines.
QStringList Findings(const QString& out)
{
    return out.split(QLatin1Char('\n')).filter(QRegularExpression(QStringLiteral(": (warning|error): ")));
}
}

class tTesseraRules : public QObject
{
    Q_OBJECT
private slots:
    // One file for each kind of problem: the exit status, how many findings
    // (each printed once, in the checker's words, without the program's own
    // trace lines) and the words that name the culprit and the fix.
    void Check_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("findings");
        QTest::addColumn<QStringList>("words");

        QTest::newRow("clean") << "clean.json" << 0 << 0
                               << QStringList{"clean.json: 1 virtual ports, 2 aliases, 1 variables, 1 rules accepted; "
                                              "0 rules and 0 variables rejected; 0 warnings\n"};
        // Line 3 reads `    "rules": [ {"name" "Fader"} ]`: the parser stops
        // just past the quote that opens "Fader", where the colon belongs.
        QTest::newRow("syntax error") << "syntax_error.json" << 1 << 0
                                      << QStringList{"syntax_error.json:3:25: JSON syntax error: "};
        QTest::newRow("top-level key") << "rule_key.json" << 1 << 1
                                       << QStringList{"top level: warning: unknown key \"rule\"", "did you mean \"rules\"?"};
        QTest::newRow("rule member") << "misspelt_member.json" << 1 << 2
                                     << QStringList{"unknown key \"outgoin\"", "did you mean \"outgoing\"?",
                                                    "rules[0] \"Fader\": error: left out: has no \"outgoing\""};
        QTest::newRow("ports") << "misspelt_ports.json" << 1 << 2
                               << QStringList{"\"Mixer Inn\"", "did you mean \"Mixer In\"?", "\"My Surfce\"",
                                              "did you mean \"My Surface\"?"};
        QTest::newRow("text for a list") << "virtual_ports_text.json" << 1 << 1
                                         << QStringList{"\"virtual_ports\" is the text \"My Surface\"",
                                                        "write [\"My Surface\"]"};
        QTest::newRow("number as text") << "value_as_text.json" << 1 << 1
                                        << QStringList{"\"values[1].value\" is the text \"1\"", "write 1 without quotes"};
        QTest::newRow("alias type") << "alias_type.json" << 1 << 1
                                    << QStringList{"port_aliases[0] \"Mixer In\"", "\"Input\"", "did you mean \"input\"?"};
        QTest::newRow("lone digits") << "lone_digits.json" << 1 << 2
                                     << QStringList{"lone digit \"F\" in the incoming", "lone digit \"a\" in the outgoing"};
        QTest::newRow("two variables in a token") << "two_variables_in_a_token.json" << 1 << 1 << QStringList{"\"*k*n\""};
        QTest::newRow("upper half") << "upper_half.json" << 1 << 1 << QStringList{"\"x\" of \"9x\"", "upper half"};
        QTest::newRow("no status byte") << "no_status_byte.json" << 1 << 1 << QStringList{"begins with \"v\""};
        QTest::newRow("rules sharing a path") << "shared_way.json" << 1 << 3
                                              << QStringList{"rules[1] \"Pan centre\": warning: also fires",
                                                             "rules[3] \"Mute\": warning: does not fire",
                                                             "with rules[2] \"Mute off\"",
                                                             "rules[5] \"Fader again\": warning: listens",
                                                             "same messages as rules[4] \"Fader\""};
        QTest::newRow("malformed token") << "malformed_token.json" << 1 << 1
                                         << QStringList{"in \"B*c\", \"*\" must be followed by the letter of a variable"};
        QTest::newRow("unknown global") << "unknown_global.json" << 1 << 1
                                        << QStringList{"\"*q\"", "no variable \"q\"", "0 rules accepted; 1 rules"};
        QTest::newRow("unknown local") << "unknown_local.json" << 1 << 1 << QStringList{"local variable \"w\""};
        QTest::newRow("local captured twice") << "captured_twice.json" << 1 << 1
                                              << QStringList{"local variable \"V\" is captured a second time"};
        QTest::newRow("rejected variable") << "default_as_text.json" << 1 << 1
                                           << QStringList{"variables[0] \"Bank\": error: left out: \"default\" is the text "
                                                          "\"3\"", "write 3 without quotes", "1 variables rejected"};
    }

    void Check()
    {
        QFETCH(QString, file);
        QFETCH(int, status);
        QFETCH(int, findings);
        QFETCH(QStringList, words);

        const sRun run = RunTool({QStringLiteral("check"), TestDataFile(QStringLiteral("tessera-rules/") + file)});
        QCOMPARE(run.exitCode, status);
        QCOMPARE(Findings(run.out).size(), findings);
        for (const QString& word : words)
        {
            QVERIFY2(run.out.contains(word), qPrintable(word + QStringLiteral(" not in:\n") + run.out));
        }
        QVERIFY2(!run.out.contains(QLatin1String("ERROR")) && !run.out.contains(QLatin1String(".cpp:")),
                 qPrintable(run.out));
    }

    void ShippedFilesAreClean()
    {
        const QDir maps(QCoreApplication::applicationDirPath() + QStringLiteral("/../Resources/Maps"));
        QStringList files = maps.entryList({QStringLiteral("*.json")});
        QVERIFY(files.removeOne(QStringLiteral("mixer_map.json")));
        QCOMPARE(files.size(), 6);
        files.replaceInStrings(QRegularExpression(QStringLiteral("^")), maps.path() + QLatin1Char('/'));
        const sRun run = RunTool(QStringList(QStringLiteral("check")) + files);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(Findings(run.out), QStringList());
    }

    void RefusesBadUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("culprit");
        QTest::newRow("unknown command") << QStringList{"verify", CLEAN} << "verify";
        QTest::newRow("check without files") << QStringList{"check"} << "FILE";
        QTest::newRow("replay without port") << QStringList{"replay", CLEAN} << "--in PORT";
        QTest::newRow("value beyond a byte") << QStringList{"replay", CLEAN, "--in", "Mixer In", "--set", "n=256"} << "n=256";
        QTest::newRow("no such variable") << QStringList{"replay", CLEAN, "--in", "Mixer In", "--set", "m=1"}
                                          << "no variable \"m\" (its variables: \"n\" (MIDI Channel))";
        QTest::newRow("the name users see") << QStringList{"replay", CLEAN, "--in", "Mixer In", "--set", "MIDI Channel=2"}
                                            << "call the variable \"n\"";
        QTest::newRow("no such value") << QStringList{"replay", CLEAN, "--in", "Mixer In", "--set", "n=4"}
                                       << "\"n\" has no value 4 (its values: 0 to 3)";
    }

    void RefusesBadUsage()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, culprit);
        const sRun run = RunTool(arguments);
        QCOMPARE(run.exitCode, 2);
        const QString firstLine = run.err.section(QLatin1Char('\n'), 0, 0);
        QVERIFY2(firstLine.startsWith(QLatin1String("tessera-rules: ")) && firstLine.contains(culprit), qPrintable(run.err));
        QVERIFY(run.err.contains(QLatin1String("Usage: tessera-rules")));
        QCOMPARE(run.out, QString());
    }

    void TellsItsVersion()
    {
        const sRun run = RunTool({QStringLiteral("--version")});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QStringLiteral("tessera-rules " TESSERA_VERSION_STRING "\n"));
    }

    // The input is named as the rule names it: "Mixer In" reaches the file's
    // "Console" port through the alias, and --set picks the channel matched.
    // Running status carries across lines, and a line that is not hex is
    // skipped with a note.
    void Replay()
    {
        sRun run = RunTool({"replay", CLEAN, "--in", "Mixer In", "--set", "n=0x3"},
                           "# fader 1 on channel 4\nb3 07 64\nB0 07 40\n");
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QStringLiteral("Port 1\tE3 04 64\n"));
        QCOMPARE(run.err, QString());

        // Hexadecimal text is read as everywhere else: pairs of digits, also
        // in groups; a lone digit is no byte.
        run = RunTool({"replay", CLEAN, "--in", "Console"}, "B0 07 12\n07 7F\nB0 zz\n7\n07\n2a\nb0077f\n");
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QStringLiteral("Port 1\tE0 02 12\nPort 1\tE0 0F 7F\nPort 1\tE0 0A 2A\nPort 1\tE0 0F 7F\n"));
        QCOMPARE(run.err, QStringLiteral("line 3: not pairs of hexadecimal digits, skipped: B0 zz\n"
                                         "line 4: not pairs of hexadecimal digits, skipped: 7\n"));
    }

    // A shipped file whose mixer sends a fader as four NRPN messages: the
    // rule takes the value from two of them, and the DAW's answer goes back
    // as four in one write.
    void ExplainsEachWrite()
    {
        const QString file = QCoreApplication::applicationDirPath() + QStringLiteral("/../Resources/Maps/kvr12_generic_cc.json");
        const sRun fromMixer = RunTool({"replay", file, "--in", "Mixer In", "--set", "n=2", "--explain"},
                                       "B2 63 00 B2 62 00 B2 06 40 B2 26 11\n");
        QCOMPARE(fromMixer.out, QStringLiteral("Tessera Generic CC\tB0 07 40\n"
                                               "\tCC 7 = 64, ch 1\trule \"Strip 1 fader to DAW\": v=40, l=11\n"));
        const sRun fromDAW = RunTool({"replay", file, "--in", "Tessera Generic CC", "--explain"}, "B0 07 7F\n");
        QCOMPARE(fromDAW.out, QStringLiteral("Kestrel Internal TCP MIDI\tB0 63 00 B0 62 00 B0 06 7F B0 26 7F\n"
                                             "\tCC 99 = 0, ch 1; CC 98 = 0, ch 1; CC 6 = 127, ch 1; CC 38 = 127, ch 1"
                                             "\trule \"Strip 1 fader from DAW\": v=7F\n"));
    }
};

QTEST_GUILESS_MAIN(tTesseraRules)
#include "test_tessera_rules.moc"
