#include "Common/MIDI/ALSA/MIDIInputALSA.h"

#include <alsa/asoundlib.h>

cMIDIInputALSA::cMIDIInputALSA(sPortAddressALSA source, QObject* parent)
    : cReceivingPortALSA<cMIDIInput>(parent),
      port(QStringLiteral("MIDI Input Port"), SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_NO_EXPORT,
          SND_SEQ_PORT_TYPE_APPLICATION, this)
{
    port.ConnectFrom(source);
}
