#ifndef MIDITRANSLATORVARIABLE_H
#define MIDITRANSLATORVARIABLE_H

#include <QJsonObject>
#include <QList>
#include <QString>

typedef unsigned char UBYTE;

// A global setting of a rule file (a MIDI channel, a bank offset): one byte
// chosen from a fixed list of named values. Rules refer to it by its
// one-letter variable name.
class cMIDITranslatorVariable
{
public:
    struct sVariableValue
    {
        UBYTE value = 0;
        QString name;
    };

    QString GetDescriptiveName() const;
    QString GetVariableName() const;
    int GetNumberOfValues() const;
    int GetCurrentValueIndex() const;
    UBYTE GetCurrentValue() const;
    UBYTE GetValueAtIndex(int index) const;
    QString GetNameAtIndex(int index) const;
    void SetCurrentValue(UBYTE value);

    static cMIDITranslatorVariable FromJsonObject(QJsonObject object, bool& ok);

private:
    bool HoldsIndex(int index) const;

    QString descriptiveName;
    QString variableName;
    QList<sVariableValue> values;
    int currentValueIndex = 0;
};

#endif
