// What one frame of the live picture costs beside the beamformer, 25 frames a second: the blocks of that time are
// published, the map is rendered with two cursors, the frame is recorded, and its peaks are tracked.
#include <benchmark/benchmark.h>

#include <QtCore/QTemporaryDir>

#include <cstddef>
#include <memory>
#include <vector>

#include <KOVDoaHandle/imaging/kovdoaobject.h>
#include <KOVDoaHandle/imaging/kovmapsearch.h>
#include <KOVDoaHandle/imaging/kovtargettrack.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>

#include "bench/movingsource.h"
#include "bench/publishing.h"

namespace {

constexpr int arrayFiles = 26;
constexpr int blockSize = 1024;
constexpr int sources = 4;
constexpr int blocksAFrame = 4;  // 40 ms at 96 kHz, rounded up
constexpr int width = 1280;
constexpr int height = 960;
constexpr int framesPerRecording = 512;
constexpr float threshold = 0.5F;  // half of the source's energy, as a host would choose

enum class Step { Publish, Render, Save, Track, All };

class LivePath
{
public:
    LivePath() : m_writer(m_folder.filePath("cache"))
    {
        bench::initInOwnFolder(m_imager, width, height);
        m_imager.setDynamic(6.0F);
        m_imager.setMultCursorEnable(true);
        m_imager.setCursorNum(2);
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }

    void publish()
    {
        for (int block = 0; block < blocksAFrame; ++block) {
            m_publishing.publish();
        }
        m_publishing.drain();
    }

    void render() { m_imager.updateImagerRGB(frame(), m_picture.get()); }

    void save() { m_writer.Save(frame()); }

    void track()
    {
        m_peaks.clear();
        KOVPrivate::findpeaks(frame()->ResEngMap, bench::mapRows, bench::mapCols, threshold, m_peaks);
        m_tracker.FeedData(m_peaks);
        benchmark::DoNotOptimize(m_tracker.getTargetPoints());
    }

    // To the next frame; now and then the recording begins anew, so that it does not fill the disk.
    void advance(benchmark::State& state)
    {
        if (++m_frame % framesPerRecording == 0) {
            state.PauseTiming();
            beginRecording();
            state.ResumeTiming();
        }
    }

    void beginRecording()
    {
        m_writer.startSave(m_folder.filePath("live.kov"), bench::mapRows, bench::mapCols, 480, 640, 1024);
    }

private:
    EngMapResult* frame() { return m_frames[m_frame % m_frames.size()].get(); }

    QTemporaryDir m_folder;
    bench::Publishing m_publishing{arrayFiles, blockSize, sources};
    const std::vector<bench::Frame> m_frames = bench::makeFrames();
    bench::Picture m_picture{create_mat1d_uint8(height, width * 3)};
    KOVOFFLineDoaObject m_imager;
    KOVDoaResultSerialize m_writer;
    KOVTargetTrack m_tracker;
    std::vector<fpoint2d> m_peaks;
    std::size_t m_frame = 0;
};

void live(benchmark::State& state, Step step)
{
    LivePath path;
    path.beginRecording();
    const auto does = [step](Step one) { return step == one || step == Step::All; };
    for ([[maybe_unused]] auto iteration : state) {
        if (does(Step::Publish)) {
            path.publish();
        }
        if (does(Step::Render)) {
            path.render();
        }
        if (does(Step::Save)) {
            path.save();
        }
        if (does(Step::Track)) {
            path.track();
        }
        benchmark::ClobberMemory();
        path.advance(state);
    }
}

}  // namespace

BENCHMARK_CAPTURE(live, publish, Step::Publish)->Name("Live/Publish");
BENCHMARK_CAPTURE(live, render, Step::Render)->Name("Live/Render");
BENCHMARK_CAPTURE(live, save, Step::Save)->Name("Live/Save");
BENCHMARK_CAPTURE(live, track, Step::Track)->Name("Live/Track");
BENCHMARK_CAPTURE(live, all, Step::All)->Name("Live/WholeFrame");
