#include "tools/tessera-rules/RuleFileSchema.h"

#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "MIDITranslator/MIDITranslatorRule.h"
#include "tools/tessera-rules/NameSuggestion.h"
#include "tools/tessera-rules/RuleStringProblem.h"

#include <QJsonDocument>
#include <QRegularExpression>

#include <vector>

namespace
{
enum class eJsonType
{
    TEXT,
    NUMBER,
    LIST,
    OBJECT,
};

struct sMember
{
    const char* key;
    eJsonType type;
};
using tMembers = std::vector<sMember>;

// What loading reads, object by object. The shipped files carry a
// "description", which nothing reads but people do.
const tMembers TOP_LEVEL_MEMBERS = {{"virtual_ports", eJsonType::LIST}, {"port_aliases", eJsonType::LIST},
                                    {"variables", eJsonType::LIST},     {"rules", eJsonType::LIST},
                                    {"description", eJsonType::TEXT}};
const tMembers ALIAS_MEMBERS = {{"type", eJsonType::TEXT}, {"name", eJsonType::TEXT}, {"alias", eJsonType::TEXT}};
const tMembers VARIABLE_MEMBERS = {{"name", eJsonType::TEXT}, {"variable_name", eJsonType::TEXT},
                                   {"default", eJsonType::NUMBER}, {"values", eJsonType::LIST}};
const tMembers VALUE_MEMBERS = {{"name", eJsonType::TEXT}, {"value", eJsonType::NUMBER}};
const tMembers RULE_MEMBERS = {{"name", eJsonType::TEXT}, {"incoming", eJsonType::OBJECT}, {"outgoing", eJsonType::OBJECT}};
const tMembers DIRECTION_MEMBERS = {{"midi", eJsonType::TEXT}, {"ports", eJsonType::LIST}};

const QString INPUT = QStringLiteral("input");
const QString OUTPUT = QStringLiteral("output");

QString Quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// A JSON value as it would be written in the file.
QString JsonText(const QJsonValue& value)
{
    const QString array = QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact));
    return array.mid(1, array.size() - 2);
}

QString DescribeValue(const QJsonValue& value)
{
    switch (value.type())
    {
    case QJsonValue::String:
        return QStringLiteral("the text ") + JsonText(value);
    case QJsonValue::Double:
        return QStringLiteral("the number ") + JsonText(value);
    case QJsonValue::Array:
        return QStringLiteral("a list");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    default:
        return JsonText(value);
    }
}

bool HasType(const QJsonValue& value, eJsonType type)
{
    switch (type)
    {
    case eJsonType::TEXT:
        return value.isString();
    case eJsonType::NUMBER:
        return value.isDouble();
    case eJsonType::LIST:
        return value.isArray();
    case eJsonType::OBJECT:
        return value.isObject();
    }
    return false;
}

QString TypeName(eJsonType type)
{
    switch (type)
    {
    case eJsonType::TEXT:
        return QStringLiteral("text");
    case eJsonType::NUMBER:
        return QStringLiteral("a number");
    case eJsonType::LIST:
        return QStringLiteral("a list");
    case eJsonType::OBJECT:
        return QStringLiteral("an object");
    }
    return QString();
}

// What is wrong with one member, what comes of it, and the fix where it is
// plain; empty when the member has its type. The prefix names the object it
// is in.
QString DescribeMember(const QJsonObject& object, const sMember& member, const QString& prefix = QString(),
                       const QString& consequence = QString())
{
    const QJsonValue value = object.value(QLatin1String(member.key));
    if (HasType(value, member.type))
    {
        return QString();
    }
    const QString key = Quoted(prefix + QLatin1String(member.key));
    if (value.isUndefined())
    {
        return QStringLiteral("has no ") + key;
    }
    QString text = QStringLiteral("%1 is %2, where %3 belongs%4")
                       .arg(key, DescribeValue(value), TypeName(member.type), consequence);
    bool isNumber = false;
    value.toString().toDouble(&isNumber);
    if (member.type == eJsonType::NUMBER && isNumber)
    {
        text += QStringLiteral("; write %1 without quotes").arg(value.toString());
    }
    else if (member.type == eJsonType::LIST && (value.isString() || value.isDouble()))
    {
        text += QStringLiteral("; write [%1]").arg(JsonText(value));
    }
    return text;
}

QStringList DescribeMembers(const QJsonObject& object, const tMembers& members, const QString& prefix = QString())
{
    QStringList problems;
    for (const sMember& member : members)
    {
        const QString problem = DescribeMember(object, member, prefix);
        if (!problem.isEmpty())
        {
            problems.append(problem);
        }
    }
    return problems;
}

void WarnUnknownKeys(const QJsonObject& object, const tMembers& members, const QString& prefix,
                     const sRuleFilePlace& place, cRuleFileReport& report)
{
    QStringList known;
    for (const sMember& member : members)
    {
        known.append(QLatin1String(member.key));
    }
    for (const QString& key : object.keys())
    {
        if (known.contains(key))
        {
            continue;
        }
        const QString suggestion = cNameSuggestion::Suggest(key, known);
        const QString hint = suggestion.isEmpty() ? QStringLiteral("; check its spelling, or remove it")
                                                  : QStringLiteral("; did you mean %1?").arg(Quoted(prefix + suggestion));
        report.Warn(place, QStringLiteral("unknown key %1 is ignored%2").arg(Quoted(prefix + key), hint));
    }
}

bool IsByte(const QJsonValue& number)
{
    const double value = number.toDouble();
    return value >= 0 && value <= 255 && value == static_cast<int>(value);
}
}

cRuleFileSchema::cRuleFileSchema(const QJsonObject& top, const QList<cMIDITranslatorVariable>& variables,
                                 cRuleFileReport& report)
    : report(report)
{
    CheckTopLevel(top);
    CheckVirtualPorts(top.value(QStringLiteral("virtual_ports")).toArray());
    CheckPortAliases(top.value(QStringLiteral("port_aliases")).toArray());
    CheckVariables(top.value(QStringLiteral("variables")).toArray());
    CheckRules(top.value(QStringLiteral("rules")).toArray(), variables);
}

QStringList cRuleFileSchema::GetVariableProblems(int index) const
{
    return variableProblems.value(index);
}

QStringList cRuleFileSchema::GetRuleProblems(int index) const
{
    return ruleProblems.value(index);
}

void cRuleFileSchema::CheckTopLevel(const QJsonObject& top)
{
    WarnUnknownKeys(top, TOP_LEVEL_MEMBERS, QString(), sRuleFilePlace::TopLevel(), report);
    for (const sMember& member : TOP_LEVEL_MEMBERS)
    {
        if (member.type == eJsonType::LIST && top.contains(QLatin1String(member.key)))
        {
            const QString problem = DescribeMember(top, member, QString(), QStringLiteral(", so nothing of it is loaded"));
            if (!problem.isEmpty())
            {
                report.Warn(sRuleFilePlace::TopLevel(), problem);
            }
        }
    }
}

void cRuleFileSchema::CheckVirtualPorts(const QJsonArray& ports)
{
    for (int index = 0; index < ports.size(); ++index)
    {
        const QJsonValue port = ports.at(index);
        if (port.isString())
        {
            virtualPorts.append(port.toString());
            continue;
        }
        report.Warn(sRuleFilePlace::Element(sRuleFilePlace::VIRTUAL_PORTS, index, port, ""),
                    QStringLiteral("is %1, not a port name, so no port is made of it").arg(DescribeValue(port)));
    }
}

void cRuleFileSchema::CheckPortAliases(const QJsonArray& aliases)
{
    for (int index = 0; index < aliases.size(); ++index)
    {
        const QJsonValue element = aliases.at(index);
        const sRuleFilePlace place = sRuleFilePlace::Element(sRuleFilePlace::PORT_ALIASES, index, element, "alias");
        if (!element.isObject())
        {
            report.Warn(place, QStringLiteral("is %1, not an alias object, so it is ignored").arg(DescribeValue(element)));
            continue;
        }
        const QJsonObject alias = element.toObject();
        WarnUnknownKeys(alias, ALIAS_MEMBERS, QString(), place, report);
        const QStringList problems = DescribeMembers(alias, ALIAS_MEMBERS);
        if (!problems.isEmpty())
        {
            report.Warn(place, QStringLiteral("is ignored: ") + problems.join(QStringLiteral("; ")));
            continue;
        }
        const QString type = alias.value(QStringLiteral("type")).toString();
        if (type != INPUT && type != OUTPUT)
        {
            report.Warn(place, QStringLiteral("\"type\" is %1, so the alias is ignored: only \"input\" and \"output\" "
                                              "count%2")
                                   .arg(Quoted(type), cNameSuggestion::DidYouMean(type, {INPUT, OUTPUT})));
            continue;
        }
        QStringList& known = type == INPUT ? inputAliases : outputAliases;
        const QString name = alias.value(QStringLiteral("alias")).toString();
        if (known.contains(name))
        {
            report.Warn(place, QStringLiteral("replaces an earlier %1 alias of the same name; keep one of them").arg(type));
        }
        known.append(name);
    }
}

void cRuleFileSchema::CheckVariables(const QJsonArray& array)
{
    static const QRegularExpression oneLetter(QStringLiteral("^[A-Za-z]$"));
    static const QRegularExpression hexDigit(QStringLiteral("^[A-Fa-f]$"));
    QHash<QString, QString> firstOfLetter;
    for (int index = 0; index < array.size(); ++index)
    {
        const QJsonValue element = array.at(index);
        const sRuleFilePlace place = sRuleFilePlace::Element(sRuleFilePlace::VARIABLES, index, element, "name");
        if (!element.isObject())
        {
            variableProblems[index] =
                QStringList(QStringLiteral("is %1, not a variable object").arg(DescribeValue(element)));
            continue;
        }
        const QJsonObject variable = element.toObject();
        WarnUnknownKeys(variable, VARIABLE_MEMBERS, QString(), place, report);
        QStringList problems = DescribeMembers(variable, VARIABLE_MEMBERS);
        const QString letter = variable.value(QStringLiteral("variable_name")).toString();
        if (variable.value(QStringLiteral("variable_name")).isString() && !oneLetter.match(letter).hasMatch())
        {
            problems.insert(0, QStringLiteral("\"variable_name\" is %1, where one letter belongs").arg(Quoted(letter)));
        }
        if (!problems.isEmpty())
        {
            variableProblems[index] = problems;
            if (!letter.isEmpty())
            {
                leftOutVariables.insert(letter, place.path);
            }
            continue;
        }

        if (hexDigit.match(letter).hasMatch())
        {
            report.Warn(place, QStringLiteral("rules cannot refer to %1: \"a\" to \"f\" are hexadecimal digits; use a "
                                              "letter from g to z")
                                   .arg(Quoted(letter)));
        }
        if (firstOfLetter.contains(letter))
        {
            report.Warn(place, QStringLiteral("%1 already names %2, and only the first variable of a name counts; "
                                              "give this one another letter")
                                   .arg(Quoted(letter), firstOfLetter.value(letter)));
        }
        else
        {
            firstOfLetter.insert(letter, place.path);
        }
        CheckVariableValues(variable, place);
    }
}

// The values a variable keeps, and whether its default is one of them.
// Numbers are rounded and cut to a byte when loaded; only whole numbers from
// 0 to 255 say what they mean.
void cRuleFileSchema::CheckVariableValues(const QJsonObject& variable, const sRuleFilePlace& place)
{
    const QJsonValue defaultValue = variable.value(QStringLiteral("default"));
    bool defaultFound = false;
    const QJsonArray values = variable.value(QStringLiteral("values")).toArray();
    for (int index = 0; index < values.size(); ++index)
    {
        const QString member = QStringLiteral("values[%1]").arg(index);
        const QJsonValue element = values.at(index);
        if (!element.isObject())
        {
            report.Warn(place, QStringLiteral("%1 is %2, not a value object, so it is left out")
                                   .arg(Quoted(member), DescribeValue(element)));
            continue;
        }
        const QJsonObject value = element.toObject();
        WarnUnknownKeys(value, VALUE_MEMBERS, member + QLatin1Char('.'), place, report);
        const QStringList problems = DescribeMembers(value, VALUE_MEMBERS, member + QLatin1Char('.'));
        if (!problems.isEmpty())
        {
            report.Warn(place,
                        QStringLiteral("%1 is left out: %2").arg(Quoted(member), problems.join(QStringLiteral("; "))));
            continue;
        }
        const QJsonValue number = value.value(QStringLiteral("value"));
        if (!IsByte(number))
        {
            report.Warn(place, QStringLiteral("%1 is %2, which is no byte, so another value is kept; write a whole "
                                              "number from 0 to 255")
                                   .arg(Quoted(member + QStringLiteral(".value")), JsonText(number)));
        }
        defaultFound = defaultFound || number.toDouble() == defaultValue.toDouble();
    }
    if (!IsByte(defaultValue))
    {
        report.Warn(place, QStringLiteral("\"default\" is %1, which is no byte; write a whole number from 0 to 255")
                               .arg(JsonText(defaultValue)));
    }
    else if (!defaultFound)
    {
        report.Warn(place, QStringLiteral("\"default\" %1 is none of its values, so it starts at the first one (or at "
                                          "0 without values); make the default one of the values")
                               .arg(JsonText(defaultValue)));
    }
}

void cRuleFileSchema::CheckRules(const QJsonArray& array, const QList<cMIDITranslatorVariable>& variables)
{
    for (const cMIDITranslatorVariable& variable : variables)
    {
        variableLetters.append(variable.GetVariableName());
    }
    for (int index = 0; index < array.size(); ++index)
    {
        const QJsonValue element = array.at(index);
        const sRuleFilePlace place = sRuleFilePlace::Element(sRuleFilePlace::RULES, index, element, "name");
        if (!element.isObject())
        {
            ruleProblems[index] = QStringList(QStringLiteral("is %1, not a rule object").arg(DescribeValue(element)));
            continue;
        }
        const QStringList problems = FindRuleProblems(element.toObject(), variables, place);
        if (!problems.isEmpty())
        {
            ruleProblems[index] = problems;
            continue;
        }
        CheckRulePorts(element.toObject(), place);
    }
}

// In the order loading looks, but every problem, not just the first: the
// outgoing string is checked only against a valid incoming one, whose local
// variables it may use.
QStringList cRuleFileSchema::FindRuleProblems(const QJsonObject& rule, const QList<cMIDITranslatorVariable>& variables,
                                              const sRuleFilePlace& place)
{
    using sProblem = cMIDITranslatorRule::sMIDIStringProblem;
    WarnUnknownKeys(rule, RULE_MEMBERS, QString(), place, report);
    QStringList problems = DescribeMembers(rule, {RULE_MEMBERS.front()});
    QStringList localVariables;
    bool incomingIsValid = false;
    for (const QString& side : {QStringLiteral("incoming"), QStringLiteral("outgoing")})
    {
        const bool incoming = side == QLatin1String("incoming");
        const QJsonValue value = rule.value(side);
        if (!value.isObject())
        {
            problems.append(DescribeMember(rule, {incoming ? "incoming" : "outgoing", eJsonType::OBJECT}));
            continue;
        }
        const QJsonObject direction = value.toObject();
        const QString prefix = side + QLatin1Char('.');
        WarnUnknownKeys(direction, DIRECTION_MEMBERS, prefix, place, report);
        const QJsonValue midi = direction.value(QStringLiteral("midi"));
        if (!midi.isString())
        {
            problems.append(DescribeMember(direction, DIRECTION_MEMBERS.front(), prefix));
        }
        else if (incoming || incomingIsValid)
        {
            const sProblem problem =
                incoming ? cMIDITranslatorRule::FindIncomingMIDIStringProblem(midi.toString(), variables, localVariables)
                         : cMIDITranslatorRule::FindOutgoingMIDIStringProblem(midi.toString(), variables, localVariables);
            incomingIsValid = incomingIsValid || (incoming && problem.kind == sProblem::NO_PROBLEM);
            const QString text = cRuleStringProblem::Describe(problem, variableLetters, localVariables,
                                                           leftOutVariables.value(problem.variableName));
            if (!text.isEmpty())
            {
                problems.append(QStringLiteral("%1 midi %2: %3").arg(side, Quoted(midi.toString()), text));
            }
        }
        problems.append(DescribeMembers(direction, {DIRECTION_MEMBERS.back()}, prefix));
    }
    return problems;
}

void cRuleFileSchema::CheckRulePorts(const QJsonObject& rule, const sRuleFilePlace& place)
{
    for (const QString& side : {QStringLiteral("incoming"), QStringLiteral("outgoing")})
    {
        const bool incoming = side == QLatin1String("incoming");
        const QString direction = incoming ? INPUT : OUTPUT;
        const QStringList& aliases = incoming ? inputAliases : outputAliases;
        const QStringList& otherAliases = incoming ? outputAliases : inputAliases;
        const QStringList known = virtualPorts + aliases + QStringList(QLatin1String(TCP_MIDI_PORT_NAME));
        const QString consequence = incoming ? QStringLiteral("the rule never fires there")
                                             : QStringLiteral("nothing is sent there");

        const QJsonArray ports = rule.value(side).toObject().value(QStringLiteral("ports")).toArray();
        if (ports.isEmpty())
        {
            report.Warn(place, QStringLiteral("\"%1.ports\" is empty, so %2")
                                   .arg(side, incoming ? QStringLiteral("the rule never fires")
                                                       : QStringLiteral("the rule sends nothing")));
        }
        QStringList seen;
        for (int index = 0; index < ports.size(); ++index)
        {
            const QJsonValue port = ports.at(index);
            if (!port.isString())
            {
                report.Warn(place, QStringLiteral("\"%1.ports[%2]\" is %3, not a port name, so it is skipped")
                                       .arg(side)
                                       .arg(index)
                                       .arg(DescribeValue(port)));
                continue;
            }
            const QString name = port.toString();
            if (seen.contains(name))
            {
                report.Warn(place, QStringLiteral("\"%1.ports\" names %2 twice, so %3 twice; name it once")
                                       .arg(side, Quoted(name),
                                            incoming ? QStringLiteral("the rule fires")
                                                     : QStringLiteral("each message is sent")));
            }
            seen.append(name);
            if (known.contains(name))
            {
                continue;
            }
            const QString otherwise = QStringLiteral("; name a virtual port or an %1 alias").arg(direction);
            const QString hint = otherAliases.contains(name)
                                     ? QStringLiteral("; %1 is an %2 alias").arg(Quoted(name), incoming ? OUTPUT : INPUT)
                                     : cNameSuggestion::DidYouMean(name, known, otherwise);
            report.Warn(place, QStringLiteral("%1 port %2 is neither a virtual port nor an %3 alias of this file: "
                                              "unless a system port has exactly this name, %4%5")
                                   .arg(side, Quoted(name), direction, consequence, hint));
        }
    }
}
