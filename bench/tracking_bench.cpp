// Target tracking: 20 peaks a frame against 100 tracks. Peer: the distance tests alone, each point against the tracks
// in order until one is near enough. The clock runs over a few frames only, then the other 80 tracks are fed (with the
// clock stopped) so that they stay alive.
#include <benchmark/benchmark.h>

#include <KOVDoaHandle/imaging/kovtargettrack.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <random>
#include <vector>

namespace {

constexpr int trackCount = 100;
constexpr int peakCount = 20;
constexpr int framesTimed = 8;
constexpr int framesToFullLife = 41;
constexpr float radiusSquared = 25.0F;

// Tracks 12 cells apart on a 10 x 10 grid; frames of 20 of them, each a little off its place.
class Scene
{
public:
    Scene()
    {
        for (int i = 0; i < trackCount; ++i) {
            fpoint2d point{};
            point.value = 1.0F;
            point.row = 12 * (i / 10);
            point.col = 12 * (i % 10);
            all.push_back(point);
        }
        std::mt19937 random(3);
        std::uniform_int_distribution<int> jitter(-1, 1);
        for (int frame = 0; frame < 64; ++frame) {
            std::vector<fpoint2d> points = all;
            std::shuffle(points.begin(), points.end(), random);
            points.resize(peakCount);
            for (fpoint2d& point : points) {
                point.row += jitter(random);
                point.col += jitter(random);
            }
            m_frames.push_back(points);
        }
    }

    const std::vector<fpoint2d>& next()
    {
        m_current = (m_current + 1) % m_frames.size();
        return m_frames[m_current];
    }

    std::vector<fpoint2d> all;

private:
    std::vector<std::vector<fpoint2d>> m_frames;
    std::size_t m_current = 0;
};

template <typename Frame>
void timeFrames(benchmark::State& state, Scene& scene, Frame oneFrame)
{
    const auto start = std::chrono::steady_clock::now();
    for (int frame = 0; frame < framesTimed; ++frame) {
        oneFrame(scene.next());
    }
    const auto end = std::chrono::steady_clock::now();
    state.SetIterationTime(std::chrono::duration<double>(end - start).count());
}

void trackOurs(benchmark::State& state)
{
    Scene scene;
    KOVTargetTrack tracker;
    for (int frame = 0; frame < framesToFullLife; ++frame) {
        tracker.FeedData(scene.all);
    }
    for ([[maybe_unused]] auto iteration : state) {
        timeFrames(state, scene,
                   [&tracker](const std::vector<fpoint2d>& points) { tracker.FeedData(points); });
        for (int frame = 0; frame < framesTimed; ++frame) {
            tracker.FeedData(scene.all);
        }
    }
    if (tracker.getTargetPoints().size() != trackCount) {
        state.SkipWithError("tracks have died, or been born");
    }
}

float difference(std::int32_t a, std::int32_t b)
{
    return static_cast<float>(static_cast<std::int64_t>(a) - b);
}

void trackPeer(benchmark::State& state)
{
    Scene scene;
    const std::vector<fpoint2d> tracks = scene.all;
    for ([[maybe_unused]] auto iteration : state) {
        timeFrames(state, scene, [&tracks](const std::vector<fpoint2d>& points) {
            for (const fpoint2d& point : points) {
                std::size_t found = 0;
                for (; found < tracks.size(); ++found) {
                    const float down = difference(tracks[found].row, point.row);
                    const float right = difference(tracks[found].col, point.col);
                    if (down * down + right * right < radiusSquared) {
                        break;
                    }
                }
                benchmark::DoNotOptimize(found);
            }
        });
    }
}

}  // namespace

BENCHMARK(trackOurs)->Name("Tracking/FeedData/20peaks100tracks")->UseManualTime();
BENCHMARK(trackPeer)->Name("Tracking/FeedData/20peaks100tracks/peer")->UseManualTime();
