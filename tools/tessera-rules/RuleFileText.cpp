#include "tools/tessera-rules/RuleFileText.h"

#include "MIDITranslator/JsonFile.h"

#include <QFile>
#include <QJsonDocument>

cRuleFileText::cRuleFileText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
    {
        problem = QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString());
        return;
    }
    const QByteArray text = file.readAll();

    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError)
    {
        problem = DescribeJsonSyntaxError(path, text, error);
        return;
    }
    if (!document.isObject())
    {
        problem = QStringLiteral("%1: the top level is not a JSON object").arg(path);
        return;
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
