// The designed sections, judged by their response.
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <numbers>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/foundation/engine/filtertesting.h"

namespace {

using filtertesting::gainAt;
using filtertesting::isStable;
using filtertesting::rate;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

static_assert(std::is_trivially_copyable_v<IIRCoef_t>);
static_assert(sizeof(IIRCoef_t) == 24);

double decibels(double ratio)
{
    return 20.0 * std::log10(ratio);
}

std::array<float, 6> valuesOf(const IIRCoef_t& c)
{
    return {c.b0, c.b1, c.b2, c.a0, c.a1, c.a2};
}

bool allFinite(const IIRCoef_t& c)
{
    const auto values = valuesOf(c);
    return std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); });
}

bool onlyApplies(const IIRCoef_t& c, float gain)
{
    return c.b1 == 0.0F && c.b2 == 0.0F && c.a1 == 0.0F && c.a2 == 0.0F && c.b0 / c.a0 == gain;
}

struct Corner
{
    float cutoff;
    float q;
};

void PrintTo(const Corner& corner, std::ostream* out)
{
    *out << corner.cutoff << " Hz, Q " << corner.q;
}

class DesignedCorners : public ::testing::TestWithParam<Corner>
{
};

// The damping is held more loosely where the corner is close to 0 or Q is large, since single precision has few
// values between the poles and the unit circle.
double dampingTolerance(const Corner& corner)
{
    return (corner.cutoff < 10.0F ? 5e-4 : 2e-4) * std::max(1.0, 0.5 * corner.q);
}

TEST_P(DesignedCorners, LowPassHasGainQAtTheCorner)
{
    const auto [cutoff, q] = GetParam();

    const auto section = KOVIIRDesigner::createLowPass(cutoff, q, 1.0F, rate);

    EXPECT_NEAR(gainAt(section, cutoff) / q, 1.0, dampingTolerance(GetParam()));
}

TEST_P(DesignedCorners, HighPassHasGainQAtTheCorner)
{
    const auto [cutoff, q] = GetParam();

    const auto section = KOVIIRDesigner::createHighPass(cutoff, q, 1.0F, rate);

    EXPECT_NEAR(gainAt(section, cutoff) / q, 1.0, dampingTolerance(GetParam()));
}

// At the corner the prototypes turn the phase by exactly a quarter: this pins the frequency itself, which the
// gain at a flat corner hardly does.
TEST_P(DesignedCorners, TurnThePhaseByAQuarterAtTheCorner)
{
    const auto [cutoff, q] = GetParam();

    const auto lowPass = KOVIIRDesigner::createLowPass(cutoff, q, 1.0F, rate);
    const auto highPass = KOVIIRDesigner::createHighPass(cutoff, q, 1.0F, rate);

    EXPECT_NEAR(std::arg(filtertesting::response(lowPass, cutoff)), -std::numbers::pi / 2.0, 1e-4);
    EXPECT_NEAR(std::arg(filtertesting::response(highPass, cutoff)), std::numbers::pi / 2.0, 1e-4);
}

TEST_P(DesignedCorners, LeaveThePassBandAtUnityAndStopTheOtherEnd)
{
    const auto [cutoff, q] = GetParam();

    const auto lowPass = KOVIIRDesigner::createLowPass(cutoff, q, 1.0F, rate);
    const auto highPass = KOVIIRDesigner::createHighPass(cutoff, q, 1.0F, rate);

    EXPECT_NEAR(gainAt(lowPass, 0.0), 1.0, 1e-6);
    EXPECT_NEAR(gainAt(highPass, rate / 2.0), 1.0, 1e-6);
    // The numerators have their double zero exactly there.
    EXPECT_EQ(lowPass.b0 - lowPass.b1 + lowPass.b2, 0.0F);
    EXPECT_EQ(highPass.b0 + highPass.b1 + highPass.b2, 0.0F);
}

TEST_P(DesignedCorners, GiveStableSections)
{
    const auto [cutoff, q] = GetParam();

    EXPECT_TRUE(isStable(KOVIIRDesigner::createLowPass(cutoff, q, 1.0F, rate)));
    EXPECT_TRUE(isStable(KOVIIRDesigner::createHighPass(cutoff, q, 1.0F, rate)));
}

// Those that the instrument uses (for the listening monitor at a base of 30 kHz), and corners near both ends.
INSTANTIATE_TEST_SUITE_P(
    Of, DesignedCorners,
    ::testing::Values(Corner{10.0F, 0.707F}, Corner{100.0F, 1.0F}, Corner{30000.0F, 1.0F},
                      Corner{13460.0F, 0.7F}, Corner{20500.0F, 2.0F}, Corner{19500.0F, 2.0F},
                      Corner{18500.0F, 1.0F}, Corner{25000.0F, 0.707F}, Corner{10000.0F, 0.707F},
                      Corner{2000.0F, 0.707F}, Corner{8000.0F, 0.707F}, Corner{22050.0F, 0.707F},
                      Corner{44100.0F, 0.707F}, Corner{4.0F, 0.707F}, Corner{4.0F, 2.0F},
                      Corner{24000.0F, 0.5F}, Corner{24001.0F, 5.0F}, Corner{47990.0F, 0.707F},
                      Corner{10.0F, 30.0F}, Corner{1000.0F, 0.02F}));

TEST(KOVIIRDesigner, ButterworthCornersStandThreeDecibelsDown)
{
    const auto lowPass = KOVIIRDesigner::createLowPass(2000.0F, 0.707F, 1.0F, rate);
    const auto highPass = KOVIIRDesigner::createHighPass(2000.0F, 0.707F, 1.0F, rate);

    EXPECT_NEAR(decibels(gainAt(lowPass, 2000.0)), -3.01, 0.01);
    EXPECT_NEAR(decibels(gainAt(highPass, 2000.0)), -3.01, 0.01);
}

TEST(KOVIIRDesigner, LowPassFallsTwelveDecibelsAnOctave)
{
    const auto section = KOVIIRDesigner::createLowPass(100.0F, 0.707F, 1.0F, rate);

    EXPECT_NEAR(decibels(gainAt(section, 1600.0) / gainAt(section, 800.0)), -12.04, 0.05);
}

TEST(KOVIIRDesigner, HighPassFallsTwelveDecibelsAnOctave)
{
    const auto section = KOVIIRDesigner::createHighPass(2000.0F, 0.707F, 1.0F, rate);

    EXPECT_NEAR(decibels(gainAt(section, 125.0) / gainAt(section, 250.0)), -12.04, 0.05);
}

TEST(KOVIIRDesigner, ButterworthSectionsAreFlatThroughTheirPassBand)
{
    const auto section = KOVIIRDesigner::createHighPass(10000.0F, 0.70710678F, 1.0F, rate);
    double before = gainAt(section, 100.0);

    for (double frequency = 200.0; frequency < 48000.0; frequency += 100.0) {
        const double here = gainAt(section, frequency);
        EXPECT_GE(here, before - 1e-9) << frequency << " Hz";
        EXPECT_LE(here, 1.0 + 1e-6) << frequency << " Hz";
        before = here;
    }
}

// |H| of the prototype is largest at the corner times sqrt(1 - 1 / (2 Q^2)), where it is Q / sqrt(1 - 1 / (4 Q^2)).
TEST(KOVIIRDesigner, AQualityFactorOfTwoPeaksNearTheCorner)
{
    constexpr double cutoff = 500.0;
    const auto section = KOVIIRDesigner::createLowPass(cutoff, 2.0F, 1.0F, rate);
    double peak = 0.0;
    double peakFrequency = 0.0;

    for (double frequency = 1.0; frequency < 2000.0; frequency += 1.0) {
        if (gainAt(section, frequency) > peak) {
            peak = gainAt(section, frequency);
            peakFrequency = frequency;
        }
    }

    EXPECT_NEAR(peak, 2.0 / std::sqrt(1.0 - 1.0 / 16.0), 1e-4);
    EXPECT_NEAR(peakFrequency, cutoff * std::sqrt(1.0 - 1.0 / 8.0), 1.0);
}

TEST(KOVIIRDesigner, TheThirdArgumentIsTheLinearGainOfThePassBand)
{
    const auto lowPass = KOVIIRDesigner::createLowPass(2000.0F, 0.707F, 2.5F, rate);
    const auto highPass = KOVIIRDesigner::createHighPass(2000.0F, 0.707F, -0.25F, rate);

    EXPECT_NEAR(filtertesting::response(lowPass, 0.0).real(), 2.5, 1e-6);
    EXPECT_NEAR(filtertesting::response(highPass, rate / 2.0).real(), -0.25, 1e-6);
}

TEST(KOVIIRDesigner, TheCornerFollowsTheSamplingRate)
{
    const auto section = KOVIIRDesigner::createLowPass(1000.0F, 0.707F, 1.0F, 8000.0F);

    EXPECT_NEAR(gainAt(section, 1000.0, 8000.0), 0.707, 1e-4);
}

TEST(KOVIIRDesigner, LowPassAtOrAboveHalfTheRateOnlyAppliesTheGain)
{
    for (const float cutoff : {48000.0F, 48001.0F, 96000.0F, 192000.0F, infinity}) {
        EXPECT_TRUE(onlyApplies(KOVIIRDesigner::createLowPass(cutoff, 0.707F, 1.5F, rate), 1.5F)) << cutoff;
    }
}

TEST(KOVIIRDesigner, HighPassAtOrBelowZeroOnlyAppliesTheGain)
{
    for (const float cutoff : {0.0F, -0.0F, -10.0F, -infinity}) {
        EXPECT_TRUE(onlyApplies(KOVIIRDesigner::createHighPass(cutoff, 0.707F, 1.5F, rate), 1.5F)) << cutoff;
    }
}

TEST(KOVIIRDesigner, LowPassAtOrBelowZeroIsTheLowestThereIs)
{
    const auto lowest = valuesOf(KOVIIRDesigner::createLowPass(3.84F, 0.7F, 1.0F, rate));

    for (const float cutoff : {0.0F, -1.0F, -1e9F, -infinity, 1e-30F}) {
        EXPECT_EQ(valuesOf(KOVIIRDesigner::createLowPass(cutoff, 0.7F, 1.0F, rate)), lowest) << cutoff;
    }
}

TEST(KOVIIRDesigner, HighPassAtOrAboveHalfTheRateIsTheHighestThereIs)
{
    const auto highest = valuesOf(KOVIIRDesigner::createHighPass(48000.0F - 3.84F, 0.7F, 1.0F, rate));

    for (const float cutoff : {48000.0F, 60000.0F, infinity}) {
        const auto section = KOVIIRDesigner::createHighPass(cutoff, 0.7F, 1.0F, rate);
        EXPECT_LT(gainAt(section, 47000.0), 2e-5) << cutoff;
        for (std::size_t i = 0; i < highest.size(); ++i) {
            // The corner as a float is not quite the clamped one.
            EXPECT_NEAR(valuesOf(section)[i], highest[i], 1e-3) << cutoff;
        }
    }
}

TEST(KOVIIRDesigner, ANotANumberCornerOrAnUselessRateOnlyAppliesTheGain)
{
    EXPECT_TRUE(onlyApplies(KOVIIRDesigner::createLowPass(notANumber, 0.7F, 2.0F, rate), 2.0F));
    EXPECT_TRUE(onlyApplies(KOVIIRDesigner::createHighPass(notANumber, 0.7F, 2.0F, rate), 2.0F));
    for (const float sampleRate : {0.0F, -96000.0F, infinity, -infinity, notANumber}) {
        EXPECT_TRUE(onlyApplies(KOVIIRDesigner::createLowPass(1e3F, 0.7F, 2.0F, sampleRate), 2.0F))
            << sampleRate;
        EXPECT_TRUE(onlyApplies(KOVIIRDesigner::createHighPass(1e3F, 0.7F, 2.0F, sampleRate), 2.0F))
            << sampleRate;
    }
}

TEST(KOVIIRDesigner, AUselessQualityFactorIsTakenAsButterworth)
{
    for (const float q : {0.0F, -1.0F, notANumber, -infinity}) {
        EXPECT_NEAR(gainAt(KOVIIRDesigner::createLowPass(1e3F, q, 1.0F, rate), 1e3),
                    std::numbers::sqrt2 / 2.0, 1e-4)
            << q;
    }
}

TEST(KOVIIRDesigner, AnUselessGainIsTakenAsOne)
{
    for (const float gain : {notANumber, infinity, -infinity}) {
        EXPECT_NEAR(gainAt(KOVIIRDesigner::createLowPass(1e3F, 0.7F, gain, rate), 0.0), 1.0, 1e-6) << gain;
        EXPECT_NEAR(gainAt(KOVIIRDesigner::createHighPass(1e3F, 0.7F, gain, rate), 48e3), 1.0, 1e-6) << gain;
    }
}

TEST(KOVIIRDesigner, EveryCombinationOfArgumentsGivesAFiniteStableSection)
{
    const float largest = std::numeric_limits<float>::max();
    const float smallest = std::numeric_limits<float>::denorm_min();
    const std::vector<float> extremes = {
        0.0F,   -0.0F,   smallest, -smallest, 1e-20F,   0.01F,     0.707F,    1.0F,    3.0F,
        100.0F, 1e4F,    23999.0F, 24000.F,   24001.0F, 47999.F,   47999.99F, 48000.F, 1e6F,
        1e20F,  largest, -largest, -5.0F,     infinity, -infinity, notANumber};

    for (const float cutoff : extremes) {
        for (const float q : extremes) {
            for (const float sampleRate : extremes) {
                for (const float gain : {1.0F, largest, notANumber}) {
                    for (const auto& section :
                         {KOVIIRDesigner::createLowPass(cutoff, q, gain, sampleRate),
                          KOVIIRDesigner::createHighPass(cutoff, q, gain, sampleRate)}) {
                        ASSERT_TRUE(allFinite(section) && isStable(section))
                            << cutoff << " Hz, Q " << q << ", gain " << gain << ", " << sampleRate << " Hz";
                    }
                }
            }
        }
    }
}

TEST(KOVIIRDesigner, EveryCornerOfTheBandGivesAStableSection)
{
    for (int cutoff = -100; cutoff <= 96000; ++cutoff) {
        for (const float q : {0.01F, 0.707F, 2.0F, 1000.0F}) {
            const auto corner = static_cast<float>(cutoff);
            ASSERT_TRUE(isStable(KOVIIRDesigner::createLowPass(corner, q, 1.0F, rate))) << cutoff << ' ' << q;
            ASSERT_TRUE(isStable(KOVIIRDesigner::createHighPass(corner, q, 1.0F, rate)))
                << cutoff << ' ' << q;
        }
    }
}

}  // namespace
