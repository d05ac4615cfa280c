#include "support/TestHelpers.h"

#include <QCoreApplication>
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
}

class tTesseraRules : public QObject
{
    Q_OBJECT
private slots:
    // A clean file passes; a rejected rule fails the run and is named; a JSON
    // syntax error is located. Line 3 of syntax_error.json reads
    // `    "rules": [ {"name" "Fader"} ]`: the parser stops just past the quote
    // that opens "Fader", where the colon should have been.
    void Check()
    {
        sRun run = RunTool({QStringLiteral("check"), CLEAN});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(!run.out.contains(QLatin1String("ERROR:")));
        QVERIFY2(run.out.contains(CLEAN + QStringLiteral(": 1 virtual ports, 2 aliases, 1 variables, 1 rules accepted; "
                                                         "0 rules and 0 variables rejected\n")),
                 qPrintable(run.out));

        const QString oneBadRule = TestDataFile("tessera-rules/one_bad_rule.json");
        run = RunTool({QStringLiteral("check"), CLEAN, oneBadRule});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(run.out.contains(QLatin1String("ERROR: Invalid incoming midi string for rule \"Broken fader\"")));
        QVERIFY(run.out.contains(oneBadRule + QStringLiteral(": rejected rule 2 \"Broken fader\"\n")));
        QVERIFY2(run.out.contains(QLatin1String("1 rules accepted; 1 rules and 0 variables rejected")), qPrintable(run.out));

        const QString syntaxError = TestDataFile("tessera-rules/syntax_error.json");
        run = RunTool({QStringLiteral("check"), syntaxError});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.out.contains(syntaxError + QStringLiteral(":3:25: JSON syntax error: ")), qPrintable(run.out));
    }

    void RefusesBadUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("unknown command") << QStringList{"verify", CLEAN};
        QTest::newRow("check without files") << QStringList{"check"};
        QTest::newRow("replay without port") << QStringList{"replay", CLEAN};
        QTest::newRow("value beyond a byte") << QStringList{"replay", CLEAN, "--in", "Mixer In", "--set", "n=256"};
    }

    void RefusesBadUsage()
    {
        QFETCH(QStringList, arguments);
        const sRun run = RunTool(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.err.contains(QLatin1String("Usage: tessera-rules")));
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

        run = RunTool({"replay", CLEAN, "--in", "Console"}, "B0 07 12\n07 7F\nB0 zz\n07\n2a\n");
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QStringLiteral("Port 1\tE0 02 12\nPort 1\tE0 0F 7F\nPort 1\tE0 0A 2A\n"));
        QCOMPARE(run.err, QStringLiteral("line 3: not hexadecimal bytes, skipped: B0 zz\n"));
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
