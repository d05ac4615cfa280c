#include "MIDITranslator/FileLocations.h"
#include "MIDITranslator/MixerDawMap.h"
#include "support/TestHelpers.h"

#include <QCoreApplication>
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
        QCOMPARE(map.GetFilePathForMixerAndDAW("Beta", "Reaper"), QString());
        // Names are exact.
        QCOMPARE(map.GetFilePathForMixerAndDAW("alpha", "Reaper"), QStringLiteral("alpha"));

        const QString gamma = Error("Unknown mixer name \"Gamma\"");
        QCOMPARE(WithoutLineNumbers(capture.ErrorLines()),
                 QStringList({gamma, gamma, Error("Unknown DAW \"Logic\" for mixer \"Alpha\""),
                              Error("Unknown DAW \"Reaper\" for mixer \"Beta\""), Error("Unknown mixer name \"alpha\"")}));
    }

    void FailedLoadLeavesTheMapEmpty_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("error");

        QTest::newRow("missing") << DataFile("no_such_map.json")
                                 << QStringLiteral("Could not open file: ") + DataFile("no_such_map.json");
        QTest::newRow("syntax error") << DataFile("broken_map.json") << QStringLiteral("Json Parse Error: ");
        QTest::newRow("no mixers") << DataFile("no_mixers_map.json") << QString();
    }

    void FailedLoadLeavesTheMapEmpty()
    {
        QFETCH(QString, file);
        QFETCH(QString, error);

        cMixerDawMap map;
        map.LoadFromFilePath(DataFile("quirks_map.json"));
        cStdoutCapture capture;
        map.LoadFromFilePath(file);
        QCOMPARE(map.GetMixerNames(), QStringList());

        QStringList lines = capture.ErrorLines();
        if (error.isEmpty())
        {
            QCOMPARE(lines, QStringList());
            return;
        }
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines[0].startsWith(QStringLiteral("ERROR: ") + error), qPrintable(lines[0]));
        QVERIFY2(lines[0].contains(QStringLiteral("\t(MIDITranslator/JsonFile.cpp:")), qPrintable(lines[0]));
    }

    void ConfigurationDirectoryIsBesideTheExecutable()
    {
        const QString directory = QCoreApplication::applicationDirPath() + QStringLiteral("/../Resources/Maps/");
        QCOMPARE(cFileLocations::GetConfigurationFileDirectory(), directory);
        QCOMPARE(cFileLocations::GetMixerMapFilePath(), directory + QStringLiteral("mixer_map.json"));
    }
};

QTEST_GUILESS_MAIN(tMixerMap)
#include "test_mixermap.moc"
