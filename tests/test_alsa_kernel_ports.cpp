// The mixer's MIDI interface played by kernel ports (snd-virmidi, through its
// raw devices), the DAW by a peer client on the program's virtual port, and a
// real rule file between them with the mixer ports picked as in the MIDI Ports
// mode. Kernel ports take MIDI only from a subscriber, cut System Exclusive
// into pieces and go away with their driver: a user-space peer hides all that.

#include "Common/MIDI/ALSA/SystemMIDIConfigurationALSA.h"
#include "Common/MIDI/MIDIInput.h"
#include "Common/MIDI/MIDIOutput.h"
#include "Common/MIDI/MIDIRunningStatusFixer.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "MIDITranslator/MixerStateRestorer.h"
#include "tests/support/SequencerPeerALSA.h"
#include "tests/support/TestHelpers.h"
#include "tests/support/VirtualRawMIDI.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QScopeGuard>
#include <QThread>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace
{
const int TIMEOUT = 20000;  // the test VM is slow
const QString DRIVER = QStringLiteral("/sys/bus/platform/drivers/snd_virmidi/");

// What a raw device receives, with the running status that the kernel uses
// expanded, and when the last of it arrived since this was made.
struct sExpandedReader
{
    explicit sExpandedReader(sVirtualRawMIDI& device) : device(device) { clock.start(); }

    // Until count bytes are in or the time is up, while the event loop runs.
    QByteArray Read(int count, int timeout)
    {
        QElapsedTimer waiting;
        waiting.start();
        while (received.size() < count && !waiting.hasExpired(timeout))
        {
            const QByteArray part = device.Read(1, 20);
            std::vector<unsigned char> expanded;
            fixer.FixRunningStatus(std::vector<unsigned char>(part.begin(), part.end()), expanded);
            received.append(reinterpret_cast<const char*>(expanded.data()), static_cast<int>(expanded.size()));
            lastArrival = part.isEmpty() ? lastArrival : clock.elapsed();
        }
        return received;
    }

    sVirtualRawMIDI& device;
    cMIDIRunningStatusFixer fixer;
    QByteArray received;
    QElapsedTimer clock;
    qint64 lastArrival = 0;
};

bool ReloadModule()
{
    return QProcess::execute(QStringLiteral("modprobe"), {QStringLiteral("-r"), QStringLiteral("snd-virmidi")}) == 0
        && QProcess::execute(QStringLiteral("modprobe"), {QStringLiteral("snd-virmidi")}) == 0;
}
}

class tAlsaKernelPorts : public QObject
{
    Q_OBJECT

    cSequencerPeerALSA daw{"Test DAW"};
    int sequencer = daw.CreatePort("Sequencer");
    snd_seq_addr_t ours = {};
    cMIDITranslatorConfiguration configuration{new cSystemMIDIConfigurationALSA};
    cSystemMIDIConfiguration* registry = configuration.GetSystemMIDIConfiguration();
    QStringList kernelPorts = registry->GetSystemMIDIOutputNames().filter(sVirtualRawMIDI::Pattern());

    void FromDAW(const char* hex) { daw.Send(sequencer, ours, QByteArray::fromHex(hex)); }

private slots:
    void initTestCase()
    {
        if (kernelPorts.size() < 2)
        {
            QSKIP("needs two snd-virmidi ports (modprobe snd-virmidi) and access to /dev/snd/midiC*D*");
        }
        configuration.LoadFromFile(TestDataFile("alsa/translation.json"));
        configuration.SetMixerInputPortName(kernelPorts.at(0));
        configuration.SetMixerOutputPortName(kernelPorts.at(0));
        ours = daw.FindPort("Tessera", "Tessera DAW");
        QVERIFY(daw.ConnectFrom(sequencer, ours));
    }

    void BothDirectionsThroughTheRules()
    {
        sVirtualRawMIDI mixer(kernelPorts.at(0));
        // Running status both ways: the console's MIDI out uses it, and so
        // does the kernel writing to the device.
        QVERIFY(mixer.Write(QByteArray::fromHex("B20764072207")) && mixer.Write(QByteArray::fromHex("33")));
        QCOMPARE(daw.Receive(9).toHex(' '), QByteArray("e2 04 64 e2 02 22 e2 03 33"));
        // The rule "Scribble strips" sends the long System Exclusive.
        FromDAW("923C7F3D7FA21020");
        QCOMPARE(mixer.Read(1005), QByteArray::fromHex("B23C7F3D7F") + LongSystemExclusive());

        // System Exclusive from a console arrives in the pieces the kernel
        // cut, and is read whole.
        sVirtualRawMIDI console(kernelPorts.at(1));
        cMIDIInput* input = registry->GetMIDIInput(kernelPorts.at(1));
        QByteArray received;
        QObject receiving;  // ends the connection with this function
        connect(input, &cMIDIInput::MIDIReadReady, &receiving, [&] {
            QByteArray part;
            input->ReadMIDIData(part);
            received += part;
        });
        QVERIFY(console.Write(LongSystemExclusive() + QByteArray::fromHex("B00764")));
        QTRY_COMPARE_WITH_TIMEOUT(received, LongSystemExclusive() + QByteArray::fromHex("B00764"), TIMEOUT);
    }

    // Unbinding the driver is what unplugging a USB interface does. The module
    // reloads only then: our subscriptions hold it while its ports are there.
    void UnplugAndReplug()
    {
        const QStringList devices = QDir(DRIVER).entryList({QStringLiteral("snd_virmidi.*")});
        QFile unbind(DRIVER + QStringLiteral("unbind"));
        if (devices.isEmpty() || !unbind.open(QIODevice::WriteOnly))
        {
            QSKIP("unplugging snd-virmidi needs root and its driver in sysfs");
        }
        auto replug = qScopeGuard(ReloadModule);
        const QStringList errors = ErrorLinesOf([&] {
            QVERIFY(unbind.write(devices.at(0).toLatin1()) > 0 && unbind.flush());
            QTRY_VERIFY_WITH_TIMEOUT(
                registry->GetSystemMIDIOutputNames().filter(sVirtualRawMIDI::Pattern()).isEmpty(), TIMEOUT);
            QVERIFY(registry->GetSystemMIDIInputNames().filter(sVirtualRawMIDI::Pattern()).isEmpty());
            for (int count = 0; count < 100; ++count)
            {
                FromDAW("923C7F");
            }
            daw.Receive(1, 500);
            replug.dismiss();
            QVERIFY(ReloadModule());
            QTRY_VERIFY_WITH_TIMEOUT(registry->GetSystemMIDIInputNames().contains(kernelPorts.at(0)), TIMEOUT);
        });
        QCOMPARE(errors, QStringList());
        sVirtualRawMIDI mixer(kernelPorts.at(0));
        QVERIFY(mixer.Write(QByteArray::fromHex("B20711")));
        QCOMPARE(daw.Receive(3).toHex(' '), QByteArray("e2 01 11"));
        FromDAW("923C7F");
        QCOMPARE(mixer.Read(3).toHex(' '), QByteArray("b2 3c 7f"));
    }

    // The console's interface unplugged and plugged in again: its raw device
    // gets the last value of each control once, no faster than a DIN cable
    // carries them, and nothing with the option off.
    void ReplugGivesTheConsoleItsState_data()
    {
        QTest::addColumn<bool>("resend");
        QTest::addColumn<QByteArray>("fromDAW");
        QTest::addColumn<QByteArray>("restored");
        // "Select" makes a fader's controller of a note on channel 3, "Lamp"
        // a note on channel 3 of one on channel 16.
        const QByteArray fadersAndLamps = QByteArray::fromHex("921010 921130 921240 921050 9F207F 9F217F");
        QTest::newRow("three faders and two lamps")
            << true << fadersAndLamps << QByteArray::fromHex("B21130 B21240 B21050 92207F 92217F");
        QByteArray surface;
        QByteArray surfaceRestored;
        for (char control = 0; control < 0x20; ++control)
        {
            for (char lamp = 0; lamp < 4; ++lamp)
            {
                surface += QByteArray("\x9F", 1) + char(control * 4 + lamp) + '\x7F';
                surfaceRestored += QByteArray("\x92", 1) + char(control * 4 + lamp) + '\x7F';
            }
            surface += QByteArray("\x92", 1) + char(0x40 + control) + '\x01';
            surfaceRestored += QByteArray("\xB2", 1) + char(0x40 + control) + '\x01';
        }
        QTest::newRow("a whole surface") << true << surface << surfaceRestored;
        QTest::newRow("option off") << false << fadersAndLamps << QByteArray();
    }

    void ReplugGivesTheConsoleItsState()
    {
        QFETCH(bool, resend);
        QFETCH(QByteArray, fromDAW);
        QFETCH(QByteArray, restored);
        const QStringList devices = QDir(DRIVER).entryList({QStringLiteral("snd_virmidi.*")});
        QFile unbind(DRIVER + QStringLiteral("unbind"));
        QFile bind(DRIVER + QStringLiteral("bind"));
        if (devices.isEmpty() || !unbind.open(QIODevice::WriteOnly) || !bind.open(QIODevice::WriteOnly))
        {
            QSKIP("unplugging snd-virmidi needs root and its driver in sysfs");
        }
        cMixerStateRestorer* restorer = configuration.GetMixerStateRestorer();
        restorer->SetEnabled(resend);
        auto disable = qScopeGuard([restorer] { restorer->SetEnabled(false); });
        {
            // Closed before the driver goes, which waits for its devices to close.
            sVirtualRawMIDI mixer(kernelPorts.at(0));
            daw.Send(sequencer, ours, fromDAW);
            QCOMPARE(sExpandedReader(mixer).Read(fromDAW.size(), TIMEOUT).size(), fromDAW.size());
        }
        QVERIFY(unbind.write(devices.at(0).toLatin1()) > 0 && unbind.flush());
        auto replug = qScopeGuard([&] { bind.write(devices.at(0).toLatin1()) && bind.flush(); });
        QTRY_VERIFY_WITH_TIMEOUT(
            registry->GetSystemMIDIOutputNames().filter(sVirtualRawMIDI::Pattern()).isEmpty(), TIMEOUT);
        replug.dismiss();
        QVERIFY(bind.write(devices.at(0).toLatin1()) > 0 && bind.flush());

        // Open before the event loop hears of the port, so it misses nothing.
        std::unique_ptr<sVirtualRawMIDI> mixer;
        QElapsedTimer clock;
        clock.start();
        while ((mixer.reset(new sVirtualRawMIDI(kernelPorts.at(0))), mixer->descriptor < 0) && !clock.hasExpired(TIMEOUT))
        {
            QThread::msleep(10);
        }
        QVERIFY(mixer->descriptor >= 0);
        sExpandedReader reader(*mixer);
        reader.Read(restored.size(), TIMEOUT);
        QTRY_VERIFY_WITH_TIMEOUT(registry->GetSystemMIDIOutputNames().contains(kernelPorts.at(0)), TIMEOUT);
        QCOMPARE(reader.Read(restored.size() + 1, 1000).toHex(' '), restored.toHex(' '));
        const qint64 dinMs = std::max<qint64>(restored.size() - 3, 0) * 1000 / cMixerStateRestorer::DIN_BYTES_PER_SECOND;
        qInfo("%d bytes restored in %lld ms", static_cast<int>(restored.size()), reader.lastArrival);
        QVERIFY2(reader.lastArrival >= dinMs,
            qPrintable(QStringLiteral("%1 ms for %2 ms at DIN speed").arg(reader.lastArrival).arg(dinMs)));
    }

    // A DAW that stops reading fills its input pool and the kernel refuses
    // the rest: said once, and again only after messages got through.
    void RefusalIsReportedOnce()
    {
        QByteArray fader = QByteArray::fromHex("B00764");
        auto flood = [&] {
            for (int count = 0; count < 2000; ++count)
            {
                registry->GetMIDIOutput(QStringLiteral("Tessera DAW"))->WriteMIDIData(fader);
            }
        };
        const QStringList refused = {ErrorFrom("Common/MIDI/ALSA/SequencerPortALSA.cpp",
            QStringLiteral("ALSA sequencer refused MIDI for \"Tessera DAW\": Resource temporarily unavailable"))};
        QCOMPARE(ErrorLinesOf(flood), refused);
        daw.Receive(1, 500);  // finds the overrun, and the kernel empties the pool
        QCOMPARE(ErrorLinesOf(flood), refused);
    }
};

QTEST_GUILESS_MAIN(tAlsaKernelPorts)
#include "test_alsa_kernel_ports.moc"
