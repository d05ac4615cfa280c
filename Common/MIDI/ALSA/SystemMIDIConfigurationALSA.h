#ifndef SYSTEMMIDICONFIGURATIONALSA_H
#define SYSTEMMIDICONFIGURATIONALSA_H

#include "Common/MIDI/ALSA/SequencerALSA.h"
#include "Common/MIDI/SystemMIDIConfiguration.h"

#include <QList>

#include <memory>

class cMIDIInputALSA;
class cMIDIOutputALSA;

// The port registry over the ALSA sequencer. System inputs are the other
// clients' ports that can be read with subscription, system outputs those that
// can be written with subscription; both are named "client name:port name" so
// that a name survives replugging. Ports that come and go are followed through
// the sequencer's announcements. Without a sequencer the registry reports it
// once and stays empty, and the rest of the program works on.
class cSystemMIDIConfigurationALSA : public cSystemMIDIConfiguration
{
    Q_OBJECT
public:
    explicit cSystemMIDIConfigurationALSA(QObject* parent = nullptr);
    ~cSystemMIDIConfigurationALSA() override;

    int GetNumberOfInputs() const override;
    QString GetNameOfInput(int index) const override;
    cMIDIInput* GetMIDIInput(QString name) override;
    QStringList GetSystemMIDIInputNames() const override;

    int GetNumberOfOutputs() const override;
    QString GetNameOfOutput(int index) const override;
    cMIDIOutput* GetMIDIOutput(QString name) override;
    QStringList GetSystemMIDIOutputNames() const override;

    bool HasSystemMIDI() const override;

protected:
    cMIDIInputOutput* NewVirtualInputOutput(const QString& name) override;

private:
    // One system port in one direction, with its port object once opened.
    template <typename Port>
    struct sMIDIPortIdentifier
    {
        QString name;
        sPortAddressALSA address;
        Port* port;
    };
    using sMIDIInputIdentifier = sMIDIPortIdentifier<cMIDIInputALSA>;
    using sMIDIOutputIdentifier = sMIDIPortIdentifier<cMIDIOutputALSA>;
    using RegistrySignal = void (cSystemMIDIConfiguration::*)(QString);

    void PortStarted(sPortAddressALSA address);
    void PortExited(sPortAddressALSA address);
    void PortChanged(sPortAddressALSA address);
    void ClientChanged(int client);

    void InputAdded(const sPortInfoALSA& port);
    void OutputAdded(const sPortInfoALSA& port);
    void InputRemoved(sPortAddressALSA address);
    void OutputRemoved(sPortAddressALSA address);
    template <typename Port>
    void Added(QList<sMIDIPortIdentifier<Port>>& identifiers, const sPortInfoALSA& port, RegistrySignal addedSignal);
    template <typename Port>
    void Removed(QList<sMIDIPortIdentifier<Port>>& identifiers, sPortAddressALSA address, RegistrySignal removedSignal);

    std::shared_ptr<cSequencerALSA> sequencer;
    QList<sMIDIInputIdentifier> inputIdentifiers;
    QList<sMIDIOutputIdentifier> outputIdentifiers;
};

#endif
