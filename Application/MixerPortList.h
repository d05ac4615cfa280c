#ifndef MIXERPORTLIST_H
#define MIXERPORTLIST_H

#include "Application/SetupProblems.h"

#include <QString>
#include <QStringList>

class QComboBox;
class cMIDITranslatorConfiguration;

// One of the window's two lists of the mixer's system MIDI ports: "-" for
// none, the ports present, and the saved port shown as offline while it is
// absent. The saved port is the configuration's whether or not it is there;
// while it is absent, that is a problem of the setup. The list is as wide as
// its longest name, and each entry's tooltip is its whole name: what tells
// two ports apart is often at the end.
class cMixerPortList
{
public:
    using tSetPortName = void (cMIDITranslatorConfiguration::*)(QString);

    // setPortName is the configuration's setter for this list's direction;
    // an offline port is reported to problems as kind.
    cMixerPortList(QComboBox* comboBox, cMIDITranslatorConfiguration* configuration, tSetPortName setPortName,
                   cSetupProblems* problems, cSetupProblems::eKind kind);

    // Fills the list from the ports present and the port saved under settingsKey.
    void Repopulate(QStringList portNames, const QString& settingsKey);
    // The user chose the entry at index.
    void Select(int index, const QString& settingsKey);

private:
    void ShowChoice();

    QComboBox* comboBox;
    cMIDITranslatorConfiguration* configuration;
    tSetPortName setPortName;
    cSetupProblems* problems;
    cSetupProblems::eKind kind;
    QString savedPortName;
};

#endif
