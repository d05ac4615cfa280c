#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include "Application/DebugTrace.h"
#include "Common/MIDI/MIDIInputMatcher.h"
#include "Common/MIDI/MIDIOutput.h"
#include "Common/MIDI/MIDITrafficListener.h"
#include "Common/MIDI/SystemMIDIConfiguration.h"
#include "MIDITranslator/JsonFile.h"
#include "MIDITranslator/MixerStateRestorer.h"

#include <QByteArrayList>
#include <QFile>
#include <QJsonValue>

#include <algorithm>
#include <utility>

const char* const MIXER_IN_ALIAS = "Mixer In";
const char* const MIXER_OUT_ALIAS = "Mixer Out";
const char* const TCP_MIDI_PORT_NAME = "Kestrel Internal TCP MIDI";

namespace
{
// Only an alias the file defines can be pointed elsewhere: a file without one
// has no use for the mixer's port. Tells whether the alias was changed.
bool RetargetAlias(QHash<QString, QString>& aliases, const QString& alias, const QString& name)
{
    auto entry = aliases.find(alias);
    if (entry == aliases.end())
    {
        return false;
    }
    *entry = name;
    return true;
}
}

cMIDITranslatorConfiguration::cMIDITranslatorConfiguration(cSystemMIDIConfiguration* systemMIDIConfiguration,
                                                           QObject* parent)
    : QObject(parent),
      systemMIDIConfiguration(systemMIDIConfiguration),
      mixerStateRestorer(new cMixerStateRestorer(this, systemMIDIConfiguration))
{
}

// The matchers and the restorer go before the registry they are connected
// to, so none of them ever sees a port that is already gone.
cMIDITranslatorConfiguration::~cMIDITranslatorConfiguration()
{
    mixerStateRestorer.reset();
    DestroyMIDIInputMatchers();
    delete systemMIDIConfiguration;
}

void cMIDITranslatorConfiguration::LoadFromFile(QString path)
{
    Unload();
    filePath = path;
    document = GetJsonDocumentFromFilePath(path);

    // A null document or one whose top level is not an object reads as an
    // empty object: nothing is created, and the configuration stays usable.
    const QJsonObject top = document.object();
    ProcessVirtualPortsArray(top.value(QStringLiteral("virtual_ports")).toArray());
    ProcessPortAliasesArray(top.value(QStringLiteral("port_aliases")).toArray());
    // Rules resolve their global variables against this configuration while
    // they compile, so the variables must be known first.
    ProcessVariablesArray(top.value(QStringLiteral("variables")).toArray());
    ProcessRulesArray(top.value(QStringLiteral("rules")).toArray());
    ResolveOutgoingPorts();
    CreateMIDIInputMatchers();
    DescribeWhatIsMissing();
}

// Rules left out are skipped silently or with a trace line each, which only a
// terminal shows: the user is told how many, and where to find out why.
void cMIDITranslatorConfiguration::DescribeWhatIsMissing()
{
    if (!loadProblem.isEmpty())
    {
        return;
    }
    if (!document.isObject())
    {
        loadProblem = QStringLiteral("%1: the top level is not a JSON object").arg(filePath);
        return;
    }
    // Elements of another JSON type are skipped without a word, as a file
    // may hold notes among its rules.
    QStringList leftOut;
    const struct
    {
        const char* key;
        int loaded;
    } sections[] = {{"rules", static_cast<int>(rules.size())}, {"variables", static_cast<int>(variables.size())}};
    for (const auto& section : sections)
    {
        const QJsonArray array = document.object().value(QLatin1String(section.key)).toArray();
        const int objects = static_cast<int>(
            std::count_if(array.begin(), array.end(), [](const QJsonValue& element) { return element.isObject(); }));
        if (objects > section.loaded)
        {
            leftOut.append(QStringLiteral("%1 of %2 %3")
                               .arg(objects - section.loaded)
                               .arg(objects)
                               .arg(QLatin1String(section.key)));
        }
    }
    if (!leftOut.isEmpty())
    {
        loadProblem = QStringLiteral("%1: %2 left out; \"tessera-rules check %1\" says why")
                          .arg(filePath, leftOut.join(QStringLiteral(" and ")));
    }
    else if (rules.isEmpty())
    {
        loadProblem = QStringLiteral("%1: holds no rules").arg(filePath);
    }
}

QString cMIDITranslatorConfiguration::GetLoadProblem() const
{
    return loadProblem;
}

// What the console was given was made by the old rules.
void cMIDITranslatorConfiguration::Unload()
{
    mixerStateRestorer->Forget();
    filePath.clear();
    loadProblem.clear();
    while (!virtualPortNames.isEmpty())
    {
        systemMIDIConfiguration->DestroyVirtualInputOutput(virtualPortNames.takeLast());
    }
    DestroyMIDIInputMatchers();
    inputAliases.clear();
    outputAliases.clear();
    rules.clear();
    variables.clear();
    ruleOutgoingPorts.clear();
}

QJsonDocument cMIDITranslatorConfiguration::GetJsonDocumentFromFilePath(QString path)
{
    return ReadJsonDocumentFromFile(path, &loadProblem);
}

void cMIDITranslatorConfiguration::ProcessVirtualPortsArray(QJsonArray array)
{
    for (const QJsonValue& element : array)
    {
        if (!element.isString())
        {
            continue;
        }
        const QString name = element.toString();
        systemMIDIConfiguration->CreateVirtualInputOutput(name);
        virtualPortNames.append(name);
    }
}

void cMIDITranslatorConfiguration::ProcessPortAliasesArray(QJsonArray array)
{
    for (const QJsonValue& element : array)
    {
        if (element.isObject())
        {
            ProcessPortAliasObject(element.toObject());
        }
    }
}

void cMIDITranslatorConfiguration::ProcessPortAliasObject(QJsonObject object)
{
    const QJsonValue type = object.value(QStringLiteral("type"));
    const QJsonValue name = object.value(QStringLiteral("name"));
    const QJsonValue alias = object.value(QStringLiteral("alias"));
    if (!type.isString() || !name.isString() || !alias.isString())
    {
        return;
    }
    if (type.toString() == QLatin1String("input"))
    {
        inputAliases.insert(alias.toString(), name.toString());
    }
    else if (type.toString() == QLatin1String("output"))
    {
        outputAliases.insert(alias.toString(), name.toString());
    }
}

void cMIDITranslatorConfiguration::ProcessVariablesArray(QJsonArray array)
{
    for (const QJsonValue& element : array)
    {
        if (!element.isObject())
        {
            continue;
        }
        bool ok = false;
        cMIDITranslatorVariable variable = cMIDITranslatorVariable::FromJsonObject(element.toObject(), ok);
        if (ok)
        {
            variables.append(variable);
        }
    }
}

// Identifiers count accepted rules only, so that a rule's identifier is always
// its index in the list and dispatch can index it directly.
void cMIDITranslatorConfiguration::ProcessRulesArray(QJsonArray array)
{
    for (const QJsonValue& element : array)
    {
        if (!element.isObject())
        {
            continue;
        }
        bool ok = false;
        cMIDITranslatorRule rule = cMIDITranslatorRule::FromJsonObject(element.toObject(), this, ok);
        if (ok)
        {
            rule.SetIdentifier(rules.size());
            rules.append(rule);
        }
    }
}

void cMIDITranslatorConfiguration::CreateMIDIInputMatchers()
{
    for (const cMIDITranslatorRule& rule : std::as_const(rules))
    {
        for (const QString& port : rule.GetIncomingPortsList())
        {
            const QString real = GetInputPortNameFromAlias(port);
            cMIDIInputMatcher* matcher = inputMatchers.value(real);
            if (!matcher)
            {
                matcher = new cMIDIInputMatcher(real, systemMIDIConfiguration, this, this);
                matcher->SetMIDITrafficListener(trafficListener);
                inputMatchers.insert(real, matcher);
                // Only the rule that brings the matcher into being decides
                // whether its port counts as the mixer's for the activity lamp.
                if (port == QLatin1String(MIXER_IN_ALIAS))
                {
                    connect(matcher, &cMIDIInputMatcher::MIDIInputReadSignal, this,
                            &cMIDITranslatorConfiguration::MixerMIDIInputRead);
                }
            }
            matcher->AddMIDIMatchNibbleListIdentifier(rule.GetMIDIMatchNibbleListIdentifier());
        }
    }
}

void cMIDITranslatorConfiguration::DestroyMIDIInputMatchers()
{
    while (!inputMatchers.isEmpty())
    {
        delete inputMatchers.take(inputMatchers.keys().first());
    }
}

// Aliases only change on load and when the mixer's output is set, so each
// rule's outgoing names are resolved then rather than on every message. The
// ports themselves are still looked up per message: they come and go.
void cMIDITranslatorConfiguration::ResolveOutgoingPorts()
{
    ruleOutgoingPorts.clear();
    ruleOutgoingPorts.reserve(rules.size());
    for (const cMIDITranslatorRule& rule : std::as_const(rules))
    {
        QVector<sOutgoingPort> ports;
        for (const QString& port : rule.GetOutgoingPortsList())
        {
            ports.append({GetOutputPortNameFromAlias(port), port == QLatin1String(MIXER_OUT_ALIAS)});
        }
        ruleOutgoingPorts.append(ports);
    }
}

QString cMIDITranslatorConfiguration::GetInputPortNameFromAlias(QString name) const
{
    return inputAliases.value(name, name);
}

QString cMIDITranslatorConfiguration::GetOutputPortNameFromAlias(QString name) const
{
    return outputAliases.value(name, name);
}

QString cMIDITranslatorConfiguration::GetInputAliasOfPortName(QString name) const
{
    return inputAliases.key(name);
}

QString cMIDITranslatorConfiguration::GetOutputAliasOfPortName(QString name) const
{
    return outputAliases.key(name);
}

QList<cMIDITranslatorRule> cMIDITranslatorConfiguration::GetMIDITranslatorRules() const
{
    return rules;
}

const QList<cMIDITranslatorVariable>& cMIDITranslatorConfiguration::GetMIDITranslatorVariables() const
{
    return variables;
}

cSystemMIDIConfiguration* cMIDITranslatorConfiguration::GetSystemMIDIConfiguration() const
{
    return systemMIDIConfiguration;
}

QStringList cMIDITranslatorConfiguration::GetIncomingPortNames() const
{
    return inputMatchers.keys();
}

QStringList cMIDITranslatorConfiguration::GetOutgoingPortNames() const
{
    QStringList names;
    for (const QVector<sOutgoingPort>& ports : ruleOutgoingPorts)
    {
        for (const sOutgoingPort& port : ports)
        {
            if (!names.contains(port.realName))
            {
                names.append(port.realName);
            }
        }
    }
    return names;
}

void cMIDITranslatorConfiguration::MIDIMatchTriggered(int id, const std::vector<unsigned char>& bytes)
{
    if (id < 0 || id >= rules.size())
    {
        DebugErrTrace(DEBUG_LOCATION, "Invalid Trigger Id: %d", id);
        return;
    }
    if (trafficListener)
    {
        trafficListener->MIDIRuleTriggered(id, bytes);
    }
    outputBytes.clear();
    rules.at(id).GetMIDIOutputFromMIDIInput(outputBytes, bytes);
    QByteArray data(reinterpret_cast<const char*>(outputBytes.data()), static_cast<int>(outputBytes.size()));

    for (const sOutgoingPort& port : ruleOutgoingPorts.at(id))
    {
        // Also when the mixer cannot be reached now: it is what the console
        // is to show once it is back.
        if (port.isMixerOutput && mixerStateRestorer->IsEnabled())
        {
            mixerStateRestorer->Remember(outputBytes);
        }
        cMIDIOutput* output = systemMIDIConfiguration->GetMIDIOutput(port.realName);
        if (!output)
        {
            continue;
        }
        // Empty output is still written: the rule fired, and the port decides.
        output->WriteMIDIData(data);
        if (trafficListener)
        {
            trafficListener->MIDIMessageWritten(port.realName, data);
        }
        if (port.isMixerOutput)
        {
            emit MixerMIDIOutputWrite();
        }
    }
}

cMixerStateRestorer* cMIDITranslatorConfiguration::GetMixerStateRestorer() const
{
    return mixerStateRestorer.get();
}

bool cMIDITranslatorConfiguration::WriteToMixerOutput(const QList<QByteArray>& messages)
{
    const QString name = GetMixerOutputPortName();
    cMIDIOutput* output = systemMIDIConfiguration->GetMIDIOutput(name);
    if (!output)
    {
        return false;
    }
    QByteArray data = messages.join();
    output->WriteMIDIData(data);
    if (trafficListener)
    {
        for (const QByteArray& message : messages)
        {
            trafficListener->MIDIMessageRestored(name, message);
        }
    }
    emit MixerMIDIOutputWrite();
    return true;
}

void cMIDITranslatorConfiguration::SetMIDITrafficListener(cMIDITrafficListener* listener)
{
    trafficListener = listener;
    for (cMIDIInputMatcher* matcher : std::as_const(inputMatchers))
    {
        matcher->SetMIDITrafficListener(listener);
    }
}

QString cMIDITranslatorConfiguration::GetMixerInputPortName() const
{
    return GetInputPortNameFromAlias(QLatin1String(MIXER_IN_ALIAS));
}

QString cMIDITranslatorConfiguration::GetMixerOutputPortName() const
{
    return GetOutputPortNameFromAlias(QLatin1String(MIXER_OUT_ALIAS));
}

// The rules on the mixer's input must now listen on another port, so the
// matchers are rebuilt.
void cMIDITranslatorConfiguration::SetMixerInputPortName(QString name)
{
    if (RetargetAlias(inputAliases, QLatin1String(MIXER_IN_ALIAS), name))
    {
        DestroyMIDIInputMatchers();
        CreateMIDIInputMatchers();
    }
}

// Another port leads to another console, which is not given this one's state.
void cMIDITranslatorConfiguration::SetMixerOutputPortName(QString name)
{
    const QString previous = GetMixerOutputPortName();
    if (RetargetAlias(outputAliases, QLatin1String(MIXER_OUT_ALIAS), name))
    {
        ResolveOutgoingPorts();
        if (name != previous)
        {
            mixerStateRestorer->Forget();
        }
    }
}

// Registering announces the port through the registry's signals, on which any
// matcher already built for this name binds to the link (and unbinds when it
// is removed); nothing needs rebuilding here.
void cMIDITranslatorConfiguration::SetTCPMIDIInputOutput(cMIDIInputOutput* link)
{
    const QString name = QLatin1String(TCP_MIDI_PORT_NAME);
    if (link)
    {
        systemMIDIConfiguration->AddInternalInputOutput(name, link);
    }
    else
    {
        systemMIDIConfiguration->RemoveInternalInputOutput(name);
    }
}

unsigned char cMIDITranslatorConfiguration::GetVariableValue(QString name) const
{
    const int index = IndexOfVariable(name);
    if (index < 0)
    {
        DebugErrTrace(DEBUG_LOCATION, "Unknown Global Variable: \"%s\"", name.toLocal8Bit().constData());
        return 0;
    }
    return variables.at(index).GetCurrentValue();
}

// Patterns embed the values of the global variables they use, so every rule is
// recompiled and the matchers rebuilt around the new patterns.
void cMIDITranslatorConfiguration::SetVariableValue(QString name, unsigned char value)
{
    const int index = IndexOfVariable(name);
    if (index < 0)
    {
        return;
    }
    variables[index].SetCurrentValue(value);
    // The rules now write other messages, for another channel, say.
    mixerStateRestorer->Forget();
    DestroyMIDIInputMatchers();
    for (cMIDITranslatorRule& rule : rules)
    {
        rule.CreateMIDIMatchByteListIdentifier();
    }
    CreateMIDIInputMatchers();
}

// Only the first variable of a name counts, both for reading and for writing.
int cMIDITranslatorConfiguration::IndexOfVariable(const QString& name) const
{
    for (int index = 0; index < variables.size(); ++index)
    {
        if (variables.at(index).GetVariableName() == name)
        {
            return index;
        }
    }
    return -1;
}

void cMIDITranslatorConfiguration::WriteChangesToFile()
{
    QFile file(filePath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
    {
        DebugErrTrace(DEBUG_LOCATION, "Could not open file: \"%s\" for writing", filePath.toLocal8Bit().constData());
        return;
    }
    file.write(document.toJson(QJsonDocument::Indented));
    file.close();
}

void cMIDITranslatorConfiguration::WriteVariableValueToFile(QString variableName, unsigned char value)
{
    UpdateFirstMatchingElement(QStringLiteral("variables"),
                               [&](const QJsonObject& object)
                               { return object.value(QStringLiteral("variable_name")).toString() == variableName; },
                               QStringLiteral("default"), QJsonValue(static_cast<int>(value)));
}

void cMIDITranslatorConfiguration::WritePortNameAliasToFile(QString alias, QString type, QString name)
{
    UpdateFirstMatchingElement(QStringLiteral("port_aliases"),
                               [&](const QJsonObject& object)
                               {
                                   return object.value(QStringLiteral("type")).toString() == type &&
                                          object.value(QStringLiteral("alias")).toString() == alias;
                               },
                               QStringLiteral("name"), QJsonValue(name));
}

// Edits the document in place and saves it whole, so members this program
// does not know survive the rewrite. Without a match nothing is written.
void cMIDITranslatorConfiguration::UpdateFirstMatchingElement(const QString& arrayKey,
                                                              const std::function<bool(const QJsonObject&)>& matches,
                                                              const QString& memberKey, const QJsonValue& memberValue)
{
    QJsonObject top = document.object();
    QJsonArray array = top.value(arrayKey).toArray();
    for (int index = 0; index < array.size(); ++index)
    {
        if (!array.at(index).isObject())
        {
            continue;
        }
        QJsonObject element = array.at(index).toObject();
        if (!matches(element))
        {
            continue;
        }
        element.insert(memberKey, memberValue);
        array.replace(index, element);
        top.insert(arrayKey, array);
        document.setObject(top);
        WriteChangesToFile();
        return;
    }
}
