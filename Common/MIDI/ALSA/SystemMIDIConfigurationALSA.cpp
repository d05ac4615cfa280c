#include "Common/MIDI/ALSA/SystemMIDIConfigurationALSA.h"

#include "Application/DebugTrace.h"
#include "Common/MIDI/ALSA/MIDIInputALSA.h"
#include "Common/MIDI/ALSA/MIDIOutputALSA.h"
#include "Common/MIDI/ALSA/VirtualMIDIInputOutputFactory.h"

// The input and output lists are handled alike, by these templates over the
// list's identifier type.
namespace
{
template <typename Identifier, typename Key, typename Field>
int IndexOf(const QList<Identifier>& identifiers, const Key& key, Field Identifier::*field)
{
    for (int index = 0; index < identifiers.size(); ++index)
    {
        if (identifiers.at(index).*field == key)
        {
            return index;
        }
    }
    return -1;
}

template <typename Identifier>
QString NameAt(const QList<Identifier>& identifiers, int index, const char* direction)
{
    if (index < 0 || index >= identifiers.size())
    {
        DebugErrTrace(DEBUG_LOCATION, "%s index %d out of range", direction, index);
        return QString();
    }
    return identifiers.at(index).name;
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

// The first port of that name, opened on first request and shared from then on.
template <typename Identifier, typename Open>
auto Opened(QList<Identifier>& identifiers, const QString& name, Open open) -> decltype(identifiers[0].port)
{
    int index = IndexOf(identifiers, name, &Identifier::name);
    if (index < 0)
    {
        return nullptr;
    }
    Identifier& identifier = identifiers[index];
    if (!identifier.port)
    {
        identifier.port = open(identifier.name, identifier.address);
    }
    return identifier.port;
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
    connect(sequencer.get(), &cSequencerALSA::ClientChanged, this, &cSystemMIDIConfigurationALSA::ClientChanged);
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
        delete identifier.port;
    }
}

int cSystemMIDIConfigurationALSA::GetNumberOfInputs() const
{
    return inputIdentifiers.size();
}

QString cSystemMIDIConfigurationALSA::GetNameOfInput(int index) const
{
    return NameAt(inputIdentifiers, index, "Source");
}

cMIDIInput* cSystemMIDIConfigurationALSA::GetMIDIInput(QString name)
{
    if (cMIDIInput* port = cSystemMIDIConfiguration::GetMIDIInput(name))
    {
        return port;
    }
    return Opened(inputIdentifiers, name,
        [this](const QString&, sPortAddressALSA address) { return new cMIDIInputALSA(address, this); });
}

QStringList cSystemMIDIConfigurationALSA::GetSystemMIDIInputNames() const
{
    return WithoutOwnNames(NamesOf(inputIdentifiers));
}

bool cSystemMIDIConfigurationALSA::HasSystemMIDI() const
{
    return sequencer->IsOpen();
}

int cSystemMIDIConfigurationALSA::GetNumberOfOutputs() const
{
    return outputIdentifiers.size();
}

QString cSystemMIDIConfigurationALSA::GetNameOfOutput(int index) const
{
    return NameAt(outputIdentifiers, index, "Destination");
}

cMIDIOutput* cSystemMIDIConfigurationALSA::GetMIDIOutput(QString name)
{
    if (cMIDIOutput* port = cSystemMIDIConfiguration::GetMIDIOutput(name))
    {
        return port;
    }
    return Opened(outputIdentifiers, name,
        [](const QString& opened, sPortAddressALSA address) { return new cMIDIOutputALSA(opened, address); });
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
    if (port.readable && IndexOf(inputIdentifiers, address, &sMIDIInputIdentifier::address) < 0)
    {
        InputAdded(port);
    }
    if (port.writable && IndexOf(outputIdentifiers, address, &sMIDIOutputIdentifier::address) < 0)
    {
        OutputAdded(port);
    }
}

void cSystemMIDIConfigurationALSA::PortExited(sPortAddressALSA address)
{
    InputRemoved(address);
    OutputRemoved(address);
}

// A port whose name or capabilities changed is offered afresh as what it is
// now; whoever had it open opens it again by name.
void cSystemMIDIConfigurationALSA::PortChanged(sPortAddressALSA address)
{
    PortExited(address);
    PortStarted(address);
}

// Our names carry the client's name, so a client that renames itself has
// renamed its ports: those are offered afresh under their new names. Ports
// whose name stands are left open.
void cSystemMIDIConfigurationALSA::ClientChanged(int client)
{
    QList<sPortAddressALSA> renamed;
    auto collect = [&](sPortAddressALSA address, const QString& name) {
        sPortInfoALSA port;
        if (address.client == client && !renamed.contains(address)
            && (!sequencer->GetPort(address, port) || port.name != name))
        {
            renamed.append(address);
        }
    };
    for (const sMIDIInputIdentifier& identifier : inputIdentifiers)
    {
        collect(identifier.address, identifier.name);
    }
    for (const sMIDIOutputIdentifier& identifier : outputIdentifiers)
    {
        collect(identifier.address, identifier.name);
    }
    for (sPortAddressALSA address : renamed)
    {
        PortChanged(address);
    }
}

void cSystemMIDIConfigurationALSA::InputAdded(const sPortInfoALSA& port)
{
    Added(inputIdentifiers, port, &cSystemMIDIConfiguration::InputAddedSignal);
}

void cSystemMIDIConfigurationALSA::OutputAdded(const sPortInfoALSA& port)
{
    Added(outputIdentifiers, port, &cSystemMIDIConfiguration::OutputAddedSignal);
}

void cSystemMIDIConfigurationALSA::InputRemoved(sPortAddressALSA address)
{
    Removed(inputIdentifiers, address, &cSystemMIDIConfiguration::InputRemovedSignal);
}

void cSystemMIDIConfigurationALSA::OutputRemoved(sPortAddressALSA address)
{
    Removed(outputIdentifiers, address, &cSystemMIDIConfiguration::OutputRemovedSignal);
}

template <typename Port>
void cSystemMIDIConfigurationALSA::Added(
    QList<sMIDIPortIdentifier<Port>>& identifiers, const sPortInfoALSA& port, RegistrySignal addedSignal)
{
    identifiers.append({port.name, port.address, nullptr});
    emit (this->*addedSignal)(port.name);
}

// The sequencer announces the exit of every port, also of ports that were
// never listed here, so an unknown address is not an error.
template <typename Port>
void cSystemMIDIConfigurationALSA::Removed(
    QList<sMIDIPortIdentifier<Port>>& identifiers, sPortAddressALSA address, RegistrySignal removedSignal)
{
    int index = IndexOf(identifiers, address, &sMIDIPortIdentifier<Port>::address);
    if (index < 0)
    {
        return;
    }
    sMIDIPortIdentifier<Port> identifier = identifiers.takeAt(index);
    // Listeners let go of the port before it is deleted.
    emit (this->*removedSignal)(identifier.name);
    delete identifier.port;
}
