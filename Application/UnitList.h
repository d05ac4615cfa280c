#ifndef UNITLIST_H
#define UNITLIST_H

#include "Network/Unit.h"

#include <QList>
#include <QString>

class QComboBox;

// The window's list of units to connect to: the custom unit, whose address
// the user types, always first, then the units that discovery found, each
// entry carrying its whole unit. Changes made here are not announced as the
// user's choice.
class cUnitList
{
public:
    cUnitList(QComboBox* comboBox, const QHostAddress& customUnitAddress);

    static bool IsCustomUnit(const sUnit& unit);

    void Fill(const QList<sUnit>& foundUnits);
    bool HasFoundUnits() const;
    // The entry of the first found unit of that name, -1 for none.
    int FindFoundUnit(const QString& name) const;
    void Select(int index);
    sUnit GetUnit(int index) const;
    sUnit GetSelectedUnit() const;
    // The address the custom unit offers, in the list too.
    void SetCustomUnitAddress(const QHostAddress& address);

private:
    QComboBox* comboBox;
    sUnit customUnit;
};

#endif
