// Two USB MIDI interfaces of one model as the mixer's ports, and one that
// another program holds. They are USB gadgets (the MIDI gadget function) on
// the kernel's dummy USB controllers, which its USB audio driver sees as two
// devices named alike, "Stage Box:Stage Box MIDI 1"; the console plays on the
// gadget's own raw MIDI device, the other end of the cable. Unplugging is
// taking a gadget off its controller. Needs root and the modules dummy_hcd,
// libcomposite, usb_f_midi and snd-usb-audio (the test VM has them).

#include "Common/MIDI/ALSA/MIDIOutputALSA.h"
#include "Common/MIDI/ALSA/SystemMIDIConfigurationALSA.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tests/support/SequencerPeerALSA.h"
#include "tests/support/TestHelpers.h"
#include "tests/support/VirtualRawMIDI.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QtTest>

#include <memory>

namespace
{
const int TIMEOUT = 20000;  // the test VM is slow
const QString INTERFACE = QStringLiteral("Stage Box:Stage Box MIDI 1");
const QString GADGETS = QStringLiteral("/sys/kernel/config/usb_gadget/");

bool WriteFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush();
}

// One interface: a gadget on dummy controller number, whose own sound card
// has the id "TestConsole<number>".
class cUSBInterface
{
public:
    explicit cUSBInterface(int number) : number(number), gadget(GADGETS + QStringLiteral("tessera%1/").arg(number))
    {
        const QString function = gadget + QStringLiteral("functions/midi.console");
        created = QDir().mkpath(gadget + QStringLiteral("strings/0x409")) && QDir().mkpath(function)
            && QDir().mkpath(gadget + QStringLiteral("configs/c.1"))
            && WriteFile(gadget + QStringLiteral("idVendor"), "0x1d6b")
            && WriteFile(gadget + QStringLiteral("idProduct"), "0x0104")
            && WriteFile(gadget + QStringLiteral("strings/0x409/manufacturer"), "Kestrel")
            && WriteFile(gadget + QStringLiteral("strings/0x409/product"), "Stage Box")
            && WriteFile(function + QStringLiteral("/id"), QStringLiteral("TestConsole%1").arg(number).toLatin1())
            && QFile::link(function, gadget + QStringLiteral("configs/c.1/midi.console"));
    }
    ~cUSBInterface()
    {
        Unplug();
        QFile::remove(gadget + QStringLiteral("configs/c.1/midi.console"));
        for (const char* directory : {"configs/c.1", "functions/midi.console", "strings/0x409", ""})
        {
            QDir().rmdir(gadget + QLatin1String(directory));
        }
    }

    bool IsCreated() const { return created; }
    bool Plug()
    {
        return WriteFile(gadget + QStringLiteral("UDC"), QStringLiteral("dummy_udc.%1").arg(number).toLatin1());
    }
    bool Unplug() { return WriteFile(gadget + QStringLiteral("UDC"), "\n"); }

    // The console's end of the cable.
    std::unique_ptr<sVirtualRawMIDI> Console() const
    {
        // Without the card's link, no device at all rather than card 0's.
        const QString card = QFile::symLinkTarget(QStringLiteral("/proc/asound/TestConsole%1").arg(number));
        return std::make_unique<sVirtualRawMIDI>(card.isEmpty() ? -1 : card.section(QStringLiteral("card"), -1).toInt(), 0);
    }

    // The computer's end: the raw device of the interface's sound card.
    QString ComputerDevice() const
    {
        const QRegularExpression card(QStringLiteral("^ *(\\d+) \\[[^\\n]*\\n[^\\n]*usb-dummy_hcd\\.%1-").arg(number),
            QRegularExpression::MultilineOption);
        const QString cards = QString::fromLatin1(ReadFile(QStringLiteral("/proc/asound/cards")));
        return QStringLiteral("/dev/snd/midiC%1D0").arg(card.match(cards).captured(1));
    }

private:
    int number;
    QString gadget;
    bool created = false;
};
}

class tAlsaUSBInterfaces : public QObject
{
    Q_OBJECT

    cSequencerPeerALSA daw{"Test DAW"};
    int sequencer = daw.IsOpen() ? daw.CreatePort("Sequencer") : -1;
    snd_seq_addr_t ours = {};
    std::unique_ptr<cUSBInterface> first;
    std::unique_ptr<cUSBInterface> second;
    std::unique_ptr<cMIDITranslatorConfiguration> configuration;
    cSystemMIDIConfiguration* registry = nullptr;

    bool InterfacesBecome(int count)
    {
        return QTest::qWaitFor([&] { return registry->GetSystemMIDIInputNames().count(INTERFACE) == count; }, TIMEOUT);
    }

    // A fader move from the console reaches the DAW, a select button from the
    // DAW the console.
    void TrafficGoesThrough(cUSBInterface& interface)
    {
        const std::unique_ptr<sVirtualRawMIDI> console = interface.Console();
        QVERIFY(console->descriptor >= 0);
        QVERIFY(console->Write(QByteArray::fromHex("B20764")));
        QCOMPARE(daw.Receive(3).toHex(' '), QByteArray("e2 04 64"));
        daw.Send(sequencer, ours, QByteArray::fromHex("923C7F"));
        QCOMPARE(console->Read(3).toHex(' '), QByteArray("b2 3c 7f"));
    }

private slots:
    void initTestCase()
    {
        if (!daw.IsOpen())
        {
            QSKIP("needs the ALSA sequencer");
        }
        QProcess::execute(QStringLiteral("modprobe"), {QStringLiteral("dummy_hcd"), QStringLiteral("num=2")});
        QProcess::execute(QStringLiteral("modprobe"), {QStringLiteral("-a"), QStringLiteral("libcomposite"),
            QStringLiteral("usb_f_midi"), QStringLiteral("snd-usb-audio"), QStringLiteral("snd-seq-midi")});
        if (!QFile::exists(QStringLiteral("/sys/class/udc/dummy_udc.1")) || !QDir(GADGETS).exists())
        {
            QSKIP("needs root, configfs on /sys/kernel/config, two dummy USB controllers (modprobe dummy_hcd num=2) "
                  "and the modules libcomposite, usb_f_midi and snd-usb-audio");
        }
        first = std::make_unique<cUSBInterface>(0);
        second = std::make_unique<cUSBInterface>(1);
        QVERIFY(first->IsCreated() && second->IsCreated());
        configuration = std::make_unique<cMIDITranslatorConfiguration>(new cSystemMIDIConfigurationALSA);
        registry = configuration->GetSystemMIDIConfiguration();
        configuration->LoadFromFile(TestDataFile("alsa/translation.json"));
        configuration->SetMixerInputPortName(INTERFACE);
        configuration->SetMixerOutputPortName(INTERFACE);
        ours = daw.FindPort("Tessera", "Tessera DAW");
        QVERIFY(daw.ConnectFrom(sequencer, ours));
    }

    void cleanupTestCase()
    {
        configuration.reset();
        first.reset();
        second.reset();
    }

    // Each interface goes on with its own traffic when the other of its name
    // is unplugged; the one whose interface went takes the other.
    void InterfacesOfOneNameKeepTheirTraffic()
    {
        QVERIFY(first->Plug() && InterfacesBecome(1));
        QVERIFY(second->Plug() && InterfacesBecome(2));
        TrafficGoesThrough(*first);

        QVERIFY(second->Unplug() && InterfacesBecome(1));
        TrafficGoesThrough(*first);

        QVERIFY(second->Plug() && InterfacesBecome(2));
        QVERIFY(first->Unplug() && InterfacesBecome(1));
        TrafficGoesThrough(*second);
        QVERIFY(second->Unplug() && InterfacesBecome(0));
    }

    // Another program holds the interface when it is first written to: the
    // refusal is said once, and the subscription made on a later write
    // carries the traffic, said once too.
    void RefusedSubscriptionIsTriedAgain()
    {
        QVERIFY(first->Plug() && InterfacesBecome(1));
        const std::unique_ptr<sVirtualRawMIDI> console = first->Console();
        QVERIFY(console->descriptor >= 0);
        QFile holder(first->ComputerDevice());
        QVERIFY2(holder.open(QIODevice::WriteOnly | QIODevice::Unbuffered), qPrintable(holder.fileName()));
        const QStringList refused = ErrorLinesOf([&] {
            for (int write = 0; write < 3; ++write)
            {
                daw.Send(sequencer, ours, QByteArray::fromHex("923C7F"));
                // Spread over more than a retry interval, so that a later write tries again.
                QCOMPARE(console->Read(3, cMIDIOutputALSA::SUBSCRIBE_RETRY_INTERVAL_MS * 6 / 10), QByteArray());
            }
        });
        QCOMPARE(refused, QStringList({ErrorFrom("Common/MIDI/ALSA/MIDIOutputALSA.cpp",
            "ALSA sequencer refused a subscription to \"" + INTERFACE
                + "\": Resource temporarily unavailable; tried again as MIDI is sent")}));

        holder.close();
        QTest::qWait(cMIDIOutputALSA::SUBSCRIBE_RETRY_INTERVAL_MS + 100);
        cStdoutCapture capture;
        daw.Send(sequencer, ours, QByteArray::fromHex("923C7F"));
        QCOMPARE(console->Read(3).toHex(' '), QByteArray("b2 3c 7f"));
        QCOMPARE(WithoutLineNumbers(capture.Lines()), QStringList({
            "ALSA sequencer took the subscription to \"" + INTERFACE
                + "\" now\t(Common/MIDI/ALSA/MIDIOutputALSA.cpp)"}));
        QVERIFY(first->Unplug() && InterfacesBecome(0));
    }
};

QTEST_GUILESS_MAIN(tAlsaUSBInterfaces)
#include "test_alsa_usb_interfaces.moc"
