#ifndef RULEFILESCHEMA_H
#define RULEFILESCHEMA_H

#include "MIDITranslator/MIDITranslatorVariable.h"
#include "tools/tessera-rules/RuleFileReport.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>
#include <QStringList>

// The rule file's JSON against what loading reads from it. Loading skips
// without a word what it cannot use; this says it: unknown keys (with the key
// that was likely meant), members of the wrong type, aliases of no known
// type, rule ports that are neither a virtual port nor an alias, and why a
// variable or a rule would be left out. Warnings go to the report as they are
// found; the reasons for leaving an element out are kept for the caller, who
// knows what loading really left out.
class cRuleFileSchema
{
public:
    // The variables are the ones loading kept, which rules are checked against.
    cRuleFileSchema(const QJsonObject& top, const QList<cMIDITranslatorVariable>& variables, cRuleFileReport& report);

    // Why loading leaves the element out, in the checker's words; empty when
    // it loads.
    QStringList GetVariableProblems(int index) const;
    QStringList GetRuleProblems(int index) const;

private:
    void CheckTopLevel(const QJsonObject& top);
    void CheckVirtualPorts(const QJsonArray& ports);
    void CheckPortAliases(const QJsonArray& aliases);
    void CheckVariables(const QJsonArray& array);
    void CheckVariableValues(const QJsonObject& variable, const sRuleFilePlace& place);
    void CheckRules(const QJsonArray& array, const QList<cMIDITranslatorVariable>& variables);
    QStringList FindRuleProblems(const QJsonObject& rule, const QList<cMIDITranslatorVariable>& variables,
                                 const sRuleFilePlace& place);
    void CheckRulePorts(const QJsonObject& rule, const sRuleFilePlace& place);

    cRuleFileReport& report;
    QStringList virtualPorts;
    QStringList inputAliases;
    QStringList outputAliases;
    // Letters of the variables rules may refer to.
    QStringList variableLetters;
    // Letters of variables that loading leaves out, and where they are.
    QHash<QString, QString> leftOutVariables;
    QHash<int, QStringList> variableProblems;
    QHash<int, QStringList> ruleProblems;
};

#endif
