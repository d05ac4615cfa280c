#ifndef RULEREPLAY_H
#define RULEREPLAY_H

#include <QString>

#include <istream>

class cMIDITranslatorConfiguration;
class cSystemMIDIConfigurationMemory;

// Plays MIDI read from text through a loaded rule file, offline: every line of
// hexadecimal bytes is one read of an input port, taken through the same
// running-status fixer, matcher and dispatch as in the program, and every
// write to an outgoing port is printed as it happens, explained on request.
// Ports are in memory; any outgoing port a rule names exists, so nothing is
// skipped as absent.
class cRuleReplay
{
public:
    // Loads the file; GetFileProblem says whether that worked.
    explicit cRuleReplay(const QString& file);
    ~cRuleReplay();

    cRuleReplay(const cRuleReplay&) = delete;
    cRuleReplay& operator=(const cRuleReplay&) = delete;

    // Empty when the file loaded, else what is wrong with its text.
    QString GetFileProblem() const;
    // Empty when every rule and variable loaded, else how many were left
    // out: the replay goes on with the rest.
    QString GetLoadProblem() const;

    // Gives a global variable one of its values, as choosing it in the window
    // does. Returns what is wrong when the file has no variable of that name
    // or the variable has no such value, and then changes nothing.
    QString SetVariableValue(const QString& name, unsigned char value);
    void SetMixerInputPortName(const QString& name);
    void SetMixerOutputPortName(const QString& name);

    // Replays the input on the port named as a rule names it. With explain,
    // each write is followed by what it says and the rule that made it.
    void Run(const QString& inputPort, bool explain, std::istream& input);

private:
    QString fileProblem;
    cSystemMIDIConfigurationMemory* ports;
    cMIDITranslatorConfiguration* configuration;
};

#endif
