// The listener: a block fed and read. Peer: the same chain as six plain direct-form loops, one after the
// other over the block, then mixer, standard deviation, limiter and conversion, all in single precision.
// `Operation/size` is ours, the same name with `/peer` the peer; the ratio of the two is what counts.
#include <benchmark/benchmark.h>

#include <KOVDoaHandle/KOVAudio/kovsuperheterodyne.h>
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <vector>

#include "bench/plainfilter.h"
#include "bench/realtime.h"

using bench::PlainFilter;

namespace {

constexpr float base = 38600.0F;
constexpr std::size_t signalLength = 96000;

// One second of noise, read in blocks over and over.
class Signal
{
public:
    explicit Signal(std::size_t blockSize)
        : m_block(blockSize), m_samples(signalLength / blockSize * blockSize)
    {
        std::mt19937 random(5);
        std::uniform_real_distribution<float> uniform(-0.5F, 0.5F);
        std::generate(m_samples.begin(), m_samples.end(), [&] { return uniform(random); });
    }

    float* next()
    {
        m_position = (m_position + m_block) % m_samples.size();
        return m_samples.data() + m_position;
    }

private:
    std::size_t m_block;
    std::size_t m_position = 0;
    std::vector<float> m_samples;
};

class PlainMonitor
{
public:
    PlainMonitor()
    {
        for (std::size_t i = 0; i < m_oscillator.size(); ++i) {
            const double angle = 2.0 * std::numbers::pi * base * static_cast<double>(i) / 96000.0;
            m_oscillator[i] = static_cast<float>(std::cos(angle));
        }
    }

    void feed(const float* data, int n)
    {
        std::copy_n(data, n, m_pending.data() + m_count);
        m_count += n;
    }

    const short* read(int& count)
    {
        const int n = m_count;
        std::copy_n(m_pending.data(), n, m_work.data());
        m_count = 0;
        float* work = m_work.data();
        m_filters[0].filter(work, work, n);
        for (int i = 0; i < n; ++i) {
            work[i] *= m_oscillator[static_cast<std::size_t>(m_phase + i)];
        }
        for (std::size_t stage = 1; stage < m_filters.size(); ++stage) {
            m_filters[stage].filter(work, work, n);
        }
        const float gain = limitedGain(n);
        count = n / 2;
        for (int k = 0; k < count; ++k) {
            m_sound[static_cast<std::size_t>(k)] =
                static_cast<short>(static_cast<std::int32_t>(work[2 * k] * 32767.0F * gain));
        }
        m_phase = (m_phase + n) % 192000;
        return m_sound.data();
    }

private:
    float limitedGain(int n) const
    {
        float sum = 0.0F;
        for (int i = 0; i < n; ++i) {
            sum += m_work[static_cast<std::size_t>(i)];
        }
        const float mean = sum / static_cast<float>(n);
        float squares = 0.0F;
        for (int i = 0; i < n; ++i) {
            const float deviation = m_work[static_cast<std::size_t>(i)] - mean;
            squares += deviation * deviation;
        }
        const float level = 20.0F * std::log10(std::sqrt(squares / static_cast<float>(n))) + 120.0F;
        return 29.54242509F * (level > 60.0F ? std::pow(10.0F, (60.0F - level) * 0.05F) : 1.0F);
    }

    static PlainFilter lowPass(float cutoff, float q)
    {
        return PlainFilter(KOVIIRDesigner::createLowPass(cutoff, q, 1.0F, 96000.0F));
    }

    static PlainFilter highPass(float cutoff)
    {
        return PlainFilter(KOVIIRDesigner::createHighPass(cutoff, 1.0F, 1.0F, 96000.0F));
    }

    std::array<PlainFilter, 6> m_filters{highPass(base),          lowPass(4860.0F, 0.7F),
                                         lowPass(11900.0F, 2.0F), lowPass(10900.0F, 2.0F),
                                         lowPass(9900.0F, 1.0F),  highPass(100.0F)};
    std::vector<float> m_oscillator = std::vector<float>(409600);
    std::vector<float> m_pending = std::vector<float>(102400);
    std::vector<float> m_work = std::vector<float>(102400);
    std::vector<short> m_sound = std::vector<short>(51200);
    int m_count = 0;
    int m_phase = 0;
};

void readAllOurs(benchmark::State& state)
{
    const auto block = static_cast<int>(state.range(0));
    Signal signal(static_cast<std::size_t>(block));
    KOVSuperHeterodyne monitor;
    monitor.init();
    monitor.start();
    for ([[maybe_unused]] auto iteration : state) {
        monitor.feedSignal(signal.next(), block);
        int count = 0;
        benchmark::DoNotOptimize(monitor.readAll(count));
        benchmark::ClobberMemory();
    }
    bench::countRealTime(state, block);
}

void readAllPeer(benchmark::State& state)
{
    const auto block = static_cast<int>(state.range(0));
    Signal signal(static_cast<std::size_t>(block));
    PlainMonitor monitor;
    for ([[maybe_unused]] auto iteration : state) {
        monitor.feed(signal.next(), block);
        int count = 0;
        benchmark::DoNotOptimize(monitor.read(count));
        benchmark::ClobberMemory();
    }
    bench::countRealTime(state, block);
}

}  // namespace

BENCHMARK(readAllOurs)->Name("Listening/ReadAll")->Arg(1024);
BENCHMARK(readAllPeer)->Name("Listening/ReadAll/peer")->Arg(1024);
