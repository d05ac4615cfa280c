#include "tools/tessera-rules/RuleStringTraps.h"

#include "MIDITranslator/MIDITranslatorRule.h"

#include <QRegularExpression>

namespace
{
const QLatin1Char GLOBAL_MARK('*');

bool Matches(const char* pattern, const QString& text)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(QLatin1String(pattern))).match(text).hasMatch();
}

bool IsLocalVariable(const QString& character)
{
    return Matches("[G-Zg-z]", character);
}

// Whether the outgoing string repeats the local variable anywhere.
bool UsesLocal(const QStringList& tokens, const QString& letter)
{
    for (const QString& token : tokens)
    {
        for (int position = 0; position < token.size(); ++position)
        {
            if (token.at(position) == GLOBAL_MARK)
            {
                ++position;
            }
            else if (QString(token.at(position)).compare(letter, Qt::CaseInsensitive) == 0)
            {
                return true;
            }
        }
    }
    return false;
}

void FindTokenTraps(const QStringList& tokens, bool incoming, QStringList& found)
{
    const QString side = incoming ? QStringLiteral("incoming") : QStringLiteral("outgoing");
    for (const QString& token : tokens)
    {
        if (Matches("[0-9A-Fa-f]", token))
        {
            const QString digit = token.toUpper();
            // Compiled, it is the upper half of a byte with any lower half.
            const QString range = incoming ? QStringLiteral(" (it matches any byte from ") + digit +
                                                 QStringLiteral("0 to ") + digit + QStringLiteral("F)")
                                           : QString();
            found.append(QStringLiteral("the lone digit \"%1\" in the %2 midi is not the byte 0%3%4; write bytes with "
                                        "two digits")
                             .arg(token, side, digit, range));
        }
        if (token.count(GLOBAL_MARK) == 2)
        {
            found.append(QStringLiteral("\"%1\" in the %2 midi stands for the %3 half of %4, but in an %5 string for "
                                        "the %6 half; write one variable in a token")
                             .arg(token, side, incoming ? QStringLiteral("upper") : QStringLiteral("lower"), token.mid(1, 1),
                                  incoming ? QStringLiteral("outgoing") : QStringLiteral("incoming"),
                                  incoming ? QStringLiteral("lower") : QStringLiteral("upper")));
        }
    }
}
}

QStringList cRuleStringTraps::Find(const QString& incoming, const QString& outgoing)
{
    const QStringList incomingTokens = cMIDITranslatorRule::SplitMIDIString(incoming);
    const QStringList outgoingTokens = cMIDITranslatorRule::SplitMIDIString(outgoing);
    QStringList found;
    if (incomingTokens.isEmpty())
    {
        found.append(QStringLiteral("the incoming midi is empty, so the rule never fires"));
    }
    // A match may begin at any byte.
    else if (!Matches("[89A-Fa-f].*", incomingTokens.first()))
    {
        found.append(QStringLiteral("the incoming midi begins with \"%1\", not with a constant status byte (first digit "
                                    "8 to F), so it may also match inside other messages")
                         .arg(incomingTokens.first()));
    }
    FindTokenTraps(incomingTokens, true, found);
    FindTokenTraps(outgoingTokens, false, found);

    for (const QString& token : incomingTokens)
    {
        // A local variable second in its token is read from the upper half:
        // its position in the token is halved.
        if (token.size() == 2 && token.at(0) != GLOBAL_MARK && IsLocalVariable(token.mid(1)) &&
            UsesLocal(outgoingTokens, token.mid(1)))
        {
            found.append(QStringLiteral("the outgoing midi uses \"%1\" of \"%2\", which is read from the upper half of "
                                        "that byte, not the lower; capture the whole byte with a lone letter instead")
                             .arg(token.mid(1), token));
        }
        // The look-up of a local stops at the first letter of its name, and
        // one behind "*" does not count.
        if (token.size() == 3 && token.at(0) == GLOBAL_MARK && IsLocalVariable(token.mid(2)) &&
            token.mid(1, 1).compare(token.mid(2), Qt::CaseInsensitive) == 0 && UsesLocal(outgoingTokens, token.mid(2)))
        {
            found.append(QStringLiteral("the local \"%1\" in \"%2\" has the letter of the variable before it, so the "
                                        "outgoing midi cannot find it; give the local another letter")
                             .arg(token.mid(2), token));
        }
    }
    return found;
}
