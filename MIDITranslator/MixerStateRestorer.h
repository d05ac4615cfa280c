#ifndef MIXERSTATERESTORER_H
#define MIXERSTATERESTORER_H

#include "Common/MIDI/MIDIControlMemory.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <vector>

class cMIDITranslatorConfiguration;
class cSystemMIDIConfiguration;

// Gives the console back what the DAW last showed on it once the way to it is
// there again: a network link that is up again, a MIDI port that comes back
// by name (an interface replugged). While enabled, the configuration hands it
// everything the rules write towards the mixer ("Mixer Out"), also what could
// not get there, and it keeps the last message of each control. When told
// that the link is up, or when the mixer's port appears, it writes them to
// the mixer once, in the order they were last written: to a MIDI port at the
// pace of a DIN cable, so that an interface passing them on to one is not
// overrun; over the link at once. A control that the DAW sets anew meanwhile
// keeps its new value. It forgets everything when the rule file or a variable
// changes, when the mixer's output is pointed at another port, when the link
// connects to another console, when told to and when disabled, so that it
// only ever gives a console its own state. Disabled, it keeps nothing and
// the byte path pays nothing.
class cMixerStateRestorer : public QObject
{
    Q_OBJECT
public:
    // A DIN cable carries 3125 bytes a second; a little less leaves room
    // for what the DAW sends meanwhile.
    static const int DIN_BYTES_PER_SECOND = 3000;

    // Writes through configuration, follows the ports of registry; neither owned.
    cMixerStateRestorer(cMIDITranslatorConfiguration* configuration, cSystemMIDIConfiguration* registry);

    void SetEnabled(bool enabled);
    bool IsEnabled() const { return memory != nullptr; }
    // What the rules just wrote towards the mixer; only while enabled.
    void Remember(const std::vector<unsigned char>& bytes) { memory->Remember(bytes.data(), bytes.size()); }
    void Forget();
    // The network link to the mixer is up, to console (a unit's name, or the
    // address typed): what is kept goes there at once, unless it was kept for
    // another console, which is then forgotten.
    void LinkConnected(const QString& console);

private:
    void OutputAdded(const QString& name);
    // 0 bytes a second: all at once.
    void Restore(int bytesPerSecond);
    void SendDue();
    void Stop();

    cMIDITranslatorConfiguration* configuration;
    cSystemMIDIConfiguration* registry;
    std::unique_ptr<cMIDIControlMemory> memory;
    QString linkConsole;

    // The restore under way: what is still to go, and how fast.
    std::vector<cMIDIControlMemory::sControl> pending;
    size_t next = 0;
    qint64 sentBytes = 0;
    int bytesPerSecond = 0;
    QElapsedTimer sinceStart;
    QTimer pace;
};

#endif
