// The filter as a stream processor: against a plain recursion in double precision, cut in any way, in place.
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <numbers>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/foundation/engine/filtertesting.h"
#include "tests/support/bits.h"

namespace {

using filtertesting::directForm;
using filtertesting::filtered;
using filtertesting::noise;
using filtertesting::rate;
using filtertesting::Samples;
using testsupport::sameBits;

struct Design
{
    const char* name;
    IIRCoef_t coefficients;
};

void PrintTo(const Design& design, std::ostream* out)
{
    *out << design.name;
}

std::vector<Design> designs()
{
    const auto lowPass = [](float cutoff, float q) {
        return KOVIIRDesigner::createLowPass(cutoff, q, 1.0F, rate);
    };
    const auto highPass = [](float cutoff, float q) {
        return KOVIIRDesigner::createHighPass(cutoff, q, 1.0F, rate);
    };
    return {{"HighPass10", highPass(10.0F, 0.707F)},
            {"HighPass100", highPass(100.0F, 1.0F)},
            {"HighPass2000", highPass(2000.0F, 0.707F)},
            {"HighPass10000", highPass(10000.0F, 0.707F)},
            {"HighPass25000", highPass(25000.0F, 0.707F)},
            {"HighPassAboveHalfTheRate", highPass(60000.0F, 0.707F)},
            {"LowPass13460", lowPass(13460.0F, 0.7F)},
            {"LowPass20500Peaked", lowPass(20500.0F, 2.0F)},
            {"LowPass44100", lowPass(44100.0F, 0.707F)},
            {"LowPass48000", lowPass(48000.0F, 0.707F)},
            {"LowPassZero", lowPass(0.0F, 0.7F)},
            {"LowPass100Ringing", lowPass(100.0F, 100.0F)},
            {"ByHand", {0.5F, -0.25F, 0.125F, 2.0F, 0.3F, -0.7F}},
            {"FeedForwardOnly", {1.0F, 2.0F, 3.0F, 1.0F, 0.0F, 0.0F}}};
}

class Filters : public ::testing::TestWithParam<Design>
{
protected:
    static constexpr std::size_t count = 50000;

    const IIRCoef_t coefficients = GetParam().coefficients;
    const Samples input = noise(count);
};

INSTANTIATE_TEST_SUITE_P(Of, Filters, ::testing::ValuesIn(designs()),
                         [](const auto& each) { return std::string(each.param.name); });

// A single-precision output is at best half a step (6e-8 of its size) off; the sums are in double.
TEST_P(Filters, FollowAPlainRecursionInDoublePrecision)
{
    const auto expected = directForm<double>(coefficients, input);

    const Samples found = filtered(coefficients, input);

    double peak = 0.0;
    for (const double value : expected) {
        peak = std::max(peak, std::abs(value));
    }
    for (std::size_t i = 0; i < count; ++i) {
        ASSERT_NEAR(found[i], expected[i], 6e-8 * std::abs(expected[i]) + 1e-9 * peak) << "sample " << i;
    }
}

TEST_P(Filters, GiveTheSameBitsHoweverTheStreamIsCut)
{
    const Samples whole = filtered(coefficients, input);

    for (const int largest : {1, 2, 3, 4, 5, 7, 63, 255, 257, 1024, 1500}) {
        std::mt19937 random(static_cast<unsigned>(largest));
        std::uniform_int_distribution<int> sizes(0, largest);
        KOVFilter filter(coefficients);
        Samples pieces = input;
        for (std::size_t first = 0; first < count;) {
            const auto left = static_cast<int>(count - first);
            const int size = std::min(sizes(random), left);
            filter.filter(pieces.data() + first, pieces.data() + first, size);
            first += static_cast<std::size_t>(size);
        }
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(sameBits(whole[i], pieces[i])) << "sample " << i << ", pieces up to " << largest;
        }
    }
}

TEST_P(Filters, GiveTheSameBitsInTwoHalvesAsWhole)
{
    const Samples whole = filtered(coefficients, input);
    KOVFilter filter(coefficients);
    Samples halves = input;

    filter.filter(halves.data(), halves.data(), count / 2);
    filter.filter(halves.data() + count / 2, halves.data() + count / 2, count / 2);

    for (std::size_t i = 0; i < count; ++i) {
        ASSERT_TRUE(sameBits(whole[i], halves[i])) << "sample " << i;
    }
}

TEST_P(Filters, GiveTheSameBitsInPlaceAsIntoAnotherArray)
{
    const Samples inPlace = filtered(coefficients, input);
    KOVFilter filter(coefficients);
    Samples source = input;
    Samples apart(count);

    filter.filter(source.data(), apart.data(), static_cast<int>(count));

    EXPECT_EQ(source, input);
    for (std::size_t i = 0; i < count; ++i) {
        ASSERT_TRUE(sameBits(inPlace[i], apart[i])) << "sample " << i;
    }
}

TEST_P(Filters, StartAfreshAfterAReset)
{
    const Samples fresh = filtered(coefficients, input);
    KOVFilter filter(coefficients);

    for (const std::size_t earlier : {1U, 2U, 3U, 4U, 257U, 1023U}) {
        filtered(filter, noise(earlier, 77));
        filter.reset();
        const Samples again = filtered(filter, input);
        filter.reset();
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(sameBits(fresh[i], again[i])) << "sample " << i << " after " << earlier;
        }
    }
}

// The four lanes of a group must not leak into one another: what comes later cannot change what came before.
TEST_P(Filters, LetNothingThatComesLaterChangeAnOutput)
{
    const Samples before = filtered(coefficients, input);
    constexpr std::size_t last = 1000;

    for (std::size_t place = last - 8; place < last; ++place) {
        Samples spoilt(input.begin(), input.begin() + last);
        spoilt[place] = std::numeric_limits<float>::quiet_NaN();
        const Samples found = filtered(coefficients, spoilt);
        for (std::size_t i = 0; i < place; ++i) {
            ASSERT_TRUE(sameBits(before[i], found[i])) << "sample " << i << ", NaN at " << place;
        }
        EXPECT_TRUE(std::isnan(found[place]));
    }
}

TEST_P(Filters, RecoverFromInfinityByAReset)
{
    const Samples fresh = filtered(coefficients, input);
    KOVFilter filter(coefficients);
    Samples spoilt = noise(101);
    spoilt[50] = std::numeric_limits<float>::infinity();

    const Samples poisoned = filtered(filter, spoilt);
    filter.reset();

    EXPECT_FALSE(std::isfinite(poisoned.back()));
    EXPECT_EQ(filtered(filter, input), fresh);
}

// After the last sound the state fades through ever smaller numbers. It must not linger among those below the normal
// range, which are slow: a section that is left to fade gives tens of thousands of them here (each 256 samples the
// state is looked at; a slow swing through 0 may add some). Then the output is 0 and stays 0. The slowest section of
// these rings for half a minute.
TEST_P(Filters, EndInExactZerosWithoutLingeringBelowTheNormalRange)
{
    constexpr int block = 4096;
    KOVFilter filter(coefficients);
    filtered(filter, noise(1000));
    Samples silence(block, 0.0F);
    Samples out(block);
    std::ptrdiff_t subnormal = 0;

    for (int blocks = 0; blocks < 1000; ++blocks) {
        filter.filter(silence.data(), out.data(), block);
        subnormal += std::count_if(out.begin(), out.end(),
                                   [](float value) { return std::fpclassify(value) == FP_SUBNORMAL; });
    }

    EXPECT_LE(subnormal, 600);
    EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](float value) { return value == 0.0F; }));
}

// The clearing happens in the same places of the stream, however it is cut.
TEST(KOVFilter, FallsSilentAtTheSameSampleHoweverTheStreamIsCut)
{
    const auto coefficients = KOVIIRDesigner::createHighPass(2000.0F, 0.707F, 1.0F, rate);
    Samples input = noise(100);
    input.resize(4000, 0.0F);
    const Samples whole = filtered(coefficients, input);

    for (const int size : {1, 3, 64, 100, 257}) {
        KOVFilter filter(coefficients);
        Samples pieces = input;
        for (int first = 0; first < 4000; first += size) {
            filter.filter(pieces.data() + first, pieces.data() + first, std::min(size, 4000 - first));
        }
        for (std::size_t i = 0; i < input.size(); ++i) {
            ASSERT_TRUE(sameBits(whole[i], pieces[i])) << "sample " << i << ", pieces of " << size;
        }
    }
    EXPECT_NE(whole[500], 0.0F);
    EXPECT_EQ(whole[3999], 0.0F);
}

TEST(KOVFilter, HoldsADecadeQuieterSignalThanAnySensorToFullPrecision)
{
    const auto coefficients = KOVIIRDesigner::createLowPass(10.0F, 0.707F, 1.0F, rate);
    const Samples loud = noise(20000);
    Samples quiet = loud;
    // A power of two, so that nothing but the threshold of silence can tell the two apart.
    const float scale = std::ldexp(1.0F, -60);
    std::for_each(quiet.begin(), quiet.end(), [scale](float& value) { value *= scale; });

    const Samples loudOut = filtered(coefficients, loud);
    const Samples quietOut = filtered(coefficients, quiet);

    for (std::size_t i = 0; i < loud.size(); ++i) {
        ASSERT_TRUE(sameBits(loudOut[i] * scale, quietOut[i])) << "sample " << i;
    }
}

TEST(KOVFilter, DoesNothingForACountThatIsNotPositive)
{
    const auto coefficients = KOVIIRDesigner::createHighPass(10.0F, 0.707F, 1.0F, rate);
    KOVFilter filter(coefficients);
    Samples first = noise(6);
    Samples untouched = {7.0F};
    filter.filter(first.data(), first.data(), 3);

    filter.filter(untouched.data(), untouched.data(), 0);
    filter.filter(untouched.data(), untouched.data(), -5);
    filter.filter(nullptr, nullptr, 0);
    filter.filter(first.data() + 3, first.data() + 3, 3);

    EXPECT_EQ(untouched, Samples{7.0F});
    EXPECT_EQ(first, filtered(coefficients, noise(6)));
}

TEST(KOVFilter, StaysBoundedWithALowPassAtZero)
{
    Samples steady(960000, 1.0F);

    const Samples found = filtered(KOVIIRDesigner::createLowPass(0.0F, 0.7F, 1.0F, rate), steady);

    for (const float value : found) {
        ASSERT_LT(std::abs(value), 1.1F);
    }
}

TEST(KOVFilter, PassesEverythingThroughALowPassAtHalfTheRate)
{
    const Samples input = noise(999);

    EXPECT_EQ(filtered(KOVIIRDesigner::createLowPass(48000.0F, 0.707F, 1.0F, rate), input), input);
}

TEST(KOVFilter, RemovesAConstantWithTheTenHertzHighPass)
{
    const Samples steady(200000, 0.75F);

    const Samples found = filtered(KOVIIRDesigner::createHighPass(10.0F, 0.707F, 1.0F, rate), steady);

    EXPECT_NEAR(found.front(), 0.75F, 1e-3);
    EXPECT_LT(std::abs(found.back()), 1e-12F);
}

// What the double precision inside is for. The same recursion in single precision, on the same coefficients,
// comes out over 100 dB further from the exact answer with a corner of 10 Hz.
TEST(KOVFilter, IsAHundredThousandTimesNearerThanSinglePrecisionAtTenHertz)
{
    const auto coefficients = KOVIIRDesigner::createHighPass(10.0F, 0.707F, 1.0F, rate);
    const Samples input = noise(200000);
    const auto exact = directForm<long double>(coefficients, input);
    const auto single = directForm<float>(coefficients, input);

    const Samples found = filtered(coefficients, input);

    long double error = 0.0L;
    long double singleError = 0.0L;
    for (std::size_t i = 0; i < input.size(); ++i) {
        error += (found[i] - exact[i]) * (found[i] - exact[i]);
        singleError += (single[i] - exact[i]) * (single[i] - exact[i]);
    }
    const auto ratio = static_cast<double>(std::sqrt(singleError / error));
    EXPECT_GT(ratio, 1e5) << 20.0 * std::log10(ratio) << " dB";
}

// Group delay at `frequency` from the impulse response: Re(sum n h[n] z^n / sum h[n] z^n).
double measuredDelay(const IIRCoef_t& coefficients, double frequency)
{
    Samples impulse(400000, 0.0F);
    impulse[0] = 1.0F;
    const Samples h = filtered(coefficients, impulse);
    std::complex<double> sum;
    std::complex<double> weighted;
    for (std::size_t n = 0; n < h.size(); ++n) {
        const double angle =
            -2.0 * std::numbers::pi * std::fmod(frequency / rate * static_cast<double>(n), 1.0);
        const std::complex<double> term = double{h[n]} * std::polar(1.0, angle);
        sum += term;
        weighted += static_cast<double>(n) * term;
    }
    return (weighted / sum).real();
}

struct StatedDelay
{
    IIRCoef_t coefficients;
    double frequency;
    double samples;
    double tolerance;
};

// The figures of the header.
TEST(KOVFilter, DelaysByTheStatedNumberOfSamples)
{
    const auto lowPass = [](float cutoff) {
        return KOVIIRDesigner::createLowPass(cutoff, 0.707F, 1.0F, rate);
    };
    const auto highPass = [](float cutoff) {
        return KOVIIRDesigner::createHighPass(cutoff, 0.707F, 1.0F, rate);
    };

    for (const StatedDelay& stated :
         {StatedDelay{lowPass(4800.0F), 0.0, 4.5, 0.05}, StatedDelay{lowPass(22050.0F), 0.0, 0.8, 0.05},
          StatedDelay{lowPass(48000.0F), 1000.0, 0.0, 1e-9},
          StatedDelay{lowPass(96000.0F), 1000.0, 0.0, 1e-9},
          StatedDelay{highPass(10.0F), 1000.0, 0.22, 0.005},
          StatedDelay{highPass(10.0F), 10000.0, 0.0022, 0.0005},
          StatedDelay{highPass(25000.0F), 30000.0, 1.3, 0.05},
          StatedDelay{highPass(25000.0F), 40000.0, 0.87, 0.005}}) {
        EXPECT_NEAR(measuredDelay(stated.coefficients, stated.frequency), stated.samples, stated.tolerance)
            << stated.frequency << " Hz";
    }
}

// The formula of the header.
TEST(KOVFilter, DelaysByTheStatedFormula)
{
    int measured = 0;
    for (const float cutoff : {500.0F, 13460.0F, 25000.0F}) {
        for (const float q : {0.707F, 2.0F}) {
            for (const double frequency : {100.0, 4000.0, 20000.0, 40000.0}) {
                const double k = std::tan(std::numbers::pi * cutoff / rate);
                const double t = std::tan(std::numbers::pi * frequency / rate);
                const double v2 = (t / k) * (t / k);
                const double expected = (1.0 + t * t) / (2.0 * k * q) * (1.0 + v2) /
                                        ((1.0 - v2) * (1.0 - v2) + v2 / (double{q} * q));
                for (const auto& section : {KOVIIRDesigner::createLowPass(cutoff, q, 1.0F, rate),
                                            KOVIIRDesigner::createHighPass(cutoff, q, 1.0F, rate)}) {
                    // Far in the stop band the rounding of the output is all there is to measure.
                    if (filtertesting::gainAt(section, frequency) > 0.1) {
                        EXPECT_NEAR(measuredDelay(section, frequency), expected, 1e-3 * expected + 1e-3)
                            << cutoff << " Hz, Q " << q << ", at " << frequency;
                        ++measured;
                    }
                }
            }
        }
    }
    EXPECT_GE(measured, 24);
}

}  // namespace
