#include "tools/tessera-rules/RuleFileReport.h"

#include <QJsonObject>
#include <QJsonValue>

#include <algorithm>
#include <iostream>

sRuleFilePlace sRuleFilePlace::TopLevel()
{
    return {TOP_LEVEL, 0, QStringLiteral("top level")};
}

sRuleFilePlace sRuleFilePlace::Element(eSection section, int index, const QJsonValue& element, const char* nameKey)
{
    static const char* const SECTION_KEYS[] = {"", "virtual_ports", "port_aliases", "variables", "rules"};
    QString path = QStringLiteral("%1[%2]").arg(QLatin1String(SECTION_KEYS[section])).arg(index);
    const QJsonValue name = element.toObject().value(QLatin1String(nameKey));
    if (name.isString())
    {
        path += QStringLiteral(" \"%1\"").arg(name.toString());
    }
    return {section, index, path};
}

cRuleFileReport::cRuleFileReport(const QString& path) : path(path)
{
}

void cRuleFileReport::Warn(const sRuleFilePlace& place, const QString& text)
{
    findings.append({place, false, text});
}

void cRuleFileReport::Reject(const sRuleFilePlace& place, const QString& text)
{
    findings.append({place, true, text});
}

int cRuleFileReport::GetWarningCount() const
{
    return static_cast<int>(std::count_if(findings.begin(), findings.end(),
                                          [](const sFinding& finding) { return !finding.leftOut; }));
}

// The checks run one after the other over the whole file; the reader wants
// everything about one element together, where the element is.
void cRuleFileReport::Print() const
{
    QList<sFinding> sorted = findings;
    std::stable_sort(sorted.begin(), sorted.end(), [](const sFinding& one, const sFinding& other) {
        return std::make_pair(one.place.section, one.place.index) < std::make_pair(other.place.section, other.place.index);
    });
    for (const sFinding& finding : sorted)
    {
        std::cout << qPrintable(path) << ": " << qPrintable(finding.place.path)
                  << (finding.leftOut ? ": error: " : ": warning: ") << qPrintable(finding.text) << std::endl;
    }
}
