#include "MIDITranslator/MIDITranslatorRule.h"

#include "Application/DebugTrace.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QRegularExpression>

namespace
{
const QLatin1Char GLOBAL_MARK('*');

// The character at a position as a one-character string, or an empty string
// past the end, so that compiling never reads outside a token.
QString CharacterAt(const QString& token, int position)
{
    return token.mid(position, 1);
}

const QRegularExpression& TokenExpression()
{
    static const QRegularExpression expression(
        QRegularExpression::anchoredPattern(QStringLiteral("([a-zA-Z0-9]|\\*[g-zG-Z]){1,2}")));
    return expression;
}

// Letters that are not hexadecimal digits: local variables, or global ones
// behind the mark.
const QRegularExpression& VariableLetterExpression()
{
    static const QRegularExpression expression(QRegularExpression::anchoredPattern(QStringLiteral("[G-Zg-z]")));
    return expression;
}

bool IsHexDigit(const QString& character)
{
    static const QRegularExpression expression(QRegularExpression::anchoredPattern(QStringLiteral("[A-Fa-f0-9]")));
    return expression.match(character).hasMatch();
}

UBYTE HexDigitValue(const QString& character)
{
    return static_cast<UBYTE>(character.toUInt(nullptr, 16));
}

// String elements of a "ports" array, in order; anything else is skipped.
QList<QString> PortNamesFromArray(const QJsonArray& array)
{
    QList<QString> ports;
    for (const QJsonValue& element : array)
    {
        if (element.isString())
        {
            ports.append(element.toString());
        }
    }
    return ports;
}

using sMIDIStringProblem = cMIDITranslatorRule::sMIDIStringProblem;

// The walk shared by both directions. A local variable letter is handed to
// checkLocal, which tells what is wrong with it there, if anything (and may
// record it).
template <typename LocalCheck>
sMIDIStringProblem FindMIDIStringProblem(const QStringList& tokens, const QList<cMIDITranslatorVariable>& variables,
                                         LocalCheck checkLocal)
{
    for (const QString& token : tokens)
    {
        if (!TokenExpression().match(token).hasMatch())
        {
            return {sMIDIStringProblem::MALFORMED_TOKEN, token, QString()};
        }
        for (int position = 0; position < token.size(); ++position)
        {
            const QString character = CharacterAt(token, position);
            if (token.at(position) == GLOBAL_MARK)
            {
                const QString global = CharacterAt(token, ++position);
                if (!VariableLetterExpression().match(global).hasMatch() ||
                    !cMIDITranslatorRule::GlobalVariableExists(global, variables))
                {
                    return {sMIDIStringProblem::UNKNOWN_GLOBAL, token, global};
                }
            }
            else if (VariableLetterExpression().match(character).hasMatch())
            {
                const sMIDIStringProblem::eKind kind = checkLocal(character);
                if (kind != sMIDIStringProblem::NO_PROBLEM)
                {
                    return {kind, token, character};
                }
            }
        }
    }
    return {};
}

// A local variable is captured once per incoming message.
sMIDIStringProblem FindIncomingProblem(const QStringList& tokens, const QList<cMIDITranslatorVariable>& variables,
                                       QStringList& localVariables)
{
    return FindMIDIStringProblem(tokens, variables, [&localVariables](const QString& letter) {
        if (localVariables.contains(letter, Qt::CaseInsensitive))
        {
            return sMIDIStringProblem::LOCAL_CAPTURED_TWICE;
        }
        localVariables.append(letter);
        return sMIDIStringProblem::NO_PROBLEM;
    });
}

// The outgoing message may repeat a captured variable as often as it likes.
sMIDIStringProblem FindOutgoingProblem(const QStringList& tokens, const QList<cMIDITranslatorVariable>& variables,
                                       const QStringList& localVariables)
{
    return FindMIDIStringProblem(tokens, variables, [&localVariables](const QString& letter) {
        return localVariables.contains(letter, Qt::CaseInsensitive) ? sMIDIStringProblem::NO_PROBLEM
                                                                    : sMIDIStringProblem::LOCAL_NOT_CAPTURED;
    });
}
}

cMIDITranslatorRule::cMIDITranslatorRule(const cMIDITranslatorConfiguration* configuration)
    : configuration(configuration)
{
}

int cMIDITranslatorRule::GetIndentifier() const
{
    return identifier;
}

void cMIDITranslatorRule::SetIdentifier(int identifier)
{
    this->identifier = identifier;
    matchPattern.identifier = identifier;
}

QString cMIDITranslatorRule::GetName() const
{
    return name;
}

void cMIDITranslatorRule::SetName(QString name)
{
    this->name = name;
}

QString cMIDITranslatorRule::GetIncomingMIDIString() const
{
    return incomingMIDIString;
}

void cMIDITranslatorRule::SetIncomingMIDIString(QString midi)
{
    incomingMIDIString = midi;
}

QList<QString> cMIDITranslatorRule::GetIncomingPortsList() const
{
    return incomingPorts;
}

void cMIDITranslatorRule::SetIncomingPorts(QList<QString> ports)
{
    incomingPorts = ports;
}

QString cMIDITranslatorRule::GetOutgoingMIDIString() const
{
    return outgoingMIDIString;
}

void cMIDITranslatorRule::SetOutgoingMIDIString(QString midi)
{
    outgoingMIDIString = midi;
}

QList<QString> cMIDITranslatorRule::GetOutgoingPortsList() const
{
    return outgoingPorts;
}

void cMIDITranslatorRule::SetOutgoingPorts(QList<QString> ports)
{
    outgoingPorts = ports;
}

void cMIDITranslatorRule::SetLocalVariablesList(QStringList variables)
{
    localVariables = variables;
}

bool cMIDITranslatorRule::GetIncomingReliesOnGlobalVariable(QString name) const
{
    return incomingGlobalVariables.contains(name, Qt::CaseInsensitive);
}

const sMIDIMatchByteListIdentifier& cMIDITranslatorRule::GetMIDIMatchNibbleListIdentifier() const
{
    return matchPattern;
}

// Runs once per matched message, on the event loop: it must not throw and
// must not read outside the message. The matcher always hands over as many
// bytes as the pattern has, which covers every index of the map; a shorter
// input (a caller feeding bytes that never matched) yields no bytes at all
// rather than a message with invented nibbles.
void cMIDITranslatorRule::GetMIDIOutputFromMIDIInput(std::vector<unsigned char>& output,
                                                     const std::vector<unsigned char>& input) const
{
    std::vector<UBYTE> inputNibbles;
    inputNibbles.reserve(input.size() * 2);
    for (unsigned char byte : input)
    {
        inputNibbles.push_back(byte >> 4);
        inputNibbles.push_back(byte & 0xF);
    }

    std::vector<UBYTE> outputNibbles;
    outputNibbles.reserve(static_cast<size_t>(translationMap.size()));
    for (const sTranslateNibble& entry : translationMap)
    {
        if (entry.inputNibbleIndex >= 0)
        {
            if (static_cast<size_t>(entry.inputNibbleIndex) >= inputNibbles.size())
            {
                return;
            }
            outputNibbles.push_back(inputNibbles[static_cast<size_t>(entry.inputNibbleIndex)]);
        }
        else if (!entry.variableName.isEmpty())
        {
            const UBYTE value = GetVariableValue(entry.variableName);
            outputNibbles.push_back(entry.useHighNibble ? value >> 4 : value & 0xF);
        }
        else
        {
            outputNibbles.push_back(entry.value);
        }
    }

    for (size_t position = 1; position < outputNibbles.size(); position += 2)
    {
        output.push_back(static_cast<unsigned char>((outputNibbles[position - 1] << 4) | (outputNibbles[position] & 0xF)));
    }
}

// Explains a translation, so it follows the output's reading of the incoming
// string, halved nibble positions and all, rather than what the letters seem
// to say. Only the rule replayer asks, never the byte path: the look-ups
// split the incoming string afresh.
QList<cMIDITranslatorRule::sCapturedValue> cMIDITranslatorRule::GetCapturedValues(
    const std::vector<unsigned char>& input) const
{
    QList<sCapturedValue> captured;
    for (const QString& variable : localVariables)
    {
        const size_t nibbleIndex = static_cast<size_t>(GetInputNibbleIndexOfVariableFromIncomingMIDI(variable));
        if (nibbleIndex / 2 >= input.size())
        {
            continue;
        }
        const unsigned char byte = input[nibbleIndex / 2];
        const bool wholeByte = IsInputVariableIsWholeByteInIncomingMIDI(variable);
        const UBYTE value = wholeByte ? byte : (nibbleIndex % 2 ? byte & 0x0F : byte >> 4);
        captured.append({variable, value, wholeByte});
    }
    return captured;
}

// Global values are read now: the pattern holds the values current at
// compile time, so a changed global needs the rule compiled again.
void cMIDITranslatorRule::CreateMIDIMatchByteListIdentifier()
{
    matchPattern.nibbles.clear();
    for (const QString& token : SplitMIDIString(incomingMIDIString))
    {
        const QString first = CharacterAt(token, 0);
        const QString global = CharacterAt(token, 1);
        int next = 1;
        if (first == GLOBAL_MARK)
        {
            matchPattern.nibbles.push_back({static_cast<uint8_t>(GetVariableValue(global) >> 4), 0});
            next = 2;
        }
        else
        {
            matchPattern.nibbles.push_back(NibbleStringToMIDIMatchByte(first));
        }

        const QString second = CharacterAt(token, next);
        if (second == GLOBAL_MARK)
        {
            matchPattern.nibbles.push_back(
                {static_cast<uint8_t>(GetVariableValue(CharacterAt(token, next + 1)) & 0xF), 0});
        }
        else if (second.isEmpty() && first == GLOBAL_MARK)
        {
            // A lone "*g" matches the whole current value of g.
            matchPattern.nibbles.push_back({static_cast<uint8_t>(GetVariableValue(global) & 0xF), 0});
        }
        else
        {
            matchPattern.nibbles.push_back(NibbleStringToMIDIMatchByte(second));
        }
    }
}

// Two entries per outgoing token, high nibble first. Where a nibble comes
// from the input, its index is located in the incoming string; the halving of
// positions there and the low-nibble reading of "*k*n" here are what existing
// rule files are written against, so both stay as they are.
void cMIDITranslatorRule::CreateTranslationMap()
{
    for (const QString& token : SplitMIDIString(outgoingMIDIString))
    {
        sTranslateNibble high;
        sTranslateNibble low;

        const QString first = CharacterAt(token, 0);
        const QString global = CharacterAt(token, 1);
        int next = 1;
        if (first == GLOBAL_MARK)
        {
            high.variableName = global;
            next = 2;
        }
        else if (IsHexDigit(first))
        {
            high.value = HexDigitValue(first);
        }
        else
        {
            high.inputNibbleIndex = GetInputNibbleIndexOfVariableFromIncomingMIDI(first);
        }

        const QString second = CharacterAt(token, next);
        if (second.isEmpty() && first == GLOBAL_MARK)
        {
            high.useHighNibble = true;
            low.variableName = global;
        }
        else if (second.isEmpty())
        {
            if (IsInputVariableIsWholeByteInIncomingMIDI(first))
            {
                low.inputNibbleIndex = high.inputNibbleIndex + 1;
            }
            else
            {
                // A lone nibble: the byte is 0 with that nibble below it.
                low.inputNibbleIndex = high.inputNibbleIndex;
                high = sTranslateNibble();
            }
        }
        else if (second == GLOBAL_MARK)
        {
            low.variableName = CharacterAt(token, next + 1);
        }
        else
        {
            // A whole-byte variable standing in a nibble position gives its
            // low nibble.
            if (high.inputNibbleIndex >= 0 && IsInputVariableIsWholeByteInIncomingMIDI(first))
            {
                high.inputNibbleIndex += 1;
            }
            if (IsHexDigit(second))
            {
                low.value = HexDigitValue(second);
            }
            else
            {
                low.inputNibbleIndex = GetInputNibbleIndexOfVariableFromIncomingMIDI(second) +
                                       (IsInputVariableIsWholeByteInIncomingMIDI(second) ? 1 : 0);
            }
        }

        translationMap.append(high);
        translationMap.append(low);
    }
}

// One token per MIDI byte, separated by single spaces; runs of spaces are
// harmless, any other blank is an invalid character.
QStringList cMIDITranslatorRule::SplitMIDIString(const QString& midi)
{
    return midi.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool cMIDITranslatorRule::ValidateIncomingMidiByteStringList(QStringList tokens,
                                                             const QList<cMIDITranslatorVariable>& variables,
                                                             QStringList& localVariables)
{
    return FindIncomingProblem(tokens, variables, localVariables).kind == sMIDIStringProblem::NO_PROBLEM;
}

bool cMIDITranslatorRule::ValidateOutgoingMidiByteStringList(QStringList tokens,
                                                             const QList<cMIDITranslatorVariable>& variables,
                                                             QStringList localVariables)
{
    return FindOutgoingProblem(tokens, variables, localVariables).kind == sMIDIStringProblem::NO_PROBLEM;
}

sMIDIStringProblem cMIDITranslatorRule::FindIncomingMIDIStringProblem(const QString& midi,
                                                                      const QList<cMIDITranslatorVariable>& variables,
                                                                      QStringList& localVariables)
{
    return FindIncomingProblem(SplitMIDIString(midi), variables, localVariables);
}

sMIDIStringProblem cMIDITranslatorRule::FindOutgoingMIDIStringProblem(const QString& midi,
                                                                      const QList<cMIDITranslatorVariable>& variables,
                                                                      const QStringList& localVariables)
{
    return FindOutgoingProblem(SplitMIDIString(midi), variables, localVariables);
}

bool cMIDITranslatorRule::GlobalVariableExists(QString name, const QList<cMIDITranslatorVariable>& variables)
{
    for (const cMIDITranslatorVariable& variable : variables)
    {
        if (variable.GetVariableName() == name)
        {
            return true;
        }
    }
    return false;
}

cMIDITranslatorRule cMIDITranslatorRule::FromJsonObject(QJsonObject object,
                                                        const cMIDITranslatorConfiguration* configuration, bool& ok)
{
    ok = false;
    const cMIDITranslatorRule empty(configuration);
    const QList<cMIDITranslatorVariable> noVariables;
    const QList<cMIDITranslatorVariable>& variables =
        configuration ? configuration->GetMIDITranslatorVariables() : noVariables;

    const QJsonValue name = object.value(QStringLiteral("name"));
    if (!name.isString())
    {
        DebugErrTrace(DEBUG_LOCATION, "No \"name\" string for rule");
        return empty;
    }
    const QByteArray ruleName = name.toString().toUtf8();

    const QJsonValue incoming = object.value(QStringLiteral("incoming"));
    if (!incoming.isObject())
    {
        DebugErrTrace(DEBUG_LOCATION, "No \"incoming\" object for rule \"%s\"", ruleName.constData());
        return empty;
    }
    const QJsonValue incomingMIDI = incoming.toObject().value(QStringLiteral("midi"));
    if (!incomingMIDI.isString())
    {
        DebugErrTrace(DEBUG_LOCATION, "No incoming \"midi\" string for rule \"%s\"", ruleName.constData());
        return empty;
    }
    QStringList localVariables;
    if (!ValidateIncomingMidiByteStringList(SplitMIDIString(incomingMIDI.toString()), variables, localVariables))
    {
        DebugErrTrace(DEBUG_LOCATION, "Invalid incoming midi string for rule \"%s\"", ruleName.constData());
        return empty;
    }
    const QJsonValue incomingPorts = incoming.toObject().value(QStringLiteral("ports"));
    if (!incomingPorts.isArray())
    {
        DebugErrTrace(DEBUG_LOCATION, "No incoming \"ports\" array for rule \"%s\"", ruleName.constData());
        return empty;
    }

    const QJsonValue outgoing = object.value(QStringLiteral("outgoing"));
    if (!outgoing.isObject())
    {
        DebugErrTrace(DEBUG_LOCATION, "No \"outgoing\" object for rule \"%s\"", ruleName.constData());
        return empty;
    }
    const QJsonValue outgoingMIDI = outgoing.toObject().value(QStringLiteral("midi"));
    if (!outgoingMIDI.isString())
    {
        DebugErrTrace(DEBUG_LOCATION, "No outgoing \"midi\" string for rule \"%s\"", ruleName.constData());
        return empty;
    }
    if (!ValidateOutgoingMidiByteStringList(SplitMIDIString(outgoingMIDI.toString()), variables, localVariables))
    {
        DebugErrTrace(DEBUG_LOCATION, "Invalid outgoing midi string for rule \"%s\"", ruleName.constData());
        return empty;
    }
    const QJsonValue outgoingPorts = outgoing.toObject().value(QStringLiteral("ports"));
    if (!outgoingPorts.isArray())
    {
        DebugErrTrace(DEBUG_LOCATION, "No outgoing \"ports\" array for rule \"%s\"", ruleName.constData());
        return empty;
    }

    cMIDITranslatorRule rule(configuration);
    rule.SetName(name.toString());
    rule.SetIncomingMIDIString(incomingMIDI.toString());
    rule.CreateMIDIMatchByteListIdentifier();
    rule.SetIncomingPorts(PortNamesFromArray(incomingPorts.toArray()));
    rule.SetOutgoingMIDIString(outgoingMIDI.toString());
    rule.CreateTranslationMap();
    rule.SetOutgoingPorts(PortNamesFromArray(outgoingPorts.toArray()));
    rule.SetLocalVariablesList(localVariables);

    ok = true;
    return rule;
}

sMIDIMatchNibble cMIDITranslatorRule::NibbleStringToMIDIMatchByte(QString nibble) const
{
    if (IsHexDigit(nibble))
    {
        return {HexDigitValue(nibble), 0};
    }
    return {0, 1};
}

// Searches from the start every round, so a letter first seen behind "*" is
// never found, even when it comes again later in the token ("*kk" gives -1
// for "k"); rule files rely on this search as it is.
int cMIDITranslatorRule::GetIndexOfVariableFromMIDIByte(QString variable, QString token) const
{
    const int occurrences = token.count(variable, Qt::CaseInsensitive);
    for (int round = 0; round < occurrences; ++round)
    {
        const int position = token.indexOf(variable, 0, Qt::CaseInsensitive);
        if (position == 0)
        {
            return 0;
        }
        if (position < 0)
        {
            return -1;
        }
        if (token.at(position - 1) != GLOBAL_MARK)
        {
            return position;
        }
    }
    return -1;
}

int cMIDITranslatorRule::GetInputByteIndexOfVariableFromIncomingMIDI(QString variable) const
{
    const QStringList tokens = SplitMIDIString(incomingMIDIString);
    for (int index = 0; index < tokens.size(); ++index)
    {
        if (GetIndexOfVariableFromMIDIByte(variable, tokens.at(index)) >= 0)
        {
            return index;
        }
    }
    DebugErrTrace(DEBUG_LOCATION, "Could not find variable \"%s\" in incoming MIDI", qUtf8Printable(variable));
    return 0;
}

// The position within the token is halved: positions 0 and 1 read the high
// nibble of the byte, only a letter behind a "*g" unit reads the low nibble.
int cMIDITranslatorRule::GetInputNibbleIndexOfVariableFromIncomingMIDI(QString variable) const
{
    const int byteIndex = GetInputByteIndexOfVariableFromIncomingMIDI(variable);
    const int position = GetIndexOfVariableFromMIDIByte(variable, IncomingToken(byteIndex));
    return 2 * byteIndex + position / 2;
}

bool cMIDITranslatorRule::IsInputVariableIsWholeByteInIncomingMIDI(QString variable) const
{
    return IncomingToken(GetInputByteIndexOfVariableFromIncomingMIDI(variable)).size() == 1;
}

// An empty incoming string has no token 0 for a variable that was not found
// to fall back on; an absent token holds no variable and is no whole byte.
QString cMIDITranslatorRule::IncomingToken(int index) const
{
    return SplitMIDIString(incomingMIDIString).value(index);
}

// Output and compilation stay defined for a rule with no configuration.
UBYTE cMIDITranslatorRule::GetVariableValue(const QString& name) const
{
    return configuration ? configuration->GetVariableValue(name) : 0;
}
