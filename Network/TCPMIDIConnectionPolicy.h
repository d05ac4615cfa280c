#ifndef TCPMIDICONNECTIONPOLICY_H
#define TCPMIDICONNECTIONPOLICY_H

#include "Network/Unit.h"

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

class cRetryTimer;
class cTCPMIDIInptOutput;

// When the TCP link to the mixer is up, and when it is tried again. The
// Connect box is the switch: while it is ticked the link is kept towards the
// chosen address. With Stay Connected on, a link that goes down (closed or
// reset by the mixer, or an attempt that fails) is tried again after half a
// second, then after twice the previous wait, up to eight seconds, for as
// long as Connect stays ticked; and the saved unit is connected to by itself
// as soon as it is chosen again, unless the user has unticked Connect since.
// With the option off the link is only ever connected and disconnected as
// the Connect box says.
class cTCPMIDIConnectionPolicy : public QObject
{
    Q_OBJECT
public:
    enum class eState
    {
        Off,             // Connect is unticked and nothing will tick it
        WaitingForUnit,  // unticked; ticked by itself once the saved unit is chosen
        Connecting,
        Connected,
        Retrying,        // the link is down and is tried again in GetMsUntilNextTry()
        Down             // the link is down and stays so until Connect is ticked anew
    };
    Q_ENUM(eState)

    static constexpr int FIRST_RETRY_DELAY_MS = 500;
    static constexpr int LONGEST_RETRY_DELAY_MS = 8000;

    // Waits on timer, which it takes as a child; the link stays the owner's.
    cTCPMIDIConnectionPolicy(cTCPMIDIInptOutput* link, cRetryTimer* timer, QObject* parent = nullptr);

    // Connect ticked, by the user or by the program: the link is connected to
    // address, which becomes the saved unit's together with unitName.
    void Connect(const QString& unitName, const QHostAddress& address);
    // Connect unticked: the link goes down and nothing is tried again.
    void Disconnect();
    // The user's own click on Connect: unticking holds off connecting by
    // itself until the user ticks it again or turns Stay Connected on anew,
    // and lets the unit list go (UnitListReleased).
    void ConnectClicked(bool ticked);

    // The option as stored for the mixer type.
    void SetStayConnected(bool on);
    // The user turning the option on or off; turning it on ends a hold-off.
    void StayConnectedChosen(bool on);
    // The unit last connected to, as the settings keep it.
    void SetSavedUnit(const QString& name, const QHostAddress& address);
    // Whether the link is the way to the mixer at all (the TCP/IP mode).
    void SetInUse(bool inUse);
    // What Connect would connect to now: the chosen unit's name and the
    // address entered, null while the address is not complete.
    void SetChosenUnit(const QString& name, const QHostAddress& address);

    eState GetState() const;
    // The unit Connect was last ticked for, by its name in the unit list,
    // and the address it was connected to.
    QString GetUnitName() const;
    QHostAddress GetAddress() const;
    // How long until the next try; meaningful while Retrying.
    qint64 GetMsUntilNextTry() const;
    // Whether a new list of found units should be left unshown for now: a
    // unit list stays as it is while a retry is pending, so that the saved
    // unit is still tried after it has stopped answering, unless the saved
    // unit answers anew (at another address, or while the link is idle).
    bool HoldsUnitList(const QList<sUnit>& foundUnits) const;

signals:
    void StateChanged(cTCPMIDIConnectionPolicy::eState state);
    // Stay Connected wants the chosen unit connected: the owner ticks Connect.
    void ConnectWanted();
    // The link has just come up, told before anything else can be written
    // over it: what is to reach the mixer first goes out from here.
    void LinkUp();
    // The user has let go of the link: the unit list, kept as it was while
    // the link was up or kept, is to show what the finder has found by now.
    void UnitListReleased();

private slots:
    void LinkStateChanged();
    void Retry();
    void ConnectIfWanted();

private:
    bool IsKeeping() const;
    void UpdateState();

    cTCPMIDIInptOutput* link;
    cRetryTimer* retryTimer;
    // Runs ConnectIfWanted once the flows that choose a unit or untick
    // Connect have settled, however many of them ran.
    QTimer connectTimer;

    bool connectTicked = false;
    bool stayConnected = false;
    bool heldOff = false;
    bool inUse = false;
    QString savedUnitName;
    QHostAddress savedUnitAddress;
    QString chosenUnitName;
    QHostAddress chosenUnitAddress;
    // What Connect was ticked for.
    QString unitName;
    QHostAddress address;

    int nextDelayMs = FIRST_RETRY_DELAY_MS;
    qint64 nextTryMs = 0;
    // When the link last came up; negative while it is not up.
    qint64 connectedSinceMs = -1;
    eState state = eState::Off;
};

#endif
