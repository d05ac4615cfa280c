#ifndef MIDIOUTPUT_H
#define MIDIOUTPUT_H

#include <QByteArray>

// A destination for MIDI bytes; callers pass whole messages.
class cMIDIOutput
{
public:
    virtual ~cMIDIOutput() = default;
    virtual void WriteMIDIData(QByteArray& data) = 0;
};

#endif
