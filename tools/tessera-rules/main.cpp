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
    "Loads each rule file as Tessera does and says what the load would not, each\n" \
    "finding once, as FILE: PLACE: error: or warning: and what to do, PLACE being a\n" \
    "JSON path such as rules[3] with the rule's name. Errors are the variables and\n" \
    "rules that loading leaves out, with the reason: which member is missing or of\n" \
    "the wrong type, which token is malformed, which variable is unknown, which\n" \
    "local variable is captured twice. Warnings are what makes a file do other\n" \
    "than it seems to: unknown keys (with the key likely meant), members of the\n" \
    "wrong type that loading skips, alias types other than \"input\" and \"output\",\n" \
    "rule ports that name neither a virtual port nor an alias of the file, the\n" \
    "traps of the MIDI string language (a lone digit such as F, \"*k*n\", a local\n" \
    "variable read from the upper half as in \"9x\", a string that does not begin\n" \
    "with a status byte), rules on one port that fire for each other's messages\n" \
    "or not for their own, and rules that duplicate another. A summary line ends\n" \
    "each file. A JSON syntax error is shown with its line and column.\n"

#define REPLAY_TEXT \
    "Loads FILE, sets the given global variables and mixer ports, then reads\n" \
    "standard input line by line. --set names a variable by its letter, as rules\n" \
    "do, and gives it one of its values (decimal or 0x hexadecimal), as choosing\n" \
    "it in Tessera's window does; a name that is no variable of FILE, or a value\n" \
    "the variable does not have, is a usage error. Each line holds MIDI bytes as\n" \
    "pairs of hexadecimal digits, alone or in groups separated by blanks (\"B0 07\n" \
    "7F\" or \"B0077F\"; '#' starts a comment), and arrives as one read of the\n" \
    "input PORT, named as a rule names it (\"Mixer In\" goes through the file's\n" \
    "alias). Running status carries over from line to line. Every write to an\n" \
    "outgoing port is printed as the port's real name, a tab and the bytes. Other\n" \
    "lines are reported on standard error and skipped. With --explain every write\n" \
    "is followed by a line of its own: a tab, what the bytes say (\"CC 7 = 100,\n" \
    "ch 3\"), a tab, and the rule that made them with the values its local\n" \
    "variables took from the matched message, in hexadecimal.\n"

#define CHECK_EXIT_STATUS "0 if every file is clean (nothing left out, no warning), 1 if not, 2 for a usage error.\n"
#define REPLAY_EXIT_STATUS "0 if the input was replayed, 1 if FILE is unusable, 2 for a usage error.\n"

#define CHECK_EXAMPLE "  tessera-rules check Resources/Maps/tx16_generic_cc.json\n"
#define REPLAY_EXAMPLE \
    "  echo 'B0 63 00 B0 62 00 B0 06 40 B0 26 00' |\n" \
    "  tessera-rules replay Resources/Maps/tx16_generic_cc.json --in \"Mixer In\" --set n=0\n"

const char* const GENERAL_HELP =
    "Usage: " CHECK_USAGE
    "  or:  " REPLAY_USAGE
    "  or:  tessera-rules COMMAND --help\n"
    "  or:  tessera-rules --version\n"
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
    QString file;
    QString inputPort;
    QString mixerInputPort;
    QString mixerOutputPort;
    QStringList settings;
    bool explain = false;
    for (int index = 0; index < arguments.size(); ++index)
    {
        const QString& argument = arguments.at(index);
        if (argument == QLatin1String("--explain"))
        {
            explain = true;
            continue;
        }
        if (!argument.startsWith(QLatin1String("--")))
        {
            if (!file.isEmpty())
            {
                return UsageError(QStringLiteral("replay takes one FILE"), REPLAY_HELP);
            }
            file = argument;
            continue;
        }
        if (index + 1 >= arguments.size())
        {
            return UsageError(QStringLiteral("%1 needs a value").arg(argument), REPLAY_HELP);
        }
        const QString value = arguments.at(++index);
        if (argument == QLatin1String("--in"))
        {
            inputPort = value;
        }
        else if (argument == QLatin1String("--mixer-in"))
        {
            mixerInputPort = value;
        }
        else if (argument == QLatin1String("--mixer-out"))
        {
            mixerOutputPort = value;
        }
        else if (argument == QLatin1String("--set"))
        {
            settings.append(value);
        }
        else
        {
            return UsageError(QStringLiteral("unknown option %1").arg(argument), REPLAY_HELP);
        }
    }
    if (file.isEmpty() || inputPort.isEmpty())
    {
        return UsageError(QStringLiteral("replay needs a FILE and --in PORT"), REPLAY_HELP);
    }

    cRuleReplay replay(file);
    if (!replay.GetFileProblem().isEmpty())
    {
        std::cerr << qPrintable(replay.GetFileProblem()) << std::endl;
        return 1;
    }
    if (!replay.GetLoadProblem().isEmpty())
    {
        std::cerr << qPrintable(replay.GetLoadProblem()) << std::endl;
    }
    // Whether a name and a value are the file's can only be told once it is loaded.
    for (const QString& setting : settings)
    {
        const int equals = setting.indexOf(QLatin1Char('='));
        unsigned char byte = 0;
        if (equals <= 0 || !ParseByte(setting.mid(equals + 1), byte))
        {
            return UsageError(QStringLiteral("--set wants NAME=VALUE with a VALUE from 0 to 255, not \"%1\"").arg(setting),
                              REPLAY_HELP);
        }
        const QString problem = replay.SetVariableValue(setting.left(equals), byte);
        if (!problem.isEmpty())
        {
            return UsageError(QStringLiteral("--set %1: %2").arg(setting, problem), REPLAY_HELP);
        }
    }
    if (!mixerInputPort.isEmpty())
    {
        replay.SetMixerInputPortName(mixerInputPort);
    }
    if (!mixerOutputPort.isEmpty())
    {
        replay.SetMixerOutputPortName(mixerOutputPort);
    }
    replay.Run(inputPort, explain, std::cin);
    return 0;
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
    if (command == QLatin1String("--version"))
    {
        std::cout << "tessera-rules " TESSERA_VERSION_STRING "\n";
        return 0;
    }
    return UsageError(command.isEmpty() ? QStringLiteral("no command given")
                                        : QStringLiteral("unknown command %1").arg(command),
                      GENERAL_HELP);
}
