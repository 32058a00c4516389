// Picking samples for another rate. Peer: libsamplerate's zero-order hold on the same block, which does the same work,
// with a converter made beforehand. `Operation/size` is ours, the same name with `/peer` the peer.
#include <benchmark/benchmark.h>

#include <samplerate.h>

#include <KOVDoaHandle/KOVAudio/kovaudioresample.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "bench/copying.h"
#include "bench/plainfilter.h"

using bench::noise;
using bench::Samples;

namespace {

constexpr int inRate = 96000;

// A block and room for what comes out of it.
struct Block
{
    Block(int wantedRate, std::size_t count)
        : outRate(wantedRate),
          in(noise(count)),
          out(in.size() * static_cast<std::size_t>(outRate) / inRate + 1)
    {
    }

    int inCount() const { return static_cast<int>(in.size()); }
    int outCount() const { return static_cast<int>(out.size()); }

    int outRate;
    Samples in;
    Samples out;
};

void fastOurs(benchmark::State& state, int outRate, std::size_t count)
{
    Block block(outRate, count);
    for ([[maybe_unused]] auto iteration : state) {
        KOVAudioReSample::FastAudioReSample(block.in.data(), inRate, block.inCount(), block.out.data(),
                                            block.outRate, block.outCount());
        benchmark::ClobberMemory();
    }
}

SRC_DATA descriptionOf(Block& block)
{
    SRC_DATA data{};
    data.data_in = block.in.data();
    data.data_out = block.out.data();
    data.input_frames = block.inCount();
    data.output_frames = block.outCount();
    data.src_ratio = static_cast<double>(block.outRate) / inRate;
    return data;
}

void fastPeer(benchmark::State& state, int outRate, std::size_t count)
{
    Block block(outRate, count);
    int error = 0;
    const std::unique_ptr<SRC_STATE, SRC_STATE* (*)(SRC_STATE*)> converter(
        src_new(SRC_ZERO_ORDER_HOLD, 1, &error), src_delete);
    SRC_DATA data = descriptionOf(block);
    for ([[maybe_unused]] auto iteration : state) {
        error = src_process(converter.get(), &data);
        benchmark::ClobberMemory();
    }
    if (error != 0 || data.output_frames_gen < block.outCount() - 2) {
        state.SkipWithError("the converter did not convert the block");
    }
}

void storeBlock(benchmark::State& state, int outRate, std::size_t count)
{
    bench::copyBytes(state, Block(outRate, count).out.size() * sizeof(float));
}

}  // namespace

BENCHMARK_CAPTURE(fastOurs, to48, 48000, 1024)->Name("Resampler/Fast96To48/1024");
BENCHMARK_CAPTURE(fastPeer, to48, 48000, 1024)->Name("Resampler/Fast96To48/1024/peer");
BENCHMARK_CAPTURE(storeBlock, to48, 48000, 1024)->Name("Resampler/Fast96To48/1024/bound");
BENCHMARK_CAPTURE(fastOurs, to48, 48000, 409600)->Name("Resampler/Fast96To48/409600");
BENCHMARK_CAPTURE(fastPeer, to48, 48000, 409600)->Name("Resampler/Fast96To48/409600/peer");
BENCHMARK_CAPTURE(storeBlock, to48, 48000, 409600)->Name("Resampler/Fast96To48/409600/bound");
BENCHMARK_CAPTURE(fastOurs, to44, 44100, 409600)->Name("Resampler/Fast96To44/409600");
BENCHMARK_CAPTURE(fastPeer, to44, 44100, 409600)->Name("Resampler/Fast96To44/409600/peer");
BENCHMARK_CAPTURE(storeBlock, to44, 44100, 409600)->Name("Resampler/Fast96To44/409600/bound");
