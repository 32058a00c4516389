// What kovdoa simulate pd simulates: the statistics of the strikes, and the signal.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "tools/discharge/dischargephases.h"
#include "tools/discharge/dischargesignal.h"

namespace {

using kovtools::DischargeKind;
using kovtools::DischargePhases;
using kovtools::DischargeSignal;
using kovtools::DischargeSignalOptions;
using kovtools::Random;
using kovtools::Strike;

// Statistics over many cycles of one simulated object: of each half cycle the number of strikes in a cycle,
// the mean phase, its standard deviation (degrees) and the mean amplitude.
struct HalfCycle
{
    double strikes = 0.0;
    double phase = 0.0;
    double spread = 0.0;
    double amplitude = 0.0;
};

std::array<HalfCycle, 2> statistics(DischargeKind kind, std::uint64_t seed)
{
    constexpr int cycles = 2000;
    Random random(seed);
    const DischargePhases phases(kind, random);
    std::array<std::vector<Strike>, 2> strikes;
    for (int i = 0; i < cycles; ++i) {
        for (const Strike& strike : phases.nextCycle(random)) {
            // Surface discharges begin before the zero crossing; halves are cut where nothing strikes.
            strikes[strike.phase < 140.0 ? 0 : 1].push_back(strike);
        }
    }
    std::array<HalfCycle, 2> halves;
    for (std::size_t half = 0; half < 2; ++half) {
        const auto count = static_cast<double>(strikes[half].size());
        double squares = 0.0;
        for (const Strike& strike : strikes[half]) {
            halves[half].phase += strike.phase / count;
            halves[half].amplitude += strike.amplitude / count;
            squares += strike.phase * strike.phase / count;
        }
        halves[half].strikes = count / cycles;
        halves[half].spread = std::sqrt(std::max(squares - halves[half].phase * halves[half].phase, 0.0));
    }
    return halves;
}

class SimulatedObjects : public testing::TestWithParam<std::uint64_t>
{
};

TEST_P(SimulatedObjects, StrikeAroundTheNegativeCrestWhenTheyAreCorona)
{
    const auto [positive, negative] = statistics(DischargeKind::Corona, GetParam());

    EXPECT_EQ(positive.strikes, 0.0);
    EXPECT_GE(negative.strikes, 5.5);
    EXPECT_NEAR(negative.phase, 270.0, 7.0);
    EXPECT_LT(negative.spread, 17.0);
}

TEST_P(SimulatedObjects, StrikeUnlikeInBothHalvesBeforeTheCrestsWhenTheyAreSurfaceDischarges)
{
    const auto [positive, negative] = statistics(DischargeKind::Surface, GetParam());

    EXPECT_LT(positive.phase, 90.0);
    EXPECT_NEAR(negative.phase - positive.phase, 180.0, 2.0);
    EXPECT_GT(std::min(positive.spread, negative.spread), 11.0);
    EXPECT_GT(std::max(positive.strikes, negative.strikes),
              1.15 * std::min(positive.strikes, negative.strikes));
    EXPECT_GT(std::max(positive.amplitude, negative.amplitude),
              1.05 * std::min(positive.amplitude, negative.amplitude));
}

TEST_P(SimulatedObjects, StrikeAlikeInBothHalvesAndNarrowlyWhenTheyAreFloatingParts)
{
    const auto [positive, negative] = statistics(DischargeKind::Suspension, GetParam());

    EXPECT_NEAR(negative.phase - positive.phase, 180.0, 0.5);
    EXPECT_LT(std::max(positive.spread, negative.spread), 7.0);
    EXPECT_NEAR(positive.strikes / negative.strikes, 1.0, 0.02);
    EXPECT_NEAR(positive.amplitude / negative.amplitude, 1.0, 0.01);
}

TEST_P(SimulatedObjects, StrikeAtAnyPhaseWhenTheyAreNoise)
{
    const auto [first, second] = statistics(DischargeKind::Noise, GetParam());

    EXPECT_NEAR(first.strikes / second.strikes, 140.0 / 220.0, 0.08);
    EXPECT_NEAR(first.phase, 70.0, 5.0);
    EXPECT_NEAR(second.phase, 250.0, 5.0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SimulatedObjects, testing::Values(1U, 2U, 3U, 4U, 5U, 6U));

TEST(DischargeSignal, IsTheSameHoweverItIsCut)
{
    DischargeSignalOptions options;
    options.kind = DischargeKind::Surface;
    DischargeSignal whole(options);
    DischargeSignal pieces(options);
    std::vector<float> expected;
    whole.next(12000, expected);

    std::vector<float> joined;
    for (const int count : {1, 999, 1024, 7, 5760, 4209}) {
        std::vector<float> piece;
        pieces.next(count, piece);
        joined.insert(joined.end(), piece.begin(), piece.end());
    }

    EXPECT_EQ(joined, expected);
}

TEST(DischargeSignal, HasTheNoiseAskedFor)
{
    DischargeSignalOptions options;
    options.level = 0.0;
    options.noise = 0.01;
    DischargeSignal signal(options);
    std::vector<float> samples;
    signal.next(96000, samples);

    double squares = 0.0;
    for (const float sample : samples) {
        squares += static_cast<double>(sample) * static_cast<double>(sample);
    }

    // One part in a hundred is more than four standard deviations.
    EXPECT_NEAR(std::sqrt(squares / 96000.0), 0.01, 0.0001);
}

// Where in the cycle, 0 ... 1, the middle of the corona lies.
double middleOfCorona(double phase)
{
    DischargeSignalOptions options;
    options.noise = 0.0;
    options.drift = 0.0;
    options.phase = phase;
    DischargeSignal signal(options);
    std::vector<float> samples;
    signal.next(96000, samples);
    double cosine = 0.0;
    double sine = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double angle = 2.0 * std::numbers::pi * static_cast<double>(i) / 1920.0;
        cosine += std::abs(static_cast<double>(samples[i])) * std::cos(angle);
        sine += std::abs(static_cast<double>(samples[i])) * std::sin(angle);
    }
    const double turns = std::atan2(sine, cosine) / (2.0 * std::numbers::pi);
    return turns < 0.0 ? turns + 1.0 : turns;
}

TEST(DischargeSignal, BeginsAtThePhaseAskedFor)
{
    EXPECT_NEAR(middleOfCorona(0.0), 0.75, 0.05);
    EXPECT_NEAR(middleOfCorona(0.0) - middleOfCorona(90.0), 0.25, 0.01);
}

}  // namespace
