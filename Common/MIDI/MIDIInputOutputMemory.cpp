#include "Common/MIDI/MIDIInputOutputMemory.h"

#include <QMetaMethod>
#include <QMutexLocker>

cMIDIInputOutputMemory::cMIDIInputOutputMemory(const QString& name, QObject* parent)
    : cMIDIInputOutput(parent), name(name)
{
}

QString cMIDIInputOutputMemory::GetName() const
{
    return name;
}

// Like a platform port, bytes that arrive while nobody listens are dropped:
// a matcher that binds later must not translate stale input.
void cMIDIInputOutputMemory::ReceiveMIDIData(const QByteArray& bytes)
{
    if (!isSignalConnected(QMetaMethod::fromSignal(&cMIDIInput::MIDIReadReady)))
    {
        return;
    }
    {
        QMutexLocker lock(&mutex);
        receivedData.append(bytes);
    }
    emit MIDIReadReady();
}

void cMIDIInputOutputMemory::ReadMIDIData(QByteArray& data)
{
    QMutexLocker lock(&mutex);
    data = receivedData;
    receivedData.clear();
}

void cMIDIInputOutputMemory::WriteMIDIData(QByteArray& data)
{
    {
        QMutexLocker lock(&mutex);
        writtenData.append(data);
    }
    emit MIDIWritten(data);
}

QList<QByteArray> cMIDIInputOutputMemory::TakeWrittenData()
{
    QMutexLocker lock(&mutex);
    QList<QByteArray> written;
    written.swap(writtenData);
    return written;
}
