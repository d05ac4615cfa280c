#include "Common/MIDI/ALSA/VirtualMIDIInputOutputALSA.h"

#include <alsa/asoundlib.h>

cVirtualMIDIInputOutputALSA::cVirtualMIDIInputOutputALSA(QString name, QObject* parent)
    : cReceivingPortALSA<cMIDIInputOutput>(parent),
      name(name),
      port(name,
          SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ | SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE
              | SND_SEQ_PORT_CAP_DUPLEX,
          SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_SOFTWARE | SND_SEQ_PORT_TYPE_APPLICATION, this)
{
}

void cVirtualMIDIInputOutputALSA::WriteMIDIData(QByteArray& data)
{
    port.Send(cSequencerALSA::SUBSCRIBERS, data, name);
}
