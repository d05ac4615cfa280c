#ifndef MIDIINPUTOUTPUTMEMORY_H
#define MIDIINPUTOUTPUTMEMORY_H

#include "Common/MIDI/BufferedMIDIInput.h"
#include "Common/MIDI/MIDIInputOutput.h"

#include <QList>
#include <QMutex>
#include <QString>

// A port that lives in memory only: what "arrives" is handed in by the owner
// (from any thread: the hand-off is locked), and what is written is kept and
// signalled. It stands in for the mixer and the DAW where no MIDI service is
// wanted: in tests, in the rule checker, and wherever ALSA is not available.
class cMIDIInputOutputMemory : public cBufferedMIDIInput<cMIDIInputOutput>
{
    Q_OBJECT
public:
    cMIDIInputOutputMemory(const QString& name, QObject* parent = nullptr);

    QString GetName() const;

    // Appends bytes as if they had arrived from outside and emits
    // MIDIReadReady(); with no receiver connected they are dropped.
    void ReceiveMIDIData(const QByteArray& bytes);

    void WriteMIDIData(QByteArray& data) override;

    // Every write since the last call, one entry per write, in order.
    QList<QByteArray> TakeWrittenData();

signals:
    void MIDIWritten(QByteArray data);

private:
    QString name;
    QMutex writtenMutex;
    QList<QByteArray> writtenData;
};

#endif
