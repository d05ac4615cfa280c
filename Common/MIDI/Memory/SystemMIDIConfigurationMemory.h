#ifndef SYSTEMMIDICONFIGURATIONMEMORY_H
#define SYSTEMMIDICONFIGURATIONMEMORY_H

#include "Common/MIDI/SystemMIDIConfiguration.h"

#include <QList>

class cMIDIInputOutputMemory;

// A registry whose virtual and system ports are in-memory ports. The owner
// plugs system ports in and out by name, as a user would plug in a USB
// interface, and the registry announces them like a platform registry does.
class cSystemMIDIConfigurationMemory : public cSystemMIDIConfiguration
{
    Q_OBJECT
public:
    explicit cSystemMIDIConfigurationMemory(QObject* parent = nullptr);

    // A system port with both directions; emits the input, then the output added signal.
    cMIDIInputOutputMemory* AddSystemInputOutput(const QString& name);
    // Emits the removed signals first, then deletes the port.
    void RemoveSystemInputOutput(const QString& name);

    // The memory port behind a name as GetMIDIInput resolves it, or null.
    cMIDIInputOutputMemory* GetMemoryInputOutput(const QString& name);
    // The same, plugging in a system port of that name where there is none.
    cMIDIInputOutputMemory* GetOrAddMemoryInputOutput(const QString& name);

    int GetNumberOfInputs() const override;
    QString GetNameOfInput(int index) const override;
    cMIDIInput* GetMIDIInput(QString name) override;
    QStringList GetSystemMIDIInputNames() const override;

    int GetNumberOfOutputs() const override;
    QString GetNameOfOutput(int index) const override;
    cMIDIOutput* GetMIDIOutput(QString name) override;
    QStringList GetSystemMIDIOutputNames() const override;

protected:
    cMIDIInputOutput* NewVirtualInputOutput(const QString& name) override;

private:
    cMIDIInputOutputMemory* FindSystemInputOutput(const QString& name) const;
    QStringList GetSystemNames() const;

    QList<cMIDIInputOutputMemory*> systemInputOutputs;
};

#endif
