// The connection policy of the TCP link, driven as the window drives it but
// without widgets, against mixers played by servers on loopback addresses of
// their own, on a clock the test moves by hand.

#include "Network/RetryTimer.h"
#include "Network/TCPMIDIConnectionPolicy.h"
#include "Network/TCPMIDIInptOutput.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace
{
using eState = cTCPMIDIConnectionPolicy::eState;

const QHostAddress STAGE(QStringLiteral("127.0.0.31"));
const QHostAddress STAGE_MOVED(QStringLiteral("127.0.0.32"));
const QString STAGE_NAME = QStringLiteral("Stage");

// Time that passes only when the test says so.
class cManualRetryTimer : public cRetryTimer
{
public:
    qint64 GetNowMs() const override { return now; }
    void Start(int delayMs) override
    {
        due = now + delayMs;
        active = true;
    }
    void Stop() override { active = false; }
    bool IsActive() const override { return active; }

    void Advance(int ms)
    {
        now += ms;
        if (active && now >= due)
        {
            active = false;
            emit Timeout();
        }
    }

private:
    qint64 now = 0;
    qint64 due = 0;
    bool active = false;
};

// A policy over its own link, in the TCP/IP mode, with the saved unit chosen.
struct sPolicyUnderTest
{
    explicit sPolicyUnderTest(bool stayConnected)
        : timer(new cManualRetryTimer), policy(&link, timer)
    {
        policy.SetStayConnected(stayConnected);
        policy.SetSavedUnit(STAGE_NAME, STAGE);
        policy.SetInUse(true);
        policy.SetChosenUnit(STAGE_NAME, STAGE);
        QObject::connect(&policy, &cTCPMIDIConnectionPolicy::StateChanged, [this](eState state) {
            states.append(state);
            if (state == eState::Retrying)
            {
                delays.append(static_cast<int>(policy.GetMsUntilNextTry()));
            }
        });
    }

    bool WaitFor(eState state) { return QTest::qWaitFor([&]() { return policy.GetState() == state; }, 5000); }

    cTCPMIDIInptOutput link;
    cManualRetryTimer* timer;
    cTCPMIDIConnectionPolicy policy;
    QList<eState> states;
    QList<int> delays;
};

// A mixer that takes the link and, when told, drops it.
struct sMixer
{
    explicit sMixer(const QHostAddress& address) { QVERIFY(server.listen(address, cTCPMIDIInptOutput::MIXER_MIDI_PORT)); }
    bool WaitForLink(int timeoutMs = 5000)
    {
        return server.waitForNewConnection(timeoutMs) || server.hasPendingConnections();
    }
    void DropLink() { delete server.nextPendingConnection(); }

    QTcpServer server;
};
}

class TestConnectionPolicy : public QObject
{
    Q_OBJECT
private slots:
    // Stay Connected ticks Connect by itself once the saved unit is chosen in
    // the TCP/IP mode, and only then.
    void ConnectsToTheSavedUnitByItself()
    {
        sPolicyUnderTest t(true);
        QSignalSpy wanted(&t.policy, &cTCPMIDIConnectionPolicy::ConnectWanted);
        QCOMPARE(t.policy.GetState(), eState::WaitingForUnit);
        QTRY_COMPARE(wanted.count(), 1);

        t.policy.SetChosenUnit(QStringLiteral("Other"), STAGE);
        t.policy.SetChosenUnit(STAGE_NAME, STAGE_MOVED);
        t.policy.SetChosenUnit(STAGE_NAME, QHostAddress());
        t.policy.SetInUse(false);
        t.policy.SetChosenUnit(STAGE_NAME, STAGE);
        QTest::qWait(50);
        QCOMPARE(wanted.count(), 1);

        // The user unticking Connect holds it off until the option is chosen anew.
        t.policy.SetInUse(true);
        t.policy.ConnectClicked(false);
        QCOMPARE(t.policy.GetState(), eState::Off);
        QTest::qWait(50);
        QCOMPARE(wanted.count(), 1);
        t.policy.StayConnectedChosen(true);
        QTRY_COMPARE(wanted.count(), 2);
    }

    // The waits between attempts, exactly, on the test's clock: the real ones.
    void RetriesWaitLongerUntilAConnectionHolds()
    {
        sPolicyUnderTest t(true);
        t.policy.Connect(STAGE_NAME, STAGE);
        QTRY_COMPARE(t.delays.size(), 1);
        while (t.delays.size() < 6)
        {
            const int attempts = t.delays.size();
            t.timer->Advance(t.delays.last());
            QTRY_COMPARE(t.delays.size(), attempts + 1);
        }
        QCOMPARE(t.delays, QList<int>({500, 1000, 2000, 4000, 8000, 8000}));

        // A connection dropped at once does not start the waits afresh; one
        // that held as long as the longest wait does.
        sMixer mixer(STAGE);
        t.timer->Advance(8000);
        QVERIFY(mixer.WaitForLink());
        QVERIFY(t.WaitFor(eState::Connected));
        mixer.DropLink();
        QTRY_COMPARE(t.delays.size(), 7);
        QCOMPARE(t.delays.last(), 8000);
        t.timer->Advance(8000);
        QVERIFY(mixer.WaitForLink());
        QVERIFY(t.WaitFor(eState::Connected));
        t.timer->Advance(8000);
        mixer.DropLink();
        QTRY_COMPARE(t.delays.size(), 8);
        QCOMPARE(t.delays.last(), 500);
    }

    // While a retry is pending the unit list is held, so the saved unit is
    // still tried after it stopped answering; when it answers anew the list
    // is taken, the window chooses the unit where it answers, and the link
    // is connected there without waiting.
    void SavedUnitAnsweringAnewIsTriedAtOnce()
    {
        sPolicyUnderTest t(true);
        QSignalSpy wanted(&t.policy, &cTCPMIDIConnectionPolicy::ConnectWanted);
        t.policy.Connect(STAGE_NAME, STAGE);
        QVERIFY(t.WaitFor(eState::Retrying));
        const sUnit other{STAGE_MOVED, QStringLiteral("Other"), QStringLiteral("TX Find")};
        const sUnit saved{STAGE, STAGE_NAME, QStringLiteral("TX Find")};
        const sUnit moved{STAGE_MOVED, STAGE_NAME, QStringLiteral("TX Find")};
        QVERIFY(t.policy.HoldsUnitList({}));
        QVERIFY(t.policy.HoldsUnitList({other}));
        QVERIFY(!t.policy.HoldsUnitList({other, saved}));
        QVERIFY(!t.policy.HoldsUnitList({moved}));

        sMixer mixer(STAGE_MOVED);
        wanted.clear();
        t.policy.Disconnect();
        t.policy.SetChosenUnit(STAGE_NAME, STAGE_MOVED);
        t.policy.SetSavedUnit(STAGE_NAME, STAGE_MOVED);
        QTRY_COMPARE(wanted.count(), 1);
        t.policy.Connect(STAGE_NAME, STAGE_MOVED);
        QVERIFY(mixer.WaitForLink());
        QVERIFY(t.WaitFor(eState::Connected));
        QVERIFY(!t.policy.HoldsUnitList({saved}));
    }

    // Unticking Connect ends the link and every retry, whatever the clock does.
    void UntickingStopsEverything()
    {
        sPolicyUnderTest t(true);
        t.policy.Connect(STAGE_NAME, STAGE);
        QVERIFY(t.WaitFor(eState::Retrying));
        t.policy.Disconnect();
        t.policy.ConnectClicked(false);
        QCOMPARE(t.policy.GetState(), eState::Off);
        sMixer mixer(STAGE);
        t.timer->Advance(60000);
        QVERIFY(!mixer.WaitForLink(500));
        QCOMPARE(t.link.GetSocketState(), QAbstractSocket::UnconnectedState);
    }

    // Without the option the Connect box alone decides: a dropped link stays
    // down, Connect stays ticked, and nothing is connected by itself.
    void OptionOffLeavesTheBoxToDecide()
    {
        sPolicyUnderTest t(false);
        QSignalSpy wanted(&t.policy, &cTCPMIDIConnectionPolicy::ConnectWanted);
        QCOMPARE(t.policy.GetState(), eState::Off);
        sMixer mixer(STAGE);
        t.policy.Connect(STAGE_NAME, STAGE);
        QVERIFY(mixer.WaitForLink());
        QVERIFY(t.WaitFor(eState::Connected));
        mixer.DropLink();
        QVERIFY(t.WaitFor(eState::Down));
        t.timer->Advance(60000);
        QVERIFY(!mixer.WaitForLink(500));
        QVERIFY(!t.policy.HoldsUnitList({}));
        t.policy.Disconnect();
        QTest::qWait(50);
        QCOMPARE(wanted.count(), 0);
        QVERIFY(t.delays.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestConnectionPolicy)
#include "test_connection_policy.moc"
