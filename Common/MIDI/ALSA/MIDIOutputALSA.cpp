#include "Common/MIDI/ALSA/MIDIOutputALSA.h"

#include "Application/DebugTrace.h"

#include <alsa/asoundlib.h>

cMIDIOutputALSA::cMIDIOutputALSA(const QString& name, sPortAddressALSA address)
    : name(name),
      address(address),
      port(QStringLiteral("MIDI Output Port"), SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_NO_EXPORT,
          SND_SEQ_PORT_TYPE_APPLICATION)
{
    Subscribe();
}

void cMIDIOutputALSA::WriteMIDIData(QByteArray& data)
{
    if (!subscribed && sinceLastTry.hasExpired(SUBSCRIBE_RETRY_INTERVAL_MS))
    {
        Subscribe();
    }
    // Without the subscription the bytes are dropped: a kernel device would
    // refuse them, and a port another program took for itself is not ours.
    if (subscribed)
    {
        port.Send(cSequencerALSA::SUBSCRIBERS, data, name);
    }
}

void cMIDIOutputALSA::Subscribe()
{
    const int result = port.ConnectTo(address);
    subscribed = result == 0;
    if (subscribed && refused)
    {
        DebugTrace(DEBUG_LOCATION, "ALSA sequencer took the subscription to \"%s\" now",
            name.toLocal8Bit().constData());
    }
    else if (!subscribed && !refused)
    {
        DebugErrTrace(DEBUG_LOCATION,
            "ALSA sequencer refused a subscription to \"%s\": %s; tried again as MIDI is sent",
            name.toLocal8Bit().constData(), snd_strerror(result));
    }
    refused = !subscribed;
    sinceLastTry.start();
}
