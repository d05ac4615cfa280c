#ifndef MULTIUNITFINDER_H
#define MULTIUNITFINDER_H

#include "Network/Unit.h"

#include <QList>
#include <QObject>
#include <QString>

#include <chrono>

class cUnitFinder;

// Runs one unit finder per find string (mixer family) and keeps the merged
// list of their units, so that a listener's view always matches
// GetFoundUnits() when a found or lost signal arrives.
class cMultiUnitFinder : public QObject
{
    Q_OBJECT
public:
    explicit cMultiUnitFinder(QObject* parent = nullptr);
    // Its finders tick at the given interval instead of once a second; for tests.
    cMultiUnitFinder(std::chrono::milliseconds tickInterval, QObject* parent = nullptr);

    void StartFindingUnits(QString findString);
    // Every unit of that find string is reported lost.
    void StopFindingUnits(QString findString);
    // Every unit is reported lost, the last found first.
    void StopFindingAllUnits();

    // The find string that a mixer's family answers to, from its type name:
    // "TX Find" for the Tx consoles, "KVR Find" for the KVR ones, else none.
    static QString GetFindStringForMixer(const QString& mixerName);

    QList<sUnit> GetFoundUnits() const;
    QList<sUnit> GetFoundUnitsOfFindString(QString findString) const;

public slots:
    void SingleUnitFound(sUnit unit);
    void SingleUnitLost(sUnit unit);

signals:
    void UnitFound(sUnit unit);
    void UnitLost(sUnit unit);

private:
    std::chrono::milliseconds tickInterval;
    QList<cUnitFinder*> finders;
    QList<sUnit> foundUnits;
};

#endif
