#include "MIDITranslator/FileLocations.h"

#include <QCoreApplication>
#include <QDir>

QString cFileLocations::GetConfigurationFileDirectory()
{
    const QChar separator = QDir::separator();
    return QCoreApplication::applicationDirPath() + separator + QStringLiteral("..") + separator +
           QStringLiteral("Resources") + separator + QStringLiteral("Maps") + separator;
}

QString cFileLocations::GetMixerMapFilePath()
{
    return GetConfigurationFileDirectory() + QStringLiteral("mixer_map.json");
}
