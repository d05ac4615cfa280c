#ifndef RULESTRINGPROBLEM_H
#define RULESTRINGPROBLEM_H

#include "MIDITranslator/MIDITranslatorRule.h"

#include <QString>
#include <QStringList>

// A MIDI string that loading refuses, in words for the rule file's author:
// the token at fault, what is wrong with it and, where it helps, what the file
// has instead.
class cRuleStringProblem
{
public:
    // variableLetters are the file's variables, localVariables what the
    // incoming string captures, leftOutVariable the place of a variable of the
    // unknown letter that loading left out (empty if none). Empty for no
    // problem.
    static QString Describe(const cMIDITranslatorRule::sMIDIStringProblem& problem, const QStringList& variableLetters,
                            const QStringList& localVariables, const QString& leftOutVariable);
};

#endif
