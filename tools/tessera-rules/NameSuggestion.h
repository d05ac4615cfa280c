#ifndef NAMESUGGESTION_H
#define NAMESUGGESTION_H

#include <QString>
#include <QStringList>

// The candidate that a misspelt name was most likely meant to be: one or two
// letters off ("rule" for "rules", "Mixer Inn" for "Mixer In") or differing
// only in case. Empty when none is that close, or when the name is one of them.
QString SuggestName(const QString& written, const QStringList& candidates);

// "; did you mean "rules"?", or otherwise text, for the end of a finding.
QString DidYouMean(const QString& written, const QStringList& candidates, const QString& otherwise = QString());

#endif
