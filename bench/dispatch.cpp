// Translated messages per second through the whole configuration: from the
// mixer port's ReadMIDIData, through its matcher, the rule's output and the
// alias look-up, to the DAW port's WriteMIDIData. The rule file is a control
// surface of 160 rules: per channel 1-8, controllers 0-7, note on and pitch
// bend from the mixer, each with its translation back from the DAW. The
// second argument opens the MIDI monitor window (offscreen): it records every
// message read and written, and the event loop hands its rows to the view.
// BM_DispatchToMixer goes the other way, from the DAW to the mixer, with the
// console's state kept for a reconnect (memory 1) or not (memory 0).

#include "Common/MIDI/MIDIInputOutput.h"
#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "MIDITranslator/MixerStateRestorer.h"
#include "bench/RuleFile.h"

#ifdef TESSERA_BENCH_MONITOR
#include "Application/MIDIMonitorWindow.h"
#include "Application/SetupProblems.h"
#include "bench/WidgetBenchmarkMain.h"
#endif

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <random>

namespace
{
const int CHANNELS = 8;
const int CONTROLLERS = 8;

// Hands out one prepared chunk per read notification and counts what is
// written to it, so the ports themselves cost next to nothing.
class cBenchPort : public cMIDIInputOutput
{
public:
    void Deliver(const QByteArray& chunk)
    {
        pending = chunk;
        emit MIDIReadReady();
    }

    void ReadMIDIData(QByteArray& data) override
    {
        data = pending;
        pending.clear();
    }

    void WriteMIDIData(QByteArray& data) override
    {
        writes += 1;
        benchmark::DoNotOptimize(data.constData());
    }

    QByteArray pending;
    int64_t writes = 0;
};

QJsonObject Rule(const QString& name, const QString& incoming, const QString& from, const QString& outgoing,
                 const QString& to)
{
    return QJsonObject{
        {QStringLiteral("name"), name},
        {QStringLiteral("incoming"), QJsonObject{{QStringLiteral("midi"), incoming},
                                                 {QStringLiteral("ports"), QJsonArray{from}}}},
        {QStringLiteral("outgoing"), QJsonObject{{QStringLiteral("midi"), outgoing},
                                                 {QStringLiteral("ports"), QJsonArray{to}}}},
    };
}

// A mixer's controllers 0-7 become the DAW's 32-39; notes and pitch bend pass
// as they are. Every rule has its mirror image from the DAW back to the mixer.
QJsonDocument ControlSurfaceRuleFile()
{
    QJsonArray rules;
    const QString mixer = QStringLiteral("Mixer In");
    const QString mixerOut = QStringLiteral("Mixer Out");
    const QString daw = QStringLiteral("DAW");
    for (int channel = 0; channel < CHANNELS; ++channel)
    {
        const QString c = QString::number(channel, 16).toUpper();
        for (int controller = 0; controller < CONTROLLERS; ++controller)
        {
            const QString mixerCC = QStringLiteral("B%1 0%2 v").arg(c).arg(controller);
            const QString dawCC = QStringLiteral("B%1 2%2 v").arg(c).arg(controller);
            rules.append(Rule(QStringLiteral("CC"), mixerCC, mixer, dawCC, daw));
            rules.append(Rule(QStringLiteral("CC back"), dawCC, daw, mixerCC, mixerOut));
        }
        for (const QString& status : {QStringLiteral("9"), QStringLiteral("E")})
        {
            const QString message = status + c + QStringLiteral(" x v");
            rules.append(Rule(QStringLiteral("Pass"), message, mixer, message, daw));
            rules.append(Rule(QStringLiteral("Pass back"), message, daw, message, mixerOut));
        }
    }
    auto alias = [](const char* type, const char* alias, const char* name)
    {
        return QJsonObject{{QStringLiteral("type"), QLatin1String(type)},
                           {QStringLiteral("alias"), QLatin1String(alias)},
                           {QStringLiteral("name"), QLatin1String(name)}};
    };
    return QJsonDocument(QJsonObject{
        {QStringLiteral("port_aliases"),
         QJsonArray{alias("input", "Mixer In", "Desk"), alias("output", "Mixer Out", "Desk"),
                    alias("input", "DAW", "Bench DAW"), alias("output", "DAW", "Bench DAW")}},
        {QStringLiteral("rules"), rules},
    });
}

// Whole messages from the rules' families, drawn with a fixed seed and cut
// into reads of chunkSize messages each: the mixer's controllers are 0-7, the
// DAW's start at firstController.
QList<QByteArray> Chunks(int chunkSize, int firstController)
{
    std::mt19937 random(20261121);
    QList<QByteArray> chunks;
    for (int chunk = 0; chunk < 1024; ++chunk)
    {
        QByteArray bytes;
        for (int message = 0; message < chunkSize; ++message)
        {
            const int channel = static_cast<int>(random() % CHANNELS);
            const int kind = static_cast<int>(random() % (CONTROLLERS + 2));
            const char data = static_cast<char>(random() % 128);
            if (kind < CONTROLLERS)
            {
                bytes.append(static_cast<char>(0xB0 | channel)).append(static_cast<char>(firstController + kind));
                bytes.append(data);
            }
            else
            {
                const char status = static_cast<char>((kind == CONTROLLERS ? 0x90 : 0xE0) | channel);
                bytes.append(status).append(static_cast<char>(random() % 128)).append(data);
            }
        }
        chunks.append(bytes);
    }
    return chunks;
}

// The control surface loaded over two bench ports, which outlive the
// configuration that has them registered.
struct sControlSurface
{
    cBenchPort desk;
    cBenchPort daw;
    cSystemMIDIConfigurationMemory* registry = new cSystemMIDIConfigurationMemory;
    cMIDITranslatorConfiguration configuration{registry};

    bool Load(benchmark::State& state)
    {
        QTemporaryDir directory;
        const QString path = WriteRuleFile(directory, ControlSurfaceRuleFile().toJson().constData());
        if (path.isEmpty())
        {
            state.SkipWithError("cannot write the rule file");
            return false;
        }
        registry->AddInternalInputOutput(QStringLiteral("Desk"), &desk);
        registry->AddInternalInputOutput(QStringLiteral("Bench DAW"), &daw);
        configuration.LoadFromFile(path);
        if (configuration.GetMIDITranslatorRules().size() != 160)
        {
            state.SkipWithError("the rule file did not load 160 rules");
            return false;
        }
        return true;
    }
};

// Reads from one port, counts the writes at the other; between reads the
// event loop runs as often as in the program under load, when asked to.
void DeliverChunks(benchmark::State& state, cBenchPort& from, const cBenchPort& to, int firstController,
    bool processEvents)
{
    const int chunkSize = static_cast<int>(state.range(0));
    const QList<QByteArray> chunks = Chunks(chunkSize, firstController);
    int next = 0;
    for (auto _ : state)
    {
        from.Deliver(chunks.at(next));
        next = (next + 1) % chunks.size();
        if (processEvents && next % 256 == 0)
        {
            QCoreApplication::processEvents();
        }
    }
    if (to.writes != static_cast<int64_t>(state.iterations()) * chunkSize)
    {
        state.SkipWithError("not every message was translated");
    }
    state.SetItemsProcessed(to.writes);
}

void BM_Dispatch(benchmark::State& state)
{
    sControlSurface surface;
    if (!surface.Load(state))
    {
        return;
    }
#ifdef TESSERA_BENCH_MONITOR
    cSetupProblems problems(surface.registry);
    cMIDIMonitorWindow monitor(&surface.configuration, &problems);
    if (state.range(1) != 0)
    {
        monitor.show();
    }
#endif
    // The event loop that delivers the reads also shows the monitor's rows.
    DeliverChunks(state, surface.desk, surface.daw, 0, state.range(1) != 0);
}

void BM_DispatchToMixer(benchmark::State& state)
{
    sControlSurface surface;
    if (!surface.Load(state))
    {
        return;
    }
    surface.configuration.GetMixerStateRestorer()->SetEnabled(state.range(1) != 0);
    DeliverChunks(state, surface.daw, surface.desk, 0x20, false);
}
}

BENCHMARK(BM_DispatchToMixer)->ArgNames({"chunk", "memory"})->ArgsProduct({{1, 64}, {0, 1}});
#ifdef TESSERA_BENCH_MONITOR
BENCHMARK(BM_Dispatch)->ArgNames({"chunk", "monitor"})->ArgsProduct({{1, 64}, {0, 1}});
TESSERA_WIDGET_BENCHMARK_MAIN()
#else
BENCHMARK(BM_Dispatch)->ArgNames({"chunk", "monitor"})->ArgsProduct({{1, 64}, {0}});
BENCHMARK_MAIN();
#endif
