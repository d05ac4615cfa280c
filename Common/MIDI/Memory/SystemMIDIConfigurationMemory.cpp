#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"

#include "Common/MIDI/Memory/MIDIInputOutputMemory.h"

cSystemMIDIConfigurationMemory::cSystemMIDIConfigurationMemory(QObject* parent) : cSystemMIDIConfiguration(parent) {}

cMIDIInputOutputMemory* cSystemMIDIConfigurationMemory::AddSystemInputOutput(const QString& name)
{
    auto* port = new cMIDIInputOutputMemory(name, this);
    systemInputOutputs.append(port);
    emit InputAddedSignal(name);
    emit OutputAddedSignal(name);
    return port;
}

void cSystemMIDIConfigurationMemory::RemoveSystemInputOutput(const QString& name)
{
    cMIDIInputOutputMemory* port = FindSystemInputOutput(name);
    if (!port)
    {
        return;
    }
    systemInputOutputs.removeOne(port);
    emit InputRemovedSignal(name);
    emit OutputRemovedSignal(name);
    delete port;
}

cMIDIInputOutputMemory* cSystemMIDIConfigurationMemory::GetMemoryInputOutput(const QString& name)
{
    return qobject_cast<cMIDIInputOutputMemory*>(GetMIDIInput(name));
}

cMIDIInputOutputMemory* cSystemMIDIConfigurationMemory::GetOrAddMemoryInputOutput(const QString& name)
{
    cMIDIInputOutputMemory* port = GetMemoryInputOutput(name);
    return port ? port : AddSystemInputOutput(name);
}

int cSystemMIDIConfigurationMemory::GetNumberOfInputs() const
{
    return systemInputOutputs.size();
}

QString cSystemMIDIConfigurationMemory::GetNameOfInput(int index) const
{
    return index >= 0 && index < systemInputOutputs.size() ? systemInputOutputs.at(index)->GetName() : QString();
}

cMIDIInput* cSystemMIDIConfigurationMemory::GetMIDIInput(QString name)
{
    if (cMIDIInput* port = cSystemMIDIConfiguration::GetMIDIInput(name))
    {
        return port;
    }
    return FindSystemInputOutput(name);
}

QStringList cSystemMIDIConfigurationMemory::GetSystemMIDIInputNames() const
{
    return GetSystemNames();
}

int cSystemMIDIConfigurationMemory::GetNumberOfOutputs() const
{
    return GetNumberOfInputs();
}

QString cSystemMIDIConfigurationMemory::GetNameOfOutput(int index) const
{
    return GetNameOfInput(index);
}

cMIDIOutput* cSystemMIDIConfigurationMemory::GetMIDIOutput(QString name)
{
    if (cMIDIOutput* port = cSystemMIDIConfiguration::GetMIDIOutput(name))
    {
        return port;
    }
    return FindSystemInputOutput(name);
}

QStringList cSystemMIDIConfigurationMemory::GetSystemMIDIOutputNames() const
{
    return GetSystemNames();
}

cMIDIInputOutput* cSystemMIDIConfigurationMemory::NewVirtualInputOutput(const QString& name)
{
    return new cMIDIInputOutputMemory(name, this);
}

cMIDIInputOutputMemory* cSystemMIDIConfigurationMemory::FindSystemInputOutput(const QString& name) const
{
    for (cMIDIInputOutputMemory* port : systemInputOutputs)
    {
        if (port->GetName() == name)
        {
            return port;
        }
    }
    return nullptr;
}

QStringList cSystemMIDIConfigurationMemory::GetSystemNames() const
{
    QStringList names;
    for (const cMIDIInputOutputMemory* port : systemInputOutputs)
    {
        names.append(port->GetName());
    }
    return WithoutOwnNames(names);
}
