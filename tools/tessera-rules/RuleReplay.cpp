#include "tools/tessera-rules/RuleReplay.h"

#include "Common/MIDI/MIDITrafficListener.h"
#include "Common/MIDI/Memory/MIDIInputOutputMemory.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "Common/MIDI/Text/HexText.h"
#include "Common/MIDI/Text/MIDIMessageDescription.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tools/tessera-rules/RuleFileText.h"
#include "tools/tessera-rules/TraceSilencer.h"

#include <QCoreApplication>

#include <algorithm>
#include <iostream>
#include <string>

namespace
{
// Told of each rule as it fires, it follows every write the rule makes with
// a line of its own: a tab, what the bytes say, a tab, the rule's name and
// the values its local variables took, in hexadecimal as rules write them.
class cWriteExplainer : public cMIDITrafficListener
{
public:
    explicit cWriteExplainer(const cMIDITranslatorConfiguration& configuration) : configuration(configuration) {}

    void MIDIMessageRead(const QString&, const QByteArray&) override {}

    void MIDIRuleTriggered(int identifier, const std::vector<unsigned char>& matchedBytes) override
    {
        const cMIDITranslatorRule rule = configuration.GetMIDITranslatorRules().at(identifier);
        QStringList values;
        for (const cMIDITranslatorRule::sCapturedValue& captured : rule.GetCapturedValues(matchedBytes))
        {
            values.append(captured.variableName + QLatin1Char('=') +
                          QString::number(captured.value, 16).rightJustified(captured.wholeByte ? 2 : 1, QLatin1Char('0')).toUpper());
        }
        ruleText = QStringLiteral("rule \"%1\"").arg(rule.GetName());
        if (!values.isEmpty())
        {
            ruleText += QStringLiteral(": ") + values.join(QStringLiteral(", "));
        }
    }

    void MIDIMessageWritten(const QString&, const QByteArray& message) override
    {
        std::cout << '\t' << qPrintable(cMIDIMessageDescription::Describe(message)) << '\t' << qPrintable(ruleText) << std::endl;
    }

private:
    const cMIDITranslatorConfiguration& configuration;
    QString ruleText;
};

// Makes every outgoing port of every rule exist, as an in-memory port where
// the file does not publish it, and prints each write to it at once.
QList<cMIDIInputOutputMemory*> OpenOutgoingPorts(const cMIDITranslatorConfiguration& configuration,
                                                  cSystemMIDIConfigurationMemory& ports)
{
    QList<cMIDIInputOutputMemory*> outputs;
    for (const QString& name : configuration.GetOutgoingPortNames())
    {
        cMIDIInputOutputMemory* output = ports.GetOrAddMemoryInputOutput(name);
        QObject::connect(output, &cMIDIInputOutputMemory::MIDIWritten, [name](QByteArray data) {
            std::cout << qPrintable(name) << '\t' << qPrintable(cHexText::Format(data)) << std::endl;
        });
        outputs.append(output);
    }
    return outputs;
}


// A list of a variable's values for a message: "0 to 15" when they run
// without a gap, else each one.
QString DescribeValues(const cMIDITranslatorVariable& variable)
{
    QList<int> values;
    for (int index = 0; index < variable.GetNumberOfValues(); ++index)
    {
        values.append(variable.GetValueAtIndex(index));
    }
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    if (values.isEmpty())
    {
        return QStringLiteral("it has none");
    }
    if (values.size() > 2 && values.last() - values.first() == values.size() - 1)
    {
        return QStringLiteral("%1 to %2").arg(values.first()).arg(values.last());
    }
    QStringList texts;
    for (int value : values)
    {
        texts.append(QString::number(value));
    }
    return texts.join(QStringLiteral(", "));
}
}

cRuleReplay::cRuleReplay(const QString& file)
    : ports(new cSystemMIDIConfigurationMemory), configuration(new cMIDITranslatorConfiguration(ports))
{
    const cRuleFileText text(file);
    fileProblem = text.GetProblem();
    if (fileProblem.isEmpty())
    {
        // Standard output carries only the replay's writes.
        const cTraceSilencer silencer;
        configuration->LoadFromFile(file);
    }
}

cRuleReplay::~cRuleReplay()
{
    delete configuration;
}

QString cRuleReplay::GetFileProblem() const
{
    return fileProblem;
}

QString cRuleReplay::GetLoadProblem() const
{
    return configuration->GetLoadProblem();
}

// Rules know a variable by its letter, the window by its descriptive name: a
// user who gives the latter is told the former.
QString cRuleReplay::SetVariableValue(const QString& name, unsigned char value)
{
    const QList<cMIDITranslatorVariable>& variables = configuration->GetMIDITranslatorVariables();
    const auto variable = std::find_if(variables.begin(), variables.end(), [&](const cMIDITranslatorVariable& each) {
        return each.GetVariableName() == name;
    });
    if (variable == variables.end())
    {
        QStringList known;
        for (const cMIDITranslatorVariable& each : variables)
        {
            if (each.GetDescriptiveName().compare(name, Qt::CaseInsensitive) == 0)
            {
                return QStringLiteral("\"%1\" is the name users see; rules and --set call the variable \"%2\"")
                    .arg(each.GetDescriptiveName(), each.GetVariableName());
            }
            known.append(QStringLiteral("\"%1\" (%2)").arg(each.GetVariableName(), each.GetDescriptiveName()));
        }
        return QStringLiteral("the file has no variable \"%1\" (its variables: %2)")
            .arg(name, known.isEmpty() ? QStringLiteral("none") : known.join(QStringLiteral(", ")));
    }
    for (int index = 0; index < variable->GetNumberOfValues(); ++index)
    {
        if (variable->GetValueAtIndex(index) == value)
        {
            configuration->SetVariableValue(name, value);
            return QString();
        }
    }
    return QStringLiteral("variable \"%1\" has no value %2 (its values: %3)")
        .arg(name)
        .arg(value)
        .arg(DescribeValues(*variable));
}

void cRuleReplay::SetMixerInputPortName(const QString& name)
{
    configuration->SetMixerInputPortName(name);
}

void cRuleReplay::SetMixerOutputPortName(const QString& name)
{
    configuration->SetMixerOutputPortName(name);
}

void cRuleReplay::Run(const QString& inputPort, bool explain, std::istream& input)
{
    const QList<cMIDIInputOutputMemory*> outputs = OpenOutgoingPorts(*configuration, *ports);
    // The port prints a write as it is made; the explanation comes after it.
    cWriteExplainer explainer(*configuration);
    if (explain)
    {
        configuration->SetMIDITrafficListener(&explainer);
    }

    // The input is named as a rule names it; its alias gives the real port.
    const QString inputName = configuration->GetInputPortNameFromAlias(inputPort);
    if (!configuration->GetIncomingPortNames().contains(inputName))
    {
        std::cerr << "warning: no rule listens on \"" << qPrintable(inputName) << "\"" << std::endl;
    }
    cMIDIInputOutputMemory* port = ports->GetOrAddMemoryInputOutput(inputName);

    std::string line;
    for (int lineNumber = 1; std::getline(input, line); ++lineNumber)
    {
        // The same reading of hexadecimal text as everywhere else: pairs of
        // digits, in groups separated by blanks.
        QByteArray bytes;
        if (!cHexText::Parse(QString::fromStdString(line).section(QLatin1Char('#'), 0, 0), bytes))
        {
            std::cerr << "line " << lineNumber << ": not pairs of hexadecimal digits, skipped: " << line << std::endl;
            continue;
        }
        if (bytes.isEmpty())
        {
            continue;
        }
        port->ReceiveMIDIData(bytes);
        // A port may hand its notification over through the event loop.
        QCoreApplication::processEvents();
        // The writes were printed as they happened; a long replay keeps none.
        for (cMIDIInputOutputMemory* output : outputs)
        {
            output->TakeWrittenData();
        }
    }
    configuration->SetMIDITrafficListener(nullptr);
}
