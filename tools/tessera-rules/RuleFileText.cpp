#include "tools/tessera-rules/RuleFileText.h"

#include "MIDITranslator/JsonFile.h"
#include "tools/tessera-rules/TraceSilencer.h"

cRuleFileText::cRuleFileText(const QString& path)
{
    QJsonDocument document;
    {
        // The problem is said once, in the checker's words, not as a trace.
        const cTraceSilencer silencer;
        document = ReadJsonDocumentFromFile(path, &problem);
    }
    if (problem.isEmpty() && !document.isObject())
    {
        problem = QStringLiteral("%1: the top level is not a JSON object").arg(path);
    }
    topLevelObject = document.object();
}

bool cRuleFileText::IsReadable() const
{
    return problem.isEmpty();
}

QString cRuleFileText::GetProblem() const
{
    return problem;
}

QJsonObject cRuleFileText::GetTopLevelObject() const
{
    return topLevelObject;
}
