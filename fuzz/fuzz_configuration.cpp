// Loads an arbitrary rule file into a configuration over in-memory ports, then
// lets arbitrary MIDI bytes arrive on every port that a matcher listens on,
// in two reads so that messages are cut between them. Then the mixer's input
// moves, a variable changes, and the same bytes arrive again.

#include "Common/MIDI/Memory/MIDIInputOutputMemory.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "fuzz/RuleFileFuzzing.h"

#include <cstdint>

namespace
{
// Every real port a rule listens on, plugged in where the file did not create
// it, so that each matcher is bound.
QList<cMIDIInputOutputMemory*> PlugInIncomingPorts(const cMIDITranslatorConfiguration& configuration,
                                                   cSystemMIDIConfigurationMemory& registry)
{
    QList<cMIDIInputOutputMemory*> ports;
    for (const QString& name : configuration.GetIncomingPortNames())
    {
        ports.append(registry.GetOrAddMemoryInputOutput(name));
    }
    return ports;
}

void Deliver(const QList<cMIDIInputOutputMemory*>& ports, const QByteArray& bytes)
{
    const int half = bytes.size() / 2;
    for (cMIDIInputOutputMemory* port : ports)
    {
        port->ReceiveMIDIData(bytes.left(half));
        port->ReceiveMIDIData(bytes.mid(half));
        port->TakeWrittenData();
    }
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const sRuleFileFuzzInput input = SplitRuleFileFuzzInput(data, size);
    if (input.path.isEmpty())
    {
        return 0;
    }
    const QByteArray& bytes = input.midi;

    auto* registry = new cSystemMIDIConfigurationMemory;
    cMIDITranslatorConfiguration configuration(registry);
    configuration.LoadFromFile(input.path);
    QList<cMIDIInputOutputMemory*> ports = PlugInIncomingPorts(configuration, *registry);
    Deliver(ports, bytes);

    // Both rebuild the matchers while the ports keep their partial state.
    const QString mixer = configuration.GetMixerInputPortName();
    configuration.SetMixerInputPortName(mixer + QLatin1Char('\''));
    configuration.SetMixerInputPortName(mixer);
    if (!configuration.GetMIDITranslatorVariables().isEmpty() && !bytes.isEmpty())
    {
        const cMIDITranslatorVariable& variable = configuration.GetMIDITranslatorVariables().first();
        configuration.SetVariableValue(variable.GetVariableName(), static_cast<unsigned char>(bytes.at(0)));
    }
    Deliver(ports, bytes);

    // What a first file left behind must not disturb the next one.
    configuration.LoadFromFile(input.path);
    Deliver(PlugInIncomingPorts(configuration, *registry), bytes);
    return 0;
}
