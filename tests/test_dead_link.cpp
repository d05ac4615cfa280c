// The TCP link to a mixer that loses power: mixer-sim in a network namespace
// of its own behind a virtual link, cut by deleting the link before the
// mixer goes (so no FIN or RST ever reaches us), then brought back at the
// same address. Nothing is written to the link meanwhile.

#include "Network/RetryTimer.h"
#include "Network/TCPMIDIConnectionPolicy.h"
#include "Network/TCPMIDIInptOutput.h"

#include "support/MixerSimProcess.h"
#include "support/PrivateNetwork.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <memory>
#include <sched.h>

namespace
{
using eState = cTCPMIDIConnectionPolicy::eState;

const QHostAddress MIXER(QStringLiteral("10.213.1.2"));

bool Run(const QString& script, const QStringList& arguments = {})
{
    return QProcess::execute(QStringLiteral("sh"), QStringList{QStringLiteral("-c"), script, QStringLiteral("sh")}
        + arguments) == 0;
}

// The mixer on a network of its own: a namespace held open by a process that
// waits on its input, linked to ours by console0 (10.213.1.1) and console1
// (the mixer's address), with mixer-sim listening in it.
class cMixerBehindLink
{
public:
    bool Start()
    {
        holder.start(QStringLiteral("unshare"), {QStringLiteral("--net"), QStringLiteral("--"), QStringLiteral("sh"),
            QStringLiteral("-c"), QStringLiteral("echo ready; exec cat")});
        if (!holder.waitForReadyRead(5000))
        {
            return false;
        }
        const QString pid = QString::number(holder.processId());
        const QString ns = QStringLiteral("--net=/proc/%1/ns/net").arg(pid);
        if (!Run(QStringLiteral("ip link add console0 type veth peer name console1 netns \"$1\""
                                " && ip address add 10.213.1.1/24 dev console0 && ip link set console0 up"
                                " && nsenter \"$2\" sh -c 'ip link set lo up && ip link set console1 up"
                                " && ip address add 10.213.1.2/24 dev console1'"),
                {pid, ns}))
        {
            return false;
        }
        sim.reset(new cMixerSimProcess({QStringLiteral("--address"), MIXER.toString()},
            {QStringLiteral("nsenter"), ns, QStringLiteral("--")}));
        return sim->IsListening();
    }

    // The link goes first, so that nothing the mixer's end says on leaving
    // reaches us; then the mixer and its namespace.
    void Cut()
    {
        QVERIFY(Run(QStringLiteral("ip link delete console0")));
        sim->Process().kill();
        sim.reset();
        holder.closeWriteChannel();
        QVERIFY(holder.waitForFinished(5000));
    }

    cMixerSimProcess& Sim() { return *sim; }

private:
    QProcess holder;
    std::unique_ptr<cMixerSimProcess> sim;
};
}

class TestDeadLink : public QObject
{
    Q_OBJECT
public:
    static void initMain() { RequirePrivateNetwork(); }

private slots:
    // The mixer's namespace and its link are made from a namespace of this
    // test's own, so that the private network stays as other tests check it.
    void initTestCase()
    {
        QVERIFY2(unshare(CLONE_NEWNET) == 0, "cannot make a network namespace");
        QVERIFY(Run(QStringLiteral("ip link set lo up")));
    }

    void VanishedMixerIsNoticedAndTriedAgain_data()
    {
        QTest::addColumn<bool>("stayConnected");
        QTest::newRow("Stay Connected off") << false;
        QTest::newRow("Stay Connected on") << true;
    }

    void VanishedMixerIsNoticedAndTriedAgain()
    {
        QFETCH(bool, stayConnected);
        cMixerBehindLink mixer;
        QVERIFY(mixer.Start());
        cTCPMIDIInptOutput link;
        cTCPMIDIConnectionPolicy policy(&link, new cRetryTimer);
        policy.SetStayConnected(stayConnected);
        policy.SetInUse(true);
        policy.Connect(QStringLiteral("Stage"), MIXER);
        QVERIFY(mixer.Sim().WaitForLine(QStringLiteral("^connected ")));
        QTRY_VERIFY(link.IsConnected());

        QSignalSpy texts(&link, &cTCPMIDIInptOutput::StateStringChanged);
        QElapsedTimer sinceCut;
        mixer.Cut();
        sinceCut.start();
        QTRY_VERIFY_WITH_TIMEOUT(
            !texts.isEmpty() && texts.last().at(0).toString() == QLatin1String("Not Connected"), 15000);
        qInfo("noticed after %lld ms", sinceCut.elapsed());
        QTRY_COMPARE(policy.GetState(), stayConnected ? eState::Retrying : eState::Down);
        if (!stayConnected)
        {
            return;
        }

        // Back at the same address, it is connected to by itself.
        QVERIFY(mixer.Start());
        QElapsedTimer sinceReturn;
        sinceReturn.start();
        QVERIFY(mixer.Sim().WaitForLine(QStringLiteral("^connected "), 20000));
        qInfo("connected again %lld ms after its return", sinceReturn.elapsed());
        QTRY_VERIFY(link.IsConnected());
        QSignalSpy readReady(&link, &cMIDIInput::MIDIReadReady);
        mixer.Sim().Input(QStringLiteral("B0 07 7F"));
        QVERIFY(readReady.wait());
        QByteArray data;
        link.ReadMIDIData(data);
        QCOMPARE(data.toHex(' '), QByteArray("b0 07 7f"));
        mixer.Cut();
    }
};

QTEST_GUILESS_MAIN(TestDeadLink)
#include "test_dead_link.moc"
