#ifndef RECEIVINGPORTALSA_H
#define RECEIVINGPORTALSA_H

#include "Common/MIDI/ALSA/SequencerALSA.h"
#include "Common/MIDI/BufferedMIDIInput.h"

// The receiving side shared by every ALSA port class of ours (Base is
// cMIDIInput or a subclass): what the sequencer's reader thread delivers for
// the port goes to its buffer.
template <class Base>
class cReceivingPortALSA : public cBufferedMIDIInput<Base>, public cSequencerReceiverALSA
{
public:
    using cBufferedMIDIInput<Base>::cBufferedMIDIInput;

    void MIDIDataReceived(const QByteArray& bytes) override
    {
        this->BufferMIDIData(bytes);
    }
};

#endif
