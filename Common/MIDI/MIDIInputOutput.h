#ifndef MIDIINPUTOUTPUT_H
#define MIDIINPUTOUTPUT_H

#include "Common/MIDI/MIDIInput.h"
#include "Common/MIDI/MIDIOutput.h"

// Both directions under one name: a virtual port pair or the TCP link.
class cMIDIInputOutput : public cMIDIInput, public cMIDIOutput
{
    Q_OBJECT
public:
    explicit cMIDIInputOutput(QObject* parent = nullptr) : cMIDIInput(parent) {}
};

#endif
