#include "Common/MIDI/ALSA/MIDIOutputALSA.h"

#include <alsa/asoundlib.h>

cMIDIOutputALSA::cMIDIOutputALSA(const QString& name, sPortAddressALSA address)
    : name(name),
      port(QStringLiteral("MIDI Output Port"), SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_NO_EXPORT,
          SND_SEQ_PORT_TYPE_APPLICATION),
      destination(port.ConnectTo(address) ? cSequencerALSA::SUBSCRIBERS : address)
{
}

void cMIDIOutputALSA::WriteMIDIData(QByteArray& data)
{
    port.Send(destination, data, name);
}
