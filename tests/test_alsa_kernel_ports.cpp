// The mixer's MIDI interface played by kernel ports (snd-virmidi, through its
// raw devices), the DAW by a peer client on the program's virtual port, and a
// real rule file between them with the mixer ports picked as in the MIDI Ports
// mode. Kernel ports open their device only for a subscriber, cut System
// Exclusive into pieces and go away with their driver: a user-space peer hides
// all of it. Unplugging needs root; without snd-virmidi the tests are skipped.

#include "Common/MIDI/SystemMIDIConfigurationALSA.h"
#include "Common/MIDI/MIDIInput.h"
#include "Common/MIDI/MIDIOutput.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tests/support/SequencerPeerALSA.h"
#include "tests/support/TestHelpers.h"
#include "tests/support/VirtualRawMIDI.h"

#include <QDir>
#include <QProcess>
#include <QScopeGuard>
#include <QtTest>

#include <memory>

namespace
{
const int TIMEOUT = 20000;  // the test VM is slow
const char* const DRIVER = "/sys/bus/platform/drivers/snd_virmidi";

QByteArray Hex(const char* text)
{
    return QByteArray::fromHex(text);
}

// What the rule "Scribble strips" sends to the mixer.
QByteArray SystemExclusive()
{
    QByteArray bytes = Hex("F07D");
    for (int index = 0; bytes.size() < 999; ++index)
    {
        bytes.append(static_cast<char>((index * 7) & 0x7F));
    }
    return bytes + Hex("F7");
}

bool Modprobe(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("modprobe"), arguments) == 0;
}
}

class tAlsaKernelPorts : public QObject
{
    Q_OBJECT

    cSequencerPeerALSA daw{"Test DAW"};
    int sequencer = -1;
    std::unique_ptr<cMIDITranslatorConfiguration> configuration;
    cSystemMIDIConfiguration* registry = nullptr;
    QStringList kernelPorts;
    int ourClient = -1;
    int ourPort = -1;

    bool Listed(const QString& name) const
    {
        return registry->GetSystemMIDIInputNames().contains(name) && registry->GetSystemMIDIOutputNames().contains(name);
    }

    void SendFromDAW(const char* hex) { daw.Send(sequencer, ourClient, ourPort, Hex(hex)); }

    // Messages pass both ways between the mixer's interface and the DAW.
    void CheckTraffic(cVirtualRawMIDI& mixer)
    {
        QVERIFY(mixer.Write(Hex("B20711")));
        QCOMPARE(daw.Receive(3).toHex(' '), QByteArray("e2 01 11"));
        SendFromDAW("923C7F");
        QCOMPARE(mixer.Read(3).toHex(' '), QByteArray("b2 3c 7f"));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(daw.IsOpen());
        sequencer = daw.CreatePort("Sequencer");
        configuration.reset(new cMIDITranslatorConfiguration(new cSystemMIDIConfigurationALSA));
        registry = configuration->GetSystemMIDIConfiguration();
        kernelPorts = cVirtualRawMIDI::Find(registry->GetSystemMIDIOutputNames());
        if (kernelPorts.size() < 2)
        {
            QSKIP("needs two snd-virmidi ports (modprobe snd-virmidi) and access to /dev/snd/midiC*D*");
        }
        configuration->LoadFromFile(QStringLiteral(TESSERA_TEST_DATA_DIR "/alsa/translation.json"));
        configuration->SetMixerInputPortName(kernelPorts.at(0));
        configuration->SetMixerOutputPortName(kernelPorts.at(0));
        snd_seq_port_info_t* info;
        snd_seq_port_info_alloca(&info);
        QVERIFY(daw.FindPort("Tessera", "Tessera DAW", info));
        ourClient = snd_seq_port_info_get_client(info);
        ourPort = snd_seq_port_info_get_port(info);
        QVERIFY(daw.ConnectFrom(sequencer, ourClient, ourPort));
    }

    void BothDirectionsThroughTheRules()
    {
        cVirtualRawMIDI mixer(kernelPorts.at(0));
        QVERIFY(mixer.IsOpen());
        // A console's own MIDI out uses running status.
        QVERIFY(mixer.Write(Hex("B20764072207")));
        QVERIFY(mixer.Write(Hex("33")));
        QCOMPARE(daw.Receive(9).toHex(' '), QByteArray("e2 04 64 e2 02 22 e2 03 33"));

        SendFromDAW("923C7F3D7FA21020");
        QCOMPARE(mixer.Read(1005), Hex("B23C7F3D7F") + SystemExclusive());

        // A System Exclusive from the console reaches us in the pieces the
        // kernel cut it into, and is read whole.
        cVirtualRawMIDI console(kernelPorts.at(1));
        cMIDIInput* input = registry->GetMIDIInput(kernelPorts.at(1));
        QVERIFY(console.IsOpen() && input);
        QByteArray received;
        connect(input, &cMIDIInput::MIDIReadReady, this, [&] {
            QByteArray part;
            input->ReadMIDIData(part);
            received += part;
        });
        QVERIFY(console.Write(SystemExclusive() + Hex("B00764")));
        QTRY_COMPARE_WITH_TIMEOUT(received.size(), 1003, TIMEOUT);
        QCOMPARE(received, SystemExclusive() + Hex("B00764"));
    }

    // The driver's removal is what unplugging a USB interface does; the module
    // then reloads. Subscriptions hold the module, so it cannot go first.
    void UnplugAndReplug()
    {
        const QStringList devices = QDir(QLatin1String(DRIVER)).entryList({QStringLiteral("snd_virmidi.*")});
        QFile unbind(QLatin1String(DRIVER) + QStringLiteral("/unbind"));
        if (devices.isEmpty() || !unbind.open(QIODevice::WriteOnly))
        {
            QSKIP("unplugging snd-virmidi needs root and its driver in sysfs");
        }
        const QString mixerPort = kernelPorts.at(0);
        {
            cVirtualRawMIDI mixer(mixerPort);
            CheckTraffic(mixer);
            // The kernel lets the device go only once nobody has it open.
        }
        if (QTest::currentTestFailed())
        {
            return;
        }
        auto replug = qScopeGuard([] {
            Modprobe({QStringLiteral("-r"), QStringLiteral("snd-virmidi")}) && Modprobe({QStringLiteral("snd-virmidi")});
        });
        // The lines are shown once the capture has ended.
        const QStringList errors = ErrorLinesOf([&] {
            QVERIFY(unbind.write(devices.at(0).toLatin1()) > 0);
            unbind.close();
            QTRY_VERIFY_WITH_TIMEOUT(!registry->GetSystemMIDIInputNames().contains(mixerPort), TIMEOUT);
            QVERIFY(!registry->GetSystemMIDIOutputNames().contains(mixerPort));
            // The DAW goes on sending to a mixer that is not there.
            for (int count = 0; count < 100; ++count)
            {
                SendFromDAW("923C7F");
            }
            daw.Receive(1, 500);
            replug.dismiss();
            QVERIFY(Modprobe({QStringLiteral("-r"), QStringLiteral("snd-virmidi")}));
            QVERIFY(Modprobe({QStringLiteral("snd-virmidi")}));
            QTRY_VERIFY_WITH_TIMEOUT(Listed(mixerPort), TIMEOUT);
        });
        QCOMPARE(errors, QStringList());
        cVirtualRawMIDI mixer(mixerPort);
        QVERIFY(mixer.IsOpen());
        CheckTraffic(mixer);
    }

    // A DAW that stops reading fills its input pool, and the kernel refuses
    // the rest: said once, not once per message, and again only after
    // messages have got through.
    void RefusalIsReportedOnce()
    {
        cMIDIOutput* toDAW = registry->GetMIDIOutput(QStringLiteral("Tessera DAW"));
        QByteArray fader = Hex("B00764");
        auto flood = [&] {
            for (int count = 0; count < 2000; ++count)
            {
                toDAW->WriteMIDIData(fader);
            }
        };
        const QStringList refused = {ErrorFrom("Common/MIDI/SequencerPortALSA.cpp",
            QStringLiteral("ALSA sequencer refused MIDI for \"Tessera DAW\": Resource temporarily unavailable"))};
        QCOMPARE(ErrorLinesOf(flood), refused);
        // Reading finds the overrun, and the kernel empties the pool.
        daw.Receive(1, 500);
        QCOMPARE(ErrorLinesOf(flood), refused);
        daw.Receive(1, 500);
    }

    // Kernels that announce client changes (recent ones) let a rename through.
    void RenamedClientRenamesItsPorts()
    {
        QTRY_VERIFY_WITH_TIMEOUT(Listed(QStringLiteral("Test DAW:Sequencer")), TIMEOUT);
        daw.Rename("Test DAW Renamed");
        QTest::qWait(2000);
        if (Listed(QStringLiteral("Test DAW:Sequencer")))
        {
            QSKIP("this kernel does not announce client changes");
        }
        QVERIFY(Listed(QStringLiteral("Test DAW Renamed:Sequencer")));
    }
};

QTEST_GUILESS_MAIN(tAlsaKernelPorts)
#include "test_alsa_kernel_ports.moc"
