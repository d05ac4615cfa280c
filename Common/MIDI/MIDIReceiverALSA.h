#ifndef MIDIRECEIVERALSA_H
#define MIDIRECEIVERALSA_H

#include "Common/MIDI/MIDIInput.h"
#include "Common/MIDI/SequencerALSA.h"

#include <QMetaMethod>
#include <QMutex>
#include <QMutexLocker>

// The receiving side shared by every ALSA port class (Base is cMIDIInput or a
// subclass): the sequencer's reader thread appends what arrives and signals,
// and the event loop drains the buffer under the same lock.
template <class Base>
class cMIDIReceiverALSA : public Base, public cSequencerReceiverALSA
{
public:
    using Base::Base;

    void ReadMIDIData(QByteArray& data) override
    {
        QMutexLocker lock(&mutex);
        data = receivedData;
        receivedData.clear();
    }

    // Reader thread. Bytes nobody listens for are dropped rather than kept.
    void MIDIDataReceived(const QByteArray& bytes) override
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
