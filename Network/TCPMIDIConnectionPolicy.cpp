#include "Network/TCPMIDIConnectionPolicy.h"

#include "Network/RetryTimer.h"
#include "Network/TCPMIDIInptOutput.h"

#include <algorithm>

cTCPMIDIConnectionPolicy::cTCPMIDIConnectionPolicy(cTCPMIDIInptOutput* link, cRetryTimer* timer, QObject* parent)
    : QObject(parent), link(link), retryTimer(timer)
{
    retryTimer->setParent(this);
    connect(retryTimer, &cRetryTimer::Timeout, this, &cTCPMIDIConnectionPolicy::Retry);
    connectTimer.setSingleShot(true);
    connectTimer.setInterval(0);
    connect(&connectTimer, &QTimer::timeout, this, &cTCPMIDIConnectionPolicy::ConnectIfWanted);
    // Queued: the link's state is looked at once it has settled, never in the
    // middle of its own teardown, and a connection attempt is never started
    // from inside one of its signals.
    connect(link, &cTCPMIDIInptOutput::StateStringChanged, this, &cTCPMIDIConnectionPolicy::LinkStateChanged,
        Qt::QueuedConnection);
    // Direct, unlike the state: by the time a queued call ran, the DAW could
    // already have written over the new link, ahead of what is to go first.
    connect(link, &cTCPMIDIInptOutput::StateStringChanged, this, [this]() {
        if (this->link->IsConnected())
        {
            emit LinkUp();
        }
    });
}

void cTCPMIDIConnectionPolicy::Connect(const QString& newUnitName, const QHostAddress& newAddress)
{
    address = newAddress;
    unitName = newUnitName;
    savedUnitName = newUnitName;
    savedUnitAddress = newAddress;
    connectTicked = true;
    nextDelayMs = FIRST_RETRY_DELAY_MS;
    connectedSinceMs = -1;
    retryTimer->Stop();
    link->ConnectToHost(address);
    UpdateState();
}

void cTCPMIDIConnectionPolicy::Disconnect()
{
    connectTicked = false;
    retryTimer->Stop();
    link->DisconnectFromHost();
    UpdateState();
    connectTimer.start();
}

void cTCPMIDIConnectionPolicy::ConnectClicked(bool ticked)
{
    heldOff = !ticked;
    UpdateState();
    if (!ticked)
    {
        emit UnitListReleased();
    }
}

void cTCPMIDIConnectionPolicy::SetStayConnected(bool on)
{
    if (on != stayConnected)
    {
        stayConnected = on;
        if (!on)
        {
            retryTimer->Stop();
        }
        else if (connectTicked)
        {
            // Kept from now on, with the waits afresh.
            nextDelayMs = FIRST_RETRY_DELAY_MS;
            connectedSinceMs = link->IsConnected() ? retryTimer->GetNowMs() : -1;
            LinkStateChanged();
        }
    }
    UpdateState();
    connectTimer.start();
}

void cTCPMIDIConnectionPolicy::StayConnectedChosen(bool on)
{
    if (on)
    {
        heldOff = false;
    }
    SetStayConnected(on);
}

void cTCPMIDIConnectionPolicy::SetSavedUnit(const QString& name, const QHostAddress& unitAddress)
{
    savedUnitName = name;
    savedUnitAddress = unitAddress;
    connectTimer.start();
}

void cTCPMIDIConnectionPolicy::SetInUse(bool newInUse)
{
    inUse = newInUse;
    UpdateState();
    connectTimer.start();
}

void cTCPMIDIConnectionPolicy::SetChosenUnit(const QString& name, const QHostAddress& unitAddress)
{
    chosenUnitName = name;
    chosenUnitAddress = unitAddress;
    connectTimer.start();
}

cTCPMIDIConnectionPolicy::eState cTCPMIDIConnectionPolicy::GetState() const
{
    return state;
}

QString cTCPMIDIConnectionPolicy::GetUnitName() const
{
    return unitName;
}

QHostAddress cTCPMIDIConnectionPolicy::GetAddress() const
{
    return address;
}

qint64 cTCPMIDIConnectionPolicy::GetMsUntilNextTry() const
{
    return std::max<qint64>(nextTryMs - retryTimer->GetNowMs(), 0);
}

bool cTCPMIDIConnectionPolicy::HoldsUnitList(const QList<sUnit>& foundUnits) const
{
    if (!IsKeeping())
    {
        return false;
    }
    const auto savedUnit = std::find_if(foundUnits.begin(), foundUnits.end(),
        [this](const sUnit& unit) { return unit.name == savedUnitName; });
    // An attempt under way at the address it answers from is left to finish.
    return savedUnit == foundUnits.end()
        || (savedUnit->address == address && link->GetSocketState() != QAbstractSocket::UnconnectedState);
}

bool cTCPMIDIConnectionPolicy::IsKeeping() const
{
    return connectTicked && stayConnected;
}

void cTCPMIDIConnectionPolicy::LinkStateChanged()
{
    if (IsKeeping())
    {
        switch (link->GetSocketState())
        {
        case QAbstractSocket::ConnectedState:
            connectedSinceMs = retryTimer->GetNowMs();
            break;
        case QAbstractSocket::UnconnectedState:
            if (retryTimer->IsActive())
            {
                break;
            }
            // Only a connection that held for a while starts the waits afresh:
            // a mixer that accepts and drops at once (one serving another
            // client, say) is not asked twice a second for ever.
            if (connectedSinceMs >= 0 && retryTimer->GetNowMs() - connectedSinceMs >= LONGEST_RETRY_DELAY_MS)
            {
                nextDelayMs = FIRST_RETRY_DELAY_MS;
            }
            connectedSinceMs = -1;
            nextTryMs = retryTimer->GetNowMs() + nextDelayMs;
            retryTimer->Start(nextDelayMs);
            nextDelayMs = std::min(nextDelayMs * 2, LONGEST_RETRY_DELAY_MS);
            // Announced even when the state stays Retrying: the next try moved.
            state = eState::Retrying;
            emit StateChanged(state);
            return;
        default:
            // An attempt is under way; its outcome decides.
            break;
        }
    }
    UpdateState();
}

void cTCPMIDIConnectionPolicy::Retry()
{
    if (IsKeeping() && link->GetSocketState() == QAbstractSocket::UnconnectedState)
    {
        link->ConnectToHost(address);
    }
}

void cTCPMIDIConnectionPolicy::ConnectIfWanted()
{
    if (state == eState::WaitingForUnit && !savedUnitName.isEmpty() && chosenUnitName == savedUnitName
        && !chosenUnitAddress.isNull() && chosenUnitAddress == savedUnitAddress)
    {
        emit ConnectWanted();
    }
}

void cTCPMIDIConnectionPolicy::UpdateState()
{
    eState newState = eState::Off;
    if (!connectTicked)
    {
        newState = stayConnected && inUse && !heldOff ? eState::WaitingForUnit : eState::Off;
    }
    else
    {
        switch (link->GetSocketState())
        {
        case QAbstractSocket::ConnectedState:
            newState = eState::Connected;
            break;
        case QAbstractSocket::UnconnectedState:
            newState = retryTimer->IsActive() ? eState::Retrying : eState::Down;
            break;
        default:
            newState = eState::Connecting;
            break;
        }
    }
    if (newState != state)
    {
        state = newState;
        emit StateChanged(state);
    }
}
