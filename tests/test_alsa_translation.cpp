// A whole translation over the sequencer: a peer client plays the mixer on a
// system port, another the DAW on the program's virtual port, and a real rule
// file sits between them. Needs /dev/snd/seq.

#include "Common/MIDI/SystemMIDIConfigurationALSA.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tests/support/SequencerPeerALSA.h"

#include <QtTest>

class tAlsaTranslation : public QObject
{
    Q_OBJECT

private slots:
    void MixerAndDAWTalkThroughTheRules()
    {
        cSequencerPeerALSA mixer("Test Mixer");
        cSequencerPeerALSA daw("Test DAW");
        QVERIFY(mixer.IsOpen() && daw.IsOpen());
        const int console = mixer.CreatePort("Console");
        const int sequencer = daw.CreatePort("Sequencer");

        cMIDITranslatorConfiguration configuration(new cSystemMIDIConfigurationALSA);
        configuration.LoadFromFile(QStringLiteral(TESSERA_TEST_DATA_DIR "/alsa/translation.json"));
        snd_seq_port_info_t* info;
        snd_seq_port_info_alloca(&info);
        QVERIFY(daw.FindPort("Tessera", "Tessera DAW", info));
        const int ourClient = snd_seq_port_info_get_client(info);
        const int ourPort = snd_seq_port_info_get_port(info);
        QVERIFY(daw.ConnectFrom(sequencer, ourClient, ourPort));

        mixer.Send(console, SND_SEQ_ADDRESS_SUBSCRIBERS, SND_SEQ_ADDRESS_UNKNOWN, QByteArray::fromHex("B207640722"));
        QCOMPARE(daw.Receive(6).toHex(' '), QByteArray("e2 04 64 e2 02 22"));

        daw.Send(sequencer, ourClient, ourPort, QByteArray::fromHex("923C7F913C7F"));
        QCOMPARE(mixer.Receive(3).toHex(' '), QByteArray("b2 3c 7f"));
    }
};

QTEST_GUILESS_MAIN(tAlsaTranslation)
#include "test_alsa_translation.moc"
