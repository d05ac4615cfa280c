// Feeds arbitrary rule file text to variable and rule loading, then arbitrary
// bytes to the output generation of every rule that loaded.
//
// The MIDI bytes of the input are handed to each rule as its matched message.

#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "fuzz/RuleFileFuzzing.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cstdint>
#include <memory>
#include <vector>

namespace
{
void TranslateWithEveryRule(const cMIDITranslatorConfiguration& configuration, const std::vector<unsigned char>& input)
{
    for (const cMIDITranslatorRule& rule : configuration.GetMIDITranslatorRules())
    {
        std::vector<unsigned char> output;
        rule.GetMIDIOutputFromMIDIInput(output, input);
    }
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const sRuleFileFuzzInput fuzzInput = SplitRuleFileFuzzInput(data, size);
    if (fuzzInput.path.isEmpty())
    {
        return 0;
    }
    const std::vector<unsigned char> input(fuzzInput.midi.begin(), fuzzInput.midi.end());

    auto configuration = std::make_unique<cMIDITranslatorConfiguration>(new cSystemMIDIConfigurationMemory);
    configuration->LoadFromFile(fuzzInput.path);
    TranslateWithEveryRule(*configuration, input);

    // The top-level object itself, taken as one variable and one rule.
    const QJsonObject top = QJsonDocument::fromJson(fuzzInput.json).object();
    bool ok = false;
    cMIDITranslatorVariable::FromJsonObject(top, ok);
    cMIDITranslatorRule rule = cMIDITranslatorRule::FromJsonObject(top, configuration.get(), ok);
    std::vector<unsigned char> output;
    rule.GetMIDIOutputFromMIDIInput(output, input);

    // Changing a global recompiles every pattern; the rules must then still
    // produce output from the same bytes.
    const QList<cMIDITranslatorVariable> variables = configuration->GetMIDITranslatorVariables();
    for (const cMIDITranslatorVariable& variable : variables)
    {
        for (int index = 0; index < variable.GetNumberOfValues(); ++index)
        {
            configuration->SetVariableValue(variable.GetVariableName(), variable.GetValueAtIndex(index));
        }
    }
    TranslateWithEveryRule(*configuration, input);
    return 0;
}
