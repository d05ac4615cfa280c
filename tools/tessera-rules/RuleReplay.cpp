#include "tools/tessera-rules/RuleReplay.h"

#include "Common/MIDI/MIDITrafficListener.h"
#include "Common/MIDI/Memory/MIDIInputOutputMemory.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "Common/MIDI/Text/HexText.h"
#include "Common/MIDI/Text/MIDIMessageDescription.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tools/tessera-rules/RuleFileText.h"

#include <QCoreApplication>
#include <QRegularExpression>

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
}

int cRuleReplay::Run(const sOptions& options, std::istream& input)
{
    const cRuleFileText text(options.file);
    if (!text.IsReadable())
    {
        std::cerr << qPrintable(text.GetProblem()) << std::endl;
        return 1;
    }

    auto* ports = new cSystemMIDIConfigurationMemory;
    cMIDITranslatorConfiguration configuration(ports);
    configuration.LoadFromFile(options.file);
    for (const auto& variable : options.variableValues)
    {
        configuration.SetVariableValue(variable.first, variable.second);
    }
    if (!options.mixerInputPort.isEmpty())
    {
        configuration.SetMixerInputPortName(options.mixerInputPort);
    }
    if (!options.mixerOutputPort.isEmpty())
    {
        configuration.SetMixerOutputPortName(options.mixerOutputPort);
    }

    const QList<cMIDIInputOutputMemory*> outputs = OpenOutgoingPorts(configuration, *ports);
    // The port prints a write as it is made; the explanation comes after it.
    cWriteExplainer explainer(configuration);
    if (options.explain)
    {
        configuration.SetMIDITrafficListener(&explainer);
    }

    // The input is named as a rule names it; its alias gives the real port.
    const QString inputName = configuration.GetInputPortNameFromAlias(options.inputPort);
    if (!configuration.GetIncomingPortNames().contains(inputName))
    {
        std::cerr << "warning: no rule listens on \"" << qPrintable(inputName) << "\"" << std::endl;
    }
    cMIDIInputOutputMemory* inputPort = ports->GetOrAddMemoryInputOutput(inputName);

    std::string line;
    for (int lineNumber = 1; std::getline(input, line); ++lineNumber)
    {
        QByteArray bytes;
        if (!ParseLine(QString::fromStdString(line), bytes))
        {
            std::cerr << "line " << lineNumber << ": not hexadecimal bytes, skipped: " << line << std::endl;
            continue;
        }
        if (bytes.isEmpty())
        {
            continue;
        }
        inputPort->ReceiveMIDIData(bytes);
        // A port may hand its notification over through the event loop.
        QCoreApplication::processEvents();
        // The writes were printed as they happened; a long replay keeps none.
        for (cMIDIInputOutputMemory* output : outputs)
        {
            output->TakeWrittenData();
        }
    }
    return 0;
}

bool cRuleReplay::ParseLine(const QString& line, QByteArray& bytes)
{
    static const QRegularExpression blanks(QStringLiteral("[ \t\r]+"));
    static const QRegularExpression hexByte(QRegularExpression::anchoredPattern(QStringLiteral("[0-9A-Fa-f]{1,2}")));
    bytes.clear();
    const QStringList tokens = line.section(QLatin1Char('#'), 0, 0).split(blanks, Qt::SkipEmptyParts);
    for (const QString& token : tokens)
    {
        if (!hexByte.match(token).hasMatch())
        {
            return false;
        }
        bytes.append(static_cast<char>(token.toUInt(nullptr, 16)));
    }
    return true;
}
