#ifndef SYSTEMMIDICONFIGURATION_H
#define SYSTEMMIDICONFIGURATION_H

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

class cMIDIInput;
class cMIDIOutput;
class cMIDIInputOutput;

// The registry of every MIDI port the program can reach, by name: virtual port
// pairs it publishes itself, internal ports registered by other parts of the
// program (the TCP link), and the platform's system ports (in a subclass).
// Users look ports up by name and follow the added/removed signals, since
// ports come and go at any time.
class cSystemMIDIConfiguration : public QObject
{
    Q_OBJECT
public:
    explicit cSystemMIDIConfiguration(QObject* parent = nullptr);
    ~cSystemMIDIConfiguration() override;

    virtual void CreateVirtualInputOutput(QString name);
    virtual void DestroyVirtualInputOutput(QString name);
    virtual void AddInternalInputOutput(QString name, cMIDIInputOutput* port);
    virtual void RemoveInternalInputOutput(QString name);

    virtual int GetNumberOfInputs() const = 0;
    virtual QString GetNameOfInput(int index) const = 0;
    // Virtual ports first, then internal ports; subclasses add system ports
    // after calling this, so a virtual or internal port hides a system port.
    // Of several system ports of one name, the one listed first: the answer
    // for a name stays the same while that port is there, whatever others of
    // the name come and go. The same holds for outputs.
    virtual cMIDIInput* GetMIDIInput(QString name);
    virtual QStringList GetSystemMIDIInputNames() const = 0;

    virtual int GetNumberOfOutputs() const = 0;
    virtual QString GetNameOfOutput(int index) const = 0;
    virtual cMIDIOutput* GetMIDIOutput(QString name);
    virtual QStringList GetSystemMIDIOutputNames() const = 0;

    QStringList GetVirtualInputOutputNames() const;
    // False when the platform's MIDI service could not be reached: then there
    // are no system ports, and the virtual ports reach no other program.
    virtual bool HasSystemMIDI() const;

signals:
    void InputAddedSignal(QString name);
    void InputRemovedSignal(QString name);
    void OutputAddedSignal(QString name);
    void OutputRemovedSignal(QString name);

protected:
    // Makes the platform's virtual port pair, parented to this registry.
    virtual cMIDIInputOutput* NewVirtualInputOutput(const QString& name) = 0;
    // The system port names less the program's own: those are never offered
    // as system ports.
    QStringList WithoutOwnNames(QStringList names) const;

private:
    QHash<QString, cMIDIInputOutput*> virtualInputOutputs;
    // Destroyed virtual ports stay published until the registry goes; one that
    // is created again under the same name is brought back rather than
    // published twice, so a DAW that had it open keeps its connection.
    QHash<QString, cMIDIInputOutput*> retiredVirtualInputOutputs;
    QHash<QString, cMIDIInputOutput*> internalInputOutputs;
};

#endif
