#include "Common/MIDI/SystemMIDIConfiguration.h"

#include "Application/DebugTrace.h"
#include "Common/MIDI/MIDIInputOutput.h"

cSystemMIDIConfiguration::cSystemMIDIConfiguration(QObject* parent) : QObject(parent) {}

// Virtual ports are children of the registry and go with it.
cSystemMIDIConfiguration::~cSystemMIDIConfiguration() = default;

void cSystemMIDIConfiguration::CreateVirtualInputOutput(QString name)
{
    if (virtualInputOutputs.contains(name))
    {
        DebugErrTrace(DEBUG_LOCATION, "Virtual MIDI Input Output \"%s\" already created", name.toLocal8Bit().constData());
        return;
    }
    cMIDIInputOutput* port = retiredVirtualInputOutputs.take(name);
    virtualInputOutputs.insert(name, port ? port : NewVirtualInputOutput(name));
}

void cSystemMIDIConfiguration::DestroyVirtualInputOutput(QString name)
{
    if (cMIDIInputOutput* port = virtualInputOutputs.take(name))
    {
        retiredVirtualInputOutputs.insert(name, port);
    }
}

void cSystemMIDIConfiguration::AddInternalInputOutput(QString name, cMIDIInputOutput* port)
{
    internalInputOutputs.insert(name, port);
    emit InputAddedSignal(name);
    emit OutputAddedSignal(name);
}

void cSystemMIDIConfiguration::RemoveInternalInputOutput(QString name)
{
    if (internalInputOutputs.remove(name) == 0)
    {
        return;
    }
    emit InputRemovedSignal(name);
    emit OutputRemovedSignal(name);
}

cMIDIInput* cSystemMIDIConfiguration::GetMIDIInput(QString name)
{
    if (cMIDIInputOutput* port = virtualInputOutputs.value(name))
    {
        return port;
    }
    return internalInputOutputs.value(name);
}

cMIDIOutput* cSystemMIDIConfiguration::GetMIDIOutput(QString name)
{
    if (cMIDIInputOutput* port = virtualInputOutputs.value(name))
    {
        return port;
    }
    return internalInputOutputs.value(name);
}

QStringList cSystemMIDIConfiguration::GetVirtualInputOutputNames() const
{
    return virtualInputOutputs.keys() + internalInputOutputs.keys();
}

bool cSystemMIDIConfiguration::HasSystemMIDI() const
{
    return true;
}

QStringList cSystemMIDIConfiguration::WithoutOwnNames(QStringList names) const
{
    for (const QString& own : GetVirtualInputOutputNames())
    {
        names.removeAll(own);
    }
    return names;
}
