// The TCP MIDI link against mixer-sim on a loopback address of its own.

#include "Network/TCPMIDIInptOutput.h"

#include "support/MixerSimProcess.h"
#include "support/TestHelpers.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <csignal>

namespace
{
const QString SIM_ADDRESS = QStringLiteral("127.0.0.21");

// Waits until the link has said text, the last thing said so far.
bool WaitForLastText(QSignalSpy& spy, const QString& text)
{
    return QTest::qWaitFor([&]() { return !spy.isEmpty() && spy.last().at(0).toString() == text; }, 5000);
}

// Connects the link to the simulated mixer and waits until both ends see it.
bool ConnectTo(cMixerSimProcess& sim, cTCPMIDIInptOutput& link, QSignalSpy& texts)
{
    link.ConnectToHost(QHostAddress(SIM_ADDRESS));
    return sim.WaitForLine(QStringLiteral("^connected ")) && WaitForLastText(texts, QStringLiteral("Connected"));
}

QByteArray ReadWhenReady(cTCPMIDIInptOutput& link, QSignalSpy& readReady)
{
    QByteArray data;
    if (readReady.wait(5000) || !readReady.isEmpty())
    {
        link.ReadMIDIData(data);
    }
    readReady.clear();
    return data;
}
}

class TestTCPLink : public QObject
{
    Q_OBJECT
private slots:
    void ConnectExchangePeerCloseAndReconnect()
    {
        cMixerSimProcess sim({QStringLiteral("--address"), SIM_ADDRESS});
        QVERIFY(sim.IsListening());

        cTCPMIDIInptOutput link;
        QSignalSpy texts(&link, &cTCPMIDIInptOutput::StateStringChanged);
        QSignalSpy readReady(&link, &cMIDIInput::MIDIReadReady);

        link.ConnectToHost(QHostAddress(SIM_ADDRESS));
        // A rule firing now must not end the attempt.
        QByteArray duringHandshake("\x90\x3C\x01", 3);
        link.WriteMIDIData(duringHandshake);
        QVERIFY(WaitForLastText(texts, QStringLiteral("Connected")));
        QCOMPARE(FirstArguments(texts), QStringList({"Not Connected", "Looking up host", "Connecting...", "Connected"}));
        QVERIFY(link.IsConnected());

        QByteArray toMixer("\xB0\x07\x7F\x90\x3C\x64", 6);
        link.WriteMIDIData(toMixer);
        QVERIFY(sim.WaitForLine(QStringLiteral(" in  B0 07 7F$")));
        QVERIFY(sim.WaitForLine(QStringLiteral(" in  90 3C 64$")));

        sim.Input(QStringLiteral("F0 43 10 3E 7F F7"));
        QCOMPARE(ReadWhenReady(link, readReady), QByteArray("\xF0\x43\x10\x3E\x7F\xF7", 6));

        // The mixer goes away in the middle of a message: what came is delivered,
        // and the link says so once and stays down.
        texts.clear();
        sim.Input(QStringLiteral("90 3C"));
        QCOMPARE(ReadWhenReady(link, readReady), QByteArray("\x90\x3C", 2));
        sim.Input(QStringLiteral("close"));
        QVERIFY(WaitForLastText(texts, QStringLiteral("Not Connected")));
        QCOMPARE(FirstArguments(texts), QStringList({"Closing...", "Not Connected"}));
        QVERIFY(!link.IsConnected());
        QByteArray lost("\x80\x3C\x00", 3);
        link.WriteMIDIData(lost);

        QVERIFY(ConnectTo(sim, link, texts));
        QByteArray afterReconnect("\xC0\x05", 2);
        link.WriteMIDIData(afterReconnect);
        QVERIFY(sim.WaitForLine(QStringLiteral(" in  C0 05$")));
        // Neither what was written while connecting nor while down was sent.
        QVERIFY(sim.Lines().filter(QRegularExpression(QStringLiteral(" in  (90 3C 01|80 3C 00)$"))).isEmpty());
        sim.Input(QStringLiteral("B0 07 10"));
        QCOMPARE(ReadWhenReady(link, readReady), QByteArray("\xB0\x07\x10", 3));

        texts.clear();
        link.DisconnectFromHost();
        QCOMPARE(FirstArguments(texts).last(), QStringLiteral("Not Connected"));
        QVERIFY(sim.WaitForLine(QStringLiteral("^disconnected$")));
        QVERIFY(sim.Stop());
    }

    void BurstIsReadInBoundedSteps()
    {
        cMixerSimProcess sim({QStringLiteral("--address"), SIM_ADDRESS});
        QVERIFY(sim.IsListening());
        cTCPMIDIInptOutput link;
        QSignalSpy texts(&link, &cTCPMIDIInptOutput::StateStringChanged);
        QSignalSpy readReady(&link, &cMIDIInput::MIDIReadReady);
        QVERIFY(ConnectTo(sim, link, texts));

        // 1000 Control Changes: B0 cc vv with cc and vv counting through 0..127.
        QByteArray burst;
        for (int i = 0; i < 1000; ++i)
        {
            burst.append('\xB0').append(char(i % 128)).append(char((i * 7) % 128));
        }
        sim.Input(QString::fromLatin1(burst.toHex()));
        QCOMPARE(ReadWhenReady(link, readReady), burst.left(1024));
        // The rest waits in the socket until more bytes arrive.
        QVERIFY(!readReady.wait(300));
        QByteArray nothing("x");
        link.ReadMIDIData(nothing);
        QVERIFY(nothing.isEmpty());

        sim.Input(QStringLiteral("F8"));
        QCOMPARE(ReadWhenReady(link, readReady), burst.mid(1024, 1024));
        sim.Input(QStringLiteral("FE"));
        QCOMPARE(ReadWhenReady(link, readReady), burst.mid(2048) + QByteArray("\xF8\xFE", 2));
    }

    // More than the system takes at once, written while the mixer does not
    // read: the rest waits in the link, and what is written after the mixer
    // has made room still follows it, whole and in order.
    void WritesWaitForRoomInOrder()
    {
        QTcpServer mixer;
        QVERIFY(mixer.listen(QHostAddress(SIM_ADDRESS), cTCPMIDIInptOutput::MIXER_MIDI_PORT));
        cTCPMIDIInptOutput link;
        QSignalSpy texts(&link, &cTCPMIDIInptOutput::StateStringChanged);
        link.ConnectToHost(QHostAddress(SIM_ADDRESS));
        QVERIFY(WaitForLastText(texts, QStringLiteral("Connected")));
        QTcpSocket* peer = mixer.nextPendingConnection();
        QVERIFY(peer);

        QByteArray written;
        QByteArray received;
        for (int write = 0; write < 256; ++write)
        {
            QByteArray bytes(64 * 1024, Qt::Uninitialized);
            for (int index = 0; index < bytes.size(); ++index)
            {
                bytes[index] = char((write * 7 + index) % 251);
            }
            link.WriteMIDIData(bytes);
            written += bytes;
            if (write == 127)
            {
                // Reading without the event loop: the link cannot send what waits in it.
                QVERIFY(peer->waitForReadyRead(5000));
                received += peer->readAll();
            }
        }
        QVERIFY(QTest::qWaitFor([&] {
            received += peer->readAll();
            return received.size() >= written.size();
        }, 20000));
        QVERIFY(received == written);
    }

    void ConnectTwiceAnnouncesTeardownFirst()
    {
        cMixerSimProcess sim({QStringLiteral("--address"), SIM_ADDRESS});
        QVERIFY(sim.IsListening());
        cTCPMIDIInptOutput link;
        QSignalSpy texts(&link, &cTCPMIDIInptOutput::StateStringChanged);
        link.ConnectToHost(QHostAddress(SIM_ADDRESS));
        link.ConnectToHost(QHostAddress(SIM_ADDRESS));
        QVERIFY(WaitForLastText(texts, QStringLiteral("Connected")));
        QCOMPARE(FirstArguments(texts), QStringList({"Not Connected", "Looking up host", "Connecting...", "Not Connected",
                                            "Looking up host", "Connecting...", "Connected"}));

        QByteArray bytes("\xB0\x01\x02", 3);
        link.WriteMIDIData(bytes);
        QVERIFY(sim.WaitForLine(QStringLiteral(" in  B0 01 02$")));
    }

    // mixer-sim greets and echoes when asked to, and leaves normally on a
    // signal even with a peer connected; the link sees the mixer go.
    void MixerGreetsEchoesAndStopsOnASignal()
    {
        cMixerSimProcess sim({QStringLiteral("--address"), SIM_ADDRESS, QStringLiteral("--echo"), QStringLiteral("--send"),
                              TestDataFile("network/greeting.hex")});
        QVERIFY(sim.IsListening());
        cTCPMIDIInptOutput link;
        QSignalSpy texts(&link, &cTCPMIDIInptOutput::StateStringChanged);
        QSignalSpy readReady(&link, &cMIDIInput::MIDIReadReady);
        link.ConnectToHost(QHostAddress(SIM_ADDRESS));
        QCOMPARE(ReadWhenReady(link, readReady), QByteArray("\xF0\x7E\x00\x06\x02\x43\xF7\xB0\x07\x7F", 10));
        QByteArray bytes("\x90\x40\x7F", 3);
        link.WriteMIDIData(bytes);
        QCOMPARE(ReadWhenReady(link, readReady), bytes);

        QCOMPARE(::kill(pid_t(sim.Process().processId()), SIGTERM), 0);
        QVERIFY(sim.Process().waitForFinished(5000));
        QCOMPARE(sim.Process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(sim.Process().exitCode(), 0);
        QVERIFY(WaitForLastText(texts, QStringLiteral("Not Connected")));
    }
};

QTEST_GUILESS_MAIN(TestTCPLink)
#include "test_tcplink.moc"
