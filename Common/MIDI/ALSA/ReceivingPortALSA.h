#ifndef RECEIVINGPORTALSA_H
#define RECEIVINGPORTALSA_H

#include "Common/MIDI/ALSA/SequencerALSA.h"
#include "Common/MIDI/MIDIInput.h"

#include <QByteArray>
#include <QMetaMethod>

// The receiving side shared by every ALSA port class of ours (Base is
// cMIDIInput or a subclass). The sequencer delivers the port's MIDI on the
// event-loop thread; it is buffered and MIDIReadReady() is emitted at once, so
// a reader connected on that thread drains it before the sequencer's next
// event is read. All of it happens on one thread, so the buffer needs no lock.
template <class Base>
class cReceivingPortALSA : public Base, public cSequencerReceiverALSA
{
public:
    using Base::Base;

    // The buffers change hands, so a reader that keeps its array from read to
    // read lends its room back and nothing is allocated.
    void ReadMIDIData(QByteArray& data) override
    {
        data.swap(receivedData);
        receivedData.truncate(0);
    }

    // Bytes that arrive while nobody listens are dropped: a reader that binds
    // later must not translate stale input.
    void MIDIDataReceived(const char* bytes, int length) override
    {
        if (!this->isSignalConnected(QMetaMethod::fromSignal(&cMIDIInput::MIDIReadReady)))
        {
            return;
        }
        receivedData.append(bytes, length);
        emit this->MIDIReadReady();
    }

private:
    QByteArray receivedData;
};

#endif
