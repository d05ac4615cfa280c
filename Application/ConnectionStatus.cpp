#include "Application/ConnectionStatus.h"

#include "Application/ApplicationStrings.h"
#include "Network/TCPMIDIConnectionPolicy.h"
#include "Network/TCPMIDIInptOutput.h"

#include <algorithm>

namespace
{
using eFailure = cTCPMIDIInptOutput::eFailure;
using eState = cTCPMIDIConnectionPolicy::eState;
}

cConnectionStatus::cConnectionStatus(cTCPMIDIInptOutput* link, cTCPMIDIConnectionPolicy* policy, QObject* parent)
    : QObject(parent), link(link), policy(policy)
{
    // A coarse timer may fire early and show the same number twice.
    countdownTimer.setSingleShot(true);
    countdownTimer.setTimerType(Qt::PreciseTimer);
    connect(&countdownTimer, &QTimer::timeout, this, &cConnectionStatus::Update);
    connect(link, &cTCPMIDIInptOutput::StateStringChanged, this, &cConnectionStatus::Update);
    connect(policy, &cTCPMIDIConnectionPolicy::StateChanged, this, &cConnectionStatus::Update);
}

QString cConnectionStatus::GetStateText() const
{
    const QString text = link->GetCurrentSocketStateDescription();
    return IsRetrying() ? tr("%1, next try in %2 s").arg(text).arg(GetSecondsUntilNextTry()) : text;
}

QString cConnectionStatus::GetDetails() const
{
    const QString unit = GetUnitText();
    switch (policy->GetState())
    {
    case eState::Connected:
        return tr("Connected to %1, port %2.").arg(unit).arg(cTCPMIDIInptOutput::MIXER_MIDI_PORT);
    case eState::Connecting:
        return link->GetLastFailure() == eFailure::None
            ? tr("Connecting to %1, port %2.").arg(unit).arg(cTCPMIDIInptOutput::MIXER_MIDI_PORT)
            : tr("Trying %1 again. Last try: %2").arg(unit, GetFailureSentence());
    case eState::Retrying:
        return GetFailureSentence() + QLatin1Char(' ') + tr("Stay Connected tries again by itself.");
    case eState::Down:
        return GetFailureSentence() + QLatin1Char(' ')
            + tr("Connect stays ticked: untick and tick it to try again, or turn on Stay Connected in the tray menu.");
    default:
        return QString();
    }
}

QString cConnectionStatus::GetSummary() const
{
    const QString unit = GetUnitText();
    switch (policy->GetState())
    {
    case eState::Connected:
        return tr("connected to %1").arg(unit);
    case eState::Connecting:
        return tr("connecting to %1").arg(unit);
    case eState::Retrying:
        return tr("not connected to %1: %2, next try in %3 s")
            .arg(unit, GetFailureWord())
            .arg(GetSecondsUntilNextTry());
    case eState::Down:
        return tr("not connected to %1: %2").arg(unit, GetFailureWord());
    default:
        return tr("not connected");
    }
}

bool cConnectionStatus::IsRetrying() const
{
    return policy->GetState() == eState::Retrying;
}

void cConnectionStatus::Update()
{
    if (IsRetrying())
    {
        // The number shown is the whole seconds left, rounded up: it goes
        // down when the time left passes a whole second.
        const qint64 untilNextSecond = policy->GetMsUntilNextTry() % 1000;
        countdownTimer.start(static_cast<int>(untilNextSecond == 0 ? 1000 : untilNextSecond));
    }
    else
    {
        countdownTimer.stop();
    }
    emit Changed();
}

QString cConnectionStatus::GetUnitText() const
{
    const QString address = policy->GetAddress().toString();
    const QString name = policy->GetUnitName();
    return name.isEmpty() || name == CUSTOM_UNIT_STRING ? address : QStringLiteral("%1 (%2)").arg(name, address);
}

QString cConnectionStatus::GetFailureWord() const
{
    switch (link->GetLastFailure())
    {
    case eFailure::Refused:
        return tr("refused");
    case eFailure::NoAnswer:
        return tr("no answer");
    case eFailure::Unreachable:
        return tr("unreachable");
    case eFailure::ClosedByPeer:
        return tr("closed by the console");
    case eFailure::Other:
        return link->GetLastFailureText();
    default:
        return tr("disconnected");
    }
}

QString cConnectionStatus::GetFailureSentence() const
{
    const QString address = policy->GetAddress().toString();
    switch (link->GetLastFailure())
    {
    case eFailure::Refused:
        return tr("%1 refused the connection: the console is not ready for it, or the address is another "
                  "device's.").arg(address);
    case eFailure::NoAnswer:
        return tr("No answer from %1: the console may be switched off or on another network, or the address may be "
                  "wrong.").arg(address);
    case eFailure::Unreachable:
        return tr("%1 cannot be reached: check the network connection and the address.").arg(address);
    case eFailure::ClosedByPeer:
        return tr("The console at %1 closed the connection.").arg(address);
    case eFailure::Other:
        return tr("The connection to %1 failed: %2.").arg(address, link->GetLastFailureText());
    default:
        return tr("The connection to %1 is down.").arg(address);
    }
}

int cConnectionStatus::GetSecondsUntilNextTry() const
{
    // Never "0 s": the try is made as that second ends.
    return std::max(1, static_cast<int>((policy->GetMsUntilNextTry() + 999) / 1000));
}
