#ifndef MIDIOUTPUTALSA_H
#define MIDIOUTPUTALSA_H

#include "Common/MIDI/MIDIOutput.h"
#include "Common/MIDI/SequencerPortALSA.h"

// Another client's port opened for writing: events go from a hidden port of
// ours straight to it, without a subscription the user would see.
class cMIDIOutputALSA : public cMIDIOutput
{
public:
    explicit cMIDIOutputALSA(sPortAddressALSA destination);

    void WriteMIDIData(QByteArray& data) override;

private:
    sPortAddressALSA destination;
    cSequencerPortALSA port;
};

#endif
