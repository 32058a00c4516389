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
#include <vector>

#include "bench/plainfilter.h"

using bench::noise;
using bench::PlainFilter;
using bench::Samples;

namespace {

constexpr std::size_t longestBlock = 409600;
constexpr float rate = 96000.0F;

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
