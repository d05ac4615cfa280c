#ifndef MIDIINPUTMATCHER_H
#define MIDIINPUTMATCHER_H

#include "Common/MIDI/MIDIRunningStatusFixer.h"
#include "Common/MIDI/Text/MIDIMessageSplitter.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

#include <vector>

class cMIDIInput;
class cMIDIMatchManager;
class cMIDIMatchTriggerListener;
class cMIDITrafficListener;
class cSystemMIDIConfiguration;
struct sMIDIMatchByteListIdentifier;

// Binds one MIDI input, known only by its name, to one match tree. The input
// may not exist yet, or may come and go (a cable pulled, the TCP link
// re-registered): the matcher follows the registry and re-binds by name, and
// its tree and running-status state survive the re-binding.
class cMIDIInputMatcher : public QObject
{
    Q_OBJECT
public:
    // The listener is told of every completed pattern; it is not owned.
    cMIDIInputMatcher(QString inputName, cSystemMIDIConfiguration* configuration,
                      cMIDIMatchTriggerListener* listener, QObject* parent = nullptr);
    ~cMIDIInputMatcher() override;

    cMIDIInputMatcher(const cMIDIInputMatcher&) = delete;
    cMIDIInputMatcher& operator=(const cMIDIInputMatcher&) = delete;

    void AddMIDIMatchNibbleListIdentifier(const sMIDIMatchByteListIdentifier& pattern);

    // Replaces the bound input (null unbinds).
    void SetMIDIInput(cMIDIInput* input);

    // Tells the listener of every message read from now on (null stops);
    // it is not owned.
    void SetMIDITrafficListener(cMIDITrafficListener* listener);

signals:
    // Re-emitted for every read notification of the bound input, after its
    // bytes have been matched.
    void MIDIInputReadSignal();

public slots:
    void InputAdded(QString name);
    void InputRemoved(QString name);
    void MIDIReadReady();

private:
    void DisconnectMIDIInput();
    void ProcessBytesTellingListener();

    QString inputName;
    cSystemMIDIConfiguration* systemMIDIConfiguration;
    cMIDIMatchManager* matchManager;
    // Guarded: a port deleted without a removal signal must not leave a dangling binding.
    QPointer<cMIDIInput> midiInput;
    cMIDIRunningStatusFixer runningStatusFixer;
    // Reused for every read so that the byte path does not allocate.
    QByteArray readData;
    std::vector<unsigned char> readBytes;
    std::vector<unsigned char> expandedBytes;
    // Only used while someone listens: the listener is told of whole messages.
    cMIDITrafficListener* trafficListener = nullptr;
    cMIDIMessageSplitter messageSplitter;
    QList<QByteArray> completedMessages;
};

#endif
