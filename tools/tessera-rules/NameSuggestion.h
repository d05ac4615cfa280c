#ifndef NAMESUGGESTION_H
#define NAMESUGGESTION_H

#include <QString>
#include <QStringList>

// The name a misspelt one was most likely meant to be, for hints in findings.
class cNameSuggestion
{
public:
    // The candidate one or two letters off ("rule" for "rules", "Mixer Inn"
    // for "Mixer In") or differing only in case. Empty when none is that
    // close, or when the name is one of them.
    static QString Suggest(const QString& written, const QStringList& candidates);
    // "; did you mean "rules"?", or otherwise text, for the end of a finding.
    static QString DidYouMean(const QString& written, const QStringList& candidates,
                              const QString& otherwise = QString());
};

#endif
