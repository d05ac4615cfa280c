#ifndef RULEFILETEXT_H
#define RULEFILETEXT_H

#include <QJsonObject>
#include <QString>

// The rule file as the checker sees it: its top-level object, or what is
// wrong with the text, a syntax error with its line and column.
class cRuleFileText
{
public:
    explicit cRuleFileText(const QString& path);

    bool IsReadable() const;
    // "PATH:LINE:COLUMN: message" for a syntax error, "PATH: message" for
    // other failures; empty when the file reads as a JSON object.
    QString GetProblem() const;
    QJsonObject GetTopLevelObject() const;

private:
    QString problem;
    QJsonObject topLevelObject;
};

#endif
