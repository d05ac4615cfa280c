#include "Application/UnitList.h"

#include "Application/ApplicationStrings.h"

#include <QComboBox>
#include <QSignalBlocker>

cUnitList::cUnitList(QComboBox* comboBox, const QHostAddress& customUnitAddress)
    : comboBox(comboBox), customUnit{customUnitAddress, CUSTOM_UNIT_STRING, QString()}
{
}

bool cUnitList::IsCustomUnit(const sUnit& unit)
{
    return unit.name == CUSTOM_UNIT_STRING && unit.findString.isEmpty();
}

void cUnitList::Fill(const QList<sUnit>& foundUnits)
{
    const QSignalBlocker blocker(comboBox);
    comboBox->clear();
    comboBox->addItem(customUnit.name, QVariant::fromValue(customUnit));
    for (const sUnit& unit : foundUnits)
    {
        comboBox->addItem(unit.name, QVariant::fromValue(unit));
    }
}

bool cUnitList::HasFoundUnits() const
{
    return comboBox->count() > 1;
}

int cUnitList::FindFoundUnit(const QString& name) const
{
    for (int index = 1; index < comboBox->count(); ++index)
    {
        if (GetUnit(index).name == name)
        {
            return index;
        }
    }
    return -1;
}

void cUnitList::Select(int index)
{
    const QSignalBlocker blocker(comboBox);
    comboBox->setCurrentIndex(index);
}

sUnit cUnitList::GetUnit(int index) const
{
    return comboBox->itemData(index).value<sUnit>();
}

sUnit cUnitList::GetSelectedUnit() const
{
    return comboBox->currentData().value<sUnit>();
}

void cUnitList::SetCustomUnitAddress(const QHostAddress& address)
{
    // The list's first entry carries its own copy of the custom unit.
    customUnit.address = address;
    if (comboBox->count() > 0)
    {
        comboBox->setItemData(0, QVariant::fromValue(customUnit));
    }
}
