#include "MIDITranslator/MixerDawMap.h"
#include "support/TestHelpers.h"

#include <QtTest>

namespace
{
QString DataFile(const char* name)
{
    return QStringLiteral(TESSERA_TEST_DATA_DIR "/maps/") + QLatin1String(name);
}

QStringList Sorted(QStringList names)
{
    names.sort();
    return names;
}

QString Error(const QString& message)
{
    return ErrorFrom("MIDITranslator/MixerDawMap.cpp", message);
}
}

class tMixerMap : public QObject
{
    Q_OBJECT
private slots:
    void ReadsMixersAndTheirDAWs()
    {
        cStdoutCapture capture;
        cMixerDawMap map;
        map.LoadFromFilePath(DataFile("quirks_map.json"));

        // A mixer without DAWs is listed; one without a name is not.
        QCOMPARE(Sorted(map.GetMixerNames()), QStringList({"Alpha", "Beta", "Lonely"}));
        QCOMPARE(map.GetDAWNamesForMixer("Lonely"), QStringList());

        // Entries without a name or a file are skipped; duplicates are kept in
        // the list, but the first of them names the file.
        QCOMPARE(map.GetDAWNamesForMixer("Alpha"), QStringList({"Reaper", "Reaper", "Cubase"}));
        QCOMPARE(map.GetFilePathForMixerAndDAW("Alpha", "Reaper"), QStringLiteral("alpha_reaper.json"));
        QCOMPARE(map.GetFilePathForMixerAndDAW("Alpha", "Cubase"), QStringLiteral("alpha_cubase.json"));

        // The later "Beta" replaces the earlier one whole.
        QCOMPARE(map.GetDAWNamesForMixer("Beta"), QStringList({"Ardour"}));
        QCOMPARE(map.GetFilePathForMixerAndDAW("Beta", "Ardour"), QStringLiteral("beta_ardour.json"));
        QCOMPARE(capture.ErrorLines(), QStringList());
    }

    void AnswersUnknownMixersAndDAWs()
    {
        cMixerDawMap map;
        map.LoadFromFilePath(DataFile("quirks_map.json"));

        cStdoutCapture capture;
        QCOMPARE(map.GetDAWNamesForMixer("Gamma"), QStringList());
        // An unknown mixer gives back its own name, an unknown DAW an empty string.
        QCOMPARE(map.GetFilePathForMixerAndDAW("Gamma", "Reaper"), QStringLiteral("Gamma"));
        QCOMPARE(map.GetFilePathForMixerAndDAW("Alpha", "Logic"), QString());
        // Names are exact.
        QCOMPARE(map.GetFilePathForMixerAndDAW("alpha", "Reaper"), QStringLiteral("alpha"));

        const QString gamma = Error("Unknown mixer name \"Gamma\"");
        QCOMPARE(WithoutLineNumbers(capture.ErrorLines()),
                 QStringList({gamma, gamma, Error("Unknown DAW \"Logic\" for mixer \"Alpha\""), Error("Unknown mixer name \"alpha\"")}));
    }

    // The reader's messages are those of the rule files, checked there.
    void FailedLoadLeavesTheMapEmpty_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("errors");
        QTest::newRow("missing") << DataFile("no_such_map.json") << 1;
        QTest::newRow("syntax error") << DataFile("broken_map.json") << 1;
        QTest::newRow("no mixers") << DataFile("no_mixers_map.json") << 0;
    }

    void FailedLoadLeavesTheMapEmpty()
    {
        QFETCH(QString, file);
        QFETCH(int, errors);
        cMixerDawMap map;
        map.LoadFromFilePath(DataFile("quirks_map.json"));
        cStdoutCapture capture;
        map.LoadFromFilePath(file);
        QCOMPARE(map.GetMixerNames(), QStringList());
        QCOMPARE(capture.ErrorLines().size(), errors);
    }
};

QTEST_GUILESS_MAIN(tMixerMap)
#include "test_mixermap.moc"
