// Mixer discovery against mixer-sim processes answering from loopback
// addresses of their own, all hearing the same broadcasts.

#include "Network/MultiUnitFinder.h"
#include "Network/UnitFinder.h"

#include "support/MixerSimProcess.h"
#include "support/PrivateNetwork.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>

namespace
{
const QString TX = QStringLiteral("TX Find");
const QString KVR = QStringLiteral("KVR Find");
const sUnit UNIT_A{QHostAddress(QStringLiteral("127.0.0.11")), QStringLiteral("Unit A"), TX};
const sUnit UNIT_B{QHostAddress(QStringLiteral("127.0.0.12")), QStringLiteral("Unit B"), TX};
const sUnit UNIT_C{QHostAddress(QStringLiteral("127.0.0.13")), QStringLiteral("Desk C"), KVR};
const QString ODD_UNIT_ADDRESS = QStringLiteral("127.0.0.14");
// Ticks are given by hand where their count matters.
const std::chrono::hours NO_TICKS(1);
const std::chrono::milliseconds QUICK_TICKS(200);

std::unique_ptr<cMixerSimProcess> StartSim(const sUnit& unit)
{
    return std::make_unique<cMixerSimProcess>(QStringList{QStringLiteral("--address"), unit.address.toString(),
                                                          QStringLiteral("--find"), unit.findString,
                                                          QStringLiteral("--name"), unit.name});
}

QList<sUnit> Units(const QSignalSpy& spy)
{
    QList<sUnit> units;
    for (const QList<QVariant>& arguments : spy)
    {
        units.append(arguments.at(0).value<sUnit>());
    }
    return units;
}

bool SameUnits(QList<sUnit> actual, QList<sUnit> expected)
{
    auto byName = [](const sUnit& a, const sUnit& b) { return a.name < b.name; };
    std::sort(actual.begin(), actual.end(), byName);
    std::sort(expected.begin(), expected.end(), byName);
    return actual == expected;
}
}

class TestDiscovery : public QObject
{
    Q_OBJECT
public:
    // The finders broadcast.
    static void initMain() { RequirePrivateNetwork(); }

private slots:
    void AnyAnswerIsAName_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("name");
        QTest::newRow("bytes after a zero byte") << "4D 69 78 00 46 46 FF" << "Mix";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("binary") << "80 FF 41 7F" << QString::fromLatin1("\x80\xFF\x41\x7F", 4);
        QTest::newRow("huge") << QString::fromLatin1(QByteArray(60000, 'A').toHex()) << QString(60000, QLatin1Char('A'));
    }

    void AnyAnswerIsAName()
    {
        QFETCH(QString, answer);
        QFETCH(QString, name);
        cMixerSimProcess sim({QStringLiteral("--address"), ODD_UNIT_ADDRESS, QStringLiteral("--find"), TX,
                              QStringLiteral("--answer-hex"), answer});
        QVERIFY(sim.IsListening());
        cUnitFinder finder(TX, NO_TICKS);
        QSignalSpy found(&finder, &cUnitFinder::UnitFound);
        finder.TimerFired();
        QTRY_COMPARE(Units(found), QList<sUnit>({sUnit{QHostAddress(ODD_UNIT_ADDRESS), name, TX}}));
    }

    void KeepsAtMostTheUnitLimit()
    {
        cUnitFinder finder(TX, NO_TICKS);
        QSignalSpy found(&finder, &cUnitFinder::UnitFound);
        for (int i = 1; i <= 257; ++i)
        {
            finder.UnitRespond(sUnit{QHostAddress(quint32(0x7F000000 + i)), QStringLiteral("Unit"), TX});
        }
        QCOMPARE(found.count(), 256);
        QCOMPARE(finder.GetFoundUnits().size(), 256);
        QCOMPARE(finder.GetFoundUnits().last().address, QHostAddress(QStringLiteral("127.0.1.0")));
        // Of the units named alike, the first found gives its address.
        QString name = QStringLiteral("Unit");
        QCOMPARE(finder.GetHostAddressByUnitName(name), QHostAddress(QStringLiteral("127.0.0.1")));

        // A known unit answering again is refreshed, not added, even at the limit.
        finder.UnitRespond(sUnit{QHostAddress(QStringLiteral("127.0.0.1")), QStringLiteral("Unit"), TX});
        QCOMPARE(found.count(), 256);
    }

    // A unit that answers every tick stays; one silent for five ticks is lost, once.
    void LosesAUnitSilentForFiveTicks()
    {
        cUnitFinder finder(TX, NO_TICKS);
        QSignalSpy lost(&finder, &cUnitFinder::UnitLost);
        finder.UnitRespond(UNIT_B);
        for (int tick = 0; tick < 10; ++tick)
        {
            finder.UnitRespond(UNIT_A);
            QCOMPARE(lost.count(), tick < 5 ? 0 : 1);
            finder.TimerFired();
        }
        QCOMPARE(Units(lost), QList<sUnit>({UNIT_B}));
        QCOMPARE(finder.GetFoundUnits(), QList<sUnit>({UNIT_A}));
    }

    void ExpiryRemovesByRecordedIndices()
    {
        const sUnit unitD{QHostAddress(QStringLiteral("127.0.0.15")), QStringLiteral("Unit D"), TX};
        cUnitFinder finder(TX, NO_TICKS);
        QSignalSpy lost(&finder, &cUnitFinder::UnitLost);
        finder.UnitRespond(UNIT_A);
        finder.UnitRespond(UNIT_B);
        finder.TimerFired();
        finder.UnitRespond(unitD);
        for (int i = 0; i < 4; ++i)
        {
            finder.TimerFired();
        }
        // A and B expire together: index 0 goes, then index 1 of what is left,
        // which is D. B stays listed though reported lost.
        QCOMPARE(Units(lost), QList<sUnit>({UNIT_A, UNIT_B}));
        QCOMPARE(finder.GetFoundUnits(), QList<sUnit>({UNIT_B}));
        for (int i = 0; i < 6; ++i)
        {
            finder.TimerFired();
        }
        QCOMPARE(lost.count(), 2);
    }

    void MultiFinderFamilies()
    {
        auto simA = StartSim(UNIT_A);
        auto simB = StartSim(UNIT_B);
        auto simC = StartSim(UNIT_C);
        QVERIFY(simA->IsListening() && simB->IsListening() && simC->IsListening());

        cMultiUnitFinder finder(QUICK_TICKS);
        QSignalSpy found(&finder, &cMultiUnitFinder::UnitFound);
        QSignalSpy lost(&finder, &cMultiUnitFinder::UnitLost);
        finder.StartFindingUnits(TX);
        finder.StartFindingUnits(KVR);
        finder.StartFindingUnits(TX);
        QCOMPARE(finder.findChildren<cUnitFinder*>().size(), 2);
        QTRY_COMPARE(finder.GetFoundUnits().size(), 3);
        // Several more rounds of answers find nobody twice.
        for (int i = 0; i < 3; ++i)
        {
            QVERIFY(simC->WaitForLine(QStringLiteral("^answered ")));
        }
        QTest::qWait(50);
        QVERIFY(SameUnits(Units(found), {UNIT_A, UNIT_B, UNIT_C}));
        QCOMPARE(finder.GetFoundUnitsOfFindString(KVR), QList<sUnit>({UNIT_C}));
        QVERIFY(SameUnits(finder.GetFoundUnitsOfFindString(TX), {UNIT_A, UNIT_B}));
        finder.StopFindingUnits(QStringLiteral("XR Find"));
        QCOMPARE(lost.count(), 0);

        const QList<sUnit> txUnits = finder.GetFoundUnitsOfFindString(TX);
        finder.StopFindingUnits(TX);
        QCOMPARE(Units(lost), txUnits);
        QCOMPARE(finder.GetFoundUnits(), QList<sUnit>({UNIT_C}));

        // Found again, they go to the end of the list.
        lost.clear();
        finder.StartFindingUnits(TX);
        QCOMPARE(finder.findChildren<cUnitFinder*>().size(), 2);
        QTRY_COMPARE(finder.GetFoundUnits().size(), 3);
        QCOMPARE(finder.GetFoundUnits().first(), UNIT_C);
        QCOMPARE(lost.count(), 0);

        QList<sUnit> lastFoundFirst = finder.GetFoundUnits();
        std::reverse(lastFoundFirst.begin(), lastFoundFirst.end());
        finder.StopFindingAllUnits();
        QCOMPARE(Units(lost), lastFoundFirst);
        QVERIFY(finder.GetFoundUnits().isEmpty());
        QVERIFY(finder.findChildren<cUnitFinder*>().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDiscovery)
#include "test_discovery.moc"
