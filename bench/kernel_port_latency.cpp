// Latency of one short MIDI message from one kernel MIDI port to another,
// three ways between ports of the same kind: through Tessera in the MIDI Ports
// mode (one rule, "Mixer In" to "Mixer Out"); through a minimal relay, the
// floor for any program in user space (one sequencer client on a thread of its
// own that sends every event on at once, nothing else); and through a direct
// `aconnect` route inside the kernel. The ports are snd-virmidi's, played
// through their raw devices: the benchmark writes a message to one raw device
// and waits for it on the other. The routes take turns message by message, so
// that all see the same load; reported are the medians of each and Tessera's
// ratio to the other two, on the last two lines. Needs root, or access to
// /dev/snd, and six snd-virmidi ports: the module makes four per card, so load
// it with two cards (modprobe -r snd-virmidi; modprobe snd-virmidi enable=1,1).

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

#include <alsa/asoundlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <poll.h>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
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
double relayMedian = 0;
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

// The relay: its own sequencer client, subscribed to one port and by the
// other, on a thread that waits on the sequencer and sends each event on to
// its subscribers as soon as it is read. A thread of this process, as
// Tessera's side is: a relay process would also pay for switching address
// spaces on every message, which costs more than the relay itself on the
// emulated CPU of the test VM, and would slow the other routes with it.
class cRelay
{
public:
    // False if the client, its port or a subscription cannot be made.
    bool Start(const QString& from, const QString& to)
    {
        if (snd_seq_open(&handle, "default", SND_SEQ_OPEN_DUPLEX, 0) < 0)
        {
            handle = nullptr;
            return false;
        }
        snd_seq_set_client_name(handle, "Relay");
        port = snd_seq_create_simple_port(handle, "Relay", SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_READ,
            SND_SEQ_PORT_TYPE_APPLICATION);
        snd_seq_addr_t source;
        snd_seq_addr_t destination;
        stop = eventfd(0, EFD_CLOEXEC);
        if (port < 0 || stop < 0 || snd_seq_parse_address(handle, &source, qPrintable(from)) < 0
            || snd_seq_parse_address(handle, &destination, qPrintable(to)) < 0
            || snd_seq_connect_from(handle, port, source.client, source.port) < 0
            || snd_seq_connect_to(handle, port, destination.client, destination.port) < 0)
        {
            return false;
        }
        relay = std::thread(&cRelay::Run, this);
        return true;
    }

    ~cRelay()
    {
        if (relay.joinable())
        {
            const uint64_t wake = 1;
            if (write(stop, &wake, sizeof wake) != sizeof wake)
            {
                std::perror("stopping the relay");
            }
            relay.join();
        }
        if (stop >= 0)
        {
            close(stop);
        }
        if (handle)
        {
            snd_seq_close(handle);
        }
    }

private:
    void Run()
    {
        const int count = snd_seq_poll_descriptors_count(handle, POLLIN);
        std::vector<pollfd> descriptors(static_cast<size_t>(count) + 1);
        snd_seq_poll_descriptors(handle, descriptors.data(), static_cast<unsigned int>(count), POLLIN);
        descriptors.back() = {stop, POLLIN, 0};
        while (poll(descriptors.data(), descriptors.size(), -1) >= 0 && descriptors.back().revents == 0)
        {
            do
            {
                snd_seq_event_t* event = nullptr;
                if (snd_seq_event_input(handle, &event) < 0 || !event)
                {
                    break;
                }
                snd_seq_ev_set_source(event, port);
                snd_seq_ev_set_subs(event);
                snd_seq_ev_set_direct(event);
                snd_seq_event_output_direct(handle, event);
            } while (snd_seq_event_input_pending(handle, 0) > 0);
        }
    }

    snd_seq_t* handle = nullptr;
    int port = -1;
    int stop = -1;
    std::thread relay;
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

// One way from one raw device to another, and its latencies.
struct sRoute
{
    sVirtualRawMIDI in;
    sVirtualRawMIDI out;
    std::vector<double> microseconds;

    sRoute(const QString& from, const QString& to) : in(from), out(to) {}
};

void BM_KernelPortToKernelPort(benchmark::State& state)
{
    QStringList ports;
    {
        cSystemMIDIConfigurationALSA registry;
        ports = registry.GetSystemMIDIOutputNames().filter(sVirtualRawMIDI::Pattern());
    }
    if (ports.size() < 6)
    {
        state.SkipWithError("needs six snd-virmidi ports (modprobe snd-virmidi enable=1,1)");
        return;
    }
    QTemporaryDir directory;
    const QString ruleFile = WriteRuleFile(directory, RULE_FILE);
    if (ruleFile.isEmpty())
    {
        state.SkipWithError("cannot write the rule file");
        return;
    }

    sRoute viaTessera(ports.at(0), ports.at(1));
    sRoute viaRelay(ports.at(2), ports.at(3));
    sRoute viaKernel(ports.at(4), ports.at(5));
    sRoute* const routes[] = {&viaTessera, &viaRelay, &viaKernel};
    cRelay relay;
    if (!relay.Start(ClientOf(ports.at(2)), ClientOf(ports.at(3))))
    {
        state.SkipWithError("cannot start the relay");
        return;
    }
    if (QProcess::execute(QStringLiteral("aconnect"), {ClientOf(ports.at(4)), ClientOf(ports.at(5))}) != 0)
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
        through = Pass(viaTessera.in, viaTessera.out, 0, 100);
    }
    int index = 0;
    for (auto _ : state)
    {
        if (!through)
        {
            state.SkipWithError("a message did not arrive");
            break;
        }
        ++index;
        sRoute& route = *routes[index % 3];
        const auto start = std::chrono::steady_clock::now();
        through = Pass(route.in, route.out, index);
        route.microseconds.push_back(
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
    }
    tessera.quit();
    tessera.wait();
    QProcess::execute(QStringLiteral("aconnect"), {QStringLiteral("-d"), ClientOf(ports.at(4)), ClientOf(ports.at(5))});
    if (through && !viaTessera.microseconds.empty())
    {
        tesseraMedian = Median(viaTessera.microseconds);
        relayMedian = Median(viaRelay.microseconds);
        aconnectMedian = Median(viaKernel.microseconds);
        state.counters["tessera_p50_us"] = tesseraMedian;
        state.counters["relay_p50_us"] = relayMedian;
        state.counters["aconnect_p50_us"] = aconnectMedian;
    }
}
}

BENCHMARK(BM_KernelPortToKernelPort)->Iterations(3 * MESSAGES)->UseRealTime()->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (tesseraMedian > 0 && relayMedian > 0 && aconnectMedian > 0)
    {
        std::printf("median Tessera / relay: %.2f\n", tesseraMedian / relayMedian);
        std::printf("median Tessera / aconnect: %.2f\n", tesseraMedian / aconnectMedian);
    }
    return 0;
}
