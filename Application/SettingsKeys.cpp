#include "Application/SettingsKeys.h"

const QString CUSTOM_UNIT_SETTING_STRING = QStringLiteral("CustomUnit");
const QString USER_UNIT_SETTING_STRING = QStringLiteral("SelectedUnit");
const QString HOST_NAME_SETTING_STRING = QStringLiteral("HostName");
const QString UNIT_NAME_SETTING_STRING = QStringLiteral("UnitName");
const QString FIND_STRING_SETTING_STRING = QStringLiteral("FindString");
const QString TRY_CONNECT_SETTING_STRING = QStringLiteral("TryConnect");

void cSettingsKeys::SetMixerTypeString(const QString& mixerType)
{
    mixerTypeString = mixerType;
}

QString cSettingsKeys::GetMixerTypeKey()
{
    return QStringLiteral("MixerType");
}

QString cSettingsKeys::GetDAWTypeKey()
{
    return QStringLiteral("DAWType");
}

QString cSettingsKeys::GetMixerConnectionTypeKey() const
{
    return mixerTypeString + QStringLiteral("/Mode");
}

QString cSettingsKeys::GetMIDIChannelKey() const
{
    return mixerTypeString + QStringLiteral("/MIDIChannel");
}

QString cSettingsKeys::GetMIDIInputPortKey() const
{
    return mixerTypeString + QStringLiteral("/MIDI/InputPort");
}

QString cSettingsKeys::GetMIDIOutputPortKey() const
{
    return mixerTypeString + QStringLiteral("/MIDI/OutputPort");
}

QString cSettingsKeys::GetDefaultUnitNameKey() const
{
    return mixerTypeString + QStringLiteral("/Connection/DefaultUnitName");
}

// The doubled separator is how this key has always been written. The settings
// store folds a run of separators into one, so the value sits beside
// DefaultUnitName.
QString cSettingsKeys::GetDefaultUnitIPAddressKey() const
{
    return mixerTypeString + QStringLiteral("/Connection//DefaultUnitIP");
}

QString cSettingsKeys::GetTryConnectKey() const
{
    return mixerTypeString + QLatin1Char('/') + TRY_CONNECT_SETTING_STRING;
}

QString cSettingsKeys::GetResendStateKey() const
{
    return mixerTypeString + QStringLiteral("/ResendState");
}
