#include "Common/MIDI/SystemMIDIConfigurationALSA.h"

#include "Application/DebugTrace.h"
#include "Common/MIDI/MIDIInputALSA.h"
#include "Common/MIDI/MIDIOutputALSA.h"
#include "Common/MIDI/VirtualMIDIInputOutputFactory.h"

namespace
{
template <typename Identifier>
int IndexOfAddress(const QList<Identifier>& identifiers, sPortAddressALSA address)
{
    for (int index = 0; index < identifiers.size(); ++index)
    {
        if (identifiers.at(index).address == address)
        {
            return index;
        }
    }
    return -1;
}

template <typename Identifier>
int IndexOfName(const QList<Identifier>& identifiers, const QString& name)
{
    for (int index = 0; index < identifiers.size(); ++index)
    {
        if (identifiers.at(index).name == name)
        {
            return index;
        }
    }
    return -1;
}

template <typename Identifier>
QStringList NamesOf(const QList<Identifier>& identifiers)
{
    QStringList names;
    for (const Identifier& identifier : identifiers)
    {
        names.append(identifier.name);
    }
    return names;
}
}

cSystemMIDIConfigurationALSA::cSystemMIDIConfigurationALSA(QObject* parent)
    : cSystemMIDIConfiguration(parent), sequencer(cSequencerALSA::Shared())
{
    // The sequencer is already subscribed to announcements, so a port that
    // appears while we enumerate is announced too; the handlers skip ports
    // they already know.
    connect(sequencer.get(), &cSequencerALSA::PortStarted, this, &cSystemMIDIConfigurationALSA::PortStarted);
    connect(sequencer.get(), &cSequencerALSA::PortExited, this, &cSystemMIDIConfigurationALSA::PortExited);
    connect(sequencer.get(), &cSequencerALSA::PortChanged, this, &cSystemMIDIConfigurationALSA::PortChanged);
    const QList<sPortInfoALSA> ports = sequencer->GetPorts();
    for (const sPortInfoALSA& port : ports)
    {
        if (port.readable)
        {
            InputAdded(port);
        }
    }
    for (const sPortInfoALSA& port : ports)
    {
        if (port.writable)
        {
            OutputAdded(port);
        }
    }
}

// Opened inputs and the virtual ports go with their QObject parent; each
// holds the sequencer until it has closed its own port.
cSystemMIDIConfigurationALSA::~cSystemMIDIConfigurationALSA()
{
    for (const sMIDIOutputIdentifier& identifier : outputIdentifiers)
    {
        delete identifier.output;
    }
}

int cSystemMIDIConfigurationALSA::GetNumberOfInputs() const
{
    return inputIdentifiers.size();
}

QString cSystemMIDIConfigurationALSA::GetNameOfInput(int index) const
{
    if (index < 0 || index >= inputIdentifiers.size())
    {
        DebugErrTrace(DEBUG_LOCATION, "Source index %d out of range", index);
        return QString();
    }
    return inputIdentifiers.at(index).name;
}

cMIDIInput* cSystemMIDIConfigurationALSA::GetMIDIInput(QString name)
{
    if (cMIDIInput* port = cSystemMIDIConfiguration::GetMIDIInput(name))
    {
        return port;
    }
    int index = IndexOfName(inputIdentifiers, name);
    if (index < 0)
    {
        return nullptr;
    }
    sMIDIInputIdentifier& identifier = inputIdentifiers[index];
    if (!identifier.input)
    {
        identifier.input = new cMIDIInputALSA(identifier.address, this);
    }
    return identifier.input;
}

QStringList cSystemMIDIConfigurationALSA::GetSystemMIDIInputNames() const
{
    return WithoutOwnNames(NamesOf(inputIdentifiers));
}

int cSystemMIDIConfigurationALSA::GetNumberOfOutputs() const
{
    return outputIdentifiers.size();
}

QString cSystemMIDIConfigurationALSA::GetNameOfOutput(int index) const
{
    if (index < 0 || index >= outputIdentifiers.size())
    {
        DebugErrTrace(DEBUG_LOCATION, "Destination index %d out of range", index);
        return QString();
    }
    return outputIdentifiers.at(index).name;
}

cMIDIOutput* cSystemMIDIConfigurationALSA::GetMIDIOutput(QString name)
{
    if (cMIDIOutput* port = cSystemMIDIConfiguration::GetMIDIOutput(name))
    {
        return port;
    }
    int index = IndexOfName(outputIdentifiers, name);
    if (index < 0)
    {
        return nullptr;
    }
    sMIDIOutputIdentifier& identifier = outputIdentifiers[index];
    if (!identifier.output)
    {
        identifier.output = new cMIDIOutputALSA(identifier.address);
    }
    return identifier.output;
}

QStringList cSystemMIDIConfigurationALSA::GetSystemMIDIOutputNames() const
{
    return WithoutOwnNames(NamesOf(outputIdentifiers));
}

cMIDIInputOutput* cSystemMIDIConfigurationALSA::NewVirtualInputOutput(const QString& name)
{
    return cVirtualMIDIInputOutputFactory::CreateVirtualMIDIInputOutput(name, this);
}

void cSystemMIDIConfigurationALSA::PortStarted(sPortAddressALSA address)
{
    sPortInfoALSA port;
    if (!sequencer->GetPort(address, port))
    {
        // Gone again before we got to it, or not a MIDI port for users.
        return;
    }
    if (port.readable && IndexOfAddress(inputIdentifiers, address) < 0)
    {
        InputAdded(port);
    }
    if (port.writable && IndexOfAddress(outputIdentifiers, address) < 0)
    {
        OutputAdded(port);
    }
}

void cSystemMIDIConfigurationALSA::PortExited(sPortAddressALSA address)
{
    InputRemoved(address);
    OutputRemoved(address);
}

// A renamed port, or one whose capabilities changed, is offered afresh under
// what it is now; whoever had it open opens it again by name.
void cSystemMIDIConfigurationALSA::PortChanged(sPortAddressALSA address)
{
    PortExited(address);
    PortStarted(address);
}

void cSystemMIDIConfigurationALSA::InputAdded(const sPortInfoALSA& port)
{
    inputIdentifiers.append({port.name, port.address, nullptr});
    emit InputAddedSignal(port.name);
}

void cSystemMIDIConfigurationALSA::OutputAdded(const sPortInfoALSA& port)
{
    outputIdentifiers.append({port.name, port.address, nullptr});
    emit OutputAddedSignal(port.name);
}

// The sequencer announces the exit of every port, ours and those we never
// listed among them, so an unknown address is not an error here.
void cSystemMIDIConfigurationALSA::InputRemoved(sPortAddressALSA address)
{
    int index = IndexOfAddress(inputIdentifiers, address);
    if (index < 0)
    {
        return;
    }
    sMIDIInputIdentifier identifier = inputIdentifiers.takeAt(index);
    // Listeners let go of the port before it is deleted.
    emit InputRemovedSignal(identifier.name);
    delete identifier.input;
}

void cSystemMIDIConfigurationALSA::OutputRemoved(sPortAddressALSA address)
{
    int index = IndexOfAddress(outputIdentifiers, address);
    if (index < 0)
    {
        return;
    }
    sMIDIOutputIdentifier identifier = outputIdentifiers.takeAt(index);
    emit OutputRemovedSignal(identifier.name);
    delete identifier.output;
}

QStringList cSystemMIDIConfigurationALSA::WithoutOwnNames(QStringList names) const
{
    for (const QString& own : GetVirtualInputOutputNames())
    {
        names.removeAll(own);
    }
    return names;
}
