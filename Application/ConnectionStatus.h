#ifndef CONNECTIONSTATUS_H
#define CONNECTIONSTATUS_H

#include <QObject>
#include <QString>
#include <QTimer>

class cTCPMIDIConnectionPolicy;
class cTCPMIDIInptOutput;

// The TCP link to the mixer in words for the user: the state text, counting
// down each second to the next try while Stay Connected waits; why the link
// is down, beside that text; and a short summary for the tray. Changed() is
// emitted whenever any of them may read otherwise, after the link's own
// state signal has reached those connected to it before this was made: what
// they show of it can be completed here.
class cConnectionStatus : public QObject
{
    Q_OBJECT
public:
    // Neither is owned.
    cConnectionStatus(cTCPMIDIInptOutput* link, cTCPMIDIConnectionPolicy* policy, QObject* parent = nullptr);

    // The link's own state text ("Connected", "Not Connected", ...), with
    // the wait appended while a retry is due.
    QString GetStateText() const;
    // Where the link goes and why it is down, in whole sentences; empty
    // while Connect is unticked.
    QString GetDetails() const;
    // "connected to Stage (10.0.0.5)", "not connected to 10.0.0.5: refused"
    QString GetSummary() const;
    bool IsRetrying() const;

signals:
    void Changed();

private:
    void Update();
    QString GetUnitText() const;
    QString GetFailureWord() const;
    QString GetFailureSentence() const;
    int GetSecondsUntilNextTry() const;

    cTCPMIDIInptOutput* link;
    cTCPMIDIConnectionPolicy* policy;
    // Fires when the countdown's number next goes down.
    QTimer countdownTimer;
};

#endif
