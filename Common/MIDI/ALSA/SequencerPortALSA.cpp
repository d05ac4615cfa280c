#include "Common/MIDI/ALSA/SequencerPortALSA.h"

#include "Application/DebugTrace.h"

#include <alsa/asoundlib.h>

cSequencerPortALSA::cSequencerPortALSA(const QString& name, unsigned int capabilities, unsigned int type,
    cSequencerReceiverALSA* receiver)
    : sequencer(cSequencerALSA::Shared()),
      port(sequencer->CreatePort(name, capabilities, type)),
      receiving(receiver && port >= 0)
{
    if (receiving)
    {
        sequencer->SetReceiver(port, receiver);
    }
}

// Deleting the port ends its subscriptions, which lets a kernel client close
// the device behind it.
cSequencerPortALSA::~cSequencerPortALSA()
{
    if (receiving)
    {
        sequencer->SetReceiver(port, nullptr);
    }
    sequencer->DeletePort(port);
}

bool cSequencerPortALSA::ConnectFrom(sPortAddressALSA source)
{
    return sequencer->ConnectFrom(port, source);
}

int cSequencerPortALSA::ConnectTo(sPortAddressALSA destination)
{
    return sequencer->ConnectTo(port, destination);
}

void cSequencerPortALSA::Send(sPortAddressALSA destination, const QByteArray& bytes, const QString& to)
{
    const int result = sequencer->Send(port, destination, bytes);
    if (result < 0 && !refused)
    {
        DebugErrTrace(DEBUG_LOCATION, "ALSA sequencer refused MIDI for \"%s\": %s", to.toLocal8Bit().constData(),
            snd_strerror(result));
    }
    refused = result < 0;
}
