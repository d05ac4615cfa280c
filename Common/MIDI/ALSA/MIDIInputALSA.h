#ifndef MIDIINPUTALSA_H
#define MIDIINPUTALSA_H

#include "Common/MIDI/ALSA/ReceivingPortALSA.h"
#include "Common/MIDI/ALSA/SequencerPortALSA.h"
#include "Common/MIDI/MIDIInput.h"

// Another client's port opened for reading: a hidden port of ours subscribed
// to it. The subscription ends when either port goes.
class cMIDIInputALSA : public cReceivingPortALSA<cMIDIInput>
{
    Q_OBJECT
public:
    cMIDIInputALSA(sPortAddressALSA source, QObject* parent = nullptr);

private:
    cSequencerPortALSA port;
};

#endif
