#ifndef SEQUENCERPORTALSA_H
#define SEQUENCERPORTALSA_H

#include "Common/MIDI/ALSA/SequencerALSA.h"

#include <memory>

// One port of our sequencer client for the lifetime of this object. With a
// receiver, MIDI arriving at the port goes to it until the port goes.
class cSequencerPortALSA
{
public:
    cSequencerPortALSA(const QString& name, unsigned int capabilities, unsigned int type,
        cSequencerReceiverALSA* receiver = nullptr);
    ~cSequencerPortALSA();

    cSequencerPortALSA(const cSequencerPortALSA&) = delete;
    cSequencerPortALSA& operator=(const cSequencerPortALSA&) = delete;

    bool ConnectFrom(sPortAddressALSA source);
    // 0, or the kernel's refusal, unreported.
    int ConnectTo(sPortAddressALSA destination);

    // The kernel refuses MIDI for a client that has stopped reading (its
    // queue is full) and goes on refusing every message of the burst: the
    // first refusal is reported, naming "to", and the rest are not until a
    // send has got through again. A device whose own output buffer is full is
    // not told apart: its kernel port takes the event, reports success and
    // drops what does not fit.
    void Send(sPortAddressALSA destination, const QByteArray& bytes, const QString& to);

private:
    std::shared_ptr<cSequencerALSA> sequencer;
    int port;
    bool receiving;
    bool refused = false;
};

#endif
