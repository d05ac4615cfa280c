#include "Application/SetupProblems.h"

#include "Common/MIDI/SystemMIDIConfiguration.h"

cSetupProblems::cSetupProblems(const cSystemMIDIConfiguration* registry, QObject* parent) : QObject(parent)
{
    if (!registry->HasSystemMIDI())
    {
        texts[eKind::MIDISystem] =
            tr("No ALSA sequencer (/dev/snd/seq): there are no MIDI ports, and no DAW can reach Tessera's ports.");
    }
}

void cSetupProblems::Set(eKind kind, const QString& text)
{
    if (texts[kind] != text)
    {
        texts[kind] = text;
        emit Changed();
    }
}

void cSetupProblems::SetOfflinePort(eKind kind, const QString& portName)
{
    const QString caption = kind == eKind::MixerInputPort ? tr("Input Port") : tr("Output Port");
    Set(kind, portName.isEmpty()
            ? QString()
            : tr("%1 \"%2\" is offline: plug it in, or choose another port.").arg(caption, portName));
}

void cSetupProblems::SetMIDIPortsInUse(bool inUse)
{
    if (midiPortsInUse != inUse)
    {
        midiPortsInUse = inUse;
        emit Changed();
    }
}

QString cSetupProblems::GetText(eKind kind) const
{
    const auto found = texts.find(kind);
    return found == texts.end() ? QString() : found->second;
}

QStringList cSetupProblems::GetTexts() const
{
    QStringList standing;
    for (const auto& entry : texts)
    {
        const bool portProblem = entry.first == eKind::MixerInputPort || entry.first == eKind::MixerOutputPort;
        if (!entry.second.isEmpty() && (midiPortsInUse || !portProblem))
        {
            standing.append(entry.second);
        }
    }
    return standing;
}
