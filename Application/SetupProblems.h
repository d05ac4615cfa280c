#ifndef SETUPPROBLEMS_H
#define SETUPPROBLEMS_H

#include <QObject>
#include <QString>
#include <QStringList>

#include <map>

// What stands in the way of translating, found without the user asking: a
// rule file that did not load, no MIDI system, a chosen mixer port that is
// absent. Each is one text in words for the user, saying where to look; the
// window's warning sign, the tray and the MIDI monitor show them. The mixer's
// ports count only in the MIDI Ports mode.
class cSystemMIDIConfiguration;

class cSetupProblems : public QObject
{
    Q_OBJECT
public:
    enum class eKind
    {
        RuleFile,
        MIDISystem,
        MixerInputPort,
        MixerOutputPort
    };

    // Whether there is a MIDI system at all is known from the start.
    explicit cSetupProblems(const cSystemMIDIConfiguration* registry, QObject* parent = nullptr);

    // An empty text says the problem is gone.
    void Set(eKind kind, const QString& text);
    // The chosen mixer port of that kind is absent; an empty name: present.
    void SetOfflinePort(eKind kind, const QString& portName);
    void SetMIDIPortsInUse(bool inUse);

    QString GetText(eKind kind) const;
    // Those that stand now, in the order of eKind.
    QStringList GetTexts() const;

signals:
    void Changed();

private:
    std::map<eKind, QString> texts;
    bool midiPortsInUse = true;
};

#endif
