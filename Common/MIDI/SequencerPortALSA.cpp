#include "Common/MIDI/SequencerPortALSA.h"

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

void cSequencerPortALSA::Send(sPortAddressALSA destination, const QByteArray& bytes)
{
    sequencer->Send(port, destination, bytes);
}
