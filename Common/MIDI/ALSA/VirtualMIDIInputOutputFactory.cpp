#include "Common/MIDI/ALSA/VirtualMIDIInputOutputFactory.h"

#include "Common/MIDI/ALSA/VirtualMIDIInputOutputALSA.h"

cMIDIInputOutput* cVirtualMIDIInputOutputFactory::CreateVirtualMIDIInputOutput(QString name, QObject* parent)
{
    return new cVirtualMIDIInputOutputALSA(name, parent);
}
