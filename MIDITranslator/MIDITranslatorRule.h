#ifndef MIDITRANSLATORRULE_H
#define MIDITRANSLATORRULE_H

#include "Common/MIDI/MIDIMatch/MIDIMatchPattern.h"
#include "MIDITranslator/MIDITranslatorVariable.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <vector>

class cMIDITranslatorConfiguration;

// One translation rule: an incoming MIDI string heard on some ports, and an
// outgoing MIDI string sent to others. The incoming string is compiled into a
// match pattern, the outgoing one into a translation map that says where each
// output nibble comes from.
class cMIDITranslatorRule
{
public:
    struct sTranslateNibble
    {
        UBYTE value = 0;
        int inputNibbleIndex = -1;
        QString variableName;
        bool useHighNibble = false;
    };

    // What a matched message gave one local variable: a whole byte where the
    // variable stands alone in its token, a nibble otherwise.
    struct sCapturedValue
    {
        QString variableName;
        UBYTE value = 0;
        bool wholeByte = false;
    };

    explicit cMIDITranslatorRule(const cMIDITranslatorConfiguration* configuration = nullptr);

    int GetIndentifier() const;
    void SetIdentifier(int identifier);
    QString GetName() const;
    void SetName(QString name);
    QString GetIncomingMIDIString() const;
    void SetIncomingMIDIString(QString midi);
    QList<QString> GetIncomingPortsList() const;
    void SetIncomingPorts(QList<QString> ports);
    QString GetOutgoingMIDIString() const;
    void SetOutgoingMIDIString(QString midi);
    QList<QString> GetOutgoingPortsList() const;
    void SetOutgoingPorts(QList<QString> ports);
    void SetLocalVariablesList(QStringList variables);
    bool GetIncomingReliesOnGlobalVariable(QString name) const;

    const sMIDIMatchByteListIdentifier& GetMIDIMatchNibbleListIdentifier() const;
    void GetMIDIOutputFromMIDIInput(std::vector<unsigned char>& output, const std::vector<unsigned char>& input) const;
    // The local variables' values in a matched message, in the order the
    // incoming string names them, read from where the output reads them.
    QList<sCapturedValue> GetCapturedValues(const std::vector<unsigned char>& input) const;

    // Compilation. The pattern holds the values of the global variables it
    // uses, so it is compiled again whenever one changes. The map is compiled
    // once, by the loader: it names the variables and reads their values when
    // output is made, and compiling it again would append to it.
    void CreateMIDIMatchByteListIdentifier();
    void CreateTranslationMap();

    // The first token that makes a MIDI string invalid, and why. The loader
    // only needs to know whether there is one; the rule file checker tells
    // the file's author which token and which variable it is.
    struct sMIDIStringProblem
    {
        enum eKind
        {
            NO_PROBLEM,
            MALFORMED_TOKEN,       // not one or two units of the token grammar
            UNKNOWN_GLOBAL,        // "*" and a letter that names no variable
            LOCAL_CAPTURED_TWICE,  // incoming: a local variable a second time
            LOCAL_NOT_CAPTURED,    // outgoing: a local variable the incoming string lacks
        };
        eKind kind = NO_PROBLEM;
        QString token;
        // The variable letter at fault, for every kind but a malformed token.
        QString variableName;
    };

    // The rule MIDI string language. The validators and the problem finders
    // take the same walk over the tokens; the incoming ones append the local
    // variables they meet.
    static QStringList SplitMIDIString(const QString& midi);
    static bool ValidateIncomingMidiByteStringList(QStringList tokens, const QList<cMIDITranslatorVariable>& variables,
                                                   QStringList& localVariables);
    static bool ValidateOutgoingMidiByteStringList(QStringList tokens, const QList<cMIDITranslatorVariable>& variables,
                                                   QStringList localVariables);
    static sMIDIStringProblem FindIncomingMIDIStringProblem(const QString& midi,
                                                            const QList<cMIDITranslatorVariable>& variables,
                                                            QStringList& localVariables);
    static sMIDIStringProblem FindOutgoingMIDIStringProblem(const QString& midi,
                                                            const QList<cMIDITranslatorVariable>& variables,
                                                            const QStringList& localVariables);
    static bool GlobalVariableExists(QString name, const QList<cMIDITranslatorVariable>& variables);

    static cMIDITranslatorRule FromJsonObject(QJsonObject object, const cMIDITranslatorConfiguration* configuration,
                                              bool& ok);

private:
    sMIDIMatchNibble NibbleStringToMIDIMatchByte(QString nibble) const;
    int GetIndexOfVariableFromMIDIByte(QString variable, QString token) const;
    int GetInputByteIndexOfVariableFromIncomingMIDI(QString variable) const;
    int GetInputNibbleIndexOfVariableFromIncomingMIDI(QString variable) const;
    bool IsInputVariableIsWholeByteInIncomingMIDI(QString variable) const;
    QString IncomingToken(int index) const;
    UBYTE GetVariableValue(const QString& name) const;

    const cMIDITranslatorConfiguration* configuration;
    int identifier = 0;
    QString name;
    QString incomingMIDIString;
    QList<QString> incomingPorts;
    QString outgoingMIDIString;
    QList<QString> outgoingPorts;
    QStringList localVariables;
    QStringList incomingGlobalVariables;
    sMIDIMatchByteListIdentifier matchPattern;
    QList<sTranslateNibble> translationMap;
};

#endif
