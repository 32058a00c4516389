#include "tools/beamform/arraybeamformer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "tests/tools/arraysamples.h"
#include "tests/tools/program.h"
#include "tools/scene/fieldofview.h"
#include "tools/support/errors.h"

namespace {

using kovtools::ArrayBeamformer;
using kovtools::ArrayRecording;
using kovtools::ArraySimulationOptions;
using kovtools::BeamformedFrame;
using kovtools::BeamformOptions;
using kovtools::Direction;
using kovtools::FieldOfView;
using kovtools::representativeBins;
using kovtools::StandingSource;
using kovtools::tests::Sandbox;
using kovtools::tests::writeArray;

constexpr int samples = 8704;  // a little more than two frames

// A lone source in the middle of a cell of a small map, and its first frame.
struct LoneSource
{
    explicit LoneSource(StandingSource source, BeamformOptions options = {}, int row = 3, int col = 9)
    {
        options.rows = 9;
        options.cols = 13;
        const Direction look =
            FieldOfView(640, 480).cellDirections(9, 13)[static_cast<std::size_t>(row * 13 + col)];
        source.azimuth = kovtools::azimuthDegrees(look);
        source.elevation = kovtools::elevationDegrees(look);
        ArraySimulationOptions scene;
        scene.array = kovtools::sunflowerSpiral();
        scene.sources = {source};
        scene.noise = 0.0;
        const Sandbox sandbox;
        writeArray(sandbox / "a", scene, samples);
        ArrayRecording recording(sandbox / "a", 208);
        ArrayBeamformer beamformer(recording, scene.array, options);
        frame = beamformer.frame(0);
        firstBin = beamformer.firstBandBin();
        lastBin = beamformer.lastBandBin();
        frames = beamformer.frames();
    }

    int strongestCell() const
    {
        return static_cast<int>(std::max_element(frame.map.begin(), frame.map.end()) - frame.map.begin());
    }
    float strongest() const { return *std::max_element(frame.map.begin(), frame.map.end()); }
    double bandLevel() const
    {
        return std::sqrt(
            std::accumulate(frame.spectrum.begin() + firstBin, frame.spectrum.begin() + lastBin + 1, 0.0));
    }

    BeamformedFrame frame;
    int firstBin = 0;
    int lastBin = 0;
    int frames = 0;
};

StandingSource tone(double frequency, double distance, double levelAtArray)
{
    StandingSource source;
    source.kind = kovtools::SourceKind::Tone;
    source.frequency = frequency;
    source.distance = distance;
    source.level = levelAtArray * distance;
    return source;
}

BeamformOptions focusedAt(double distance)
{
    BeamformOptions options;
    options.distance = distance;
    return options;
}

class Tones : public ::testing::TestWithParam<double>
{
};

TEST_P(Tones, OfAPlaneWaveShowTheirLevelWhereverTheyLieBetweenTheBins)
{
    const LoneSource lone(tone(GetParam(), 1000.0, 0.05), focusedAt(0.0));

    EXPECT_EQ(lone.strongestCell(), 3 * 13 + 9);
    EXPECT_NEAR(lone.strongest(), 0.05, 0.0005);
}

INSTANTIATE_TEST_SUITE_P(Frequencies, Tones, ::testing::Values(12000.0, 19968.75, 20011.0, 20046.9, 29999.9));

TEST(ArrayBeamformer, ShowsALoneHissAtTheLevelOfItsSpectrum)
{
    StandingSource leak;
    leak.distance = 1000.0;
    leak.level = 50.0;

    const LoneSource lone(leak, focusedAt(0.0));

    EXPECT_EQ(lone.strongestCell(), 3 * 13 + 9);
    EXPECT_NEAR(lone.strongest() / lone.bandLevel(), 1.0, 0.01);
    EXPECT_NEAR(lone.bandLevel(), 0.05, 0.005);  // a frame's hiss scatters by some 4 %
}

TEST(ArrayBeamformer, FocusesOnASourceThatIsNear)
{
    const StandingSource near = tone(30000.0, 0.3, 0.05);

    EXPECT_NEAR(LoneSource(near, focusedAt(0.3)).strongest(), 0.05, 0.0025);
    EXPECT_LT(LoneSource(near, focusedAt(0.0)).strongest(), 0.03);
}

TEST(ArrayBeamformer, GivesTheSameLevelWithEveryWindowAndWithAllBins)
{
    BeamformOptions options = focusedAt(5.0);
    for (const auto window : {kovtools::WindowKind::Hann, kovtools::WindowKind::Blackman}) {
        for (const int bins : {0, 1, 24, 1000}) {
            options.window = window;
            options.bins = bins;
            EXPECT_NEAR(LoneSource(tone(20011.0, 5.0, 0.05), options).strongest(), 0.05, 0.0005) << bins;
        }
    }
}

TEST(ArrayBeamformer, MakesAFrameWhereverABlockFits)
{
    EXPECT_EQ(LoneSource(tone(20000.0, 5.0, 0.05)).frames,
              3);  // they begin at 0, 3840 and 7680; 7680 + 1024 = 8704
    BeamformOptions options;
    options.frameRate = 1000.0;
    EXPECT_EQ(LoneSource(tone(20000.0, 5.0, 0.05), options).frames, 81);
    options.frameRate = 0.1;
    options.fftLength = samples;
    EXPECT_EQ(LoneSource(tone(20000.0, 5.0, 0.05), options).frames, 1);
}

TEST(ArrayBeamformer, GivesSilenceALevelAboveZero)
{
    const LoneSource silent(tone(20000.0, 5.0, 0.0));

    for (const float level : silent.frame.map) {
        EXPECT_EQ(level, 1e-9F);
    }
}

TEST(ArrayBeamformer, NeedsABlockAndABand)
{
    BeamformOptions options;
    options.fftLength = samples + 1;
    EXPECT_THROW(LoneSource(tone(20000.0, 5.0, 0.05), options), kovtools::DataError);
    options.fftLength = 64;
    options.bandLow = 20000.0;
    options.bandHigh = 20100.0;
    EXPECT_THROW(LoneSource(tone(20000.0, 5.0, 0.05), options), kovtools::UsageError);
    options.bandLow = 1e300;  // more than an int can count
    options.bandHigh = 1e301;
    EXPECT_THROW(LoneSource(tone(20000.0, 5.0, 0.05), options), kovtools::UsageError);
}

TEST(RepresentativeBins, StandForTheirPartsWithAllTheirPower)
{
    const std::vector<double> powers{9.0, 1.0, 3.0, 2.0, 0.0, 0.0, 5.0, 9.0};

    const auto chosen = representativeBins(powers, 1, 6, 2);

    ASSERT_EQ(chosen.size(), 2U);
    EXPECT_EQ(chosen[0], (std::pair<int, double>(2, 2.0)));
    EXPECT_EQ(chosen[1], (std::pair<int, double>(6, 1.0)));
    EXPECT_EQ(representativeBins(powers, 1, 6, 3).size(), 3U);
    EXPECT_EQ(representativeBins(powers, 1, 6, 0).size(), 4U);
    EXPECT_EQ(representativeBins(powers, 4, 5, 2).size(), 0U);
}

}  // namespace
