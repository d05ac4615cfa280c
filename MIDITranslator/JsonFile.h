#ifndef JSONFILE_H
#define JSONFILE_H

#include <QJsonDocument>
#include <QString>

// Reads and parses the JSON files the program ships (rule files, the mixer
// map). A file that cannot be opened or parsed gives one error trace line and
// a null document, so the caller carries on with an empty configuration.
QJsonDocument ReadJsonDocumentFromFile(const QString& path);

#endif
