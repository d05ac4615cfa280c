#ifndef RULEFILEREPORT_H
#define RULEFILEREPORT_H

#include <QJsonValue>
#include <QList>
#include <QString>

// Where in a rule file a finding belongs: a JSON path to the element, with its
// name where it has one ("rules[3] \"Fader 1\""), and its position in the
// file, by which findings are printed.
struct sRuleFilePlace
{
    enum eSection
    {
        TOP_LEVEL,
        VIRTUAL_PORTS,
        PORT_ALIASES,
        VARIABLES,
        RULES,
    };

    eSection section = TOP_LEVEL;
    int index = 0;
    QString path;

    static sRuleFilePlace TopLevel();
    // The element at index of a section's list, named by its member nameKey
    // when that is text.
    static sRuleFilePlace Element(eSection section, int index, const QJsonValue& element, const char* nameKey);
};

// The findings of one check of one rule file, each printed once, in the order
// of the file: "PATH: PLACE: warning: TEXT", or "error:" for an element that
// loading leaves out.
class cRuleFileReport
{
public:
    explicit cRuleFileReport(const QString& path);

    void Warn(const sRuleFilePlace& place, const QString& text);
    void Reject(const sRuleFilePlace& place, const QString& text);
    int GetWarningCount() const;

    void Print() const;

private:
    struct sFinding
    {
        sRuleFilePlace place;
        bool leftOut = false;
        QString text;
    };

    QString path;
    QList<sFinding> findings;
};

#endif
