// Round-trip time of one short MIDI message over loopback TCP: from the
// benchmark, which plays the mixer, through Tessera's TCP link, input matcher
// and configuration (one rule sends the message straight back to "Mixer
// Out") and back; and, as the floor, the same exchange with a plain blocking
// echo server. Both run in one program run, so they share the machine's load.
// Reported per benchmark: p50, p99 and max in microseconds; at the end the
// ratios of the two p99s and, on the last line, of the two medians.

#include "Common/MIDI/Memory/SystemMIDIConfigurationMemory.h"
#include "MIDITranslator/MIDITranslatorConfiguration.h"
#include "Network/TCPMIDIInptOutput.h"
#include "bench/RuleFile.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QThread>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
const int MESSAGES = 10000;
const int WARM_UP_MESSAGES = 100;
const int ACCEPT_TIMEOUT_MS = 5000;
// The mixer's side of Tessera's link; an address of its own so that nothing
// else on loopback is in the way of the fixed port.
const char* const MIXER_ADDRESS = "127.0.0.41";
const char* const ECHO_ADDRESS = "127.0.0.42";

const char* const RULE_FILE = R"({
    "port_aliases": [
        {"type": "input", "alias": "Mixer In", "name": "Kestrel Internal TCP MIDI"},
        {"type": "output", "alias": "Mixer Out", "name": "Kestrel Internal TCP MIDI"}
    ],
    "variables": [{"name": "MIDI Channel", "variable_name": "n", "default": 0,
                   "values": [{"name": "1", "value": 0}]}],
    "rules": [{"name": "Fader straight back",
               "incoming": {"midi": "B*n 07 v", "ports": ["Mixer In"]},
               "outgoing": {"midi": "B*n 07 v", "ports": ["Mixer Out"]}}]
})";

struct sPercentiles
{
    double p50 = 0;
    double p99 = 0;
    double max = 0;
};

sPercentiles tesseraResult;
sPercentiles floorResult;

// A plain blocking TCP socket that closes itself.
class cSocket
{
public:
    explicit cSocket(int descriptor = -1) : descriptor(descriptor) {}
    ~cSocket()
    {
        if (descriptor >= 0)
        {
            ::close(descriptor);
        }
    }
    cSocket(const cSocket&) = delete;
    cSocket& operator=(const cSocket&) = delete;

    int Get() const { return descriptor; }
    bool IsOpen() const { return descriptor >= 0; }

    void SetNoDelay() const
    {
        int one = 1;
        ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    }

    bool WriteAll(const unsigned char* bytes, size_t size) const
    {
        while (size > 0)
        {
            ssize_t written = ::send(descriptor, bytes, size, MSG_NOSIGNAL);
            if (written <= 0)
            {
                return false;
            }
            bytes += written;
            size -= static_cast<size_t>(written);
        }
        return true;
    }

    bool ReadExactly(unsigned char* bytes, size_t size) const
    {
        while (size > 0)
        {
            ssize_t got = ::recv(descriptor, bytes, size, 0);
            if (got <= 0)
            {
                return false;
            }
            bytes += got;
            size -= static_cast<size_t>(got);
        }
        return true;
    }

private:
    int descriptor;
};

sockaddr_in Address(const char* address, uint16_t port)
{
    sockaddr_in socketAddress = {};
    socketAddress.sin_family = AF_INET;
    socketAddress.sin_port = htons(port);
    ::inet_pton(AF_INET, address, &socketAddress.sin_addr);
    return socketAddress;
}

int Listen(const char* address, uint16_t port)
{
    int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int one = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    const sockaddr_in socketAddress = Address(address, port);
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&socketAddress), sizeof socketAddress) != 0 ||
        ::listen(descriptor, 1) != 0)
    {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

// The one peer of a listening socket, or -1 when none comes in time.
int AcceptOne(const cSocket& listener)
{
    pollfd waiting = {listener.Get(), POLLIN, 0};
    if (::poll(&waiting, 1, ACCEPT_TIMEOUT_MS) != 1)
    {
        return -1;
    }
    return ::accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC);
}

uint16_t LocalPort(const cSocket& socket)
{
    sockaddr_in socketAddress = {};
    socklen_t size = sizeof socketAddress;
    ::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&socketAddress), &size);
    return ntohs(socketAddress.sin_port);
}

// A fader move on channel 1 whose value changes with every message.
bool RoundTrip(const cSocket& socket, int index)
{
    const unsigned char message[3] = {0xB0, 0x07, static_cast<unsigned char>(index % 128)};
    unsigned char answer[3] = {};
    return socket.WriteAll(message, sizeof message) && socket.ReadExactly(answer, sizeof answer) &&
           std::equal(message, message + 3, answer);
}

// One round trip per iteration, each timed on its own.
void MeasureRoundTrips(benchmark::State& state, const cSocket& socket, sPercentiles& result)
{
    for (int i = 0; i < WARM_UP_MESSAGES; ++i)
    {
        if (!RoundTrip(socket, i))
        {
            state.SkipWithError("the warm-up messages did not come back");
            return;
        }
    }
    std::vector<double> microseconds;
    microseconds.reserve(MESSAGES);
    int index = 0;
    for (auto _ : state)
    {
        const auto start = std::chrono::steady_clock::now();
        if (!RoundTrip(socket, index++))
        {
            state.SkipWithError("a message did not come back unchanged");
            return;
        }
        microseconds.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(microseconds.begin(), microseconds.end());
    result.p50 = microseconds[microseconds.size() / 2];
    result.p99 = microseconds[microseconds.size() * 99 / 100];
    result.max = microseconds.back();
    state.counters["p50_us"] = result.p50;
    state.counters["p99_us"] = result.p99;
    state.counters["max_us"] = result.max;
}

// Tessera's side, on an event-loop thread of its own as in the program: the
// configuration with the rule file and the link registered, connecting to
// the benchmark's mixer.
class cTesseraThread : public QThread
{
public:
    explicit cTesseraThread(const QString& ruleFile) : ruleFile(ruleFile) {}

protected:
    void run() override
    {
        cTCPMIDIInptOutput link;
        cMIDITranslatorConfiguration configuration(new cSystemMIDIConfigurationMemory);
        configuration.LoadFromFile(ruleFile);
        configuration.SetTCPMIDIInputOutput(&link);
        link.ConnectToHost(QHostAddress(QLatin1String(MIXER_ADDRESS)));
        exec();
        configuration.SetTCPMIDIInputOutput(nullptr);
    }

private:
    QString ruleFile;
};

void BM_TesseraRoundTrip(benchmark::State& state)
{
    QTemporaryDir directory;
    const QString ruleFile = WriteRuleFile(directory, RULE_FILE);
    if (ruleFile.isEmpty())
    {
        state.SkipWithError("cannot write the rule file");
        return;
    }

    const cSocket listener(Listen(MIXER_ADDRESS, cTCPMIDIInptOutput::MIXER_MIDI_PORT));
    if (!listener.IsOpen())
    {
        state.SkipWithError("cannot listen on the mixer's port");
        return;
    }
    cTesseraThread tessera(ruleFile);
    tessera.start();
    {
        const cSocket mixer(AcceptOne(listener));
        if (mixer.IsOpen())
        {
            mixer.SetNoDelay();
            MeasureRoundTrips(state, mixer, tesseraResult);
        }
        else
        {
            state.SkipWithError("Tessera's link did not connect");
        }
    }
    tessera.quit();
    tessera.wait();
}

void BM_EchoFloorRoundTrip(benchmark::State& state)
{
    const cSocket listener(Listen(ECHO_ADDRESS, 0));
    if (!listener.IsOpen())
    {
        state.SkipWithError("cannot listen for the echo server");
        return;
    }
    std::thread echo([&listener]() {
        const cSocket peer(AcceptOne(listener));
        peer.SetNoDelay();
        unsigned char bytes[256];
        ssize_t got;
        while (peer.IsOpen() && (got = ::recv(peer.Get(), bytes, sizeof bytes, 0)) > 0)
        {
            if (!peer.WriteAll(bytes, static_cast<size_t>(got)))
            {
                break;
            }
        }
    });
    {
        const cSocket client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_in echoAddress = Address(ECHO_ADDRESS, LocalPort(listener));
        if (::connect(client.Get(), reinterpret_cast<const sockaddr*>(&echoAddress), sizeof echoAddress) == 0)
        {
            client.SetNoDelay();
            MeasureRoundTrips(state, client, floorResult);
        }
        else
        {
            state.SkipWithError("cannot connect to the echo server");
        }
    }
    echo.join();
}
}

BENCHMARK(BM_EchoFloorRoundTrip)->Iterations(MESSAGES)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TesseraRoundTrip)->Iterations(MESSAGES)->UseRealTime()->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (tesseraResult.p99 > 0 && floorResult.p99 > 0)
    {
        std::printf("p99 Tessera / echo floor: %.2f (target: at most 1.5 x floor + 50 us = %.1f us)\n",
                    tesseraResult.p99 / floorResult.p99, 1.5 * floorResult.p99 + 50);
        std::printf("median Tessera / echo: %.2f\n", tesseraResult.p50 / floorResult.p50);
    }
    return 0;
}
