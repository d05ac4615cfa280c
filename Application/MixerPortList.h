#ifndef MIXERPORTLIST_H
#define MIXERPORTLIST_H

#include <QString>
#include <QStringList>

class QComboBox;
class cMIDITranslatorConfiguration;

// One of the window's two lists of the mixer's system MIDI ports: "-" for
// none, the ports present, and the saved port shown as offline while it is
// absent. The saved port is the configuration's whether or not it is there.
class cMixerPortList
{
public:
    using tSetPortName = void (cMIDITranslatorConfiguration::*)(QString);

    // setPortName is the configuration's setter for this list's direction.
    cMixerPortList(QComboBox* comboBox, cMIDITranslatorConfiguration* configuration, tSetPortName setPortName);

    // Fills the list from the ports present and the port saved under settingsKey.
    void Repopulate(QStringList portNames, const QString& settingsKey);
    // The user chose the entry at index.
    void Select(int index, const QString& settingsKey);

private:
    QComboBox* comboBox;
    cMIDITranslatorConfiguration* configuration;
    tSetPortName setPortName;
};

#endif
