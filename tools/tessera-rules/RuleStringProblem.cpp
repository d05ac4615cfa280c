#include "tools/tessera-rules/RuleStringProblem.h"

#include "tools/tessera-rules/NameSuggestion.h"

#include <QRegularExpression>

namespace
{
QString Quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString DescribeMalformedToken(const QString& token)
{
    static const QRegularExpression allowed(QStringLiteral("[A-Za-z0-9*]"));
    static const QRegularExpression variableLetter(QStringLiteral("^[G-Zg-z]$"));
    for (const QChar character : token)
    {
        if (!allowed.match(character).hasMatch())
        {
            const QString what = character == QLatin1Char('\t') ? QStringLiteral("a tab") : Quoted(character);
            return QStringLiteral("%1 holds %2, which no token may; separate the bytes with single spaces")
                .arg(Quoted(token), what);
        }
    }
    for (int position = 0; position < token.size(); ++position)
    {
        if (token.at(position) == QLatin1Char('*') && !variableLetter.match(token.mid(position + 1, 1)).hasMatch())
        {
            return QStringLiteral("in %1, \"*\" must be followed by the letter of a variable, g to z or G to Z "
                                  "(a to f are hexadecimal digits)")
                .arg(Quoted(token));
        }
    }
    return QStringLiteral("%1 is more than one byte; write each byte as two characters and separate the bytes with "
                          "spaces")
        .arg(Quoted(token));
}

QString LettersOf(const QStringList& letters, const QString& mark = QString())
{
    if (letters.isEmpty())
    {
        return QStringLiteral("none");
    }
    QStringList marked;
    for (const QString& letter : letters)
    {
        marked.append(mark + letter);
    }
    return marked.join(QStringLiteral(", "));
}
}

QString cRuleStringProblem::Describe(const cMIDITranslatorRule::sMIDIStringProblem& problem,
                                     const QStringList& variableLetters, const QStringList& localVariables,
                                     const QString& leftOutVariable)
{
    using sProblem = cMIDITranslatorRule::sMIDIStringProblem;
    const QString token = Quoted(problem.token);
    const QString letter = problem.variableName;
    switch (problem.kind)
    {
    case sProblem::NO_PROBLEM:
        break;
    case sProblem::MALFORMED_TOKEN:
        return DescribeMalformedToken(problem.token);
    case sProblem::UNKNOWN_GLOBAL:
    {
        const QString text = QStringLiteral("%1 refers to \"*%2\", but the file has no variable %3")
                                 .arg(token, letter, Quoted(letter));
        const QString suggestion = cNameSuggestion::Suggest(letter, variableLetters);
        if (!leftOutVariable.isEmpty())
        {
            return text + QStringLiteral(" (%1 is left out)").arg(leftOutVariable);
        }
        if (!suggestion.isEmpty())
        {
            return text + QStringLiteral("; did you mean \"*%1\"?").arg(suggestion);
        }
        return text + QStringLiteral(" (its variables: %1)").arg(LettersOf(variableLetters, QStringLiteral("*")));
    }
    case sProblem::LOCAL_CAPTURED_TWICE:
        return QStringLiteral("the local variable %1 is captured a second time, in %2; an incoming string captures "
                              "each once (\"x\" and \"X\" are the same)")
            .arg(Quoted(letter), token);
    case sProblem::LOCAL_NOT_CAPTURED:
        return QStringLiteral("the local variable %1 (in %2) is not captured by the incoming midi, which captures %3")
            .arg(Quoted(letter), token, LettersOf(localVariables));
    }
    return QString();
}
