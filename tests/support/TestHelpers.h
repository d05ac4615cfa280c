#ifndef TESTHELPERS_H
#define TESTHELPERS_H

#include "StdoutCapture.h"

#include <QByteArray>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QSignalSpy>
#include <QStringList>

// A file below tests/data.
inline QString TestDataFile(const QString& path)
{
    return QStringLiteral(TESSERA_TEST_DATA_DIR "/") + path;
}

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

// Trace lines less their line numbers, which move with every edit:
// "ERROR: message\t(source)".
inline QStringList WithoutLineNumbers(QStringList lines)
{
    return lines.replaceInStrings(QRegularExpression(QStringLiteral(":\\d+\\)$")), QStringLiteral(")"));
}

// The error trace lines an action writes, less their line numbers. The
// capture ends with the action, so a failing comparison afterwards is shown.
template <typename Action>
QStringList ErrorLinesOf(Action action)
{
    cStdoutCapture capture;
    action();
    return WithoutLineNumbers(capture.ErrorLines());
}

// The error trace line for message written from source, less its number.
inline QString ErrorFrom(const char* source, const QString& message)
{
    return QStringLiteral("ERROR: ") + message + QStringLiteral("\t(") + QLatin1String(source) + QLatin1Char(')');
}

// The whole file, or nothing if it cannot be read.
inline QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QJsonObject ReadJsonObject(const QString& path)
{
    return QJsonDocument::fromJson(ReadFile(path)).object();
}

// The first argument of each signal a spy recorded, as text.
inline QStringList FirstArguments(const QSignalSpy& spy)
{
    QStringList texts;
    for (const QList<QVariant>& arguments : spy)
    {
        texts.append(arguments.at(0).toString());
    }
    return texts;
}

// A System Exclusive message of 1,000 bytes, longer than the pieces the
// kernel's MIDI bridge passes on at a time.
inline QByteArray LongSystemExclusive()
{
    QByteArray bytes = QByteArray::fromHex("F07D");
    for (int index = 0; bytes.size() < 999; ++index)
    {
        bytes.append(static_cast<char>((index * 7) & 0x7F));
    }
    return bytes + QByteArray::fromHex("F7");
}

#endif
