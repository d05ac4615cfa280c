#ifndef MIDIOUTPUTALSA_H
#define MIDIOUTPUTALSA_H

#include "Common/MIDI/ALSA/SequencerPortALSA.h"
#include "Common/MIDI/MIDIOutput.h"

#include <QElapsedTimer>

// Another client's port opened for writing: a hidden port of ours subscribed
// to it, sending to that subscription. The kernel's MIDI device clients (the
// bridge behind USB and DIN interfaces, snd-virmidi) open their device when a
// sender subscribes and ignore events from one that has not. The subscription
// ends when either port goes; a replugged device is opened afresh by name.
// A refused subscription (another program holds the device, or has taken an
// exclusive port) is tried again on a later write, at most once a second,
// until it is made; it is reported when refused and when made at last, and
// what is written meanwhile is dropped.
class cMIDIOutputALSA : public cMIDIOutput
{
public:
    static const int SUBSCRIBE_RETRY_INTERVAL_MS = 1000;

    cMIDIOutputALSA(const QString& name, sPortAddressALSA address);

    void WriteMIDIData(QByteArray& data) override;

private:
    void Subscribe();

    QString name;
    sPortAddressALSA address;
    cSequencerPortALSA port;
    bool subscribed = false;
    bool refused = false;
    QElapsedTimer sinceLastTry;
};

#endif
