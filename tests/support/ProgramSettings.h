#ifndef PROGRAMSETTINGS_H
#define PROGRAMSETTINGS_H

#include "Application/ApplicationStrings.h"

#include <QCoreApplication>
#include <QSettings>
#include <QString>

// The settings store as the program finds it, under the program's own
// identity, but in a folder of the test's: no test reads or writes the
// user's settings.
inline void UseSettingsIn(const QString& directory)
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, directory);
    QCoreApplication::setOrganizationName(ORGANISATION_NAME_STRING);
    QCoreApplication::setOrganizationDomain(ORGANISATION_DOMAIN_STRING);
    QCoreApplication::setApplicationName(PRODUCT_NAME_STRING);
}

#endif
