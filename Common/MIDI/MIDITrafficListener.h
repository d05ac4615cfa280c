#ifndef MIDITRAFFICLISTENER_H
#define MIDITRAFFICLISTENER_H

#include <QByteArray>
#include <QString>

#include <vector>

// Watches the translation without taking part in it: the MIDI monitor window
// and the rule replayer's explanations. Calls come on the event-loop thread,
// in the order of the traffic: a message read, then every rule it completes,
// each followed by its writes. Nobody listens unless someone asks, so the
// byte path pays for none of this in a show.
class cMIDITrafficListener
{
public:
    virtual ~cMIDITrafficListener() = default;

    // One whole incoming message (running status expanded, as the rules see
    // it) or what was left of one when a status byte cut it short; told
    // before the rules see its last byte.
    virtual void MIDIMessageRead(const QString& inputName, const QByteArray& message) = 0;
    // A rule completed its pattern on the last bytes read from that input.
    virtual void MIDIRuleTriggered(int identifier, const std::vector<unsigned char>& matchedBytes) = 0;
    // The output of the rule just triggered, written to one existing port.
    virtual void MIDIMessageWritten(const QString& outputName, const QByteArray& message) = 0;
    // A message written to the mixer again, with no rule triggered: the
    // last value of a control, given back to a console that lost it.
    // Only the monitor shows these.
    virtual void MIDIMessageRestored(const QString& /*outputName*/, const QByteArray& /*message*/) {}
};

#endif
