// The ALSA port layer against second sequencer clients (peers), which stand
// in for the mixer and the DAW, and a whole translation between them. Needs
// /dev/snd/seq.

#include "Common/MIDI/ALSA/SystemMIDIConfigurationALSA.h"
#include "Common/MIDI/MIDIInput.h"
#include "Common/MIDI/MIDIOutput.h"
#include "MIDITranslator/FileLocations.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tests/support/SequencerPeerALSA.h"
#include "tests/support/TestHelpers.h"

#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

namespace
{
const int TIMEOUT = 20000;  // the test VM is slow

QByteArray Hex(const char* text)
{
    return QByteArray::fromHex(text);
}

// What the input buffered until count bytes are in or the time is up.
QByteArray ReadAtLeast(cMIDIInput* input, int count)
{
    QByteArray all;
    QElapsedTimer timer;
    timer.start();
    while (all.size() < count && !timer.hasExpired(TIMEOUT))
    {
        QTest::qWait(5);
        QByteArray part;
        input->ReadMIDIData(part);
        all += part;
    }
    return all;
}
}

class tAlsaPorts : public QObject
{
    Q_OBJECT

private slots:
    void SystemPortsComeAndGo()
    {
        cSequencerPeerALSA mixer("Test Mixer");
        QVERIFY(mixer.IsOpen());
        mixer.CreatePort("Console");
        cSystemMIDIConfigurationALSA registry;
        QVERIFY(registry.HasSystemMIDI());
        QVERIFY(registry.GetSystemMIDIInputNames().contains(QStringLiteral("Test Mixer:Console")));
        QVERIFY(registry.GetSystemMIDIOutputNames().contains(QStringLiteral("Test Mixer:Console")));

        QSignalSpy inputAdded(&registry, &cSystemMIDIConfiguration::InputAddedSignal);
        QSignalSpy outputAdded(&registry, &cSystemMIDIConfiguration::OutputAddedSignal);
        QSignalSpy inputRemoved(&registry, &cSystemMIDIConfiguration::InputRemovedSignal);
        QSignalSpy outputRemoved(&registry, &cSystemMIDIConfiguration::OutputRemovedSignal);
        const QString stageBox = QStringLiteral("Test Mixer:Stage Box");
        const int stageBoxPort = mixer.CreatePort("Stage Box");
        QTRY_COMPARE_WITH_TIMEOUT(FirstArguments(outputAdded), QStringList(stageBox), TIMEOUT);
        QCOMPARE(FirstArguments(inputAdded), QStringList(stageBox));
        // Enumerated before the announcement arrived, listed once all the same.
        QCOMPARE(registry.GetSystemMIDIInputNames().count(QStringLiteral("Test Mixer:Console")), 1);

        // An opened input is still there when its removal is signalled, so that
        // listeners can let go of it, and gone right after.
        QPointer<cMIDIInput> opened = registry.GetMIDIInput(stageBox);
        QVERIFY(opened);
        QVERIFY(registry.GetMIDIOutput(stageBox));
        bool openedWhenRemoved = false;
        connect(&registry, &cSystemMIDIConfiguration::InputRemovedSignal, this,
            [&] { openedWhenRemoved = !opened.isNull(); });
        mixer.DeletePort(stageBoxPort);
        QTRY_COMPARE_WITH_TIMEOUT(FirstArguments(outputRemoved), QStringList(stageBox), TIMEOUT);
        QCOMPARE(FirstArguments(inputRemoved), QStringList(stageBox));
        QVERIFY(openedWhenRemoved);
        QVERIFY(opened.isNull());
        QVERIFY(!registry.GetSystemMIDIInputNames().contains(stageBox));
        QVERIFY(!registry.GetMIDIInput(stageBox));
        QVERIFY(!registry.GetMIDIOutput(stageBox));
        QCOMPARE(registry.GetSystemMIDIOutputNames().count(QStringLiteral("Test Mixer:Console")), 1);
    }

    void SystemPortsCarryMIDI()
    {
        cSequencerPeerALSA mixer("Test Mixer");
        int console = mixer.CreatePort("Console");
        cSystemMIDIConfigurationALSA registry;

        cMIDIInput* input = registry.GetMIDIInput(QStringLiteral("Test Mixer:Console"));
        QVERIFY(input);
        // A port drops what arrives while nobody listens. The receiver stands
        // in for the program's matcher; the test reads the buffer.
        QObject receiver;
        connect(input, &cMIDIInput::MIDIReadReady, &receiver, [] {});
        mixer.Send(console, cSequencerPeerALSA::SUBSCRIBERS, Hex("B007640A40F8903C7F") + LongSystemExclusive());
        const QByteArray expected = Hex("B00764B00A40F8903C7F") + LongSystemExclusive();
        QCOMPARE(ReadAtLeast(input, expected.size()), expected);

        cMIDIOutput* output = registry.GetMIDIOutput(QStringLiteral("Test Mixer:Console"));
        QVERIFY(output);
        // A message cut between two writes goes out whole once complete.
        for (QByteArray bytes : {Hex("C105D140E10040903C"), Hex("7F") + LongSystemExclusive()})
        {
            output->WriteMIDIData(bytes);
        }
        QCOMPARE(mixer.Receive(1009), Hex("C105D140E10040903C7F") + LongSystemExclusive());
    }

    void VirtualPortFacesTheDAW()
    {
        cSystemMIDIConfigurationALSA registry;
        registry.CreateVirtualInputOutput(QStringLiteral("Tessera DAW"));
        cSequencerPeerALSA daw("Test DAW");
        int dawPort = daw.CreatePort("Sequencer");

        snd_seq_port_info_t* info;
        snd_seq_port_info_alloca(&info);
        const snd_seq_addr_t ours = daw.FindPort("Tessera", "Tessera DAW", info);
        const unsigned int both = SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ | SND_SEQ_PORT_CAP_WRITE
            | SND_SEQ_PORT_CAP_SUBS_WRITE;
        QCOMPARE(snd_seq_port_info_get_capability(info) & (both | SND_SEQ_PORT_CAP_NO_EXPORT), both);
        QCOMPARE(snd_seq_port_info_get_type(info),
            SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_SOFTWARE | SND_SEQ_PORT_TYPE_APPLICATION);

        // Our own ports are never offered as system ports, under any name.
        QTRY_VERIFY_WITH_TIMEOUT(registry.GetSystemMIDIInputNames().contains(QStringLiteral("Test DAW:Sequencer")), TIMEOUT);
        for (const QStringList& names : {registry.GetSystemMIDIInputNames(), registry.GetSystemMIDIOutputNames()})
        {
            QVERIFY(names.filter(QStringLiteral("Tessera")).isEmpty());
        }

        cMIDIInput* fromDAW = registry.GetMIDIInput(QStringLiteral("Tessera DAW"));
        QObject receiver;
        connect(fromDAW, &cMIDIInput::MIDIReadReady, &receiver, [] {});
        daw.Send(dawPort, ours, LongSystemExclusive() + Hex("903C7F3E7F4000B007640A40"));
        const QByteArray expected = LongSystemExclusive() + Hex("903C7F903E7F904000B00764B00A40");
        QCOMPARE(ReadAtLeast(fromDAW, expected.size()), expected);

        // While the event loop is busy elsewhere, MIDI waits in the kernel.
        // What overflows the input pool is lost with all that waited, and
        // said once; what comes after is read again.
        const QStringList overrun = ErrorLinesOf([&] {
            for (int count = 0; count < 2500; ++count)
            {
                daw.Send(dawPort, ours, Hex("B00764"));
            }
            QTest::qWait(100);
        });
        QCOMPARE(overrun, QStringList(ErrorFrom("Common/MIDI/ALSA/SequencerALSA.cpp",
            QStringLiteral("ALSA sequencer input overrun: MIDI and port announcements that arrived while the "
                           "program was busy were lost"))));
        daw.Send(dawPort, ours, Hex("903C7F"));
        QCOMPARE(ReadAtLeast(fromDAW, 3), Hex("903C7F"));

        QVERIFY(daw.ConnectFrom(dawPort, ours));
        QByteArray bytes = Hex("E00040E07F7F") + LongSystemExclusive();
        registry.GetMIDIOutput(QStringLiteral("Tessera DAW"))->WriteMIDIData(bytes);
        QCOMPARE(daw.Receive(1006), Hex("E00040E07F7F") + LongSystemExclusive());
    }

    void MixerAndDAWTalkThroughTheRules()
    {
        cSequencerPeerALSA mixer("Test Mixer");
        cSequencerPeerALSA daw("Test DAW");
        const int console = mixer.CreatePort("Console");
        const int sequencer = daw.CreatePort("Sequencer");
        cMIDITranslatorConfiguration configuration(new cSystemMIDIConfigurationALSA);
        configuration.LoadFromFile(TestDataFile("alsa/translation.json"));
        const snd_seq_addr_t ours = daw.FindPort("Tessera", "Tessera DAW");
        QVERIFY(daw.ConnectFrom(sequencer, ours));

        mixer.Send(console, cSequencerPeerALSA::SUBSCRIBERS, Hex("B207640722"));
        QCOMPARE(daw.Receive(6).toHex(' '), QByteArray("e2 04 64 e2 02 22"));
        daw.Send(sequencer, ours, Hex("923C7F913C7F"));
        QCOMPARE(mixer.Receive(3).toHex(' '), QByteArray("b2 3c 7f"));
    }

    // The shipped Tx-16 Mackie Control file over the real sequencer, a client
    // playing the DAW on both of its ports: the device query and the host
    // connection reply are answered on the port that asked.
    void MackieControlHandshake()
    {
        cMIDITranslatorConfiguration configuration(new cSystemMIDIConfigurationALSA);
        configuration.LoadFromFile(cFileLocations::GetConfigurationFileDirectory() + "tx16_mackie_control.json");
        cSequencerPeerALSA daw("Test DAW");
        for (const char* device : {"14", "15"})
        {
            const char* unit = device == QLatin1String("14") ? "Tessera Mackie Control" : "Tessera Mackie Control XT";
            const QByteArray header = QByteArray("F0000066") + device;
            const int port = daw.CreatePort(unit);
            const snd_seq_addr_t ours = daw.FindPort("Tessera", unit);
            QVERIFY(daw.ConnectFrom(port, ours));

            daw.Send(port, ours, QByteArray::fromHex(header + "00F7"));
            const QByteArray query = daw.Receive(18);
            QCOMPARE(query.size(), 18);
            QCOMPARE(query.left(6), QByteArray::fromHex(header + "01"));
            daw.Send(port, ours, QByteArray::fromHex(header + "02") + query.mid(6, 7) + Hex("7F00356AF7"));
            const QByteArray confirmation = QByteArray::fromHex(header + "03") + query.mid(6, 7) + Hex("F7");
            QCOMPARE(daw.Receive(14).toHex(' '), confirmation.toHex(' '));
        }
    }
};

QTEST_GUILESS_MAIN(tAlsaPorts)
#include "test_alsa_ports.moc"
