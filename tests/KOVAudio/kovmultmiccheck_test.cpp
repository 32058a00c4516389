// The array's self-test: filling, neighbours, levels.
#include <KOVDoaHandle/KOVAudio/kovmultmiccheck.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <string>

#include <KOVDoaHandle/diagnostics/kovblas.h>

#include "arraysignal.h"
#include "tests/support/bits.h"

using namespace miccheck;
using testsupport::sameBits;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

float plainLevel(Row row)
{
    const float rms = KOVBlas::Rms(row.data(), static_cast<int>(row.size()), true);
    const float logarithm = std::log10(rms);
    return static_cast<float>(20.0 * double{logarithm} + 120.0);
}

bool allZero(const MicCheckResult& result)
{
    return std::none_of(std::begin(result.flags), std::end(result.flags), [](bool flag) { return flag; }) &&
           std::all_of(std::begin(result.values), std::end(result.values),
                       [](float value) { return value == 0.0F; });
}

void expectLevels(const ArraySignal& signal, std::size_t count, KOVMultMicCheck& check)
{
    const MicCheckResult result = check.checkRMS();
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const Row& row = signal.rows[channel];
        const float expected = plainLevel(Row(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(count)));
        EXPECT_TRUE(sameBits(expected, result.values[channel])) << "channel " << channel;
        EXPECT_EQ(result.flags[channel], expected > 30.0F) << "channel " << channel;
    }
}

TEST(MicCheckFilling, StopsAtOneSecondAndSaysSo)
{
    ArraySignal signal = differentNoise(100'000, 0.1F);
    KOVMultMicCheck check;

    EXPECT_FALSE(check.fillAudio(signal.from(), 50'000));
    EXPECT_TRUE(check.fillAudio(signal.from(50'000), 50'000));

    expectLevels(signal, 96'000, check);
}

TEST(MicCheckFilling, SaysFullOnlyAtTheCallAfterAnExactFill)
{
    ArraySignal signal = differentNoise(96'001, 0.1F);
    KOVMultMicCheck check;

    EXPECT_FALSE(check.fillAudio(signal.from(), 96'000));
    EXPECT_FALSE(check.fillAudio(signal.from(), 0));
    EXPECT_TRUE(check.fillAudio(signal.from(96'000), 1));
    EXPECT_TRUE(check.fillAudio(signal.from(), std::numeric_limits<int>::max()));

    expectLevels(signal, 96'000, check);
}

TEST(MicCheckFilling, TakesNothingFromAnEmptyOrNegativeBlock)
{
    ArraySignal signal = differentNoise(48'000, 0.1F);
    KOVMultMicCheck check;
    check.fillAudio(signal.from(), 48'000);

    EXPECT_FALSE(check.fillAudio(static_cast<float**>(nullptr), 0));
    EXPECT_FALSE(check.fillAudio(static_cast<float**>(nullptr), -1));
    EXPECT_FALSE(check.fillAudio(static_cast<short**>(nullptr), std::numeric_limits<int>::min()));

    expectLevels(signal, 48'000, check);
}

TEST(MicCheckFilling, ScalesSixteenBitSamplesInSinglePrecision)
{
    ArrayAudio<short> shorts(48'000);
    ArraySignal signal(48'000);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const Row row = noise(48'000, 32'000.0F, static_cast<unsigned>(channel));
        for (std::size_t i = 0; i < row.size(); ++i) {
            shorts.rows[channel][i] = static_cast<short>(row[i]);
        }
        shorts.rows[channel][17] = 32767;
        shorts.rows[channel][18] = -32768;
        for (std::size_t i = 0; i < row.size(); ++i) {
            signal.rows[channel][i] = static_cast<float>(shorts.rows[channel][i]) * 3.051851e-5F;
        }
    }
    EXPECT_NEAR(signal.rows[0][17], 1.0F, 1e-6F);
    KOVMultMicCheck check;

    EXPECT_FALSE(check.fillAudio(shorts.from(), 1000));
    EXPECT_FALSE(check.fillAudio(shorts.from(1000), 47'000));

    expectLevels(signal, 48'000, check);
}

struct Test
{
    const char* name;
    MicCheckResult (KOVMultMicCheck::*run)();
};

class MicCheckTests : public ::testing::TestWithParam<Test>
{
protected:
    MicCheckResult run() { return (check.*GetParam().run)(); }

    KOVMultMicCheck check;
};

TEST_P(MicCheckTests, AreEmptyBeforeHalfASecondHasCome)
{
    ArraySignal signal = differentNoise(48'000, 0.1F);

    const MicCheckResult atFirst = run();
    check.fillAudio(signal.from(), 47'999);
    const MicCheckResult before = run();
    check.fillAudio(signal.from(47'999), 1);
    const MicCheckResult after = run();

    EXPECT_TRUE(allZero(atFirst));
    EXPECT_TRUE(allZero(before));
    EXPECT_FALSE(allZero(after));
}

TEST_P(MicCheckTests, SayHowManyMillisecondsTheyTook)
{
    ArraySignal signal = differentNoise(48'000, 0.1F);
    check.fillAudio(signal.from(), 48'000);

    const auto begin = std::chrono::steady_clock::now();
    const float elapsed = run().elapsed;
    const std::chrono::duration<float, std::milli> around = std::chrono::steady_clock::now() - begin;

    EXPECT_GT(elapsed, 0.0F);
    // The stopwatch counts in single precision around 1000 ms.
    EXPECT_LE(elapsed, around.count() + 0.001F);
}

INSTANTIATE_TEST_SUITE_P(All, MicCheckTests,
                         ::testing::Values(Test{"Same", &KOVMultMicCheck::checkSame},
                                           Test{"Rms", &KOVMultMicCheck::checkRMS},
                                           Test{"Xcorr", &KOVMultMicCheck::checkXcorr}),
                         [](const auto& test) { return std::string(test.param.name); });

struct Neighbours
{
    bool differ;
    float firstValue;
    float secondValue;
};

Neighbours plainNeighbours(const Row& a, const Row& b)
{
    const float f = static_cast<float>(a.size());
    float sa = 0.0F;
    float sb = 0.0F;
    bool differ = false;
    for (std::size_t i = 0; i < a.size() && !differ; ++i) {
        sa = sa + std::fabs(a[i]);
        sb = sb + std::fabs(b[i]);
        const float difference = sa - sb;
        differ = std::fabs(difference) > 0.0001 && sa > 0.0001 && sb > 0.0001;
    }
    return {differ, sa * 32767.0F * 96000.0F / f, sb * 32767.0F * 96000.0F / f};
}

class MicCheckSizes : public ::testing::TestWithParam<int>
{
protected:
    MicCheckSizes() : signal(differentNoise(size, 0.2F)) {}

    Row& row(std::size_t channel) { return signal.rows[channel]; }

    void fill() { check.fillAudio(signal.from(), GetParam()); }

    std::size_t size = static_cast<std::size_t>(GetParam());
    ArraySignal signal;
    KOVMultMicCheck check;
};

TEST_P(MicCheckSizes, GiveTheNeighboursTheSumsOfThePlainWalk)
{
    row(1) = row(0);
    row(2).assign(size, 0.0F);
    row(3).assign(size, 0.0F);
    row(4).assign(size, 0.0F);
    row(7) = row(6);
    row(7).back() += 0.5F;
    std::transform(row(8).begin(), row(8).end(), row(9).begin(), [](float x) { return -x; });
    row(10).front() = notANumber;
    row(13).back() = notANumber;
    row(14) = noise(size, 1e-9F, 1);
    row(16).front() = infinity;
    row(18).assign(size, 1e-38F);
    fill();

    const MicCheckResult result = check.checkSame();

    for (std::size_t channel = 0; channel < channels; channel += 2) {
        const Neighbours expected = plainNeighbours(row(channel), row(channel + 1));
        EXPECT_EQ(result.flags[channel], expected.differ) << "channel " << channel;
        EXPECT_EQ(result.flags[channel + 1], expected.differ) << "channel " << channel;
        EXPECT_TRUE(sameBits(expected.firstValue, result.values[channel])) << "channel " << channel;
        EXPECT_TRUE(sameBits(expected.secondValue, result.values[channel + 1])) << "channel " << channel + 1;
    }
    // Duplicated, silent, half silent, different at the very end, inverted, not a number, different.
    const bool expected[7] = {false, false, false, true, false, false, true};
    for (std::size_t pair = 0; pair < 7; ++pair) {
        EXPECT_EQ(result.flags[2 * pair], expected[pair]) << "pair " << pair;
    }
}

TEST_P(MicCheckSizes, GiveTheLevelsOfOneChannelAfterTheOther)
{
    row(0).assign(size, 0.25F);
    row(7)[size / 2] = notANumber;
    row(8)[3] = infinity;
    row(9) = noise(size, 1e-30F, 1);
    row(100).back() = notANumber;
    row(207) = noise(size, 1e18F, 2);
    for (float& sample : row(11)) {
        sample += 0.5F;
    }
    fill();

    expectLevels(signal, size, check);
}

INSTANTIATE_TEST_SUITE_P(All, MicCheckSizes, ::testing::Values(48'000, 48'001, 48'127, 48'129, 96'000));

TEST(MicCheckLevels, OfSilenceAreMinusInfinityAndFail)
{
    ArraySignal signal = differentNoise(48'000, 0.1F);
    signal.rows[5].assign(48'000, 0.0F);
    KOVMultMicCheck check;
    check.fillAudio(signal.from(), 48'000);

    const MicCheckResult result = check.checkRMS();

    EXPECT_EQ(result.values[5], -infinity);
    EXPECT_FALSE(result.flags[5]);
    EXPECT_TRUE(result.flags[4]);
}

TEST(MicCheckLevels, PassAboveThirtyDecibels)
{
    ArraySignal signal(48'000);
    for (std::size_t i = 0; i < 48'000; ++i) {
        // 30 dB are 31.6 millionths.
        const float sign = i % 2 == 0 ? 1.0F : -1.0F;
        signal.rows[0][i] = sign * 31.9e-6F;
        signal.rows[1][i] = sign * 31.3e-6F;
    }
    KOVMultMicCheck check;
    check.fillAudio(signal.from(), 48'000);

    const MicCheckResult result = check.checkRMS();

    EXPECT_NEAR(result.values[0], 30.08F, 0.01F);
    EXPECT_TRUE(result.flags[0]);
    EXPECT_NEAR(result.values[1], 29.91F, 0.01F);
    EXPECT_FALSE(result.flags[1]);
}

}  // namespace
