#ifndef HEXTEXT_H
#define HEXTEXT_H

#include <QByteArray>
#include <QString>

// MIDI bytes as people write them: "B0 07 7F" or "b0077f".
class cHexText
{
public:
    // Reads whitespace-separated groups of hex digit pairs; false (and bytes
    // untouched) when anything else is in the text.
    static bool Parse(const QString& text, QByteArray& bytes);
    // Upper-case pairs separated by single spaces.
    static QString Format(const QByteArray& bytes);
    // The same for at most the first maximumBytes, then " ... N bytes" with
    // the whole count when there are more: the text stays short however
    // long the message.
    static QString FormatAtMost(const QByteArray& bytes, int maximumBytes);
};

#endif
