#ifndef JSONFILE_H
#define JSONFILE_H

#include <QJsonDocument>
#include <QJsonParseError>
#include <QString>

// Reads and parses the JSON files the program ships (rule files, the mixer
// map). A file that cannot be opened or parsed gives one error trace line and
// a null document, so the caller carries on with an empty configuration; the
// trace is for the log, and problem, when asked for, says the same to a user:
// "PATH: cannot be opened: REASON" or, for a syntax error, where it is.
QJsonDocument ReadJsonDocumentFromFile(const QString& path, QString* problem = nullptr);

// "PATH:LINE:COLUMN: JSON syntax error: MESSAGE" for the parser's error in
// text. The parser gives a byte offset; people fixing a file by hand want the
// line and column an editor shows: both count from 1, the column in
// characters, not bytes.
QString DescribeJsonSyntaxError(const QString& path, const QByteArray& text, const QJsonParseError& error);

#endif
