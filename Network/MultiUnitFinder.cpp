#include "Network/MultiUnitFinder.h"

#include "Network/UnitFinder.h"

#include <algorithm>
#include <iterator>

namespace
{
// True for the units that answered a given find string.
class UnitFindStringIs
{
public:
    explicit UnitFindStringIs(const QString& findString) : findString(findString) {}
    bool operator()(const sUnit& unit) const { return unit.findString == findString; }

private:
    QString findString;
};
}

cMultiUnitFinder::cMultiUnitFinder(QObject* parent)
    : cMultiUnitFinder(std::chrono::seconds(1), parent)
{
}

cMultiUnitFinder::cMultiUnitFinder(std::chrono::milliseconds tickInterval, QObject* parent)
    : QObject(parent), tickInterval(tickInterval)
{
    RegisterUnitMetaType();
}

void cMultiUnitFinder::StartFindingUnits(QString findString)
{
    for (cUnitFinder* finder : finders)
    {
        if (finder->GetFindString() == findString)
        {
            return;
        }
    }
    cUnitFinder* finder = new cUnitFinder(findString, tickInterval, this);
    connect(finder, &cUnitFinder::UnitFound, this, &cMultiUnitFinder::SingleUnitFound);
    connect(finder, &cUnitFinder::UnitLost, this, &cMultiUnitFinder::SingleUnitLost);
    finders.append(finder);
}

void cMultiUnitFinder::StopFindingUnits(QString findString)
{
    for (int i = 0; i < finders.size(); ++i)
    {
        if (finders[i]->GetFindString() == findString)
        {
            delete finders.takeAt(i);
            break;
        }
    }
    // Listed by the find string alone, so that units filed under it are
    // reported lost even when no finder for it was running.
    const QList<sUnit> lostUnits = GetFoundUnitsOfFindString(findString);
    for (const sUnit& unit : lostUnits)
    {
        foundUnits.removeOne(unit);
        emit UnitLost(unit);
    }
}

void cMultiUnitFinder::StopFindingAllUnits()
{
    while (!finders.isEmpty())
    {
        delete finders.takeLast();
    }
    while (!foundUnits.isEmpty())
    {
        emit UnitLost(foundUnits.takeLast());
    }
}

QString cMultiUnitFinder::GetFindStringForMixer(const QString& mixerName)
{
    if (mixerName.contains(QStringLiteral("Tx")))
    {
        return QStringLiteral("TX Find");
    }
    if (mixerName.contains(QStringLiteral("KVR")))
    {
        return QStringLiteral("KVR Find");
    }
    return QString();
}

QList<sUnit> cMultiUnitFinder::GetFoundUnits() const
{
    return foundUnits;
}

QList<sUnit> cMultiUnitFinder::GetFoundUnitsOfFindString(QString findString) const
{
    QList<sUnit> units;
    std::copy_if(foundUnits.begin(), foundUnits.end(), std::back_inserter(units), UnitFindStringIs(findString));
    return units;
}

void cMultiUnitFinder::SingleUnitFound(sUnit unit)
{
    foundUnits.append(unit);
    emit UnitFound(unit);
}

void cMultiUnitFinder::SingleUnitLost(sUnit unit)
{
    foundUnits.removeOne(unit);
    emit UnitLost(unit);
}
