// The loops of a pattern against the plain statistics.
#include <KOVDoaHandle/diagnostics/prpdpattern_p.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovblas.h>

#include "tests/support/bits.h"

namespace {

using testsupport::sameBits;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

std::vector<float> noise(std::size_t n)
{
    std::mt19937 random(static_cast<unsigned>(n));
    std::normal_distribution<float> normal(0.0F, 1.0F);
    std::vector<float> samples(n);
    for (float& sample : samples) {
        sample = normal(random);
    }
    return samples;
}

std::vector<float> magnitudes(std::vector<float> samples)
{
    for (float& sample : samples) {
        sample = std::fabs(sample);
    }
    return samples;
}

float plainPeak(const std::vector<float>& samples)
{
    std::vector<float> positive = magnitudes(samples);
    return KOVBlas::findMax(positive.data(), static_cast<int>(positive.size()));
}

TEST(LargestMagnitude, IsThatOfThePlainSearchAtEveryLengthAndPlace)
{
    for (std::size_t n = 1; n <= 67; ++n) {
        for (std::size_t at = 0; at < n; ++at) {
            std::vector<float> samples = noise(n);
            samples[at] = at % 2 == 0 ? 9.0F : -9.0F;
            ASSERT_EQ(KOVPrivate::largestMagnitude(samples.data(), static_cast<int>(n)), 9.0F)
                << at << " of " << n;
        }
    }
}

TEST(LargestMagnitude, PassesOverNaNExceptAtTheStart)
{
    for (const std::size_t n : {1, 7, 8, 9, 40}) {
        for (std::size_t at = 0; at < n; ++at) {
            std::vector<float> samples = noise(n);
            samples[at] = notANumber;
            const float found = KOVPrivate::largestMagnitude(samples.data(), static_cast<int>(n));
            if (at == 0) {
                ASSERT_TRUE(std::isnan(found));
                ASSERT_TRUE(std::isnan(plainPeak(samples)));
            } else {
                ASSERT_TRUE(sameBits(plainPeak(samples), found)) << at << " of " << n;
            }
        }
    }
}

TEST(MagnitudeBins, AreTheSumsOfTheLastSevenMagnitudes)
{
    const std::vector<float> samples = noise(8 * 101);
    std::vector<float> positive = magnitudes(samples);
    std::vector<float> bins(101);

    KOVPrivate::magnitudeBins(samples.data(), bins.data(), 101);

    for (std::size_t i = 0; i < bins.size(); ++i) {
        ASSERT_TRUE(sameBits(KOVBlas::Sum(positive.data() + 8 * i, 8), bins[i])) << "bin " << i;
    }
}

TEST(NoiseFloor, FallsByHalvesRisesAtOnceAndDropsWhatIsNotFinite)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();

    EXPECT_EQ(KOVPrivate::nextFloor(4.0F, 2.0F), 3.0F);
    EXPECT_EQ(KOVPrivate::nextFloor(2.0F, 4.0F), 4.0F);
    EXPECT_EQ(KOVPrivate::nextFloor(2.0F, 2.0F), 2.0F);
    EXPECT_EQ(KOVPrivate::nextFloor(infinity, 2.0F), 2.0F);
    EXPECT_EQ(KOVPrivate::nextFloor(notANumber, 2.0F), 2.0F);
    EXPECT_TRUE(std::isnan(KOVPrivate::nextFloor(2.0F, notANumber)));
}

class PageSums : public ::testing::TestWithParam<int>
{
};

// Each bin holds its index, so a page tells where it was read; at the last offset it ends inside the
// envelope.
TEST_P(PageSums, AddThreeConsecutiveCyclesFromTheOffsetOn)
{
    const KOVPrivate::MainsGeometry& mains = GetParam() == 60 ? KOVPrivate::mains60 : KOVPrivate::mains50;
    std::vector<float> envelope(static_cast<std::size_t>(mains.bins()));
    for (std::size_t i = 0; i < envelope.size(); ++i) {
        envelope[i] = static_cast<float>(i);
    }
    for (const int offset : {0, 1, mains.cycle - 1, mains.cycle}) {
        std::vector<float> frame(static_cast<std::size_t>(mains.frameSize()));

        KOVPrivate::sumPages(envelope.data(), offset, mains, frame.data());

        for (int i = 0; i < mains.frameSize(); ++i) {
            const int first = offset + i / mains.cycle * 3 * mains.cycle + i % mains.cycle;
            ASSERT_EQ(frame[static_cast<std::size_t>(i)], static_cast<float>(3 * first + 3 * mains.cycle));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Mains, PageSums, ::testing::Values(50, 60),
                         [](const auto& mains) { return std::to_string(mains.param) + "Hz"; });

TEST(PageSum, AddsTheFirstTwoCyclesFirst)
{
    std::vector<float> envelope(static_cast<std::size_t>(KOVPrivate::mains50.bins()), 0.0F);
    envelope[0] = 1.0F;
    envelope[240] = 1e8F;
    envelope[480] = -1e8F;
    std::vector<float> frame(2400);

    KOVPrivate::sumPages(envelope.data(), 0, KOVPrivate::mains50, frame.data());

    EXPECT_EQ(frame[0], 0.0F);
}

}  // namespace
