#include "Common/MIDI/MIDIOutputALSA.h"

#include <alsa/asoundlib.h>

cMIDIOutputALSA::cMIDIOutputALSA(sPortAddressALSA destination)
    : destination(destination),
      port(QStringLiteral("MIDI Output Port"), SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_NO_EXPORT,
          SND_SEQ_PORT_TYPE_APPLICATION)
{
}

void cMIDIOutputALSA::WriteMIDIData(QByteArray& data)
{
    port.Send(destination, data);
}
