#ifndef MIDIINPUT_H
#define MIDIINPUT_H

#include <QByteArray>
#include <QObject>

// A source of MIDI bytes. Implementations may receive on a thread of their own;
// they then buffer under their own lock and emit MIDIReadReady(), and the
// reader drains the buffer on the event-loop thread.
class cMIDIInput : public QObject
{
    Q_OBJECT
public:
    explicit cMIDIInput(QObject* parent = nullptr) : QObject(parent) {}

    // Replaces data with every byte received since the previous call.
    virtual void ReadMIDIData(QByteArray& data) = 0;

signals:
    void MIDIReadReady();
};

#endif
