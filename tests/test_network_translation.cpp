// The translator with the mixer on the TCP link: mixer-sim plays the mixer,
// an in-memory port the DAW.

#include "Network/TCPMIDIInptOutput.h"
#include "support/MixerSimProcess.h"
#include "support/TranslatorFixture.h"

#include <QSignalSpy>
#include <QTest>

namespace
{
const QString SIM_ADDRESS = QStringLiteral("127.0.0.31");
}

class TestNetworkTranslation : public QObject
{
    Q_OBJECT
private slots:
    void TranslatesBothWaysOverTheLink()
    {
        cMixerSimProcess sim({QStringLiteral("--address"), SIM_ADDRESS});
        QVERIFY(sim.IsListening());

        // The link outlives the configuration it is registered with.
        cTCPMIDIInptOutput link;
        cTranslatorFixture fixture;
        cMIDITranslatorConfiguration& configuration = fixture.configuration;
        configuration.LoadFromFile(QStringLiteral(TESSERA_TEST_DATA_DIR "/network/tcp_translator.json"));
        configuration.SetTCPMIDIInputOutput(&link);
        cMIDIInputOutputMemory* daw = fixture.Port(QStringLiteral("Tessera DAW"));
        QVERIFY(daw);
        QSignalSpy dawWrites(daw, &cMIDIInputOutputMemory::MIDIWritten);
        QSignalSpy mixerWrites(&configuration, &cMIDITranslatorConfiguration::MixerMIDIOutputWrite);

        link.ConnectToHost(QHostAddress(SIM_ADDRESS));
        QVERIFY(sim.WaitForLine(QStringLiteral("^connected ")));
        QTRY_VERIFY(link.IsConnected());

        // Channel 3 is the rule file's default; "0v" is the low nibble of v. A
        // message cut in two by the network, running status and a message for
        // another channel among them.
        sim.Input(QStringLiteral("B2 07 64"));
        sim.Input(QStringLiteral("B2 07"));
        sim.Input(QStringLiteral("7F 07 11"));
        sim.Input(QStringLiteral("B0 07 22 F8"));
        QTRY_COMPARE(dawWrites.count(), 3);
        QTest::qWait(100);
        QCOMPARE(HexWrites(daw->TakeWrittenData()), QStringList({"E2 04 64", "E2 0F 7F", "E2 01 11"}));

        daw->ReceiveMIDIData(QByteArray::fromHex("92 10 7F 92 11 00"));
        QVERIFY(sim.WaitForLine(QStringLiteral(" in  B2 10 7F$")));
        QVERIFY(sim.WaitForLine(QStringLiteral(" in  B2 11 00$")));
        QCOMPARE(mixerWrites.count(), 2);

        // The mixer drops the connection: what the DAW sends meanwhile is lost,
        // and after reconnecting both ways work again.
        sim.Input(QStringLiteral("close"));
        QTRY_VERIFY(!link.IsConnected());
        daw->ReceiveMIDIData(QByteArray::fromHex("92 12 01"));
        QTest::qWait(50);
        link.ConnectToHost(QHostAddress(SIM_ADDRESS));
        QVERIFY(sim.WaitForLine(QStringLiteral("^connected ")));
        QTRY_VERIFY(link.IsConnected());
        daw->ReceiveMIDIData(QByteArray::fromHex("92 13 02"));
        QVERIFY(sim.WaitForLine(QStringLiteral(" in  B2 13 02$")));
        sim.Input(QStringLiteral("B2 07 30"));
        QTRY_COMPARE(dawWrites.count(), 4);
        QCOMPARE(HexWrites(daw->TakeWrittenData()), QStringList({"E2 00 30"}));
        QVERIFY(sim.Lines().filter(QStringLiteral("B2 12 01")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestNetworkTranslation)
#include "test_network_translation.moc"
