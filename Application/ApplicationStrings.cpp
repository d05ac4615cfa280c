#include "Application/ApplicationStrings.h"

const QString PRODUCT_NAME_STRING = QStringLiteral("Tessera");
const QString ORGANISATION_NAME_STRING = QStringLiteral("Kestrel");
const QString ORGANISATION_DOMAIN_STRING = QStringLiteral("com.kestrel");
const QString ABOUT_TITLE = QStringLiteral("About ") + PRODUCT_NAME_STRING;
const QString ABOUT_BODY = PRODUCT_NAME_STRING + QStringLiteral(" " TESSERA_VERSION_STRING "\n"
    "Copyright (c) 2026 Kestrel.\n"
    "All rights reserved.");
const QString CUSTOM_UNIT_STRING = QStringLiteral("Custom");
