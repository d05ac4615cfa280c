// Throughput of the match engine's byte path, and the heap allocations it
// makes, over two pattern sets: a realistic control-surface set and a
// wildcard-heavy set that keeps many partial matches in flight.

#include "Common/MIDI/MIDIMatch/MIDIMatchManager.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <random>
#include <vector>

namespace
{
std::atomic<size_t> allocationCount{0};
}

// Every heap allocation of the program goes through here, so the counter
// sees what the engine allocates while bytes stream through it. The standard
// library's operator delete frees with free(), which matches.
__attribute__((noinline)) void* operator new(size_t size)
{
    allocationCount.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size ? size : 1))
    {
        return memory;
    }
    throw std::bad_alloc();
}

namespace
{
const size_t STREAM_SIZE = 1 << 20;

class cCountingListener : public cMIDIMatchTriggerListener
{
public:
    void MIDIMatchTriggered(int identifier, const std::vector<unsigned char>& bytes) override
    {
        triggers += 1;
        benchmark::DoNotOptimize(identifier);
        benchmark::DoNotOptimize(bytes.data());
    }

    size_t triggers = 0;
};

sMIDIMatchNibble Literal(int value)
{
    return sMIDIMatchNibble{static_cast<uint8_t>(value & 0x0F), 0};
}

const sMIDIMatchNibble ANY{0, 1};

sMIDIMatchByteListIdentifier Pattern(int identifier, std::vector<sMIDIMatchNibble> nibbles)
{
    return sMIDIMatchByteListIdentifier{identifier, std::move(nibbles)};
}

// Per channel: CC 0-7 with any value, note on, pitch bend; and 32 SysEx
// messages of 8 bytes beginning F0 00 20.
std::vector<sMIDIMatchByteListIdentifier> ControlSurfacePatterns()
{
    std::vector<sMIDIMatchByteListIdentifier> patterns;
    int identifier = 0;
    for (int channel = 0; channel < 16; ++channel)
    {
        for (int controller = 0; controller < 8; ++controller)
        {
            patterns.push_back(Pattern(++identifier, {Literal(0xB), Literal(channel), Literal(0), Literal(controller), ANY, ANY}));
        }
        patterns.push_back(Pattern(++identifier, {Literal(0x9), Literal(channel), ANY, ANY, ANY, ANY}));
        patterns.push_back(Pattern(++identifier, {Literal(0xE), Literal(channel), ANY, ANY, ANY, ANY}));
    }
    for (int message = 0; message < 32; ++message)
    {
        patterns.push_back(Pattern(++identifier, {Literal(0xF), Literal(0), Literal(0), Literal(0), Literal(2), Literal(0),
                                                  Literal(3), Literal(2), Literal(message >> 4), Literal(message),
                                                  ANY, ANY, ANY, ANY, Literal(0xF), Literal(7)}));
    }
    return patterns;
}

// Every pattern begins with a wildcard byte, so a partial match begins at
// every byte of the stream.
std::vector<sMIDIMatchByteListIdentifier> WildcardPatterns()
{
    std::vector<sMIDIMatchByteListIdentifier> patterns;
    int identifier = 0;
    for (int controller = 0; controller < 8; ++controller)
    {
        patterns.push_back(Pattern(++identifier, {ANY, ANY, Literal(0), Literal(controller), ANY, ANY}));
    }
    patterns.push_back(Pattern(++identifier, {ANY, ANY, ANY, ANY, ANY, ANY}));
    patterns.push_back(Pattern(++identifier, {ANY, ANY, ANY, ANY}));
    patterns.push_back(Pattern(++identifier, {ANY, ANY, Literal(4), ANY, Literal(7), Literal(0xF)}));
    patterns.push_back(Pattern(++identifier, {ANY, ANY, ANY, ANY, ANY, ANY, ANY, ANY}));
    return patterns;
}

// 1 MiB of whole channel messages from the control-surface families, fixed seed.
const std::vector<unsigned char>& ChannelMessageStream()
{
    static const std::vector<unsigned char> stream = [] {
        std::mt19937 random(20261121);
        std::vector<unsigned char> bytes;
        bytes.reserve(STREAM_SIZE + 3);
        while (bytes.size() < STREAM_SIZE)
        {
            const unsigned channel = random() % 16;
            const unsigned data = random() & 0x7F;
            switch (random() % 3)
            {
            case 0:
                bytes.insert(bytes.end(), {static_cast<unsigned char>(0xB0 | channel),
                                           static_cast<unsigned char>(random() % 8), static_cast<unsigned char>(data)});
                break;
            case 1:
                bytes.insert(bytes.end(), {static_cast<unsigned char>(0x90 | channel),
                                           static_cast<unsigned char>(random() & 0x7F), static_cast<unsigned char>(data)});
                break;
            default:
                bytes.insert(bytes.end(), {static_cast<unsigned char>(0xE0 | channel),
                                           static_cast<unsigned char>(random() & 0x7F), static_cast<unsigned char>(data)});
                break;
            }
        }
        bytes.resize(STREAM_SIZE);
        return bytes;
    }();
    return stream;
}

void RunProcessByte(benchmark::State& state, const std::vector<sMIDIMatchByteListIdentifier>& patterns)
{
    cCountingListener listener;
    cMIDIMatchManager manager(&listener);
    for (const sMIDIMatchByteListIdentifier& pattern : patterns)
    {
        manager.AddMIDIMatchNibbleListIdentifierToTree(pattern);
    }
    const std::vector<unsigned char>& stream = ChannelMessageStream();

    const size_t allocationsBefore = allocationCount.load();
    for (auto _ : state)
    {
        for (unsigned char byte : stream)
        {
            manager.ProcessByte(byte);
        }
    }
    const double bytes = static_cast<double>(stream.size()) * static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
    state.counters["time_per_byte"] = benchmark::Counter(bytes, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["allocs_per_byte"] = static_cast<double>(allocationCount.load() - allocationsBefore) / bytes;
    state.counters["triggers_per_byte"] = static_cast<double>(listener.triggers) / bytes;
}

void BM_ControlSurfaceSet(benchmark::State& state)
{
    RunProcessByte(state, ControlSurfacePatterns());
}

void BM_WildcardSet(benchmark::State& state)
{
    RunProcessByte(state, WildcardPatterns());
}
}

BENCHMARK(BM_ControlSurfaceSet)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WildcardSet)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
