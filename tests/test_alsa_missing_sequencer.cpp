// The ALSA registry on a machine without a sequencer device: it must say so
// once and leave the rest of the program working. Runs outside the test VM.

#include "Common/MIDI/ALSA/SystemMIDIConfigurationALSA.h"
#include "Common/MIDI/MIDIOutput.h"
#include "tests/support/StdoutCapture.h"

#include <QFile>
#include <QtTest>

class tAlsaMissingSequencer : public QObject
{
    Q_OBJECT

private slots:
    void RegistryStaysEmpty()
    {
        if (QFile::exists(QStringLiteral("/dev/snd/seq")))
        {
            QSKIP("this machine has a sequencer");
        }
        cStdoutCapture capture;
        {
            cSystemMIDIConfigurationALSA registry;
            QVERIFY(!registry.HasSystemMIDI());
            registry.CreateVirtualInputOutput(QStringLiteral("Tessera DAW"));
            QVERIFY(registry.GetSystemMIDIInputNames().isEmpty());
            QVERIFY(registry.GetSystemMIDIOutputNames().isEmpty());
            // The rule file's port still resolves; it just reaches nobody.
            QByteArray bytes = QByteArray::fromHex("B00764");
            registry.GetMIDIOutput(QStringLiteral("Tessera DAW"))->WriteMIDIData(bytes);
            QVERIFY(registry.GetMIDIInput(QStringLiteral("Tessera DAW")));
        }
        const QStringList errors = capture.ErrorLines();
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.at(0).contains(QRegularExpression(QStringLiteral(
                     "^ERROR: Failed to open the ALSA sequencer: .+\t\\(Common/MIDI/ALSA/SequencerALSA\\.cpp:\\d+\\)$"))),
            qPrintable(errors.at(0)));
    }
};

QTEST_GUILESS_MAIN(tAlsaMissingSequencer)
#include "test_alsa_missing_sequencer.moc"
