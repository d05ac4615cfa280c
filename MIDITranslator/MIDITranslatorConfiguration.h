#ifndef MIDITRANSLATORCONFIGURATION_H
#define MIDITRANSLATORCONFIGURATION_H

#include "Common/MIDI/MIDIMatch/MIDIMatchPattern.h"
#include "MIDITranslator/MIDITranslatorRule.h"
#include "MIDITranslator/MIDITranslatorVariable.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <memory>
#include <vector>

class cMIDIInputMatcher;
class cMIDIInputOutput;
class cMIDITrafficListener;
class cMixerStateRestorer;
class cSystemMIDIConfiguration;

// Holds one loaded rule file and everything built from it: the virtual ports
// it publishes, its port aliases, variables and rules, and one input matcher
// per real incoming port. Matchers call back MIDIMatchTriggered, which turns a
// match into the rule's output and writes it to the rule's outgoing ports.
class cMIDITranslatorConfiguration : public QObject, public cMIDIMatchTriggerListener
{
    Q_OBJECT
public:
    // Takes ownership of the port registry; the application passes the
    // platform's own, tests and tools an in-memory one.
    explicit cMIDITranslatorConfiguration(cSystemMIDIConfiguration* systemMIDIConfiguration, QObject* parent = nullptr);
    ~cMIDITranslatorConfiguration() override;

    void LoadFromFile(QString path);
    void Unload();
    // What went wrong with the last load, in words for the user, or empty:
    // a file that could not be read (a syntax error with its line and
    // column), rules and variables that were left out, or no rules at all.
    // The error trace, where there is one, says it for the log.
    QString GetLoadProblem() const;

    QString GetInputPortNameFromAlias(QString name) const;
    QString GetOutputPortNameFromAlias(QString name) const;
    // The alias the rule file gives a real port, or an empty string.
    QString GetInputAliasOfPortName(QString name) const;
    QString GetOutputAliasOfPortName(QString name) const;
    QList<cMIDITranslatorRule> GetMIDITranslatorRules() const;
    const QList<cMIDITranslatorVariable>& GetMIDITranslatorVariables() const;
    cSystemMIDIConfiguration* GetSystemMIDIConfiguration() const;
    // The real ports the loaded rules listen on and write to, each named once.
    QStringList GetIncomingPortNames() const;
    QStringList GetOutgoingPortNames() const;

    void MIDIMatchTriggered(int id, const std::vector<unsigned char>& bytes) override;
    // Lets a monitor watch every message read, rule fired and write made,
    // through this and every later rule file (null stops); not owned.
    void SetMIDITrafficListener(cMIDITrafficListener* listener);
    // Gives the console its state back after it was lost; off until enabled.
    cMixerStateRestorer* GetMixerStateRestorer() const;
    // Writes messages that no rule wrote just now to the mixer's output, in
    // one write: what the console showed, given back. The monitor sees each
    // as restored. False when the mixer's output is not there.
    bool WriteToMixerOutput(const QList<QByteArray>& messages);

    QString GetMixerInputPortName() const;
    QString GetMixerOutputPortName() const;
    void SetMixerInputPortName(QString name);
    void SetMixerOutputPortName(QString name);
    void SetTCPMIDIInputOutput(cMIDIInputOutput* link);

    unsigned char GetVariableValue(QString name) const;
    void SetVariableValue(QString name, unsigned char value);

    void WriteChangesToFile();
    void WriteVariableValueToFile(QString variableName, unsigned char value);
    void WritePortNameAliasToFile(QString alias, QString type, QString name);

signals:
    void MixerMIDIInputRead();
    void MixerMIDIOutputWrite();

private:
    QJsonDocument GetJsonDocumentFromFilePath(QString path);
    void ProcessVirtualPortsArray(QJsonArray array);
    void ProcessPortAliasesArray(QJsonArray array);
    void ProcessPortAliasObject(QJsonObject object);
    void ProcessVariablesArray(QJsonArray array);
    void ProcessRulesArray(QJsonArray array);
    void DescribeWhatIsMissing();
    void CreateMIDIInputMatchers();
    void DestroyMIDIInputMatchers();
    void ResolveOutgoingPorts();
    int IndexOfVariable(const QString& name) const;
    void UpdateFirstMatchingElement(const QString& arrayKey, const std::function<bool(const QJsonObject&)>& matches,
                                   const QString& memberKey, const QJsonValue& memberValue);

    // One outgoing port of a rule, its alias already resolved.
    struct sOutgoingPort
    {
        QString realName;
        bool isMixerOutput = false;
    };

    cSystemMIDIConfiguration* systemMIDIConfiguration;
    QList<QString> virtualPortNames;
    QHash<QString, QString> inputAliases;
    QHash<QString, QString> outputAliases;
    QHash<QString, cMIDIInputMatcher*> inputMatchers;
    QList<cMIDITranslatorRule> rules;
    QList<cMIDITranslatorVariable> variables;
    QJsonDocument document;
    QString filePath;
    QString loadProblem;
    cMIDITrafficListener* trafficListener = nullptr;
    // Per rule, indexed by identifier: where its output goes.
    QVector<QVector<sOutgoingPort>> ruleOutgoingPorts;
    // Reused by every dispatch, so building the output allocates nothing.
    std::vector<unsigned char> outputBytes;
    std::unique_ptr<cMixerStateRestorer> mixerStateRestorer;
};

// The fixed names that tie a rule file to the mixer.
extern const char* const MIXER_IN_ALIAS;
extern const char* const MIXER_OUT_ALIAS;
extern const char* const TCP_MIDI_PORT_NAME;

#endif
