#include "tools/tessera-rules/RuleReplay.h"

#include "Common/MIDI/MIDIInputOutputMemory.h"
#include "Common/MIDI/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "tools/tessera-rules/RuleFileText.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <iostream>
#include <string>

namespace
{
QString HexText(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

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
            std::cout << qPrintable(name) << '\t' << qPrintable(HexText(data)) << std::endl;
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
