// Recursive sections in place. Peer: the plain direct form, one sample after the other in single precision, with the
// same coefficients. `Operation/size` is ours, the same name with `/peer` the peer; the ratio of the two is what
// counts. Each round filters fresh noise; putting it there is not timed.
#include <benchmark/benchmark.h>

#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr std::size_t longestBlock = 409600;
constexpr float rate = 96000.0F;

using Samples = std::vector<float>;

Samples noise(std::size_t count)
{
    std::mt19937 random(17);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    Samples samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return uniform(random); });
    return samples;
}

// What a first version of a filter looks like, and every compiler makes good code of.
class PlainFilter
{
public:
    explicit PlainFilter(const IIRCoef_t& c)
        : m_b0(c.b0 / c.a0), m_b1(c.b1 / c.a0), m_b2(c.b2 / c.a0), m_a1(c.a1 / c.a0), m_a2(c.a2 / c.a0)
    {
    }

    void filter(const float* in, float* out, int n)
    {
        float x1 = m_x1;
        float x2 = m_x2;
        float y1 = m_y1;
        float y2 = m_y2;
        for (int i = 0; i < n; ++i) {
            const float x = in[i];
            const float y = m_b0 * x + m_b1 * x1 + m_b2 * x2 - m_a1 * y1 - m_a2 * y2;
            x2 = x1;
            x1 = x;
            y2 = y1;
            y1 = y;
            out[i] = y;
        }
        m_x1 = x1;
        m_x2 = x2;
        m_y1 = y1;
        m_y2 = y2;
    }

private:
    float m_b0;
    float m_b1;
    float m_b2;
    float m_a1;
    float m_a2;
    float m_x1 = 0.0F;
    float m_x2 = 0.0F;
    float m_y1 = 0.0F;
    float m_y2 = 0.0F;
};

// Sections one after the other over each block, in place.
template <typename Filter>
void filterBlocks(benchmark::State& state, const std::vector<IIRCoef_t>& sections, std::size_t block,
                  const Samples& input)
{
    std::vector<std::unique_ptr<Filter>> filters;
    for (const IIRCoef_t& section : sections) {
        filters.push_back(std::make_unique<Filter>(section));
    }
    Samples samples(input.size());
    for ([[maybe_unused]] auto iteration : state) {
        std::copy(input.begin(), input.end(), samples.begin());
        benchmark::ClobberMemory();
        const auto begin = std::chrono::steady_clock::now();
        for (std::size_t first = 0; first < samples.size(); first += block) {
            for (const auto& filter : filters) {
                filter->filter(samples.data() + first, samples.data() + first, static_cast<int>(block));
            }
        }
        benchmark::ClobberMemory();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
        state.SetIterationTime(elapsed.count());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<benchmark::IterationCount>(input.size()));
}

template <typename Filter>
void oneSection(benchmark::State& state)
{
    filterBlocks<Filter>(state, {KOVIIRDesigner::createHighPass(2000.0F, 0.707F, 1.0F, rate)}, longestBlock,
                         noise(longestBlock));
}

// Silence: a filter that lets its state sink into the denormal numbers pays for it here.
template <typename Filter>
void silence(benchmark::State& state)
{
    Samples input(longestBlock, 0.0F);
    const Samples sound = noise(1000);
    std::copy(sound.begin(), sound.end(), input.begin());
    filterBlocks<Filter>(state, {KOVIIRDesigner::createHighPass(2000.0F, 0.707F, 1.0F, rate)}, longestBlock,
                         input);
}

// The six sections of the listening monitor with its base at 30 kHz.
template <typename Filter>
void sixSections(benchmark::State& state)
{
    filterBlocks<Filter>(state,
                         {KOVIIRDesigner::createHighPass(30000.0F, 1.0F, 1.0F, rate),
                          KOVIIRDesigner::createLowPass(13460.0F, 0.7F, 1.0F, rate),
                          KOVIIRDesigner::createLowPass(20500.0F, 2.0F, 1.0F, rate),
                          KOVIIRDesigner::createLowPass(19500.0F, 2.0F, 1.0F, rate),
                          KOVIIRDesigner::createLowPass(18500.0F, 1.0F, 1.0F, rate),
                          KOVIIRDesigner::createHighPass(100.0F, 1.0F, 1.0F, rate)},
                         1024, noise(96 * 1024));
}

}  // namespace

BENCHMARK(oneSection<KOVFilter>)->Name("Filter/OneSection/409600")->UseManualTime();
BENCHMARK(oneSection<PlainFilter>)->Name("Filter/OneSection/409600/peer")->UseManualTime();
BENCHMARK(silence<KOVFilter>)->Name("Filter/OneSection/409600/silence")->UseManualTime();
BENCHMARK(silence<PlainFilter>)->Name("Filter/OneSection/409600/silence/peer")->UseManualTime();
BENCHMARK(sixSections<KOVFilter>)->Name("Filter/SixSections/96x1024")->UseManualTime();
BENCHMARK(sixSections<PlainFilter>)->Name("Filter/SixSections/96x1024/peer")->UseManualTime();
