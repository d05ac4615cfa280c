#include "tools/tessera-rules/NameSuggestion.h"

#include <algorithm>
#include <vector>

namespace
{
// Insertions, deletions and substitutions that turn one text into the other,
// letter case ignored.
int EditDistance(const QString& one, const QString& other)
{
    const QString a = one.toCaseFolded();
    const QString b = other.toCaseFolded();
    std::vector<int> previous(static_cast<size_t>(b.size()) + 1);
    std::vector<int> current(previous.size());
    for (size_t column = 0; column < previous.size(); ++column)
    {
        previous[column] = static_cast<int>(column);
    }
    for (int row = 1; row <= a.size(); ++row)
    {
        current[0] = row;
        for (int column = 1; column <= b.size(); ++column)
        {
            const int substitution = previous[column - 1] + (a.at(row - 1) == b.at(column - 1) ? 0 : 1);
            current[column] = std::min({previous[column] + 1, current[column - 1] + 1, substitution});
        }
        std::swap(previous, current);
    }
    return previous.back();
}
}

QString cNameSuggestion::Suggest(const QString& written, const QStringList& candidates)
{
    if (candidates.contains(written))
    {
        return QString();
    }
    // Longer names may have more slips: any one-letter name is one slip from
    // any other, so those (and two-letter ones) may only differ in case.
    const int allowed = written.size() < 3 ? 0 : (written.size() < 6 ? 1 : 2);
    QString best;
    int bestDistance = allowed + 1;
    for (const QString& candidate : candidates)
    {
        const int distance = EditDistance(written, candidate);
        if (distance < bestDistance)
        {
            best = candidate;
            bestDistance = distance;
        }
    }
    return best;
}

QString cNameSuggestion::DidYouMean(const QString& written, const QStringList& candidates, const QString& otherwise)
{
    const QString suggestion = Suggest(written, candidates);
    return suggestion.isEmpty() ? otherwise : QStringLiteral("; did you mean \"%1\"?").arg(suggestion);
}
