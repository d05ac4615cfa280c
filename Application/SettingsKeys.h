#ifndef SETTINGSKEYS_H
#define SETTINGSKEYS_H

#include <QString>

// Names of the reserved settings keys; nothing reads or writes the first five
// yet, they are kept so that no later key is given one of these names by
// accident. The last is the "Stay Connected" choice.
extern const QString CUSTOM_UNIT_SETTING_STRING;
extern const QString USER_UNIT_SETTING_STRING;
extern const QString HOST_NAME_SETTING_STRING;
extern const QString UNIT_NAME_SETTING_STRING;
extern const QString FIND_STRING_SETTING_STRING;
extern const QString TRY_CONNECT_SETTING_STRING;

// Produces the keys of the settings store. The mixer and DAW choices are
// global; everything else is kept per mixer type, so that each mixer type
// remembers its own connection mode, ports, MIDI channel and unit.
class cSettingsKeys
{
public:
    // The window calls this whenever the selected mixer type changes, before
    // it reads any per-mixer key.
    void SetMixerTypeString(const QString& mixerType);

    static QString GetMixerTypeKey();
    static QString GetDAWTypeKey();
    QString GetMixerConnectionTypeKey() const;
    QString GetMIDIChannelKey() const;
    QString GetMIDIInputPortKey() const;
    QString GetMIDIOutputPortKey() const;
    QString GetDefaultUnitNameKey() const;
    QString GetDefaultUnitIPAddressKey() const;
    QString GetTryConnectKey() const;
    // Whether a console that comes back is given the DAW's state again.
    QString GetResendStateKey() const;

private:
    QString mixerTypeString;
};

#endif
