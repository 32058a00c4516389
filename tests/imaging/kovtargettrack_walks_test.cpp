// The tracker against a plain one, on sources that are born, walk at random and die.
#include <KOVDoaHandle/imaging/kovtargettrack.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <random>
#include <vector>

#include "tests/support/bits.h"

namespace {

using Frame = std::vector<fpoint2d>;

fpoint2d peak(int row, int col, float value = 1.0F)
{
    fpoint2d point{};
    point.value = value;
    point.row = row;
    point.col = col;
    return point;
}

// Step by step, with a table and nothing clever.
class PlainTracker
{
public:
    void feed(const Frame& points)
    {
        std::vector<int> keys;
        for (auto& [id, track] : m_table) {
            keys.push_back(id);
            track.matched = false;
        }
        std::vector<TargetPoint> pending;
        for (const fpoint2d& point : points) {
            bool isKnown = false;
            for (const int key : keys) {
                TargetPoint& track = m_table[key];
                const double dr = static_cast<double>(track.row) - point.row;
                const double dc = static_cast<double>(track.col) - point.col;
                if (dr * dr + dc * dc < 25.0) {
                    if (track.life <= 49) {
                        track.life += 1;
                    }
                    track.value = point.value;
                    track.row = point.row;
                    track.col = point.col;
                    track.matched = true;
                    isKnown = true;
                    break;
                }
            }
            if (!isKnown) {
                int id = 0;
                while (m_table.count(id) != 0 || std::any_of(pending.begin(), pending.end(),
                                                             [id](const auto& p) { return p.id == id; })) {
                    ++id;
                }
                pending.push_back({point.value, point.row, point.col, id, 10, true});
            }
        }
        for (const int key : keys) {
            if (!m_table[key].matched) {
                m_table[key].life -= 1;
            }
        }
        for (const int key : keys) {
            if (m_table[key].life < 1) {
                m_table.erase(key);
            }
        }
        for (const TargetPoint& track : pending) {
            m_table[track.id] = track;
        }
    }

    std::vector<TargetPoint> reported() const
    {
        std::vector<TargetPoint> tracks;
        for (const auto& [id, track] : m_table) {
            if (track.life > 25) {
                tracks.push_back(track);
            }
        }
        return tracks;
    }

    int lowestFreeId() const
    {
        int id = 0;
        while (m_table.count(id) != 0) {
            ++id;
        }
        return id;
    }

    std::size_t size() const { return m_table.size(); }

private:
    std::map<int, TargetPoint> m_table;
};

::testing::AssertionResult sameTracks(const std::vector<TargetPoint>& expected,
                                      const std::vector<TargetPoint>& found)
{
    if (expected.size() != found.size()) {
        return ::testing::AssertionFailure()
               << "expected " << expected.size() << " tracks, found " << found.size();
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const TargetPoint& e = expected[i];
        const TargetPoint& f = found[i];
        if (!testsupport::sameBits(e.value, f.value) || e.row != f.row || e.col != f.col || e.id != f.id ||
            e.life != f.life || e.matched != f.matched) {
            return ::testing::AssertionFailure() << "track " << i << " (identity " << e.id << ") differs";
        }
    }
    return ::testing::AssertionSuccess();
}

// Sources that are born, walk at random, hide in some frames and die, among peaks of noise.
class RandomScene
{
public:
    RandomScene(unsigned int seed, int extent, int step) : m_random(seed), m_extent(extent), m_step(step) {}

    Frame next()
    {
        if (chance(0.15)) {
            m_sources.push_back(peak(uniform(0, m_extent), uniform(0, m_extent)));
        }
        std::erase_if(m_sources, [this](const fpoint2d&) { return chance(0.01); });
        Frame frame;
        for (fpoint2d& source : m_sources) {
            source.row += uniform(-m_step, m_step);
            source.col += uniform(-m_step, m_step);
            source.value = static_cast<float>(uniform(1, 1000)) / 8.0F;
            if (chance(0.8)) {
                frame.push_back(source);
            }
        }
        if (chance(0.3)) {
            frame.push_back(peak(uniform(0, m_extent), uniform(0, m_extent)));
        }
        std::shuffle(frame.begin(), frame.end(), m_random);
        return frame;
    }

private:
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }
    int uniform(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

    std::mt19937 m_random;
    int m_extent;
    int m_step;
    std::vector<fpoint2d> m_sources;
};

struct Walk
{
    const char* name;
    int extent;  // cells
    int step;    // cells a frame at most
};

void PrintTo(const Walk& walk, std::ostream* stream)
{
    *stream << walk.name;
}

class RandomWalks : public ::testing::TestWithParam<Walk>
{
};

TEST_P(RandomWalks, GiveTheTracksOfAPlainTracker)
{
    for (unsigned int seed = 0; seed < 8; ++seed) {
        RandomScene scene(seed, GetParam().extent, GetParam().step);
        KOVTargetTrack tracker;
        PlainTracker plain;
        std::size_t reports = 0;
        for (int frame = 0; frame < 1500; ++frame) {
            const Frame points = scene.next();

            tracker.FeedData(points);
            plain.feed(points);

            const auto expected = plain.reported();
            ASSERT_TRUE(sameTracks(expected, tracker.getTargetPoints()))
                << "seed " << seed << ", frame " << frame;
            ASSERT_EQ(plain.lowestFreeId(), tracker.createId({})) << "seed " << seed << ", frame " << frame;
            reports += expected.size();
        }
        // A comparison of empty lists would show nothing.
        EXPECT_GT(reports, 500U);
        EXPECT_GT(plain.size(), 3U);
    }
}

INSTANTIATE_TEST_SUITE_P(KOVTargetTrack, RandomWalks,
                         ::testing::Values(Walk{"Crowded", 25, 1}, Walk{"Sparse", 200, 2},
                                           Walk{"Jumping", 60, 4}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
