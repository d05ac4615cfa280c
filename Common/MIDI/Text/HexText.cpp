#include "Common/MIDI/Text/HexText.h"

#include <QRegularExpression>
#include <QStringList>

bool cHexText::Parse(const QString& text, QByteArray& bytes)
{
    static const QRegularExpression hexDigits(QStringLiteral("^[0-9A-Fa-f]+$"));
    QByteArray parsed;
    const QStringList groups = text.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts);
    for (const QString& group : groups)
    {
        if (group.size() % 2 != 0 || !hexDigits.match(group).hasMatch())
        {
            return false;
        }
        parsed.append(QByteArray::fromHex(group.toLatin1()));
    }
    bytes = parsed;
    return true;
}

QString cHexText::Format(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

QString cHexText::FormatAtMost(const QByteArray& bytes, int maximumBytes)
{
    if (bytes.size() <= maximumBytes)
    {
        return Format(bytes);
    }
    return Format(bytes.left(maximumBytes)) + QStringLiteral(" ... %1 bytes").arg(bytes.size());
}
