// Transforms against their definition, and plans made in many threads.
#include <KOVDoaHandle/foundation/fftplan_p.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

using KOVPrivate::FFTArray;
using KOVPrivate::FFTDirection;
using KOVPrivate::FFTPlan;

namespace {

using Numbers = std::vector<std::complex<double>>;

void fillWithNoise(FFTArray& array, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    for (int i = 0; i < array.size(); ++i) {
        array.data()[i][0] = uniform(random);
        array.data()[i][1] = uniform(random);
    }
}

Numbers numbersOf(FFTArray& array)
{
    Numbers numbers;
    for (int i = 0; i < array.size(); ++i) {
        numbers.emplace_back(array.data()[i][0], array.data()[i][1]);
    }
    return numbers;
}

Numbers byDefinition(const Numbers& x, double sign)
{
    const auto n = static_cast<double>(x.size());
    Numbers bins(x.size());
    for (std::size_t k = 0; k < x.size(); ++k) {
        for (std::size_t j = 0; j < x.size(); ++j) {
            const double turns = static_cast<double>((j * k) % x.size()) / n;
            bins[k] += x[j] * std::polar(1.0, sign * 2.0 * std::numbers::pi * turns);
        }
    }
    return bins;
}

void expectNear(const Numbers& expected, const Numbers& found)
{
    ASSERT_EQ(expected.size(), found.size());
    // Single precision, and an error that grows with the logarithm of the size.
    const double tolerance = 1e-6 * std::sqrt(static_cast<double>(expected.size())) * 4.0;
    for (std::size_t k = 0; k < expected.size(); ++k) {
        EXPECT_LT(std::abs(expected[k] - found[k]), tolerance) << "at " << k;
    }
}

class FFTPlanSizes : public ::testing::TestWithParam<int>
{
};

TEST_P(FFTPlanSizes, TransformForwardAsDefined)
{
    FFTArray from(GetParam());
    FFTArray to(GetParam());
    FFTPlan plan(from, to, FFTDirection::Forward);
    fillWithNoise(from, 1);

    plan.execute();

    expectNear(byDefinition(numbersOf(from), -1.0), numbersOf(to));
}

TEST_P(FFTPlanSizes, TransformBackwardAsDefined)
{
    FFTArray from(GetParam());
    FFTArray to(GetParam());
    FFTPlan plan(from, to, FFTDirection::Backward);
    fillWithNoise(from, 2);

    plan.execute();

    expectNear(byDefinition(numbersOf(from), 1.0), numbersOf(to));
}

TEST_P(FFTPlanSizes, KeepWhatTheyTransformAndRepeatIt)
{
    FFTArray from(GetParam());
    FFTArray to(GetParam());
    FFTPlan plan(from, to, FFTDirection::Forward);
    fillWithNoise(from, 3);
    const Numbers before = numbersOf(from);

    plan.execute();
    const Numbers first = numbersOf(to);
    plan.execute();

    EXPECT_EQ(before, numbersOf(from));
    EXPECT_EQ(first, numbersOf(to));
}

INSTANTIATE_TEST_SUITE_P(All, FFTPlanSizes, ::testing::Values(1, 2, 7, 16, 255, 600, 1021, 1024));

TEST(FFTPlan, KeepsWhatItsArraysHoldWhenItIsMade)
{
    FFTArray from(480);
    FFTArray to(480);
    fillWithNoise(from, 4);
    fillWithNoise(to, 5);
    const Numbers fromBefore = numbersOf(from);
    const Numbers toBefore = numbersOf(to);

    const FFTPlan plan(from, to, FFTDirection::Forward);

    EXPECT_EQ(fromBefore, numbersOf(from));
    EXPECT_EQ(toBefore, numbersOf(to));
}

TEST(FFTPlan, GivesTheBitsOfAnotherPlanOfItsSize)
{
    // Between the two, the heap is moved about so that the arrays lie elsewhere.
    FFTArray from(48'001);
    FFTArray to(48'001);
    const std::vector<float> spacer(12'345, 1.0F);
    FFTArray otherFrom(48'001);
    FFTArray otherTo(48'001);
    fillWithNoise(from, 6);
    fillWithNoise(otherFrom, 6);

    FFTPlan(from, to, FFTDirection::Forward).execute();
    FFTPlan(otherFrom, otherTo, FFTDirection::Forward).execute();

    EXPECT_EQ(std::memcmp(to.data(), otherTo.data(), 48'001 * sizeof(*to.data())), 0);
}

TEST(FFTPlan, DoesNothingForEmptyArrays)
{
    for (const int size : {0, -1}) {
        FFTArray from(size);
        FFTArray to(size);
        FFTPlan plan(from, to, FFTDirection::Forward);
        plan.execute();

        EXPECT_EQ(from.size(), 0);
        EXPECT_EQ(from.data(), nullptr);
    }
}

TEST(FFTArray, IsZeroAtFirst)
{
    FFTArray array(1000);

    EXPECT_EQ(array.size(), 1000);
    EXPECT_EQ(numbersOf(array), Numbers(1000));
}

TEST(FFTPlanThreads, MakeExecuteAndDestroyPlansAtTheSameTime)
{
    constexpr int size = 360;
    constexpr unsigned threadCount = 4;
    std::atomic<int> wrong{0};
    const auto work = [&wrong](unsigned seed) {
        for (int round = 0; round < 50; ++round) {
            // Another size each time, so that the planner has something to plan.
            const int roundSize = size + round;
            FFTArray from(roundSize);
            FFTArray bins(roundSize);
            FFTArray back(roundSize);
            fillWithNoise(from, seed);
            FFTPlan(from, bins, FFTDirection::Forward).execute();
            FFTPlan(bins, back, FFTDirection::Backward).execute();
            for (int i = 0; i < roundSize; ++i) {
                const float expected = from.data()[i][0] * static_cast<float>(roundSize);
                wrong += std::fabs(back.data()[i][0] - expected) > 0.01F ? 1 : 0;
            }
        }
    };

    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < threadCount; ++seed) {
        threads.emplace_back(work, seed);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(wrong, 0);
}

}  // namespace
