#include "tools/tessera-rules/RuleFileText.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>

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
        // Where the parser stopped, usually just past the offending character.
        // Lines and columns count from 1; the column counts characters, not
        // bytes, so that it matches what an editor shows.
        const QByteArray before = text.left(error.offset);
        const int lineStart = before.lastIndexOf('\n') + 1;
        const int line = before.count('\n') + 1;
        const int column = QString::fromUtf8(before.mid(lineStart)).size() + 1;
        problem = QStringLiteral("%1:%2:%3: JSON syntax error: %4").arg(path).arg(line).arg(column).arg(error.errorString());
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
