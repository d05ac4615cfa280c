#include "tools/tessera-rules/RuleFileCheck.h"

#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tools/tessera-rules/RuleFileReport.h"
#include "tools/tessera-rules/RuleFileSchema.h"
#include "tools/tessera-rules/RuleFileText.h"
#include "tools/tessera-rules/RuleOverlap.h"
#include "tools/tessera-rules/RuleStringTraps.h"
#include "tools/tessera-rules/TraceSilencer.h"

#include <QJsonArray>
#include <QSet>

#include <functional>
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

bool SameVariable(const QJsonValue& element, const cMIDITranslatorVariable& variable)
{
    const QJsonObject object = element.toObject();
    return object.value(QStringLiteral("name")).toString() == variable.GetDescriptiveName() &&
           object.value(QStringLiteral("variable_name")).toString() == variable.GetVariableName();
}

// Loading keeps the file's order and leaves elements out, so walking both
// lists side by side finds the file element of each kept one: its index, by
// the kept element's position. The elements between were left out.
template <typename tKept, typename tSame>
QList<int> FindKeptElements(const QJsonArray& file, const QList<tKept>& kept, tSame same)
{
    QList<int> indexes;
    for (int index = 0; index < file.size() && indexes.size() < kept.size(); ++index)
    {
        if (same(file.at(index), kept.at(indexes.size())))
        {
            indexes.append(index);
        }
    }
    return indexes;
}

// Returns how many elements were left out.
int RejectLeftOut(const QJsonArray& file, const QList<int>& kept, sRuleFilePlace::eSection section,
                  const std::function<QStringList(int)>& problemsOf, cRuleFileReport& report)
{
    int leftOut = 0;
    for (int index = 0; index < file.size(); ++index)
    {
        if (kept.contains(index))
        {
            continue;
        }
        ++leftOut;
        const QStringList problems = problemsOf(index);
        report.Reject(sRuleFilePlace::Element(section, index, file.at(index), "name"),
                      problems.isEmpty() ? QStringLiteral("left out by loading")
                                         : QStringLiteral("left out: ") + problems.join(QStringLiteral("; ")));
    }
    return leftOut;
}
}

bool cRuleFileCheck::Check(const QString& path)
{
    std::cout << "== " << qPrintable(path) << std::endl;

    const cRuleFileText text(path);
    if (!text.IsReadable())
    {
        std::cout << qPrintable(text.GetProblem()) << std::endl;
        return false;
    }
    const QJsonObject top = text.GetTopLevelObject();
    const QJsonArray fileRules = top.value(QStringLiteral("rules")).toArray();
    const QJsonArray fileVariables = top.value(QStringLiteral("variables")).toArray();

    auto* ports = new cSystemMIDIConfigurationMemory;
    cMIDITranslatorConfiguration configuration(ports);
    cRuleFileReport report(path);
    int rejectedRules = 0;
    int rejectedVariables = 0;
    {
        // What the translator traces for the program's log, the report says
        // for the file's author.
        const cTraceSilencer silencer;
        configuration.LoadFromFile(path);
        const QList<cMIDITranslatorRule> rules = configuration.GetMIDITranslatorRules();
        const QList<cMIDITranslatorVariable>& variables = configuration.GetMIDITranslatorVariables();
        const cRuleFileSchema schema(top, variables, report);

        const QList<int> keptVariables = FindKeptElements(fileVariables, variables, SameVariable);
        rejectedVariables = RejectLeftOut(fileVariables, keptVariables, sRuleFilePlace::VARIABLES,
                                          [&](int index) { return schema.GetVariableProblems(index); }, report);
        const QList<int> keptRules = FindKeptElements(fileRules, rules, SameRule);
        rejectedRules = RejectLeftOut(fileRules, keptRules, sRuleFilePlace::RULES,
                                      [&](int index) { return schema.GetRuleProblems(index); }, report);

        // A kept rule's identifier is its position among the kept ones.
        const auto placeOfRule = [&](int identifier) {
            const int index = keptRules.at(identifier);
            return sRuleFilePlace::Element(sRuleFilePlace::RULES, index, fileRules.at(index), "name");
        };
        for (const cMIDITranslatorRule& rule : rules)
        {
            for (const QString& trap : cRuleStringTraps::Find(rule.GetIncomingMIDIString(), rule.GetOutgoingMIDIString()))
            {
                report.Warn(placeOfRule(rule.GetIndentifier()), trap);
            }
        }
        const auto nameOfRule = [&](int identifier) { return placeOfRule(identifier).path; };
        for (const cRuleOverlap::sFinding& finding : cRuleOverlap::Find(configuration, nameOfRule))
        {
            report.Warn(placeOfRule(finding.identifier), finding.text);
        }
    }
    report.Print();

    std::cout << qPrintable(path) << ": " << ports->GetVirtualInputOutputNames().size() << " virtual ports, "
              << CountLoadedAliases(top.value(QStringLiteral("port_aliases")).toArray(), configuration)
              << " aliases, " << configuration.GetMIDITranslatorVariables().size() << " variables, "
              << configuration.GetMIDITranslatorRules().size() << " rules accepted; " << rejectedRules
              << " rules and " << rejectedVariables << " variables rejected; " << report.GetWarningCount()
              << " warnings" << std::endl;
    return rejectedRules == 0 && rejectedVariables == 0 && report.GetWarningCount() == 0;
}
