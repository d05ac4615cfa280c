#include "MIDITranslator/MixerStateRestorer.h"

#include "Common/MIDI/SystemMIDIConfiguration.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QList>

#include <limits>

namespace
{
// Each interval sends what the pace allows by then: 30 bytes at DIN speed.
const int PACE_INTERVAL_MS = 10;
}

cMixerStateRestorer::cMixerStateRestorer(cMIDITranslatorConfiguration* configuration,
    cSystemMIDIConfiguration* registry)
    : configuration(configuration), registry(registry)
{
    pace.setInterval(PACE_INTERVAL_MS);
    pace.setTimerType(Qt::PreciseTimer);
    connect(&pace, &QTimer::timeout, this, &cMixerStateRestorer::SendDue);
    connect(registry, &cSystemMIDIConfiguration::OutputAddedSignal, this, &cMixerStateRestorer::OutputAdded);
}

void cMixerStateRestorer::SetEnabled(bool enabled)
{
    if (enabled && !memory)
    {
        memory.reset(new cMIDIControlMemory);
    }
    else if (!enabled)
    {
        Stop();
        memory.reset();
    }
}

void cMixerStateRestorer::Forget()
{
    Stop();
    if (memory)
    {
        memory->Clear();
    }
}

// What was kept before the link was first up is for whichever console it
// reaches.
void cMixerStateRestorer::LinkConnected(const QString& console)
{
    if (!linkConsole.isEmpty() && console != linkConsole)
    {
        Forget();
    }
    linkConsole = console;
    Restore(0);
}

// Only the port that the rules write to, and only when it is the one port of
// its name: another port joining under the same name changes nothing.
void cMixerStateRestorer::OutputAdded(const QString& name)
{
    if (name == configuration->GetMixerOutputPortName() && registry->GetSystemMIDIOutputNames().count(name) == 1)
    {
        Restore(DIN_BYTES_PER_SECOND);
    }
}

void cMixerStateRestorer::Restore(int newBytesPerSecond)
{
    if (!memory)
    {
        return;
    }
    pending = memory->GetControls();
    next = 0;
    sentBytes = 0;
    bytesPerSecond = newBytesPerSecond;
    sinceStart.start();
    SendDue();
}

void cMixerStateRestorer::SendDue()
{
    const qint64 due = bytesPerSecond > 0 ? sinceStart.elapsed() * bytesPerSecond / 1000
                                          : std::numeric_limits<qint64>::max();
    QList<QByteArray> messages;
    // The first message goes at once, whatever its length.
    for (; next < pending.size() && (sentBytes == 0 || sentBytes + pending[next].message.size() <= due); ++next)
    {
        // A control set anew since has had its new value sent as it came.
        if (memory->IsUnchanged(pending[next]))
        {
            messages.append(pending[next].message);
            sentBytes += pending[next].message.size();
        }
    }
    // A port that went away meanwhile ends the restore; it starts again in
    // full when the port is back.
    if ((!messages.isEmpty() && !configuration->WriteToMixerOutput(messages)) || next == pending.size())
    {
        Stop();
    }
    else if (!pace.isActive())
    {
        pace.start();
    }
}

void cMixerStateRestorer::Stop()
{
    pace.stop();
    pending.clear();
    next = 0;
}
