// The resampler: which samples it picks, what its filters and its gain do, and how a stream is cut.
#include <KOVDoaHandle/KOVAudio/kovaudioresample.h>
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "tests/support/bits.h"

namespace {

using testsupport::sameBits;

using Samples = std::vector<float>;

constexpr float untouched = -77.0F;
constexpr int largestInt = std::numeric_limits<int>::max();

Samples noise(std::size_t count, unsigned seed = 21)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    Samples samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return uniform(random); });
    return samples;
}

Samples resampled(KOVAudioReSample& resampler, Samples in, std::size_t outCount)
{
    Samples out(outCount, untouched);
    resampler.doReSample(in.data(), static_cast<int>(in.size()), out.data(), static_cast<int>(outCount));
    return out;
}

Samples fastResampled(Samples in, int inRate, int outRate, std::size_t outCount)
{
    Samples out(outCount, untouched);
    KOVAudioReSample::FastAudioReSample(in.data(), inRate, static_cast<int>(in.size()), out.data(), outRate,
                                        static_cast<int>(outCount));
    return out;
}

// The rule as it is written, one output after the other.
Samples picked(const Samples& in, int inRate, int outRate, std::size_t outCount)
{
    const float ratio = static_cast<float>(inRate) / static_cast<float>(outRate);
    Samples out(outCount, untouched);
    for (std::size_t k = 0; k < outCount; ++k) {
        const float position = static_cast<float>(static_cast<int>(k)) * ratio;
        const auto index = static_cast<std::int64_t>(position);
        if (index >= static_cast<std::int64_t>(in.size())) {
            break;
        }
        out[k] = in[static_cast<std::size_t>(index)];
    }
    return out;
}

void expectSameBits(const Samples& expected, const Samples& found)
{
    ASSERT_EQ(expected.size(), found.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_TRUE(sameBits(expected[i], found[i])) << "sample " << i;
    }
}

float rms(const Samples& samples)
{
    double sum = 0.0;
    for (const float value : samples) {
        sum += double{value} * double{value};
    }
    return static_cast<float>(std::sqrt(sum / static_cast<double>(samples.size())));
}

Samples tone(double frequency, std::size_t count)
{
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double turns = std::fmod(frequency / 96000.0 * static_cast<double>(i), 1.0);
        samples[i] = static_cast<float>(std::sin(2.0 * std::numbers::pi * turns));
    }
    return samples;
}

TEST(KOVAudioReSample, TakesEverySecondSampleAtHalfTheRate)
{
    KOVAudioReSample resampler(96000, 48000, 6.0F, false, false);
    const float factor = static_cast<float>(std::pow(10.0, double{0.3F}));

    const Samples out = resampled(resampler, {0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F}, 8);

    expectSameBits(
        {0.0F, 2.0F * factor, 4.0F * factor, 6.0F * factor, untouched, untouched, untouched, untouched}, out);
}

TEST(KOVAudioReSample, CopiesAtEqualRatesWithoutGainAndFilters)
{
    KOVAudioReSample resampler(44100, 44100, 0.0F, false, false);
    const Samples in = noise(1000);

    expectSameBits(in, resampled(resampler, in, in.size()));
}

struct Rates
{
    int in;
    int out;
};

class Picking : public ::testing::TestWithParam<Rates>
{
};

TEST_P(Picking, TakesTheSamplesOfTheRule)
{
    const auto [inRate, outRate] = GetParam();
    for (const std::size_t count : {0U, 1U, 2U, 7U, 1023U, 1024U, 96000U, 409600U}) {
        const Samples in = noise(count);
        for (const std::size_t outCount : {std::size_t{0}, std::size_t{1}, count / 3, count, 2 * count + 5}) {
            expectSameBits(picked(in, inRate, outRate, outCount),
                           fastResampled(in, inRate, outRate, outCount));
        }
    }
}

TEST_P(Picking, TakesTheSameSamplesWithAndWithoutAnObject)
{
    const auto [inRate, outRate] = GetParam();
    KOVAudioReSample resampler(inRate, outRate, 0.0F, false, false);
    const Samples in = noise(96000);

    expectSameBits(fastResampled(in, inRate, outRate, 100000), resampled(resampler, in, 100000));
}

INSTANTIATE_TEST_SUITE_P(At, Picking,
                         ::testing::Values(Rates{96000, 48000}, Rates{96000, 44100}, Rates{48000, 96000},
                                           Rates{44100, 96000}, Rates{96000, 95999}, Rates{3, 7}, Rates{1, 1},
                                           Rates{192000, 8000}, Rates{-96000, -48000}),
                         [](const auto& each) {
                             return (each.param.in < 0 ? "Minus" : "") +
                                    std::to_string(std::abs(each.param.in)) + "To" +
                                    std::to_string(std::abs(each.param.out));
                         });

// Single precision decides the index: past 2^24 outputs the output's own number is rounded. 48000 / 44100 puts
// many ideal positions a hair beside a whole number.
TEST(KOVAudioReSample, RoundsThePositionToSinglePrecision)
{
    constexpr std::size_t count = 20000000;
    Samples in(count);
    for (std::size_t i = 0; i < count; ++i) {
        in[i] = static_cast<float>(i % 1000003);
    }

    const Samples out = fastResampled(in, 1, 1, count);

    EXPECT_EQ(out[16777216], in[16777216]);
    EXPECT_EQ(out[16777217], in[16777216]);
    EXPECT_EQ(out[16777219], in[16777220]);
    expectSameBits(picked(in, 48000, 44100, count), fastResampled(in, 48000, 44100, count));
}

TEST(KOVAudioReSample, TwentyDecibelsMultiplyByTen)
{
    KOVAudioReSample resampler(1, 1, 20.0F, false, false);

    expectSameBits({10.0F, -20.0F}, resampled(resampler, {1.0F, -2.0F}, 2));
}

TEST(KOVAudioReSample, MinusSixDecibelsHalve)
{
    KOVAudioReSample resampler(1, 1, -6.0F, false, false);

    EXPECT_NEAR(resampled(resampler, {1.0F}, 1)[0], 0.501, 5e-4);
}

// The exponent is rounded to single precision before the power, the power after it.
TEST(KOVAudioReSample, RoundsTheGainTwice)
{
    for (float gain = -120.0F; gain < 120.0F; gain += 0.37F) {
        KOVAudioReSample resampler(1, 1, gain, false, false);
        const auto exponent = static_cast<float>(double{gain} * 0.05);
        const auto expected = static_cast<float>(std::pow(10.0, double{exponent}));
        ASSERT_TRUE(sameBits(expected, resampled(resampler, {1.0F}, 1)[0])) << gain << " dB";
    }
}

TEST(KOVAudioReSample, SettingsTakeEffectWithTheNextBlock)
{
    KOVAudioReSample resampler(1, 1, 0.0F, false, true);
    EXPECT_EQ(resampler.getGain(), 0.0F);
    EXPECT_FALSE(resampler.getRmAliasingEnable());
    EXPECT_TRUE(resampler.getRmDCEnable());

    resampler.setGain(40.0F);
    resampler.setRmAliasingEnable(true);
    resampler.setRmDCEnable(false);

    EXPECT_EQ(resampler.getGain(), 40.0F);
    EXPECT_TRUE(resampler.getRmAliasingEnable());
    EXPECT_FALSE(resampler.getRmDCEnable());
    resampler.setRmAliasingEnable(false);
    EXPECT_EQ(resampled(resampler, {1.0F}, 1)[0], 100.0F);
}

TEST(KOVAudioReSample, TheDcFlagFiltersWithTheLowPassAtTheOutputRate)
{
    KOVAudioReSample resampler(96000, 8000, 0.0F, false, true);
    Samples in = noise(5000);
    const Samples out = resampled(resampler, in, in.size());
    KOVFilter lowPass(KOVIIRDesigner::createLowPass(8000.0F, 0.707F, 1.0F, 96000.0F));

    lowPass.filter(in.data(), in.data(), static_cast<int>(in.size()));

    expectSameBits(picked(in, 96000, 8000, in.size()), out);
}

TEST(KOVAudioReSample, TheDcFlagKeepsAConstantAndStopsHighTones)
{
    KOVAudioReSample resampler(8000, 8000, 0.0F, false, true);

    EXPECT_NEAR(resampled(resampler, Samples(1000, 1.0F), 1000).back(), 1.0, 1e-4);
    resampler.resetFilter();
    EXPECT_LT(rms(resampled(resampler, tone(40000.0, 9600), 9600)), 0.02F);
}

TEST(KOVAudioReSample, TheAliasingFlagFiltersWithTheTenHertzHighPass)
{
    KOVAudioReSample resampler(96000, 48000, 0.0F, true, false);
    Samples in = noise(5000);
    const Samples out = resampled(resampler, in, in.size());
    KOVFilter highPass(KOVIIRDesigner::createHighPass(10.0F, 0.707F, 1.0F, 96000.0F));

    highPass.filter(in.data(), in.data(), static_cast<int>(in.size()));

    expectSameBits(picked(in, 96000, 48000, in.size()), out);
}

TEST(KOVAudioReSample, TheAliasingFlagRemovesAConstantAndKeepsHighTones)
{
    KOVAudioReSample resampler(96000, 96000, 0.0F, true, false);

    EXPECT_LT(std::abs(resampled(resampler, Samples(96000, 1.0F), 96000).back()), 1e-6F);
    resampler.resetFilter();
    EXPECT_NEAR(rms(resampled(resampler, tone(40000.0, 9600), 9600)), std::numbers::sqrt2 / 2.0, 1e-3);
}

// In single precision the order can be told from the bits.
TEST(KOVAudioReSample, TheHighPassComesBeforeTheLowPass)
{
    KOVAudioReSample resampler(96000, 22050, 0.0F, true, true);
    Samples in = noise(5000);
    const Samples out = resampled(resampler, in, in.size());
    KOVFilter highPass(KOVIIRDesigner::createHighPass(10.0F, 0.707F, 1.0F, 96000.0F));
    KOVFilter lowPass(KOVIIRDesigner::createLowPass(22050.0F, 0.707F, 1.0F, 96000.0F));

    highPass.filter(in.data(), in.data(), static_cast<int>(in.size()));
    lowPass.filter(in.data(), in.data(), static_cast<int>(in.size()));

    expectSameBits(picked(in, 96000, 22050, in.size()), out);
}

TEST(KOVAudioReSample, TheFiltersAreForNinetySixKilohertzWhateverTheInputRate)
{
    KOVAudioReSample slow(8000, 8000, 0.0F, true, true);
    KOVAudioReSample fast(192000, 8000, 0.0F, true, true);
    const Samples in = noise(2400);

    const Samples slowOut = resampled(slow, in, in.size());
    const Samples fastOut = resampled(fast, in, in.size() / 24);

    for (std::size_t k = 0; k < fastOut.size(); ++k) {
        ASSERT_TRUE(sameBits(slowOut[k * 24], fastOut[k])) << k;
    }
}

TEST(KOVAudioReSample, CarriesTheFiltersFromBlockToBlock)
{
    const Samples in = noise(10000);
    KOVAudioReSample wholeResampler(96000, 48000, 3.0F, true, true);
    const Samples whole = resampled(wholeResampler, in, in.size() / 2);

    for (const std::size_t size : {2U, 10U, 1024U, 4096U}) {
        KOVAudioReSample resampler(96000, 48000, 3.0F, true, true);
        Samples pieces;
        for (std::size_t first = 0; first < in.size(); first += size) {
            const std::size_t count = std::min(size, in.size() - first);
            const auto begin = in.begin() + static_cast<std::ptrdiff_t>(first);
            const Samples out =
                resampled(resampler, {begin, begin + static_cast<std::ptrdiff_t>(count)}, count / 2);
            pieces.insert(pieces.end(), out.begin(), out.end());
        }
        expectSameBits(whole, pieces);
    }
}

// Agreed behaviour: each block's picking starts at its own first sample.
TEST(KOVAudioReSample, StartsThePickingAfreshInEveryBlock)
{
    KOVAudioReSample resampler(96000, 48000, 0.0F, false, false);

    EXPECT_EQ(resampled(resampler, {0.0F, 1.0F, 2.0F}, 2), (Samples{0.0F, 2.0F}));
    EXPECT_EQ(resampled(resampler, {3.0F, 4.0F, 5.0F}, 2), (Samples{3.0F, 5.0F}));
}

TEST(KOVAudioReSample, AFilterRestsWhileItsFlagIsOff)
{
    const Samples first = noise(100, 1);
    const Samples second = noise(100, 2);
    KOVAudioReSample resampler(1, 1, 0.0F, true, false);
    resampled(resampler, first, 100);
    resampler.setRmAliasingEnable(false);
    resampled(resampler, noise(333, 3), 333);
    resampler.setRmAliasingEnable(true);
    KOVAudioReSample undisturbed(1, 1, 0.0F, true, false);
    resampled(undisturbed, first, 100);

    expectSameBits(resampled(undisturbed, second, 100), resampled(resampler, second, 100));
}

TEST(KOVAudioReSample, AResetForgetsBothFilters)
{
    const Samples in = noise(100);
    KOVAudioReSample fresh(96000, 16000, 0.0F, true, true);
    KOVAudioReSample used(96000, 16000, 0.0F, true, true);
    resampled(used, noise(1001, 5), 10);

    used.resetFilter();

    expectSameBits(resampled(fresh, in, 16), resampled(used, in, 16));
}

TEST(KOVAudioReSample, LeavesItsInputAlone)
{
    KOVAudioReSample resampler(96000, 48000, 12.0F, true, true);
    const Samples original = noise(1000);
    Samples in = original;
    Samples out(500);

    resampler.doReSample(in.data(), 1000, out.data(), 500);

    expectSameBits(original, in);
}

TEST(KOVAudioReSample, MayWriteOverItsInput)
{
    const Samples in = noise(1000);
    KOVAudioReSample apart(44100, 96000, 0.0F, true, true);
    KOVAudioReSample inPlace(44100, 96000, 0.0F, true, true);
    Samples both = in;

    inPlace.doReSample(both.data(), 1000, both.data(), 1000);

    expectSameBits(resampled(apart, in, 1000), both);
}

TEST(KOVAudioReSample, WritesNothingForCountsThatAreNotPositive)
{
    KOVAudioReSample resampler(96000, 48000, 0.0F, true, true);
    float in = 1.0F;
    float out = untouched;

    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        resampler.doReSample(&in, count, &out, 1);
        resampler.doReSample(&in, 1, &out, count);
        KOVAudioReSample::FastAudioReSample(&in, 1, count, &out, 1, 1);
        KOVAudioReSample::FastAudioReSample(&in, 1, 1, &out, 1, count);
    }
    resampler.doReSample(nullptr, 0, &out, 1);

    EXPECT_EQ(out, untouched);
}

TEST(KOVAudioReSample, TakesTheLongestBlock)
{
    KOVAudioReSample resampler(1, 1, 0.0F, false, false);
    const Samples in = noise(409600);

    expectSameBits(in, resampled(resampler, in, in.size()));
}

TEST(KOVAudioReSample, TakesOnlyTheBeginningOfABlockThatIsTooLong)
{
    KOVAudioReSample resampler(1, 1, 0.0F, false, true);
    KOVAudioReSample expected(1, 1, 0.0F, false, true);
    const Samples in = noise(409601 + 5000);
    const Samples beginning(in.begin(), in.begin() + 409600);

    expectSameBits(resampled(expected, beginning, in.size()), resampled(resampler, in, in.size()));
}

TEST(KOVAudioReSample, WritesNothingForAnOutputRateOfZero)
{
    KOVAudioReSample resampler(96000, 0, 0.0F, true, true);

    EXPECT_EQ(resampled(resampler, {1.0F, 2.0F}, 2), Samples(2, untouched));
    EXPECT_EQ(fastResampled({1.0F, 2.0F}, 96000, 0, 2), Samples(2, untouched));
    EXPECT_EQ(fastResampled({1.0F, 2.0F}, 0, 0, 2), Samples(2, untouched));
    EXPECT_EQ(fastResampled({1.0F, 2.0F}, -5, 0, 2), Samples(2, untouched));
}

TEST(KOVAudioReSample, RepeatsTheFirstSampleForAnInputRateOfZero)
{
    EXPECT_EQ(fastResampled({1.0F, 2.0F}, 0, 48000, 3), (Samples{1.0F, 1.0F, 1.0F}));
}

TEST(KOVAudioReSample, StopsBeforeTheBlockBeginsForRatesOfDifferentSign)
{
    EXPECT_EQ(fastResampled({1.0F, 2.0F}, -96000, 48000, 3), (Samples{1.0F, untouched, untouched}));
    EXPECT_EQ(fastResampled({1.0F, 2.0F}, 1, -2, 4), (Samples{1.0F, 1.0F, untouched, untouched}));
}

TEST(KOVAudioReSample, WritesNothingForAnEmptyBlockAtRatesOfDifferentSign)
{
    EXPECT_EQ(fastResampled({}, 1, -2, 3), Samples(3, untouched));
    EXPECT_EQ(fastResampled({}, -1, 1000, 5), Samples(5, untouched));
}

TEST(KOVAudioReSample, StaysInTheBlockForTheMostExtremeRatios)
{
    EXPECT_EQ(fastResampled({1.0F, 2.0F}, largestInt, 1, 3), (Samples{1.0F, untouched, untouched}));
    EXPECT_EQ(fastResampled({1.0F, 2.0F}, 1, largestInt, 3), (Samples{1.0F, 1.0F, 1.0F}));
}

// Group delay at `frequency` of a resampler at equal rates, from its impulse response.
double measuredDelay(int rate, bool highPass, bool lowPass, double frequency)
{
    KOVAudioReSample resampler(rate, rate, 0.0F, highPass, lowPass);
    Samples impulse(400000, 0.0F);
    impulse[0] = 1.0F;
    const Samples h = resampled(resampler, impulse, impulse.size());
    std::complex<double> sum;
    std::complex<double> weighted;
    for (std::size_t n = 0; n < h.size(); ++n) {
        const double turns = std::fmod(frequency / 96000.0 * static_cast<double>(n), 1.0);
        const auto term = double{h[n]} * std::polar(1.0, -2.0 * std::numbers::pi * turns);
        sum += term;
        weighted += static_cast<double>(n) * term;
    }
    return (weighted / sum).real();
}

TEST(KOVAudioReSample, TheLowPassDelaysByTheStatedNumberOfSamples)
{
    EXPECT_NEAR(measuredDelay(8000, false, true, 0.0), 2.64, 0.005);
    EXPECT_NEAR(measuredDelay(16000, false, true, 0.0), 1.22, 0.006);
    EXPECT_NEAR(measuredDelay(22050, false, true, 0.0), 0.80, 0.005);
    EXPECT_NEAR(measuredDelay(32000, false, true, 0.0), 0.41, 0.005);
    EXPECT_NEAR(measuredDelay(44100, false, true, 0.0), 0.09, 0.005);
    EXPECT_EQ(measuredDelay(48000, false, true, 0.0), 0.0);
    EXPECT_EQ(measuredDelay(96000, false, true, 0.0), 0.0);
}

TEST(KOVAudioReSample, TheHighPassDelaysByTheStatedNumberOfSamples)
{
    EXPECT_NEAR(measuredDelay(48000, true, false, 1000.0), 0.22, 0.005);
    EXPECT_NEAR(measuredDelay(48000, true, false, 10000.0), 0.002, 0.0005);
}

TEST(KOVAudioReSample, PickingAloneDelaysByNothing)
{
    EXPECT_EQ(measuredDelay(48000, false, false, 1000.0), 0.0);
}

}  // namespace
