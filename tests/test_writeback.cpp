// Saving a variable's default and an alias's target back into the rule file:
// on a copy of a real file, read back both as JSON and through a fresh load.

#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "support/TestHelpers.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

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
        QVERIFY(QFile::copy(TestDataFile("config/writeback.json"), path));
        configuration = std::make_unique<cMIDITranslatorConfiguration>(new cSystemMIDIConfigurationMemory);
        configuration->LoadFromFile(path);
    }

    void cleanup()
    {
        configuration.reset();
        directory.reset();
    }

    // The first matching entry changes, and what the program does not know
    // survives the rewrite.
    void WrittenValuesLoadBack()
    {
        // The file's "k" carries its default as a string, so the load refused it;
        // writing a number repairs it.
        configuration->WriteVariableValueToFile("n", 7);
        configuration->WriteVariableValueToFile("k", 7);
        configuration->WritePortNameAliasToFile("Mixer Out", "output", "Desk 2");
        configuration->WritePortNameAliasToFile("Mixer In", "input", "Desk 2");

        const QJsonObject top = ReadJsonObject(path);
        QCOMPARE(top.value("comment").toString(), QStringLiteral("kept on rewrite"));
        QCOMPARE(top.value("rules").toArray().at(0).toObject().value("colour").toString(), QStringLiteral("red"));
        const QJsonArray variables = top.value("variables").toArray();
        QCOMPARE(variables.at(0).toObject().value("default"), QJsonValue(7));
        QCOMPARE(variables.at(1).toObject().value("default"), QJsonValue(7));
        const QJsonArray aliases = top.value("port_aliases").toArray();
        QCOMPARE(aliases.at(1).toObject().value("name").toString(), QStringLiteral("Desk 2"));
        QCOMPARE(aliases.at(1).toObject().value("note").toString(), QStringLiteral("first"));
        QCOMPARE(aliases.at(2).toObject().value("name").toString(), QStringLiteral("Desk"));

        // Nothing changes in memory until the file is loaded again. Then the
        // later of two entries for one alias wins, so the output stays where
        // it was; the input, with one entry, moves.
        QCOMPARE(configuration->GetVariableValue("n"), UBYTE(0));
        configuration->LoadFromFile(path);
        QCOMPARE(configuration->GetVariableValue("n"), UBYTE(7));
        QCOMPARE(configuration->GetVariableValue("k"), UBYTE(7));
        QCOMPARE(configuration->GetMixerOutputPortName(), QStringLiteral("Desk"));
        QCOMPARE(configuration->GetMixerInputPortName(), QStringLiteral("Desk 2"));
    }

    void NoMatchWritesNothing()
    {
        const QByteArray original = ReadFile(path);
        configuration->WriteVariableValueToFile("q", 1);
        configuration->WritePortNameAliasToFile("Mixer In", "Input", "Desk 2");
        QCOMPARE(ReadFile(path), original);
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
        const QByteArray original = ReadFile(moved);

        const QStringList errors = ErrorLinesOf([&] { configuration->WriteVariableValueToFile("n", 7); });
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.at(0).startsWith(QStringLiteral("ERROR: Could not open file: \"%1\" for writing\t").arg(path)),
                 qPrintable(errors.at(0)));
        QCOMPARE(ReadFile(moved), original);
        QCOMPARE(QFileInfo(blocker).size(), 0);
    }

private:
    std::unique_ptr<QTemporaryDir> directory;
    QString path;
    std::unique_ptr<cMIDITranslatorConfiguration> configuration;
};

QTEST_GUILESS_MAIN(tWriteback)
#include "test_writeback.moc"
