// Recording and playback against the bare file operations that they cannot do without.
//
// Both sides of a pair do the same work on the disk: Save is compared with appending the ready-made bytes of
// the same record, loading with reading the whole file and copying every map and spectrum once into fresh
// memory. Messages are discarded. Each iteration works on files that are already in the system's cache.
#include <benchmark/benchmark.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

namespace {

constexpr int rows = 64;
constexpr int cols = 48;
constexpr int fftLen = 1024;
constexpr int loadedFrames = 2000;

void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

struct ResultDeleter
{
    void operator()(EngMapResult* result) const { releaseResultHandle(result); }
};
using Result = std::unique_ptr<EngMapResult, ResultDeleter>;

Result makeResult()
{
    Result result(createResultHandle(rows, cols, 480, 640, fftLen));
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            result->ResEngMap->data[r][c] = 0.01F + static_cast<float>(std::hypot(r - 20, c - 30));
        }
    }
    for (int i = 0; i < result->PowerSpec->len; ++i) {
        result->PowerSpec->data[i] = 1e-6F / (1.0F + static_cast<float>(i));
    }
    result->PowerBandsFFTSpec = 71.2345F;
    result->maxSpl = {0.123456F, 20, 30};
    result->minSplExtern = {0.000123F, 1, 2};
    result->median = 0.0456789F;
    result->distance = 5.5F;
    result->peaks = {{0.123456F, 20, 30, 1, 17, true}, {0.0912345F, 40, 11, 2, 3, false}};
    return result;
}

// A temporary folder with a recording in it.
class Recording
{
public:
    explicit Recording(int frames)
    {
        qInstallMessageHandler(discardMessage);
        KOVDoaResultSerialize writer(folder.filePath("writer-cache"));
        writer.startSave(file(), rows, cols, 480, 640, fftLen);
        const Result result = makeResult();
        for (int i = 0; i < frames; ++i) {
            writer.Save(result.get());
        }
    }

    QString file() const { return folder.filePath("bench.kov"); }
    QString cache() const { return folder.filePath("cache"); }

    QTemporaryDir folder;
};

// The file is cut back now and then, outside the measured time, so that it does not fill the disk.
constexpr int framesPerFile = 512;

void save(benchmark::State& state)
{
    const Recording recording(0);
    KOVDoaResultSerialize writer(recording.cache());
    const Result result = makeResult();
    int frames = framesPerFile;
    for (auto _ : state) {
        if (frames++ == framesPerFile) {
            state.PauseTiming();
            writer.startSave(recording.file(), rows, cols, 480, 640, fftLen);
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
    const Recording recording(1);
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
    const Recording recording(loadedFrames);
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
    const Recording recording(loadedFrames);
    constexpr std::size_t mapBytes = std::size_t{rows} * cols * sizeof(float);
    constexpr std::size_t spectrumBytes = (fftLen / 2 + 1) * sizeof(float);
    constexpr std::size_t bytes = loadedFrames * (mapBytes + spectrumBytes);
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
