// tessera-rules: checks rule files before a show, and replays MIDI through
// one offline, with the translator's own classes and in-memory ports only.

#include "tools/tessera-rules/RuleFileCheck.h"
#include "tools/tessera-rules/RuleReplay.h"

#include <QCoreApplication>
#include <QStringList>

#include <iostream>

namespace
{
const int EXIT_USAGE = 2;

// The help texts are put together from these pieces, so that the full help
// (which also becomes the manual page) and each command's own say the same.
#define CHECK_USAGE "tessera-rules check FILE...\n"
#define REPLAY_USAGE \
    "tessera-rules replay FILE --in PORT [--set NAME=VALUE]... [--mixer-in NAME] [--mixer-out NAME] [--explain]\n"

#define CHECK_TEXT \
    "Loads each rule file as Tessera does and prints every error the load reports,\n" \
    "the rules it rejected, and a summary: virtual ports, aliases, variables and\n" \
    "rules accepted, rules and variables rejected. A JSON syntax error is shown\n" \
    "with its line and column.\n"

#define REPLAY_TEXT \
    "Loads FILE, sets the given global variables (VALUE decimal or 0x hexadecimal)\n" \
    "and mixer ports, then reads standard input line by line. Each line holds MIDI\n" \
    "bytes in hexadecimal separated by blanks ('#' starts a comment) and arrives as\n" \
    "one read of the input PORT, named as a rule names it (\"Mixer In\" goes through\n" \
    "the file's alias). Running status carries over from line to line. Every write\n" \
    "to an outgoing port is printed as the port's real name, a tab and the bytes.\n" \
    "Lines that are not hexadecimal bytes are reported on standard error and skipped.\n" \
    "With --explain every write is followed by a line of its own: a tab, what the\n" \
    "bytes say (\"CC 7 = 100, ch 3\"), a tab, and the rule that made them with the\n" \
    "values its local variables took from the matched message, in hexadecimal.\n"

#define CHECK_EXIT_STATUS "0 if every file loaded with nothing rejected, 1 if not, 2 for a usage error.\n"
#define REPLAY_EXIT_STATUS "0 if the input was replayed, 1 if FILE is unusable, 2 for a usage error.\n"

#define CHECK_EXAMPLE "  tessera-rules check Resources/Maps/tx16_generic_cc.json\n"
#define REPLAY_EXAMPLE \
    "  echo 'B0 63 00 B0 62 00 B0 06 40 B0 26 00' |\n" \
    "  tessera-rules replay Resources/Maps/tx16_generic_cc.json --in \"Mixer In\" --set n=0\n"

const char* const GENERAL_HELP =
    "Usage: " CHECK_USAGE
    "  or:  " REPLAY_USAGE
    "  or:  tessera-rules COMMAND --help\n"
    "Checks Tessera rule files before a show, or replays MIDI through one, with\n"
    "Tessera's own translator over in-memory ports: no MIDI service and no\n"
    "network are needed.\n"
    "\n"
    "check: " CHECK_TEXT
    "\n"
    "replay: " REPLAY_TEXT
    "\n"
    "Exit status:\n"
    "  check   " CHECK_EXIT_STATUS
    "  replay  " REPLAY_EXIT_STATUS
    "\n"
    "Examples:\n"
    CHECK_EXAMPLE
    "\n"
    REPLAY_EXAMPLE;

const char* const CHECK_HELP =
    "Usage: " CHECK_USAGE
    "\n"
    CHECK_TEXT
    "\n"
    "Exit status: " CHECK_EXIT_STATUS
    "\n"
    "Example:\n"
    CHECK_EXAMPLE;

const char* const REPLAY_HELP =
    "Usage: " REPLAY_USAGE
    "\n"
    REPLAY_TEXT
    "\n"
    "Exit status: " REPLAY_EXIT_STATUS
    "\n"
    "Example:\n"
    REPLAY_EXAMPLE;

int UsageError(const QString& message, const char* help)
{
    std::cerr << "tessera-rules: " << qPrintable(message) << "\n\n" << help;
    return EXIT_USAGE;
}

bool ParseByte(const QString& text, unsigned char& value)
{
    bool ok = false;
    const uint number = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive) ? text.mid(2).toUInt(&ok, 16)
                                                                                   : text.toUInt(&ok, 10);
    value = static_cast<unsigned char>(number);
    return ok && number <= 0xFF;
}

int Check(const QStringList& arguments)
{
    if (arguments.contains(QLatin1String("--help")))
    {
        std::cout << CHECK_HELP;
        return 0;
    }
    if (arguments.isEmpty())
    {
        return UsageError(QStringLiteral("check needs at least one FILE"), CHECK_HELP);
    }
    bool clean = true;
    for (const QString& path : arguments)
    {
        clean = cRuleFileCheck::Check(path) && clean;
    }
    return clean ? 0 : 1;
}

int Replay(const QStringList& arguments)
{
    if (arguments.contains(QLatin1String("--help")))
    {
        std::cout << REPLAY_HELP;
        return 0;
    }
    cRuleReplay::sOptions options;
    for (int index = 0; index < arguments.size(); ++index)
    {
        const QString& argument = arguments.at(index);
        if (argument == QLatin1String("--explain"))
        {
            options.explain = true;
            continue;
        }
        if (!argument.startsWith(QLatin1String("--")))
        {
            if (!options.file.isEmpty())
            {
                return UsageError(QStringLiteral("replay takes one FILE"), REPLAY_HELP);
            }
            options.file = argument;
            continue;
        }
        if (index + 1 >= arguments.size())
        {
            return UsageError(QStringLiteral("%1 needs a value").arg(argument), REPLAY_HELP);
        }
        const QString value = arguments.at(++index);
        if (argument == QLatin1String("--in"))
        {
            options.inputPort = value;
        }
        else if (argument == QLatin1String("--mixer-in"))
        {
            options.mixerInputPort = value;
        }
        else if (argument == QLatin1String("--mixer-out"))
        {
            options.mixerOutputPort = value;
        }
        else if (argument == QLatin1String("--set"))
        {
            const int equals = value.indexOf(QLatin1Char('='));
            unsigned char byte = 0;
            if (equals <= 0 || !ParseByte(value.mid(equals + 1), byte))
            {
                return UsageError(QStringLiteral("--set wants NAME=VALUE with a VALUE from 0 to 255, not \"%1\"").arg(value),
                                  REPLAY_HELP);
            }
            options.variableValues.append({value.left(equals), byte});
        }
        else
        {
            return UsageError(QStringLiteral("unknown option %1").arg(argument), REPLAY_HELP);
        }
    }
    if (options.file.isEmpty() || options.inputPort.isEmpty())
    {
        return UsageError(QStringLiteral("replay needs a FILE and --in PORT"), REPLAY_HELP);
    }
    return cRuleReplay::Run(options, std::cin);
}
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QStringList arguments = application.arguments().mid(1);
    const QString command = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (command == QLatin1String("check"))
    {
        return Check(arguments);
    }
    if (command == QLatin1String("replay"))
    {
        return Replay(arguments);
    }
    if (command == QLatin1String("--help") || command == QLatin1String("-h"))
    {
        std::cout << GENERAL_HELP;
        return 0;
    }
    return UsageError(command.isEmpty() ? QStringLiteral("no command given")
                                        : QStringLiteral("unknown command %1").arg(command),
                      GENERAL_HELP);
}
