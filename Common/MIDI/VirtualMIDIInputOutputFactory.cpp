#include "Common/MIDI/VirtualMIDIInputOutputFactory.h"

#include "Common/MIDI/VirtualMIDIInputOutputALSA.h"

cMIDIInputOutput* cVirtualMIDIInputOutputFactory::CreateVirtualMIDIInputOutput(QString name, QObject* parent)
{
    return new cVirtualMIDIInputOutputALSA(name, parent);
}
