#include "MIDITranslator/MIDITranslatorVariable.h"

#include "Application/DebugTrace.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QRegularExpression>

#include <cmath>
#include <cstdint>
#include <limits>

namespace
{
// Numbers in a rule file become bytes by rounding half up, truncating to a
// 32-bit integer and keeping the low 8 bits, so 256 wraps to 0 and 300 to 44.
// A number beyond the 32-bit range truncates to the integer indefinite value,
// as the processor's own conversion does, instead of being undefined.
UBYTE RoundToByte(double number)
{
    const double rounded = number + 0.5;
    int32_t truncated = std::numeric_limits<int32_t>::min();
    if (std::isfinite(rounded) && rounded > static_cast<double>(std::numeric_limits<int32_t>::min()) - 1.0 &&
        rounded < static_cast<double>(std::numeric_limits<int32_t>::max()) + 1.0)
    {
        truncated = static_cast<int32_t>(rounded);
    }
    return static_cast<UBYTE>(static_cast<uint32_t>(truncated) & 0xFF);
}
}

QString cMIDITranslatorVariable::GetDescriptiveName() const
{
    return descriptiveName;
}

QString cMIDITranslatorVariable::GetVariableName() const
{
    return variableName;
}

int cMIDITranslatorVariable::GetNumberOfValues() const
{
    return values.size();
}

int cMIDITranslatorVariable::GetCurrentValueIndex() const
{
    return currentValueIndex;
}

// A variable whose file gave it no values has no current value; rules that
// refer to it read 0 rather than memory beyond the list.
UBYTE cMIDITranslatorVariable::GetCurrentValue() const
{
    return GetValueAtIndex(currentValueIndex);
}

UBYTE cMIDITranslatorVariable::GetValueAtIndex(int index) const
{
    return HoldsIndex(index) ? values.at(index).value : 0;
}

QString cMIDITranslatorVariable::GetNameAtIndex(int index) const
{
    return HoldsIndex(index) ? values.at(index).name : QString();
}

// Duplicate values are allowed in a file; the first one wins.
void cMIDITranslatorVariable::SetCurrentValue(UBYTE value)
{
    for (int index = 0; index < values.size(); ++index)
    {
        if (values.at(index).value == value)
        {
            currentValueIndex = index;
            return;
        }
    }
    DebugErrTrace(DEBUG_LOCATION, "Invalid value: %d", value);
}

cMIDITranslatorVariable cMIDITranslatorVariable::FromJsonObject(QJsonObject object, bool& ok)
{
    ok = false;
    cMIDITranslatorVariable variable;

    const QJsonValue name = object.value(QStringLiteral("name"));
    if (!name.isString())
    {
        DebugErrTrace(DEBUG_LOCATION, "No \"name\" string value for variable");
        return variable;
    }

    const QJsonValue variableName = object.value(QStringLiteral("variable_name"));
    if (!variableName.isString())
    {
        DebugErrTrace(DEBUG_LOCATION, "No \"variable_name\" string value for variable");
        return variable;
    }

    static const QRegularExpression oneLetter(QRegularExpression::anchoredPattern(QStringLiteral("[a-zA-Z]")));
    if (!oneLetter.match(variableName.toString()).hasMatch())
    {
        DebugErrTrace(DEBUG_LOCATION, "Invalid \"variable_name\": %s", qUtf8Printable(variableName.toString()));
        return variable;
    }

    const QJsonValue defaultValue = object.value(QStringLiteral("default"));
    if (!defaultValue.isDouble())
    {
        DebugErrTrace(DEBUG_LOCATION, "No \"default\" double value for variable");
        return variable;
    }

    const QJsonValue valuesArray = object.value(QStringLiteral("values"));
    if (!valuesArray.isArray())
    {
        DebugErrTrace(DEBUG_LOCATION, "No \"values\" array for variable");
        return variable;
    }

    // Values that are not complete objects are left out without a word: the
    // file format is read leniently.
    for (const QJsonValue& element : valuesArray.toArray())
    {
        const QJsonObject valueObject = element.toObject();
        const QJsonValue value = valueObject.value(QStringLiteral("value"));
        const QJsonValue label = valueObject.value(QStringLiteral("name"));
        if (value.isDouble() && label.isString())
        {
            variable.values.append({RoundToByte(value.toDouble()), label.toString()});
        }
    }

    variable.descriptiveName = name.toString();
    variable.variableName = variableName.toString();
    variable.SetCurrentValue(RoundToByte(defaultValue.toDouble()));

    ok = true;
    return variable;
}

// Callers pass positions from 0 to n - 1. Only an index above n is reported;
// n itself and negative indices are not an error worth a trace line, but they
// still read nothing outside the list.
bool cMIDITranslatorVariable::HoldsIndex(int index) const
{
    if (index > values.size())
    {
        DebugErrTrace(DEBUG_LOCATION, "Invalid index: %d Number of values: %d", index,
                      static_cast<int>(values.size()));
        return false;
    }
    return index >= 0 && index < values.size();
}
