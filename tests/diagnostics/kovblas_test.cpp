// The statistics of real arrays. The reference below is written from the formulas, one statement a step, so
// that each rounding stands alone; the library must agree with it bit for bit.
#include <KOVDoaHandle/diagnostics/kovblas.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/support/bits.h"

namespace {

using testsupport::sameBits;

namespace reference {

using Samples = std::vector<float>;

float mean(const Samples& x)
{
    float sum = 0.0F;
    for (const float value : x) {
        sum = sum + value;
    }
    return sum / static_cast<float>(x.size());
}

float rms(const Samples& x)
{
    float sum = 0.0F;
    for (const float value : x) {
        const float square = value * value;
        sum = sum + square;
    }
    const float ratio = sum / static_cast<float>(x.size());
    return std::sqrt(ratio);
}

float rmsAboutMean(const Samples& x)
{
    const float middle = mean(x);
    float d = 0.0F;
    for (std::size_t i = 0; i + 1 < x.size(); ++i) {
        const float here = x[i] - middle;
        const float next = x[i + 1] - middle;
        const float hereSquare = here * here;
        const float nextSquare = next * next;
        const float both = hereSquare + nextSquare;
        d = d + both;
    }
    const float half = 0.5F * d;
    const float ratio = half / static_cast<float>(x.size() - 1);
    return std::sqrt(ratio);
}

float variance(const Samples& x, float about)
{
    float sum = 0.0F;
    for (const float value : x) {
        const float deviation = value - about;
        const double square = double{deviation} * double{deviation};
        const float roundedSquare = static_cast<float>(square);
        sum = sum + roundedSquare;
    }
    return sum / static_cast<float>(x.size());
}

double standardMoment(const Samples& x, float about, float var, double power)
{
    float numerator = 0.0F;
    for (const float value : x) {
        const float deviation = value - about;
        const double term = std::pow(double{deviation}, power);
        numerator = static_cast<float>(double{numerator} + term);
    }
    const double spread = std::pow(double{var}, 0.5);
    const double denominator = static_cast<double>(x.size()) * std::pow(spread, power);
    return double{numerator} / denominator;
}

float latitude(const Samples& x, float peak)
{
    float sum = 0.0F;
    for (const float value : x) {
        const float root = std::pow(std::fabs(value), 0.5F);
        sum = sum + root;
    }
    const float a = sum / static_cast<float>(x.size());
    const float square = static_cast<float>(double{a} * double{a});
    return peak / square;
}

float shape(const Samples& x, float rmsOfX)
{
    float sum = 0.0F;
    for (const float value : x) {
        const float magnitude = std::fabs(value);
        sum = sum + magnitude;
    }
    const float average = sum / static_cast<float>(x.size());
    return rmsOfX / average;
}

}  // namespace reference

std::vector<float> noise(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> normal(0.3F, 1.7F);
    std::vector<float> samples(count);
    for (float& sample : samples) {
        sample = normal(random);
    }
    return samples;
}

class KOVBlasReference : public ::testing::TestWithParam<int>
{
protected:
    int count() const { return GetParam(); }
    std::vector<float> samples = noise(static_cast<std::size_t>(GetParam()), 11);
    float* x = samples.data();
};

TEST_P(KOVBlasReference, MeanAgreesToTheLastBit)
{
    EXPECT_TRUE(sameBits(reference::mean(samples), KOVBlas::Mean(x, count())));
}

TEST_P(KOVBlasReference, RmsAgreesToTheLastBit)
{
    EXPECT_TRUE(sameBits(reference::rms(samples), KOVBlas::Rms(x, count(), false)));
}

TEST_P(KOVBlasReference, RmsAboutTheMeanAgreesToTheLastBit)
{
    EXPECT_TRUE(sameBits(reference::rmsAboutMean(samples), KOVBlas::Rms(x, count(), true)));
}

TEST_P(KOVBlasReference, VarianceAgreesToTheLastBit)
{
    EXPECT_TRUE(sameBits(reference::variance(samples, 0.27F), KOVBlas::Var(x, count(), 0.27F)));
}

TEST_P(KOVBlasReference, SkewnessAgreesToTheLastBit)
{
    const float var = reference::variance(samples, 0.27F);

    EXPECT_TRUE(sameBits(static_cast<float>(reference::standardMoment(samples, 0.27F, var, 3.0)),
                         KOVBlas::Skew(x, count(), 0.27F, var)));
}

TEST_P(KOVBlasReference, KurtosisAgreesToTheLastBit)
{
    const float var = reference::variance(samples, 0.27F);

    EXPECT_TRUE(sameBits(static_cast<float>(reference::standardMoment(samples, 0.27F, var, 4.0) - 3.0),
                         KOVBlas::Kurt(x, count(), 0.27F, var)));
}

TEST_P(KOVBlasReference, CrestFactorAgreesToTheLastBit)
{
    EXPECT_TRUE(sameBits(4.1F / reference::rms(samples), KOVBlas::CrestFactor(x, count(), 4.1F)));
}

TEST_P(KOVBlasReference, LatitudeFactorAgreesToTheLastBit)
{
    EXPECT_TRUE(sameBits(reference::latitude(samples, 4.1F), KOVBlas::LatitudeFactor(x, count(), 4.1F)));
}

TEST_P(KOVBlasReference, ShapeFactorAgreesToTheLastBit)
{
    EXPECT_TRUE(sameBits(reference::shape(samples, 1.9F), KOVBlas::ShapeFactor(x, count(), 1.9F)));
}

TEST_P(KOVBlasReference, SumsLeaveTheFirstElementOut)
{
    float sum = 0.0F;
    float squares = 0.0F;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        sum = sum + samples[i];
        const float square = samples[i] * samples[i];
        squares = squares + square;
    }

    EXPECT_TRUE(sameBits(sum, KOVBlas::Sum(x, count())));
    EXPECT_TRUE(sameBits(squares, KOVBlas::SumQuad(x, count())));
}

INSTANTIATE_TEST_SUITE_P(Counts, KOVBlasReference,
                         ::testing::Values(2, 3, 7, 16, 17, 128, 1023, 9600, 131071),
                         [](const auto& test) { return std::to_string(test.param); });

TEST(KOVBlas, SumSkipsTheFirstOfThreeElements)
{
    float x[] = {5.0F, 1.0F, 2.0F};

    EXPECT_EQ(KOVBlas::Sum(x, 3), 3.0F);
    EXPECT_EQ(KOVBlas::SumQuad(x, 3), 5.0F);
}

TEST(KOVBlas, SumsOfOneElementOrNoneAreZero)
{
    float x[] = {5.0F};

    EXPECT_EQ(KOVBlas::Sum(x, 1), 0.0F);
    EXPECT_EQ(KOVBlas::Sum(x, 0), 0.0F);
    EXPECT_EQ(KOVBlas::Sum(x, -1), 0.0F);
    EXPECT_EQ(KOVBlas::SumQuad(x, 1), 0.0F);
    EXPECT_EQ(KOVBlas::SumQuad(x, 0), 0.0F);
}

TEST(KOVBlas, FindMaxReportsTheFirstOfEqualMaxima)
{
    float x[] = {2.0F, 7.0F, 7.0F};
    int index = -1;

    EXPECT_EQ(KOVBlas::findMax(x, 3, index), 7.0F);
    EXPECT_EQ(index, 1);
}

TEST(KOVBlas, FindMinReportsTheFirstOfEqualMinima)
{
    float x[] = {1.0F, 1.0F};
    int index = -1;

    EXPECT_EQ(KOVBlas::findMin(x, 2, index), 1.0F);
    EXPECT_EQ(index, 0);
}

TEST(KOVBlas, FindsTheExtremesWhereverTheyLie)
{
    std::vector<float> x = noise(1023, 3);
    x[0] = 100.0F;
    x[1022] = -100.0F;
    int largest = -1;
    int smallest = -1;

    EXPECT_EQ(KOVBlas::findMax(x.data(), 1023), 100.0F);
    EXPECT_EQ(KOVBlas::findMin(x.data(), 1023), -100.0F);
    EXPECT_EQ(KOVBlas::findMax(x.data(), 1023, largest), 100.0F);
    EXPECT_EQ(KOVBlas::findMin(x.data(), 1023, smallest), -100.0F);
    EXPECT_EQ(largest, 0);
    EXPECT_EQ(smallest, 1022);
}

TEST(KOVBlas, ReadsTheFirstElementAsExtremeEvenForACountOfZero)
{
    float x[] = {3.0F, 9.0F};
    int index = -1;

    EXPECT_EQ(KOVBlas::findMax(x, 0), 3.0F);
    EXPECT_EQ(KOVBlas::findMin(x, -4), 3.0F);
    EXPECT_EQ(KOVBlas::findMax(x, 0, index), 3.0F);
    EXPECT_EQ(index, 0);
}

TEST(KOVBlas, RmsAboutTheMeanDividesByTheIntervals)
{
    float x[] = {1.0F, 3.0F};

    EXPECT_EQ(KOVBlas::Rms(x, 2, true), 1.0F);
}

TEST(KOVBlas, RmsAboutTheMeanOfOneSampleIsNotANumber)
{
    float x[] = {-4.0F};

    EXPECT_TRUE(std::isnan(KOVBlas::Rms(x, 1, true)));
}

TEST(KOVBlas, RmsOfOneSampleIsItsMagnitude)
{
    float x[] = {-4.0F};

    EXPECT_EQ(KOVBlas::Rms(x, 1, false), 4.0F);
}

TEST(KOVBlas, MeansOfNoSamplesAreNotNumbers)
{
    float x[] = {1.0F};

    EXPECT_TRUE(std::isnan(KOVBlas::Mean(x, 0)));
    EXPECT_TRUE(std::isnan(KOVBlas::Rms(x, 0, false)));
    EXPECT_TRUE(std::isnan(KOVBlas::Var(x, 0, 0.0F)));
}

TEST(KOVBlas, AddsInSinglePrecisionInTheOrderOfTheIndex)
{
    // 2^24 + 1 is no float: each 1 is lost when it is added after the large value, and kept when added
    // before.
    float largeFirst[] = {16777216.0F, 1.0F, 1.0F};
    float largeLast[] = {1.0F, 1.0F, 16777216.0F};

    EXPECT_EQ(KOVBlas::Mean(largeFirst, 3), 16777216.0F / 3.0F);
    EXPECT_EQ(KOVBlas::Mean(largeLast, 3), 16777218.0F / 3.0F);
}

TEST(KOVBlas, AddsHigherPowersToTheFloatInDouble)
{
    // The second cube is a trifle above 5. Added to 2^24, where floats are 2 apart, it takes the sum just
    // past the middle between two of them; rounded to 5 first, it would end exactly in the middle and be
    // rounded down.
    float x[] = {256.0F, 0x1.b5c0fcp+0F};
    const double cube = std::pow(double{x[1]}, 3.0);
    ASSERT_EQ(static_cast<float>(cube), 5.0F);
    ASSERT_EQ(16777216.0F + 5.0F, 16777220.0F);

    EXPECT_EQ(KOVBlas::Skew(x, 2, 0.0F, 1.0F), 16777222.0F / 2.0F);
}

TEST(KOVBlas, SkewnessOfSymmetricDataIsZero)
{
    float x[] = {-3.0F, -1.0F, 0.0F, 1.0F, 3.0F};

    EXPECT_EQ(KOVBlas::Skew(x, 5, 0.0F, 4.0F), 0.0F);
}

TEST(KOVBlas, SkewnessOfALongTailToTheRightIsPositive)
{
    float x[] = {0.0F, 0.0F, 0.0F, 4.0F};

    // Mean 1, variance 3, third central moment 6: 6 / 3^1.5.
    EXPECT_FLOAT_EQ(KOVBlas::Skew(x, 4, 1.0F, 3.0F), 1.1547005F);
}

TEST(KOVBlas, HigherMomentsTakeTheVarianceNotTheDeviation)
{
    float x[] = {-2.0F, 2.0F};

    // Fourth moment 16 over (sqrt 4)^4, less 3.
    EXPECT_EQ(KOVBlas::Kurt(x, 2, 0.0F, 4.0F), -2.0F);
}

TEST(KOVBlas, KurtosisOfNormalNoiseTendsToZero)
{
    std::vector<float> x = noise(200000, 5);
    const int n = static_cast<int>(x.size());
    const float mean = KOVBlas::Mean(x.data(), n);
    const float variance = KOVBlas::Var(x.data(), n, mean);

    // Standard error of the estimate: sqrt(24 / n) = 0.011; five of them, and a little for the float sums.
    EXPECT_NEAR(KOVBlas::Kurt(x.data(), n, mean, variance), 0.0F, 0.06F);
}

TEST(KOVBlas, KurtosisOfASquareWaveIsMinusTwo)
{
    std::vector<float> x(1000);
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = i % 2 == 0 ? 1.0F : -1.0F;
    }

    EXPECT_EQ(KOVBlas::Kurt(x.data(), 1000, 0.0F, 1.0F), -2.0F);
}

TEST(KOVBlas, FactorsOfASquareWaveAreOne)
{
    float x[] = {2.0F, -2.0F, 2.0F, -2.0F};

    EXPECT_EQ(KOVBlas::CrestFactor(x, 4, 2.0F), 1.0F);
    EXPECT_FLOAT_EQ(KOVBlas::LatitudeFactor(x, 4, 2.0F), 1.0F);
    EXPECT_EQ(KOVBlas::ShapeFactor(x, 4, 2.0F), 1.0F);
}

TEST(KOVBlas, CrestFactorOfASineIsTheRootOfTwo)
{
    std::vector<float> x(960);
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = std::sin(static_cast<float>(i) * (6.2831853F / 96.0F));
    }

    EXPECT_NEAR(KOVBlas::CrestFactor(x.data(), 960, 1.0F), 1.41421356F, 1e-4F);
}

TEST(KOVBlas, DividingByTheFactorsOfSilenceGivesInfinity)
{
    float x[] = {0.0F, 0.0F};

    EXPECT_EQ(KOVBlas::CrestFactor(x, 2, 1.0F), std::numeric_limits<float>::infinity());
    EXPECT_EQ(KOVBlas::LatitudeFactor(x, 2, 1.0F), std::numeric_limits<float>::infinity());
    EXPECT_EQ(KOVBlas::ShapeFactor(x, 2, 1.0F), std::numeric_limits<float>::infinity());
}

}  // namespace
