#ifndef BUFFEREDMIDIINPUT_H
#define BUFFEREDMIDIINPUT_H

#include "Common/MIDI/MIDIInput.h"

#include <QMetaMethod>
#include <QMutex>
#include <QMutexLocker>

// The receive buffer of a port whose bytes arrive on a thread of its own
// (Base is cMIDIInput or a subclass): the receiving thread appends and
// signals, and the event loop drains the buffer under the same lock.
template <class Base>
class cBufferedMIDIInput : public Base
{
public:
    using Base::Base;

    void ReadMIDIData(QByteArray& data) override
    {
        QMutexLocker lock(&mutex);
        data = receivedData;
        receivedData.clear();
    }

protected:
    // Any thread. Bytes that arrive while nobody listens are dropped: a reader
    // that binds later must not translate stale input.
    void BufferMIDIData(const QByteArray& bytes)
    {
        if (!this->isSignalConnected(QMetaMethod::fromSignal(&cMIDIInput::MIDIReadReady)))
        {
            return;
        }
        {
            QMutexLocker lock(&mutex);
            receivedData.append(bytes);
        }
        emit this->MIDIReadReady();
    }

private:
    QMutex mutex;
    QByteArray receivedData;
};

#endif
