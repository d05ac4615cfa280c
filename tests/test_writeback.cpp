// Saving a variable's default and an alias's target back into the rule file:
// on a copy of a real file, read back both as JSON and through a fresh load.

#include "Common/MIDI/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "support/TestHelpers.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

namespace
{
QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
}

class tWriteback : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        directory = std::make_unique<QTemporaryDir>();
        QVERIFY(directory->isValid());
        QVERIFY(QDir(directory->path()).mkdir(QStringLiteral("Maps")));
        path = directory->filePath(QStringLiteral("Maps/rules.json"));
        QVERIFY(QFile::copy(QStringLiteral(TESSERA_TEST_DATA_DIR "/config/writeback.json"), path));
        configuration = std::make_unique<cMIDITranslatorConfiguration>(new cSystemMIDIConfigurationMemory);
        configuration->LoadFromFile(path);
    }

    void cleanup()
    {
        configuration.reset();
        directory.reset();
    }

    void VariableDefaultIsWrittenAndLoadsBack()
    {
        // The file's "k" carries its default as a string, so the load refused it;
        // writing a number repairs it.
        configuration->WriteVariableValueToFile(QStringLiteral("n"), 7);
        configuration->WriteVariableValueToFile(QStringLiteral("k"), 7);

        const QJsonObject top = ReadJsonObject(path);
        QCOMPARE(top.value(QStringLiteral("comment")).toString(), QStringLiteral("kept on rewrite"));
        const QJsonArray variables = top.value(QStringLiteral("variables")).toArray();
        QCOMPARE(variables.at(0).toObject().value(QStringLiteral("default")), QJsonValue(7));
        QCOMPARE(variables.at(1).toObject().value(QStringLiteral("default")), QJsonValue(7));
        const QJsonObject rule = top.value(QStringLiteral("rules")).toArray().at(0).toObject();
        QCOMPARE(rule.value(QStringLiteral("colour")).toString(), QStringLiteral("red"));

        // Nothing changes in memory until the file is loaded again.
        QCOMPARE(configuration->GetVariableValue(QStringLiteral("n")), static_cast<unsigned char>(0));
        configuration->LoadFromFile(path);
        QCOMPARE(configuration->GetVariableValue(QStringLiteral("n")), static_cast<unsigned char>(7));
        QCOMPARE(configuration->GetVariableValue(QStringLiteral("k")), static_cast<unsigned char>(7));
    }

    void FirstMatchingAliasIsWrittenAndLoadsBack()
    {
        configuration->WritePortNameAliasToFile(QStringLiteral("Mixer Out"), QStringLiteral("output"),
                                                QStringLiteral("Desk 2"));

        const QJsonArray aliases = ReadJsonObject(path).value(QStringLiteral("port_aliases")).toArray();
        QCOMPARE(aliases.size(), 3);
        QCOMPARE(aliases.at(0).toObject().value(QStringLiteral("name")).toString(), QStringLiteral("Desk"));
        QCOMPARE(aliases.at(1).toObject().value(QStringLiteral("name")).toString(), QStringLiteral("Desk 2"));
        QCOMPARE(aliases.at(1).toObject().value(QStringLiteral("note")).toString(), QStringLiteral("first"));
        QCOMPARE(aliases.at(2).toObject().value(QStringLiteral("name")).toString(), QStringLiteral("Desk"));

        // The later of two entries for one alias wins on load, so the output
        // stays where it was; the input, with one entry, moves.
        configuration->WritePortNameAliasToFile(QStringLiteral("Mixer In"), QStringLiteral("input"),
                                                QStringLiteral("Desk 2"));
        configuration->LoadFromFile(path);
        QCOMPARE(configuration->GetMixerOutputPortName(), QStringLiteral("Desk"));
        QCOMPARE(configuration->GetMixerInputPortName(), QStringLiteral("Desk 2"));
    }

    void NoMatchWritesNothing()
    {
        const QByteArray original = ReadAll(path);
        configuration->WriteVariableValueToFile(QStringLiteral("q"), 1);
        configuration->WritePortNameAliasToFile(QStringLiteral("Mixer In"), QStringLiteral("Input"),
                                                QStringLiteral("Desk 2"));
        QCOMPARE(ReadAll(path), original);

        // With nothing loaded there is no document to edit.
        configuration->LoadFromFile(directory->filePath(QStringLiteral("missing.json")));
        configuration->WriteVariableValueToFile(QStringLiteral("n"), 1);
        QVERIFY(!QFile::exists(directory->filePath(QStringLiteral("missing.json"))));
    }

    void UnwritableFileIsReportedAndLeftAlone()
    {
        // Root may write anywhere, so the file is made unreachable instead: its
        // folder moves away and a plain file takes the folder's name.
        QVERIFY(QDir(directory->path()).rename(QStringLiteral("Maps"), QStringLiteral("Moved")));
        QFile blocker(directory->filePath(QStringLiteral("Maps")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const QString moved = directory->filePath(QStringLiteral("Moved/rules.json"));
        const QByteArray original = ReadAll(moved);

        const QStringList errors =
            ErrorLinesOf([&] { configuration->WriteVariableValueToFile(QStringLiteral("n"), 7); });
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.at(0).startsWith(QStringLiteral("ERROR: Could not open file: \"%1\" for writing\t").arg(path)),
                 qPrintable(errors.at(0)));
        QCOMPARE(ReadAll(moved), original);
        QCOMPARE(QFileInfo(blocker).size(), 0);
    }

private:
    std::unique_ptr<QTemporaryDir> directory;
    QString path;
    std::unique_ptr<cMIDITranslatorConfiguration> configuration;
};

QTEST_GUILESS_MAIN(tWriteback)
#include "test_writeback.moc"
