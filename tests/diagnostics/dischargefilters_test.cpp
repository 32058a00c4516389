// The filters in front of the discharge analysis.
#include <KOVDoaHandle/diagnostics/dischargefilters_p.h>

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "tests/support/bits.h"

namespace {

using KOVPrivate::DischargeBand;
using KOVPrivate::DischargeFilters;
using testsupport::sameBits;

TEST(DischargeBand, FollowsTheBandValueOnlyWhenABandIsSelected)
{
    EXPECT_EQ(KOVPrivate::bandFor(true, -5), DischargeBand::Low);
    EXPECT_EQ(KOVPrivate::bandFor(true, 8000), DischargeBand::Low);
    EXPECT_EQ(KOVPrivate::bandFor(true, 8001), DischargeBand::Mid);
    EXPECT_EQ(KOVPrivate::bandFor(true, 20000), DischargeBand::Mid);
    EXPECT_EQ(KOVPrivate::bandFor(true, 20001), DischargeBand::Wide);
    EXPECT_EQ(KOVPrivate::bandFor(true, 40000), DischargeBand::Wide);
    EXPECT_EQ(KOVPrivate::bandFor(false, 100), DischargeBand::Wide);
}

TEST(BlockLevel, AddsTheMagnitudesOfTheLastEightSamplesAsSixteenBitNumbers)
{
    const std::vector<float> samples{0.9F, 0.5F, -0.5F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.25F};

    // 16383.5 and 8191.75 lose their fractions.
    EXPECT_EQ(KOVPrivate::blockLevel(samples.data(), 9), 16383.0F + 16383.0F + 8191.0F);
}

TEST(BlockLevel, TakesAllSamplesOfAShorterBlock)
{
    const std::vector<float> samples{1.0F, -1.0F, 1.0F};

    EXPECT_EQ(KOVPrivate::blockLevel(samples.data(), 3), 3 * 32767.0F);
    EXPECT_EQ(KOVPrivate::blockLevel(samples.data(), 0), 0.0F);
}

TEST(BlockLevel, LimitsWhatSixteenBitsCannotHold)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> samples{2.0F, -1e30F, infinity, -infinity,
                                     std::numeric_limits<float>::quiet_NaN()};

    EXPECT_EQ(KOVPrivate::blockLevel(samples.data(), 5), 4 * 32767.0F);
}

std::vector<float> impulseResponse(DischargeBand band)
{
    std::vector<float> impulse(4096, 0.0F);
    impulse[0] = 1.0F;
    DischargeFilters filters;
    const float* filtered = filters.run(band, impulse.data(), static_cast<int>(impulse.size()));
    return {filtered, filtered + impulse.size()};
}

struct Response
{
    double gain;
    double delaySamples;  // group delay
};

// Of an impulse response at one frequency: the group delay is the real part of the transform of n h(n) over
// that of h.
Response responseAt(const std::vector<float>& impulse, double hz)
{
    std::complex<double> plain = 0.0;
    std::complex<double> weighted = 0.0;
    for (std::size_t n = 0; n < impulse.size(); ++n) {
        const auto time = static_cast<double>(n);
        const auto term =
            static_cast<double>(impulse[n]) * std::polar(1.0, -2.0 * std::numbers::pi * hz * time / 96000.0);
        plain += term;
        weighted += time * term;
    }
    return {std::abs(plain), std::real(weighted / plain)};
}

TEST(DischargeFilters, DelayWhatTheyPassByTheStatedNumberOfSamples)
{
    const std::vector<float> impulse = impulseResponse(DischargeBand::Wide);

    EXPECT_NEAR(responseAt(impulse, 25000.0).delaySamples, 2.8, 0.05);
    EXPECT_NEAR(responseAt(impulse, 30000.0).delaySamples, 2.6, 0.05);
    EXPECT_NEAR(responseAt(impulse, 40000.0).delaySamples, 1.7, 0.05);
}

struct Corner
{
    DischargeBand band;
    double hz;
    const char* name;
};

class DischargeCorners : public ::testing::TestWithParam<Corner>
{
};

// Each section has its quality factor, 0.707, at the corner; two of them halve the amplitude.
TEST_P(DischargeCorners, HalveTheCornerPassAboveAndStopBelow)
{
    const std::vector<float> impulse = impulseResponse(GetParam().band);

    EXPECT_NEAR(responseAt(impulse, GetParam().hz).gain, 0.5, 0.002);
    EXPECT_NEAR(responseAt(impulse, 47000.0).gain, 1.0, 0.01);
    EXPECT_LT(responseAt(impulse, GetParam().hz / 10.0).gain, 1.1e-4);
}

INSTANTIATE_TEST_SUITE_P(Bands, DischargeCorners,
                         ::testing::Values(Corner{DischargeBand::Low, 2000.0, "Low"},
                                           Corner{DischargeBand::Mid, 10000.0, "Mid"},
                                           Corner{DischargeBand::Wide, 25000.0, "Wide"}),
                         [](const auto& corner) { return corner.param.name; });

TEST(DischargeFilters, GiveTheSameSamplesHoweverTheStreamIsCut)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    std::vector<float> stream(30000);
    for (float& sample : stream) {
        sample = uniform(random);
    }
    DischargeFilters whole;
    const float* filtered = whole.run(DischargeBand::Wide, stream.data(), 30000);
    const std::vector<float> expected(filtered, filtered + 30000);

    DischargeFilters cut;
    std::vector<float> found;
    while (found.size() < stream.size()) {
        const auto n = std::min<std::size_t>(1 + random() % 3000, stream.size() - found.size());
        const float* part = cut.run(DischargeBand::Wide, stream.data() + found.size(), static_cast<int>(n));
        found.insert(found.end(), part, part + n);
    }

    for (std::size_t i = 0; i < stream.size(); ++i) {
        ASSERT_TRUE(sameBits(expected[i], found[i])) << "sample " << i;
    }
}

TEST(DischargeFilters, ForgetTheStreamWhenReset)
{
    std::vector<float> step(500, 0.7F);
    DischargeFilters filters;
    const float* first = filters.run(DischargeBand::Mid, step.data(), 500);
    const std::vector<float> expected(first, first + 500);

    filters.reset();

    const float* again = filters.run(DischargeBand::Mid, step.data(), 500);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_TRUE(sameBits(expected[i], again[i])) << "sample " << i;
    }
}

}  // namespace
