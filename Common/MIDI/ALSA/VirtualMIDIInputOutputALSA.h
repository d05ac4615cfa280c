#ifndef VIRTUALMIDIINPUTOUTPUTALSA_H
#define VIRTUALMIDIINPUTOUTPUTALSA_H

#include "Common/MIDI/ALSA/ReceivingPortALSA.h"
#include "Common/MIDI/ALSA/SequencerPortALSA.h"
#include "Common/MIDI/MIDIInputOutput.h"

// A port the program publishes for the DAW: one port of our client, under the
// name the rule file gives, that other clients can both read from and write
// to. What the DAW writes arrives here; what we write goes to every client
// subscribed to the port.
class cVirtualMIDIInputOutputALSA : public cReceivingPortALSA<cMIDIInputOutput>
{
    Q_OBJECT
public:
    cVirtualMIDIInputOutputALSA(QString name, QObject* parent = nullptr);

    void WriteMIDIData(QByteArray& data) override;

private:
    QString name;
    cSequencerPortALSA port;
};

#endif
