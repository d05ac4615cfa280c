#include "Common/MIDI/Memory/MIDIInputOutputMemory.h"

#include <QMutexLocker>

cMIDIInputOutputMemory::cMIDIInputOutputMemory(const QString& name, QObject* parent)
    : cBufferedMIDIInput<cMIDIInputOutput>(parent), name(name)
{
}

QString cMIDIInputOutputMemory::GetName() const
{
    return name;
}

void cMIDIInputOutputMemory::ReceiveMIDIData(const QByteArray& bytes)
{
    BufferMIDIData(bytes);
}

void cMIDIInputOutputMemory::WriteMIDIData(QByteArray& data)
{
    {
        QMutexLocker lock(&writtenMutex);
        writtenData.append(data);
    }
    emit MIDIWritten(data);
}

QList<QByteArray> cMIDIInputOutputMemory::TakeWrittenData()
{
    QMutexLocker lock(&writtenMutex);
    QList<QByteArray> written;
    written.swap(writtenData);
    return written;
}
