#include "Network/TCPMIDIReconnector.h"

#include "Network/TCPMIDIInptOutput.h"

#include <algorithm>

cTCPMIDIReconnector::cTCPMIDIReconnector(cTCPMIDIInptOutput* link, QObject* parent, int timeDivisor)
    : QObject(parent), link(link), timeDivisor(std::max(timeDivisor, 1))
{
    retryTimer.setSingleShot(true);
    connect(&retryTimer, &QTimer::timeout, this, &cTCPMIDIReconnector::Retry);
    // Queued: the link's state is looked at once it has settled, never in the
    // middle of its own teardown, and a connection attempt is never started
    // from inside one of its signals.
    connect(link, &cTCPMIDIInptOutput::StateStringChanged, this, &cTCPMIDIReconnector::LinkStateChanged,
        Qt::QueuedConnection);
}

void cTCPMIDIReconnector::Keep(const QHostAddress& newAddress)
{
    address = newAddress;
    keeping = true;
    nextDelayMs = FIRST_RETRY_DELAY_MS;
    connectedClock.invalidate();
    retryTimer.stop();
    LinkStateChanged();
}

void cTCPMIDIReconnector::Release()
{
    keeping = false;
    retryTimer.stop();
}

bool cTCPMIDIReconnector::IsKeeping() const
{
    return keeping;
}

QHostAddress cTCPMIDIReconnector::GetAddress() const
{
    return address;
}

void cTCPMIDIReconnector::LinkStateChanged()
{
    if (!keeping)
    {
        return;
    }
    switch (link->GetSocketState())
    {
    case QAbstractSocket::ConnectedState:
        connectedClock.start();
        break;
    case QAbstractSocket::UnconnectedState:
        if (retryTimer.isActive())
        {
            break;
        }
        // Only a connection that held for a while starts the waits afresh: a
        // mixer that accepts and drops at once (one serving another client,
        // say) is not asked twice a second for ever.
        if (connectedClock.isValid() && connectedClock.elapsed() >= LONGEST_RETRY_DELAY_MS / timeDivisor)
        {
            nextDelayMs = FIRST_RETRY_DELAY_MS;
        }
        connectedClock.invalidate();
        retryTimer.start(nextDelayMs / timeDivisor);
        emit RetryScheduled(nextDelayMs);
        nextDelayMs = std::min(nextDelayMs * 2, LONGEST_RETRY_DELAY_MS);
        break;
    default:
        // An attempt is under way; its outcome decides.
        break;
    }
}

void cTCPMIDIReconnector::Retry()
{
    if (keeping && link->GetSocketState() == QAbstractSocket::UnconnectedState)
    {
        link->ConnectToHost(address);
    }
}
