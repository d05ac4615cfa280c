#include "Application/MixerPortList.h"

#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QComboBox>
#include <QSettings>
#include <QSignalBlocker>

#include <utility>

namespace
{
const QString NO_PORT_ENTRY = QStringLiteral("-");
const QString OFFLINE_PORT_PREFIX = QStringLiteral("(Offline) ");
}

cMixerPortList::cMixerPortList(QComboBox* comboBox, cMIDITranslatorConfiguration* configuration,
                               tSetPortName setPortName, cSetupProblems* problems, cSetupProblems::eKind kind)
    : comboBox(comboBox), configuration(configuration), setPortName(setPortName), problems(problems), kind(kind)
{
    comboBox->setSizeAdjustPolicy(QComboBox::AdjustToContents);
}

void cMixerPortList::Repopulate(QStringList portNames, const QString& settingsKey)
{
    portNames.sort(Qt::CaseSensitive);

    // The saved port stays the configured one even while it is unplugged, so
    // traffic resumes by itself when it comes back.
    savedPortName = QSettings().value(settingsKey).toString();
    (configuration->*setPortName)(savedPortName);

    const QSignalBlocker blocker(comboBox);
    comboBox->clear();
    comboBox->addItem(NO_PORT_ENTRY);
    for (const QString& portName : std::as_const(portNames))
    {
        comboBox->addItem(portName, portName);
        comboBox->setItemData(comboBox->count() - 1, portName, Qt::ToolTipRole);
    }
    if (savedPortName.isEmpty())
    {
        comboBox->setCurrentIndex(0);
    }
    else if (portNames.contains(savedPortName))
    {
        comboBox->setCurrentIndex(portNames.indexOf(savedPortName) + 1);
    }
    else
    {
        comboBox->addItem(OFFLINE_PORT_PREFIX + savedPortName);
        comboBox->setItemData(comboBox->count() - 1, comboBox->itemText(comboBox->count() - 1), Qt::ToolTipRole);
        comboBox->setCurrentIndex(comboBox->count() - 1);
    }
    ShowChoice();
}

void cMixerPortList::Select(int index, const QString& settingsKey)
{
    // "-" clears the port; the offline entry carries no name and changes nothing.
    const QString portName = comboBox->itemData(index).toString();
    if (index == 0 || !portName.isEmpty())
    {
        savedPortName = portName;
        (configuration->*setPortName)(portName);
        QSettings().setValue(settingsKey, portName);
    }
    ShowChoice();
}

void cMixerPortList::ShowChoice()
{
    comboBox->setToolTip(comboBox->currentText());
    const bool offline = comboBox->currentIndex() > 0 && comboBox->currentData().isNull();
    problems->SetOfflinePort(kind, offline ? savedPortName : QString());
}
