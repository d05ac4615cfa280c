// Feeds arbitrary rule file text to variable and rule loading, then arbitrary
// bytes to the output generation of every rule that loaded.
//
// Input layout: rule file JSON text, a NUL byte, then the MIDI bytes handed
// to each rule as its matched message. Without a NUL everything is JSON text
// and the rules get an empty message.

#include "Common/MIDI/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace
{
// Removed again when the fuzzer exits.
QTemporaryDir& RuleDirectory()
{
    static QTemporaryDir directory;
    return directory;
}

void TranslateWithEveryRule(const cMIDITranslatorConfiguration& configuration, const std::vector<unsigned char>& input)
{
    for (const cMIDITranslatorRule& rule : configuration.GetMIDITranslatorRules())
    {
        std::vector<unsigned char> output;
        rule.GetMIDIOutputFromMIDIInput(output, input);
    }
}
}

// Qt 5.15's JSON parser leaks the earlier value when an object repeats a key
// whose value is an object or array ({"a": {}, "a": 1}). The leak is inside
// the library, whoever calls it; anything leaked elsewhere is still reported.
// Qt is built without frame pointers, so only the slow unwinder sees the
// parser's frame on the allocation stack that the suppression matches.
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:QJsonDocument::fromJson\n";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Every rejected object writes an error trace line; nobody reads them here.
    if (!std::freopen("/dev/null", "w", stdout))
    {
        return 1;
    }
    new QCoreApplication(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray whole = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const int separator = whole.indexOf('\0');
    const QByteArray json = separator < 0 ? whole : whole.left(separator);
    const std::vector<unsigned char> input =
        separator < 0 ? std::vector<unsigned char>() : std::vector<unsigned char>(data + separator + 1, data + size);

    // The configuration reads rule files only from disk.
    const QString path = RuleDirectory().filePath(QStringLiteral("rules.json"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(json) != json.size())
    {
        return 0;
    }
    file.close();

    auto configuration = std::make_unique<cMIDITranslatorConfiguration>(new cSystemMIDIConfigurationMemory);
    configuration->LoadFromFile(path);
    TranslateWithEveryRule(*configuration, input);

    // The top-level object itself, taken as one variable and one rule.
    const QJsonObject top = QJsonDocument::fromJson(json).object();
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
