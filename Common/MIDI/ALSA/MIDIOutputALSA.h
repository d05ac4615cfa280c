#ifndef MIDIOUTPUTALSA_H
#define MIDIOUTPUTALSA_H

#include "Common/MIDI/ALSA/SequencerPortALSA.h"
#include "Common/MIDI/MIDIOutput.h"

// Another client's port opened for writing: a hidden port of ours subscribed
// to it, sending to that subscription. The kernel's MIDI device clients (the
// bridge behind USB and DIN interfaces, snd-virmidi) open their device when a
// sender subscribes and ignore events from one that has not. The subscription
// ends when either port goes; a replugged device is opened afresh by name.
class cMIDIOutputALSA : public cMIDIOutput
{
public:
    cMIDIOutputALSA(const QString& name, sPortAddressALSA address);

    void WriteMIDIData(QByteArray& data) override;

private:
    QString name;
    cSequencerPortALSA port;
    // Where events go: our subscribers, or, if the port would not take a
    // subscription (an exclusive port already taken), its address, which a
    // program's port may still accept.
    sPortAddressALSA destination;
};

#endif
