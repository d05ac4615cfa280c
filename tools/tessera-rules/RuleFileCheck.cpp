#include "tools/tessera-rules/RuleFileCheck.h"

#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tools/tessera-rules/RuleFileText.h"

#include <QJsonArray>
#include <QSet>

#include <iostream>

namespace
{
// The translator keeps no list of its aliases; an alias counts as loaded when
// the configuration resolves it to the name one of the file's entries gives.
int CountLoadedAliases(const QJsonArray& aliases, const cMIDITranslatorConfiguration& configuration)
{
    QSet<QString> loaded;
    for (const QJsonValue& element : aliases)
    {
        const QJsonObject alias = element.toObject();
        const QString type = alias.value(QStringLiteral("type")).toString();
        const QString name = alias.value(QStringLiteral("alias")).toString();
        const QString real = type == QLatin1String("input") ? configuration.GetInputPortNameFromAlias(name)
                                                             : configuration.GetOutputPortNameFromAlias(name);
        if ((type == QLatin1String("input") || type == QLatin1String("output")) &&
            real == alias.value(QStringLiteral("name")).toString())
        {
            loaded.insert(type + QLatin1Char('\n') + name);
        }
    }
    return loaded.size();
}

bool SameRule(const QJsonValue& element, const cMIDITranslatorRule& rule)
{
    const QJsonObject object = element.toObject();
    return object.value(QStringLiteral("name")).toString() == rule.GetName() &&
           object.value(QStringLiteral("incoming")).toObject().value(QStringLiteral("midi")).toString() ==
               rule.GetIncomingMIDIString() &&
           object.value(QStringLiteral("outgoing")).toObject().value(QStringLiteral("midi")).toString() ==
               rule.GetOutgoingMIDIString();
}

// Accepted rules keep the file's order, so walking both lists side by side
// finds the elements that were left out. Returns how many there were.
int PrintRejectedRules(const QString& path, const QJsonArray& fileRules,
                       const QList<cMIDITranslatorRule>& loadedRules)
{
    int next = 0;
    int rejected = 0;
    for (int index = 0; index < fileRules.size(); ++index)
    {
        if (next < loadedRules.size() && SameRule(fileRules.at(index), loadedRules.at(next)))
        {
            ++next;
            continue;
        }
        ++rejected;
        const QJsonValue name = fileRules.at(index).toObject().value(QStringLiteral("name"));
        std::cout << qPrintable(path) << ": rejected rule " << index + 1;
        if (name.isString())
        {
            std::cout << " \"" << qPrintable(name.toString()) << "\"";
        }
        std::cout << std::endl;
    }
    return rejected;
}
}

bool cRuleFileCheck::Check(const QString& path)
{
    std::cout << "== " << qPrintable(path) << std::endl;

    auto* ports = new cSystemMIDIConfigurationMemory;
    cMIDITranslatorConfiguration configuration(ports);
    configuration.LoadFromFile(path);

    const cRuleFileText text(path);
    if (!text.IsReadable())
    {
        std::cout << qPrintable(text.GetProblem()) << std::endl;
        return false;
    }

    const QJsonObject top = text.GetTopLevelObject();
    const QJsonArray fileRules = top.value(QStringLiteral("rules")).toArray();
    const QList<cMIDITranslatorRule> loadedRules = configuration.GetMIDITranslatorRules();
    const int rejectedRules = PrintRejectedRules(path, fileRules, loadedRules);
    const int loadedVariables = configuration.GetMIDITranslatorVariables().size();
    const int rejectedVariables = top.value(QStringLiteral("variables")).toArray().size() - loadedVariables;

    std::cout << qPrintable(path) << ": " << ports->GetVirtualInputOutputNames().size() << " virtual ports, "
              << CountLoadedAliases(top.value(QStringLiteral("port_aliases")).toArray(), configuration)
              << " aliases, " << loadedVariables << " variables, " << loadedRules.size() << " rules accepted; "
              << rejectedRules << " rules and " << rejectedVariables << " variables rejected" << std::endl;
    return rejectedRules == 0 && rejectedVariables == 0;
}
