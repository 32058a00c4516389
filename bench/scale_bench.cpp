// How the cost of an operation grows with its size. Names: Scale/<operation>/<size>; the size is megapixels times ten,
// frames, peaks or channels.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <thread>
#include <vector>

#include <KOVDoaHandle/imaging/kovdoaobject.h>
#include <KOVDoaHandle/imaging/kovtargettrack.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

#include "bench/movingsource.h"
#include "bench/publishing.h"
#include "bench/resultrecording.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Pictures of 4 : 3 with so many tenths of a megapixel.
void render(benchmark::State& state)
{
    const double pixels = static_cast<double>(state.range(0)) * 1e5;
    const int height = static_cast<int>(std::lround(std::sqrt(pixels * 0.75)));
    const int width = static_cast<int>(std::lround(pixels / height));
    KOVOFFLineDoaObject imager;
    bench::initInOwnFolder(imager, width, height);
    imager.setDynamic(6.0F);
    const std::vector<bench::Frame> frames = bench::makeFrames();
    const bench::Picture picture(create_mat1d_uint8(height, width * 3));
    std::size_t next = 0;
    for ([[maybe_unused]] auto iteration : state) {
        imager.updateImagerRGB(frames[next++ % frames.size()].get(), picture.get());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(render)->Name("Scale/Render")->Arg(3)->Arg(10)->Arg(33)->Arg(83)->Arg(170)->Arg(330);

void load(benchmark::State& state)
{
    const int frames = static_cast<int>(state.range(0));
    const bench::ResultRecording recording({24, 32, 128}, frames);
    for ([[maybe_unused]] auto iteration : state) {
        const auto start = Clock::now();
        KOVDoaResultSerialize reader(recording.cache());
        reader.openResultFile(recording.file());
        while (!reader.IsOpenFileComplete()) {
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
        state.SetIterationTime(secondsSince(start));
        if (reader.getResultFrame() != frames) {
            state.SkipWithError("frames are missing");
        }
    }
}
BENCHMARK(load)
    ->Name("Scale/Load")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->RangeMultiplier(10)
    ->Range(10, 100'000);

// As many tracks as peaks: every peak of a frame is found again.
void track(benchmark::State& state)
{
    std::vector<fpoint2d> peaks(static_cast<std::size_t>(state.range(0)));
    for (std::size_t i = 0; i < peaks.size(); ++i) {
        peaks[i].value = 1.0F;
        peaks[i].row = static_cast<int>(10 * (i / 32));
        peaks[i].col = static_cast<int>(10 * (i % 32));
    }
    KOVTargetTrack tracker;
    for ([[maybe_unused]] auto iteration : state) {
        tracker.FeedData(peaks);
    }
}
BENCHMARK(track)->Name("Scale/Track")->RangeMultiplier(2)->Range(4, 512);

// Blocks of 1024 samples a channel for four sources.
void publish(benchmark::State& state)
{
    constexpr int blocksPerRound = 10;
    bench::Publishing publishing(static_cast<int>(state.range(0)) / bench::ArrayRecording::fileChannels, 1024,
                                 4);
    for ([[maybe_unused]] auto iteration : state) {
        const auto start = Clock::now();
        for (int i = 0; i < blocksPerRound; ++i) {
            publishing.publish();
        }
        state.SetIterationTime(secondsSince(start) / blocksPerRound);
        publishing.drain();
    }
}
BENCHMARK(publish)->Name("Scale/Publish")->UseManualTime()->RangeMultiplier(2)->Range(8, 1024);

}  // namespace
