#ifndef RULEREPLAY_H
#define RULEREPLAY_H

#include <QList>
#include <QPair>
#include <QString>

#include <istream>

// Plays MIDI read from text through a loaded rule file, offline: every line of
// hexadecimal bytes is one read of an input port, taken through the same
// running-status fixer, matcher and dispatch as in the program, and every
// write to an outgoing port is printed as it happens, explained on request.
// Ports are in memory; any outgoing port a rule names exists, so nothing is
// skipped as absent.
class cRuleReplay
{
public:
    struct sOptions
    {
        QString file;
        QString inputPort;
        QList<QPair<QString, unsigned char>> variableValues;
        QString mixerInputPort;
        QString mixerOutputPort;
        // After each write: what it says, and the rule and the values it took.
        bool explain = false;
    };

    // Exit status: 0 when the input was replayed, 1 when the file is unusable.
    static int Run(const sOptions& options, std::istream& input);

    // The bytes of one input line, or false when it is not hexadecimal bytes
    // separated by blanks. "#" starts a comment.
    static bool ParseLine(const QString& line, QByteArray& bytes);
};

#endif
