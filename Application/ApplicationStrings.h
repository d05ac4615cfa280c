#ifndef APPLICATIONSTRINGS_H
#define APPLICATIONSTRINGS_H

#include <QString>

// Texts shared by start-up and the main window. They are built before main
// runs, so start-up can register the settings identity with them first thing.
extern const QString PRODUCT_NAME_STRING;
extern const QString ORGANISATION_NAME_STRING;
extern const QString ORGANISATION_DOMAIN_STRING;
extern const QString ABOUT_TITLE;
extern const QString ABOUT_BODY;

// The name of the always-present first entry of the unit list: the unit whose
// address the user types in.
extern const QString CUSTOM_UNIT_STRING;

#endif
