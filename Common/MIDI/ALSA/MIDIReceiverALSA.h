#ifndef MIDIRECEIVERALSA_H
#define MIDIRECEIVERALSA_H

#include "Common/MIDI/ALSA/SequencerALSA.h"
#include "Common/MIDI/BufferedMIDIInput.h"

// The receiving side shared by every ALSA port class (Base is cMIDIInput or a
// subclass): what the sequencer's reader thread delivers goes to the buffer.
template <class Base>
class cMIDIReceiverALSA : public cBufferedMIDIInput<Base>, public cSequencerReceiverALSA
{
public:
    using cBufferedMIDIInput<Base>::cBufferedMIDIInput;

    void MIDIDataReceived(const QByteArray& bytes) override
    {
        this->BufferMIDIData(bytes);
    }
};

#endif
