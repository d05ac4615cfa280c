#include "tools/tessera-rules/RuleOverlap.h"

#include "Common/MIDI/MIDIMatch/MIDIMatchManager.h"
#include "Common/MIDI/Text/HexText.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QMap>
#include <QSet>

#include <algorithm>
#include <set>
#include <vector>

namespace
{
// Anything but 0: a literal 0 and an open nibble share a place in the tree.
const unsigned char OPEN_NIBBLE = 0x3;

class cTriggerRecorder : public cMIDIMatchTriggerListener
{
public:
    void MIDIMatchTriggered(int identifier, const std::vector<unsigned char>&) override { fired.insert(identifier); }

    std::set<int> fired;
};

// The rules of the list that fire when the bytes arrive at a port on which
// they alone listen.
std::set<int> RulesFiredBy(const QList<cMIDITranslatorRule>& rules, const std::vector<int>& identifiers,
                       const std::vector<unsigned char>& bytes)
{
    cTriggerRecorder recorder;
    cMIDIMatchManager manager(&recorder);
    for (int identifier : identifiers)
    {
        manager.AddMIDIMatchNibbleListIdentifierToTree(rules.at(identifier).GetMIDIMatchNibbleListIdentifier());
    }
    for (unsigned char byte : bytes)
    {
        manager.ProcessByte(byte);
    }
    return recorder.fired;
}

std::vector<unsigned char> MessageOf(const sMIDIMatchByteListIdentifier& pattern)
{
    std::vector<unsigned char> bytes;
    for (size_t position = 0; position + 1 < pattern.nibbles.size(); position += 2)
    {
        const sMIDIMatchNibble& high = pattern.nibbles[position];
        const sMIDIMatchNibble& low = pattern.nibbles[position + 1];
        bytes.push_back(static_cast<unsigned char>(((high.matchAny ? OPEN_NIBBLE : high.value) << 4) |
                                                   (low.matchAny ? OPEN_NIBBLE : low.value)));
    }
    return bytes;
}

// Whether the pattern describes some run of the bytes: a match may begin at
// any byte.
bool Describes(const sMIDIMatchByteListIdentifier& pattern, const std::vector<unsigned char>& bytes)
{
    const size_t length = pattern.nibbles.size() / 2;
    for (size_t start = 0; start + length <= bytes.size(); ++start)
    {
        bool matches = true;
        for (size_t position = 0; position < pattern.nibbles.size() && matches; ++position)
        {
            const unsigned char byte = bytes[start + position / 2];
            const sMIDIMatchNibble& nibble = pattern.nibbles[position];
            matches = nibble.matchAny || nibble.value == (position % 2 ? byte & 0xF : byte >> 4);
        }
        if (matches)
        {
            return true;
        }
    }
    return false;
}

bool SamePattern(const sMIDIMatchByteListIdentifier& one, const sMIDIMatchByteListIdentifier& other)
{
    return std::equal(one.nibbles.begin(), one.nibbles.end(), other.nibbles.begin(), other.nibbles.end(),
                      [](const sMIDIMatchNibble& a, const sMIDIMatchNibble& b) {
                          return a.matchAny == b.matchAny && a.value == b.value;
                      });
}

QString HexOf(const std::vector<unsigned char>& bytes)
{
    return cHexText::Format(QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())));
}

const char* const SHARED_WAY_ADVICE = "give the two different beginnings, or let one rule do both jobs";
}

QList<cRuleOverlap::sFinding> cRuleOverlap::Find(const cMIDITranslatorConfiguration& configuration,
                                                 const std::function<QString(int)>& nameOfRule)
{
    const QList<cMIDITranslatorRule> rules = configuration.GetMIDITranslatorRules();
    QMap<QString, std::vector<int>> rulesOfPort;
    for (const cMIDITranslatorRule& rule : rules)
    {
        for (const QString& port : rule.GetIncomingPortsList())
        {
            std::vector<int>& identifiers = rulesOfPort[configuration.GetInputPortNameFromAlias(port)];
            if (std::find(identifiers.begin(), identifiers.end(), rule.GetIndentifier()) == identifiers.end())
            {
                identifiers.push_back(rule.GetIndentifier());
            }
        }
    }

    QList<sFinding> findings;
    for (auto port = rulesOfPort.cbegin(); port != rulesOfPort.cend(); ++port)
    {
        const std::vector<int>& identifiers = port.value();
        QSet<int> firesTooOften;
        for (int identifier : identifiers)
        {
            const sMIDIMatchByteListIdentifier& pattern = rules.at(identifier).GetMIDIMatchNibbleListIdentifier();
            if (pattern.nibbles.empty())
            {
                continue;
            }
            const std::vector<unsigned char> message = MessageOf(pattern);
            const std::set<int> fired = RulesFiredBy(rules, identifiers, message);
            if (fired.count(identifier) == 0)
            {
                QString text = QStringLiteral("does not fire on \"%1\" for %2, which its incoming midi matches")
                                   .arg(port.key(), HexOf(message));
                // The earlier rule whose constant took this rule's open place.
                for (auto other = identifiers.begin(); *other != identifier; ++other)
                {
                    if (RulesFiredBy(rules, {*other, identifier}, message).count(identifier) == 0)
                    {
                        text += QStringLiteral(": it shares its path with %1, which has a constant where this rule "
                                               "has a variable; %2")
                                    .arg(nameOfRule(*other), QLatin1String(SHARED_WAY_ADVICE));
                        break;
                    }
                }
                findings.append({identifier, text});
            }
            for (int other : fired)
            {
                const sMIDIMatchByteListIdentifier& otherPattern = rules.at(other).GetMIDIMatchNibbleListIdentifier();
                if (other == identifier)
                {
                    continue;
                }
                if (!Describes(otherPattern, message))
                {
                    if (!firesTooOften.contains(other))
                    {
                        firesTooOften.insert(other);
                        findings.append({other, QStringLiteral("also fires on \"%1\" for %2, the message of %3, which "
                                                               "its incoming midi does not match: it shares its path "
                                                               "with that rule, which has a variable where this rule "
                                                               "has a constant; %4")
                                                    .arg(port.key(), HexOf(message), nameOfRule(identifier),
                                                         QLatin1String(SHARED_WAY_ADVICE))});
                    }
                }
                else if (other < identifier && SamePattern(otherPattern, pattern) &&
                         rules.at(other).GetOutgoingPortsList() == rules.at(identifier).GetOutgoingPortsList())
                {
                    findings.append({identifier, QStringLiteral("listens on \"%1\" for the same messages as %2 and "
                                                                "sends to the same ports, so both fire for each; put "
                                                                "both outgoing messages into one rule")
                                                     .arg(port.key(), nameOfRule(other))});
                }
            }
        }
    }
    return findings;
}
