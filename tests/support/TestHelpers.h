#ifndef TESTHELPERS_H
#define TESTHELPERS_H

#include "StdoutCapture.h"

#include <QByteArray>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QStringList>

// "B0 07 7F" -> the bytes.
inline QByteArray MIDIBytes(const QString& hex)
{
    return QByteArray::fromHex(hex.toLatin1());
}

// Each write as "B0 07 7F", so a failed comparison shows what went out.
inline QStringList HexWrites(const QList<QByteArray>& writes)
{
    QStringList hex;
    for (const QByteArray& write : writes)
    {
        hex.append(QString::fromLatin1(write.toHex(' ').toUpper()));
    }
    return hex;
}

// The error trace lines an action writes. The capture ends with the action,
// so a failing comparison afterwards is still shown.
template <typename Action>
QStringList ErrorLinesOf(Action action)
{
    cStdoutCapture capture;
    action();
    return capture.ErrorLines();
}

// The start of the error trace line for message written from source, up to
// the line number: "ERROR: message\t(source:".
inline QString ErrorFrom(const char* source, const QString& message)
{
    return QStringLiteral("ERROR: ") + message + QStringLiteral("\t(") + QLatin1String(source) + QLatin1Char(':');
}

inline QJsonObject ReadJsonObject(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

#endif
