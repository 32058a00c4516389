// The array reader beside what a host would write instead. Names: ArrayReader/<operation>/<size> and, for the peer, the
// same with /peer behind it.
//
// Loading is compared with libsndfile reading the same files into one interleaved buffer and a loop that takes the
// channels apart, into memory that is allocated without being cleared, as ours is. Both free everything outside the
// measured time. Publishing is compared with one memcpy of a block, from the same kind of place to the same number of
// destinations; the queues are drained outside the measured time.
#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <KOVDoaHandle/KOVAudio/arrayplayer_p.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

#include "bench/arrayrecording.h"
#include "bench/publishing.h"

namespace {

using Clock = std::chrono::steady_clock;

using bench::ArrayRecording;

constexpr int fileCount = 26;
constexpr std::size_t fileChannels = ArrayRecording::fileChannels;
constexpr int channels = fileCount * ArrayRecording::fileChannels;
constexpr int samples = 2 * ArrayRecording::sampleRateHz;
constexpr int blockSize = 1024;
constexpr int sourceCount = 4;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void load(benchmark::State& state)
{
    const ArrayRecording recording(fileCount, samples);
    for (auto _ : state) {
        KOVHwMultAudio reader;
        const auto start = Clock::now();
        const bool isLoaded = reader.init(recording.folder().c_str());
        state.SetIterationTime(secondsSince(start));
        if (!isLoaded) {
            state.SkipWithError("not loaded");
        }
    }
    state.SetBytesProcessed(state.iterations() * fileCount * recording.dataBytes());
}
BENCHMARK(load)->Name("ArrayReader/Init/208x2s")->UseManualTime()->Unit(benchmark::kMillisecond);

using Channel = std::unique_ptr<float[]>;

constexpr std::size_t interleavedSamples = std::size_t{samples} * fileChannels;

bool loadWithSndfile(const ArrayRecording& recording, std::vector<float>& interleaved,
                     std::vector<Channel>& loaded)
{
    for (int number = 0; number < fileCount; ++number) {
        SF_INFO info{};
        SNDFILE* const file = sf_open(recording.path(number).c_str(), SFM_READ, &info);
        const sf_count_t frames = sf_readf_float(file, interleaved.data(), samples);
        sf_close(file);
        if (frames != samples || info.channels != fileChannels) {
            return false;
        }
        std::array<float*, fileChannels> to{};
        for (float*& channel : to) {
            loaded.emplace_back(new float[samples]);
            channel = loaded.back().get();
        }
        for (std::size_t i = 0; i < samples; ++i) {
            for (std::size_t channel = 0; channel < fileChannels; ++channel) {
                to[channel][i] = interleaved[i * fileChannels + channel];
            }
        }
    }
    return true;
}

void loadPeer(benchmark::State& state)
{
    const ArrayRecording recording(fileCount, samples);
    std::vector<float> interleaved(interleavedSamples);
    for (auto _ : state) {
        std::vector<Channel> loaded;
        loaded.reserve(channels);
        const auto start = Clock::now();
        const bool isLoaded = loadWithSndfile(recording, interleaved, loaded);
        state.SetIterationTime(secondsSince(start));
        if (!isLoaded) {
            state.SkipWithError("not loaded");
        }
    }
    state.SetBytesProcessed(state.iterations() * fileCount * recording.dataBytes());
}
BENCHMARK(loadPeer)->Name("ArrayReader/Init/208x2s/peer")->UseManualTime()->Unit(benchmark::kMillisecond);

// Blocks that are published or copied between two pauses of the clock; the queues hold ten.
constexpr int blocksPerRound = 10;

void publish(benchmark::State& state)
{
    bench::Publishing publishing(fileCount, blockSize, sourceCount);
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < blocksPerRound; ++i) {
            publishing.publish();
        }
        state.SetIterationTime(secondsSince(start) / blocksPerRound);
        publishing.drain();
    }
}
BENCHMARK(publish)->Name("ArrayReader/Publish/208x1024to4")->UseManualTime();

void publishPeer(benchmark::State& state)
{
    constexpr std::size_t blockFloats = std::size_t{channels} * blockSize;
    const std::vector<float> block(blockFloats, 0.5F);
    // As many destinations as the pool has, so that both sides write to memory that is equally far away.
    std::vector<std::vector<float>> pool(KOVAudio::ArrayPlayer::poolBlocks, std::vector<float>(blockFloats));
    std::size_t next = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < blocksPerRound; ++i) {
            std::memcpy(pool[next].data(), block.data(), blockFloats * sizeof(float));
            benchmark::ClobberMemory();
            next = (next + 1) % pool.size();
        }
        state.SetIterationTime(secondsSince(start) / blocksPerRound);
    }
}
BENCHMARK(publishPeer)->Name("ArrayReader/Publish/208x1024to4/peer")->UseManualTime();

}  // namespace
