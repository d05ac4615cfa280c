// Latency of one short MIDI message from one kernel MIDI port to another,
// through Tessera in the MIDI Ports mode (one rule, "Mixer In" to "Mixer
// Out") against a direct `aconnect` route between two more ports of the same
// kind. The ports are snd-virmidi's, played through their raw devices: the
// benchmark writes a message to one raw device and waits for it on the other.
// The two routes take turns message by message, so that both see the same
// load; reported are the medians of each and their ratio. Needs root, or
// access to /dev/snd, and four snd-virmidi ports (the module's default).

#include "Common/MIDI/ALSA/SystemMIDIConfigurationALSA.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "bench/RuleFile.h"
#include "tests/support/VirtualRawMIDI.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <poll.h>
#include <vector>

namespace
{
const int MESSAGES = 2000;
const int WAIT_MS = 5000;

const char* const RULE_FILE = R"({
    "port_aliases": [
        {"type": "input", "alias": "Mixer In", "name": "-"},
        {"type": "output", "alias": "Mixer Out", "name": "-"}
    ],
    "rules": [{"name": "Fader",
               "incoming": {"midi": "B0 07 v", "ports": ["Mixer In"]},
               "outgoing": {"midi": "B0 07 v", "ports": ["Mixer Out"]}}]
})";

double tesseraMedian = 0;
double aconnectMedian = 0;

// Tessera's side, on an event-loop thread of its own as in the program.
class cTesseraThread : public QThread
{
public:
    cTesseraThread(const QString& ruleFile, const QString& in, const QString& out)
        : ruleFile(ruleFile), in(in), out(out)
    {
    }

protected:
    void run() override
    {
        cMIDITranslatorConfiguration configuration(new cSystemMIDIConfigurationALSA);
        configuration.LoadFromFile(ruleFile);
        configuration.SetMixerInputPortName(in);
        configuration.SetMixerOutputPortName(out);
        exec();
    }

private:
    QString ruleFile;
    QString in;
    QString out;
};

// A fader move whose value names the message; false if it did not arrive
// within the wait. The kernel writes to a raw device with running status, so
// only the data bytes tell that it came.
bool Pass(sVirtualRawMIDI& from, sVirtualRawMIDI& to, int index, int waitMs = WAIT_MS)
{
    const QByteArray message = QByteArray::fromHex("B007") + char(index % 128);
    if (!from.Write(message))
    {
        return false;
    }
    QByteArray received;
    pollfd wait = {to.descriptor, POLLIN, 0};
    while (!received.endsWith(message.mid(1)) && poll(&wait, 1, waitMs) == 1)
    {
        received += to.Take();
    }
    return received.endsWith(message.mid(1));
}

double Median(std::vector<double> samples)
{
    std::nth_element(samples.begin(), samples.begin() + samples.size() / 2, samples.end());
    return samples[samples.size() / 2];
}

QString ClientOf(const QString& portName)
{
    return portName.section(QLatin1Char(':'), 0, 0) + QStringLiteral(":0");
}

void BM_KernelPortToKernelPort(benchmark::State& state)
{
    QStringList ports;
    {
        cSystemMIDIConfigurationALSA registry;
        ports = registry.GetSystemMIDIOutputNames().filter(sVirtualRawMIDI::Pattern());
    }
    if (ports.size() < 4)
    {
        state.SkipWithError("needs four snd-virmidi ports");
        return;
    }
    QTemporaryDir directory;
    const QString ruleFile = WriteRuleFile(directory, RULE_FILE);
    if (ruleFile.isEmpty())
    {
        state.SkipWithError("cannot write the rule file");
        return;
    }

    sVirtualRawMIDI tesseraIn(ports.at(0));
    sVirtualRawMIDI tesseraOut(ports.at(1));
    sVirtualRawMIDI routeIn(ports.at(2));
    sVirtualRawMIDI routeOut(ports.at(3));
    if (QProcess::execute(QStringLiteral("aconnect"), {ClientOf(ports.at(2)), ClientOf(ports.at(3))}) != 0)
    {
        state.SkipWithError("cannot connect the direct route");
        return;
    }
    cTesseraThread tessera(ruleFile, ports.at(0), ports.at(1));
    tessera.start();
    // Tessera's output is opened by the first message it sends.
    QElapsedTimer ready;
    ready.start();
    bool through = false;
    while (!through && !ready.hasExpired(20000))
    {
        through = Pass(tesseraIn, tesseraOut, 0, 100);
    }
    std::vector<double> viaTessera;
    std::vector<double> viaRoute;
    int index = 0;
    for (auto _ : state)
    {
        if (!through)
        {
            state.SkipWithError("a message did not arrive");
            break;
        }
        ++index;
        const bool tesseraTurn = index % 2 == 0;
        const auto start = std::chrono::steady_clock::now();
        through = tesseraTurn ? Pass(tesseraIn, tesseraOut, index) : Pass(routeIn, routeOut, index);
        const double microseconds =
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
        (tesseraTurn ? viaTessera : viaRoute).push_back(microseconds);
    }
    tessera.quit();
    tessera.wait();
    QProcess::execute(QStringLiteral("aconnect"), {QStringLiteral("-d"), ClientOf(ports.at(2)), ClientOf(ports.at(3))});
    if (through && !viaTessera.empty() && !viaRoute.empty())
    {
        tesseraMedian = Median(viaTessera);
        aconnectMedian = Median(viaRoute);
        state.counters["tessera_p50_us"] = tesseraMedian;
        state.counters["aconnect_p50_us"] = aconnectMedian;
    }
}
}

BENCHMARK(BM_KernelPortToKernelPort)->Iterations(2 * MESSAGES)->UseRealTime()->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (tesseraMedian > 0 && aconnectMedian > 0)
    {
        std::printf("median Tessera / aconnect: %.2f\n", tesseraMedian / aconnectMedian);
    }
    return 0;
}
