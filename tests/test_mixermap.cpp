#include "MIDITranslator/MixerDawMap.h"
#include "support/TestHelpers.h"

#include <QtTest>

namespace
{
QStringList Sorted(QStringList names)
{
    names.sort();
    return names;
}

const char* const SOURCE = "MIDITranslator/MixerDawMap.cpp";
}

class tMixerMap : public QObject
{
    Q_OBJECT
private slots:
    void ReadsMixersAndTheirDAWs()
    {
        cStdoutCapture capture;
        cMixerDawMap map;
        map.LoadFromFilePath(TestDataFile("maps/quirks_map.json"));

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

        QCOMPARE(map.GetDAWNamesForMixer("Gamma"), QStringList());
        // An unknown mixer gives back its own name, an unknown DAW an empty string.
        QCOMPARE(map.GetFilePathForMixerAndDAW("Gamma", "Reaper"), QStringLiteral("Gamma"));
        QCOMPARE(map.GetFilePathForMixerAndDAW("Alpha", "Logic"), QString());
        // Names are exact.
        QCOMPARE(map.GetFilePathForMixerAndDAW("alpha", "Reaper"), QStringLiteral("alpha"));

        const QString gamma = ErrorFrom(SOURCE, "Unknown mixer name \"Gamma\"");
        QCOMPARE(WithoutLineNumbers(capture.ErrorLines()),
                 QStringList({gamma, gamma, ErrorFrom(SOURCE, "Unknown DAW \"Logic\" for mixer \"Alpha\""), ErrorFrom(SOURCE, "Unknown mixer name \"alpha\"")}));
    }

    // A file that cannot be read, or that names no mixers, leaves nothing of
    // the map loaded before. What the reader says is checked with the rule files.
    void FailedLoadLeavesTheMapEmpty()
    {
        const QList<QPair<const char*, int>> files = {
            {"maps/no_such_map.json", 1}, {"maps/broken_map.json", 1}, {"maps/no_mixers_map.json", 0}};
        for (const auto& file : files)
        {
            cMixerDawMap map;
            map.LoadFromFilePath(TestDataFile("maps/quirks_map.json"));
            const QStringList errors = ErrorLinesOf([&] { map.LoadFromFilePath(TestDataFile(file.first)); });
            QVERIFY2(map.GetMixerNames().isEmpty(), file.first);
            QCOMPARE(errors.size(), file.second);
        }
    }
};

QTEST_GUILESS_MAIN(tMixerMap)
#include "test_mixermap.moc"
