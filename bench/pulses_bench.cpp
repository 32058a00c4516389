// Pulse detection on a full buffer with 20 bursts. Peer: 20 passes over that buffer, each a search of its
// largest value.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

#include "bench/realtime.h"

namespace {

constexpr int samples = 32767;
constexpr int blockSamples = 4096;
constexpr int burstCount = 20;
constexpr int segmentSamples = 512;

// Different signals, so that the branch predictor cannot learn one by heart.
std::vector<std::vector<float>> signals()
{
    std::mt19937 random(3);
    std::normal_distribution<float> normal(0.0F, 0.01F);
    std::vector<std::vector<float>> list(8, std::vector<float>(samples));
    for (std::vector<float>& signal : list) {
        for (float& sample : signal) {
            sample = normal(random);
        }
        for (int burst = 0; burst < burstCount; ++burst) {
            float amplitude = 0.6F + 0.001F * static_cast<float>(random() % 400);
            const std::size_t first =
                static_cast<std::size_t>(burst) * (samples / burstCount) + random() % 400;
            for (std::size_t i = first; i < first + 40; ++i) {
                signal[i] += amplitude;
                amplitude *= -0.85F;
            }
        }
    }
    return list;
}

void fill(KOVPluseDetection& detector, std::vector<float>& signal)
{
    for (int at = 0; at < samples; at += blockSamples) {
        float* block = signal.data() + at;
        detector.FeedSignal(&block, std::min(blockSamples, samples - at), 0);
    }
}

void detectOurs(benchmark::State& state)
{
    std::vector<std::vector<float>> list = signals();
    KOVPluseDetection detector(96000, segmentSamples, 1);
    std::vector<float> segment(segmentSamples);
    float* out = segment.data();
    std::size_t next = 0;
    int count = 0;
    for ([[maybe_unused]] auto iteration : state) {
        state.PauseTiming();
        detector.FlushSignal();
        detector.FlushSignal();
        fill(detector, list[next++ % list.size()]);
        state.ResumeTiming();
        benchmark::DoNotOptimize(detector.GetPulse(&out, count));
    }
    state.counters["bursts"] = count;
}

void detectPeer(benchmark::State& state)
{
    const std::vector<std::vector<float>> list = signals();
    std::size_t next = 0;
    for ([[maybe_unused]] auto iteration : state) {
        const std::vector<float>& signal = list[next++ % list.size()];
        for (int pass = 0; pass < burstCount; ++pass) {
            int index = -1;
            float largest = 0.0F;
            for (int i = 0; i < samples; ++i) {
                if (signal[static_cast<std::size_t>(i)] > largest) {
                    largest = signal[static_cast<std::size_t>(i)];
                    index = i;
                }
            }
            benchmark::DoNotOptimize(index);
            benchmark::ClobberMemory();
        }
    }
}

// Feeding and searching as a host does it, a search for every full buffer.
void wholeMode(benchmark::State& state)
{
    std::vector<std::vector<float>> list = signals();
    KOVPluseDetection detector(96000, segmentSamples, 1);
    std::vector<float> segment(segmentSamples);
    float* out = segment.data();
    std::size_t next = 0;
    int count = 0;
    for ([[maybe_unused]] auto iteration : state) {
        detector.FlushSignal();
        detector.FlushSignal();
        fill(detector, list[next++ % list.size()]);
        benchmark::DoNotOptimize(detector.GetPulse(&out, count));
    }
    bench::countRealTime(state, samples);
}

}  // namespace

BENCHMARK(detectOurs)->Name("Pulses/GetPulse/20bursts");
BENCHMARK(detectPeer)->Name("Pulses/GetPulse/20bursts/peer");
BENCHMARK(wholeMode)->Name("Pulses/FeedAndSearch");
