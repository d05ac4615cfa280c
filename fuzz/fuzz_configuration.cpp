// Loads an arbitrary rule file into a configuration over in-memory ports, then
// lets arbitrary MIDI bytes arrive on every port that a matcher listens on,
// in two reads so that messages are cut between them. Then the mixer's input
// moves, a variable changes, and the same bytes arrive again.
//
// Input layout: rule file JSON text, a NUL byte, then the MIDI bytes. Without
// a NUL everything is JSON text and no bytes arrive.

#include "Common/MIDI/MIDIInputOutputMemory.h"
#include "Common/MIDI/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"

#include <QCoreApplication>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdio>
#include <memory>

namespace
{
// Removed again when the fuzzer exits.
QTemporaryDir& RuleDirectory()
{
    static QTemporaryDir directory;
    return directory;
}

// Every real port a rule listens on, plugged in where the file did not create
// it, so that each matcher is bound.
QList<cMIDIInputOutputMemory*> PlugInIncomingPorts(cMIDITranslatorConfiguration& configuration,
                                                   cSystemMIDIConfigurationMemory& registry)
{
    QSet<QString> names;
    for (const cMIDITranslatorRule& rule : configuration.GetMIDITranslatorRules())
    {
        for (const QString& port : rule.GetIncomingPortsList())
        {
            names.insert(configuration.GetInputPortNameFromAlias(port));
        }
    }
    QList<cMIDIInputOutputMemory*> ports;
    for (const QString& name : qAsConst(names))
    {
        cMIDIInputOutputMemory* port = registry.GetMemoryInputOutput(name);
        ports.append(port ? port : registry.AddSystemInputOutput(name));
    }
    return ports;
}

void Deliver(const QList<cMIDIInputOutputMemory*>& ports, const QByteArray& bytes)
{
    const int half = bytes.size() / 2;
    for (cMIDIInputOutputMemory* port : ports)
    {
        port->ReceiveMIDIData(bytes.left(half));
        port->ReceiveMIDIData(bytes.mid(half));
        port->TakeWrittenData();
    }
}
}

// Qt 5.15's JSON parser leaks when an object repeats a key whose values are
// containers, as in {"a":{"x":"ss"},"a":{"y":"tt","z":"u"}}; the leak is
// Qt's, not ours. Naming it needs whole allocation stacks, since Qt is built without
// frame pointers.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:QJsonDocument::fromJson\n";
}

extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // Rejected entries write error trace lines; nobody reads them here.
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
    const QByteArray bytes = separator < 0 ? QByteArray() : whole.mid(separator + 1);

    // The configuration reads rule files only from disk.
    const QString path = RuleDirectory().filePath(QStringLiteral("configuration.json"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(json) != json.size())
    {
        return 0;
    }
    file.close();

    auto* registry = new cSystemMIDIConfigurationMemory;
    cMIDITranslatorConfiguration configuration(registry);
    configuration.LoadFromFile(path);
    QList<cMIDIInputOutputMemory*> ports = PlugInIncomingPorts(configuration, *registry);
    Deliver(ports, bytes);

    // Both rebuild the matchers while the ports keep their partial state.
    const QString mixer = configuration.GetMixerInputPortName();
    configuration.SetMixerInputPortName(mixer + QLatin1Char('\''));
    configuration.SetMixerInputPortName(mixer);
    if (!configuration.GetMIDITranslatorVariables().isEmpty() && !bytes.isEmpty())
    {
        const cMIDITranslatorVariable& variable = configuration.GetMIDITranslatorVariables().first();
        configuration.SetVariableValue(variable.GetVariableName(), static_cast<unsigned char>(bytes.at(0)));
    }
    Deliver(ports, bytes);

    // What a first file left behind must not disturb the next one.
    configuration.LoadFromFile(path);
    Deliver(PlugInIncomingPorts(configuration, *registry), bytes);
    return 0;
}
