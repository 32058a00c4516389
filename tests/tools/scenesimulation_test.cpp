#include "tools/scene/scenesimulation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

using kovtools::SceneOptions;
using kovtools::SceneSimulation;
using kovtools::SimulatedFrame;

std::vector<SimulatedFrame> allFrames(const SceneOptions& options)
{
    SceneSimulation scene(options);
    std::vector<SimulatedFrame> frames;
    for (auto some = scene.nextFrames(); !some.empty(); some = scene.nextFrames()) {
        frames.insert(frames.end(), some.begin(), some.end());
    }
    return frames;
}

SceneOptions smallScene(int frames, int sources, double noise)
{
    SceneOptions options;
    options.frames = frames;
    options.rows = 24;
    options.cols = 32;
    options.sources = sources;
    options.noise = noise;
    return options;
}

TEST(SceneSimulation, MakesAsManyFramesAsAskedForAlsoBeyondOneGo)
{
    EXPECT_EQ(allFrames(smallScene(1, 1, 0.01)).size(), 1U);
    EXPECT_EQ(allFrames(smallScene(37, 1, 0.01)).size(), 37U);
}

TEST(SceneSimulation, ShowsASourceAtItsPlaceWithItsLevel)
{
    SceneOptions options = smallScene(20, 1, 0.0);
    options.rows = 48;
    options.cols = 64;
    double ratio = 0.0;
    for (const SimulatedFrame& frame : allFrames(options)) {
        const auto highest = std::max_element(frame.map.begin(), frame.map.end());
        const auto cell = static_cast<int>(highest - frame.map.begin());
        EXPECT_NEAR(cell / 64, kovtools::mapRow(frame.sources[0].position, 48), 0.75);
        EXPECT_NEAR(cell % 64, kovtools::mapCol(frame.sources[0].position, 64), 0.75);
        ratio += *highest / frame.sources[0].level / 20.0;
    }

    // 72 random amplitudes a frame scatter its level by about 6 %; 20 frames average that to 1.5 %.
    EXPECT_NEAR(ratio, 1.0, 0.05);
}

TEST(SceneSimulation, LowersSensorNoiseByTheNumberOfMicrophones)
{
    double meanSquare = 0.0;
    const std::vector<SimulatedFrame> frames = allFrames(smallScene(10, 0, 0.02));
    for (const SimulatedFrame& frame : frames) {
        for (const float level : frame.map) {
            meanSquare += static_cast<double>(level) * level / (10.0 * 24.0 * 32.0);
        }
    }

    EXPECT_NEAR(meanSquare / (0.02 * 0.02 / 208.0), 1.0, 0.08);
}

TEST(SceneSimulation, HasASpectrumWhoseBandPowerIsThatOfSourcesAndNoise)
{
    const SceneOptions options = smallScene(30, 2, 0.02);
    SceneSimulation scene(options);
    double found = 0.0;
    double expected = 0.0;
    for (const SimulatedFrame& frame : allFrames(options)) {
        for (int bin = scene.firstBandBin(); bin <= scene.lastBandBin(); ++bin) {
            found += frame.spectrum[static_cast<std::size_t>(bin)];
        }
        expected += 0.02 * 0.02;
        for (const auto& source : frame.sources) {
            expected += source.level * source.level;
        }
    }

    EXPECT_NEAR(found / expected, 1.0, 0.03);
}

TEST(SceneSimulation, IsNeverZeroAnywhereEvenWithoutAnySound)
{
    for (const SimulatedFrame& frame : allFrames(smallScene(2, 0, 0.0))) {
        EXPECT_GT(*std::min_element(frame.map.begin(), frame.map.end()), 0.0F);
    }
}

TEST(SceneSimulation, MovesSourcesSmoothlyAndKeepsThemInThePicture)
{
    SceneOptions options = smallScene(200, 5, 0.0);
    options.rows = 4;
    options.cols = 4;
    const std::vector<SimulatedFrame> frames = allFrames(options);
    for (std::size_t f = 1; f < frames.size(); ++f) {
        for (std::size_t s = 0; s < 5; ++s) {
            const kovtools::PicturePosition now = frames[f].sources[s].position;
            const kovtools::PicturePosition before = frames[f - 1].sources[s].position;
            EXPECT_LT(std::hypot(now.u - before.u, now.v - before.v), 0.02);
            EXPECT_GT(std::min({now.u, now.v, 1.0 - now.u, 1.0 - now.v}), 0.05);
        }
    }
    EXPECT_GT(std::hypot(frames[60].sources[0].position.u - frames[0].sources[0].position.u,
                         frames[60].sources[0].position.v - frames[0].sources[0].position.v),
              0.03);
}

TEST(SceneSimulation, AcceptsTheShortestAndAnOddFftLength)
{
    for (const int length : {64, 1023}) {
        SceneOptions options = smallScene(2, 1, 0.01);
        options.fftLength = length;

        const std::vector<SimulatedFrame> frames = allFrames(options);

        ASSERT_EQ(frames.size(), 2U);
        EXPECT_EQ(frames[0].spectrum.size(), static_cast<std::size_t>(length / 2 + 1));
        EXPECT_GT(*std::min_element(frames[0].spectrum.begin(), frames[0].spectrum.end()), 0.0F);
    }
}

}  // namespace
