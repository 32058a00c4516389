// Recording and playback against the bare file operations that they cannot do without.
//
// Both sides of a pair do the same work on the disk: Save is compared with appending the ready-made bytes of
// the same record, loading with reading the whole file and copying every map and spectrum once into fresh
// memory. Messages are discarded. Each iteration works on files that are already in the system's cache.
#include <benchmark/benchmark.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include <KOVDoaHandle/result/kovdoaresultserialize.h>

#include "bench/copying.h"
#include "bench/resultrecording.h"

namespace {

using bench::FrameSize;
using bench::makeResult;
using bench::ResultRecording;

constexpr FrameSize size{64, 48, 1024};
constexpr int loadedFrames = 2000;

// The bound of both: the bytes of map and spectrum, copied once.
void copyBlocks(benchmark::State& state, int frames)
{
    bench::copyBytes(state, static_cast<std::size_t>(frames) * size.blockBytes());
}
BENCHMARK_CAPTURE(copyBlocks, save, 1)->Name("Result/Save/64x48/bound");
BENCHMARK_CAPTURE(copyBlocks, load, loadedFrames)->Name("Result/Load/2000x64x48/bound");

// The file is cut back now and then, outside the measured time, so that it does not fill the disk.
constexpr int framesPerFile = 512;

void save(benchmark::State& state)
{
    const ResultRecording recording(size, 0);
    KOVDoaResultSerialize writer(recording.cache());
    const bench::Result result = makeResult(size);
    int frames = framesPerFile;
    for (auto _ : state) {
        if (frames++ == framesPerFile) {
            state.PauseTiming();
            recording.start(writer);
            frames = 0;
            state.ResumeTiming();
        }
        result->median += 1e-6F;
        writer.Save(result.get());
    }
}
BENCHMARK(save)->Name("Result/Save/64x48")->UseRealTime();

void savePeer(benchmark::State& state)
{
    const ResultRecording recording(size, 1);
    const QString path = recording.file();
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const QByteArray all = file.readAll();
    file.close();
    const QByteArray bytes = all.mid(all.indexOf("--start--"));
    int frames = framesPerFile;
    for (auto _ : state) {
        if (frames++ == framesPerFile) {
            state.PauseTiming();
            QFile::resize(path, all.size() - bytes.size());
            frames = 0;
            state.ResumeTiming();
        }
        QFile appended(path);
        appended.open(QIODevice::Append);
        appended.write(bytes);
        appended.flush();
        appended.close();
    }
}
BENCHMARK(savePeer)->Name("Result/Save/64x48/peer")->UseRealTime();

// Measures from the start of the load until it is complete; freeing the frames is left out on both sides.
void load(benchmark::State& state)
{
    const ResultRecording recording(size, loadedFrames);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        KOVDoaResultSerialize reader(recording.cache());
        reader.openResultFile(recording.file());
        while (!reader.IsOpenFileComplete()) {
            // Polling much more often would take the worker's processor time on a small machine.
            std::this_thread::sleep_for(std::chrono::microseconds(250));
        }
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(elapsed.count());
        if (reader.getResultFrame() != loadedFrames) {
            state.SkipWithError("frames are missing");
        }
    }
    state.SetItemsProcessed(state.iterations() * loadedFrames);
}
BENCHMARK(load)->Name("Result/Load/2000x64x48")->UseManualTime()->Unit(benchmark::kMillisecond);

void loadPeer(benchmark::State& state)
{
    const ResultRecording recording(size, loadedFrames);
    constexpr std::size_t bytes = loadedFrames * size.blockBytes();
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        QFile file(recording.file());
        file.open(QIODevice::ReadOnly);
        const QByteArray data = file.readAll();
        const std::unique_ptr<void, decltype(&std::free)> copy(std::malloc(bytes), &std::free);
        // The file holds some text beside the blocks, so it has this many bytes and more.
        std::memcpy(copy.get(), data.constData(), bytes);
        benchmark::ClobberMemory();
        file.close();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(elapsed.count());
    }
    state.SetItemsProcessed(state.iterations() * loadedFrames);
}
BENCHMARK(loadPeer)->Name("Result/Load/2000x64x48/peer")->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
