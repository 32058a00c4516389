// The building blocks of the pulse detector, one by one.
#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include "pulsefixture.h"
#include "pulseoracle.h"
#include "tests/support/bits.h"

namespace {

using namespace pulsefixture;
using testsupport::sameBits;

Samples noise(std::size_t n, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> normal(0.0F, 1.0F);
    Samples samples(n);
    for (float& sample : samples) {
        sample = normal(random);
    }
    return samples;
}

class PulseBlocks : public ::testing::Test
{
protected:
    KOVPluseDetection detector{96000, 100, 1};
};

TEST_F(PulseBlocks, FindTheFirstOfTheLargestValuesAboveZero)
{
    Samples x{-1.0F, 2.0F, 7.0F, 7.0F, 3.0F};
    int index = 9;

    EXPECT_EQ(detector.KOV_FindMax(x.data(), 5, index), 7.0F);
    EXPECT_EQ(index, 2);
}

TEST_F(PulseBlocks, FindNoLargestValueWhereNoneIsAboveZero)
{
    Samples x{-1.0F, 0.0F, -7.0F};
    int index = 9;

    EXPECT_EQ(detector.KOV_FindMax(x.data(), 3, index), 0.0F);
    EXPECT_EQ(index, -1);
    index = 9;
    EXPECT_EQ(detector.KOV_FindMax(x.data(), 0, index), 0.0F);
    EXPECT_EQ(index, -1);
}

TEST_F(PulseBlocks, FindTheFirstOfTheSmallestValues)
{
    Samples x{5.0F, -2.0F, 7.0F, -2.0F};
    int index = 9;

    EXPECT_EQ(detector.KOV_FindMin(x.data(), 4, index), -2.0F);
    EXPECT_EQ(index, 1);
}

TEST_F(PulseBlocks, FindNoSmallestValueInNothingNorAboveTheirStart)
{
    Samples x{100000.0F, 99999.0F};
    int index = 9;

    EXPECT_EQ(detector.KOV_FindMin(x.data(), 0, index), 99999.0F);
    EXPECT_EQ(index, 9);
    EXPECT_EQ(detector.KOV_FindMin(x.data(), 2, index), 99999.0F);
    EXPECT_EQ(index, 9);
}

TEST_F(PulseBlocks, RescaleToOneAndSilenceTheLowestFifth)
{
    Samples x{1.0F, 2.0F, 3.0F, 1.5F, 11.0F};

    detector.KOV_Rescale(x.data(), 5);

    EXPECT_EQ(x, (Samples{0.0F, 0.0F, 0.2F, 0.0F, 1.0F}));
}

TEST_F(PulseBlocks, RescaleAConstantToNoNumbers)
{
    for (const float constant : {3.0F, 0.0F}) {
        Samples x(4, constant);

        detector.KOV_Rescale(x.data(), 4);

        for (const float value : x) {
            EXPECT_TRUE(std::isnan(value));
        }
    }
}

TEST_F(PulseBlocks, GiveTheMeanSquareAsEnergy)
{
    Samples x{1.0F, -2.0F, 3.0F, 4.0F};
    float energy = 0.0F;

    detector.KOV_STE(x.data(), 4, energy);
    EXPECT_EQ(energy, 7.5F);

    detector.KOV_STE(x.data(), 0, energy);
    EXPECT_TRUE(std::isnan(energy));
    energy = 0.0F;
    detector.KOV_STE(x.data(), -3, energy);
    EXPECT_TRUE(std::isnan(energy));
}

class PulseFilters : public PulseBlocks, public ::testing::WithParamInterface<int>
{
};

TEST_P(PulseFilters, AgreeWithThePlainOneBitForBit)
{
    const auto order = static_cast<std::size_t>(GetParam());
    Samples a = noise(order, 4);
    Samples b = noise(order, 5);
    for (float& coefficient : a) {
        coefficient *= 0.2F;
    }
    a[0] = 1.0F;
    for (const std::size_t n : {0, 1, 2, 3, 7, 500}) {
        Samples x = noise(n, 6);
        const Samples expected = pulseoracle::filtered(x, a, b);

        detector.KOV_Filter(x.data(), static_cast<int>(n), a.data(), b.data(), GetParam());

        for (std::size_t i = 0; i < n; ++i) {
            ASSERT_TRUE(sameBits(expected[i], x[i])) << "sample " << i << " of " << n;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Orders, PulseFilters, ::testing::Values(1, 2, 3, 8),
                         [](const auto& order) { return "Order" + std::to_string(order.param); });

TEST_F(PulseBlocks, NormaliseTheCoefficientsOfAFilterInPlace)
{
    Samples a{2.0F, -1.0F};
    Samples b{4.0F, 1.0F};
    Samples x{1.0F, 0.0F, 0.0F};

    detector.KOV_Filter(x.data(), 3, a.data(), b.data(), 2);

    EXPECT_EQ(a, (Samples{1.0F, -0.5F}));
    EXPECT_EQ(b, (Samples{2.0F, 0.5F}));
    EXPECT_EQ(x, (Samples{2.0F, 1.5F, 0.75F}));
}

TEST_F(PulseBlocks, TakeALeadingCoefficientNextToOneAsOne)
{
    const float nearly = std::nextafter(1.0F, 0.0F);  // 6e-8 away
    Samples a{nearly, -0.3F};
    Samples b{0.7F, 0.1F};
    Samples x{1.0F};

    detector.KOV_Filter(x.data(), 1, a.data(), b.data(), 2);

    EXPECT_EQ(a, (Samples{1.0F, -0.3F}));
    EXPECT_EQ(b, (Samples{0.7F, 0.1F}));
}

TEST_F(PulseBlocks, LeaveASignalAloneWithoutCoefficients)
{
    Samples x{1.0F, 2.0F};

    detector.KOV_Filter(x.data(), 2, nullptr, nullptr, 0);

    EXPECT_EQ(x, (Samples{1.0F, 2.0F}));
}

TEST_F(PulseBlocks, MeasureTheFloorBehindALowPassWithoutTouchingTheSignal)
{
    Samples x = noise(1000, 8);
    const Samples before = x;
    float floor = 0.0F;

    detector.KOV_NoiseFloor(x.data(), 1000, floor);

    EXPECT_TRUE(sameBits(floor, pulseoracle::noiseFloor(before)));
    EXPECT_EQ(x, before);
}

TEST_F(PulseBlocks, MeasureAConstantButHardlyATone)
{
    Samples constant(20000, 1.0F);
    Samples tone(20000);
    for (std::size_t i = 0; i < tone.size(); ++i) {
        tone[i] = std::sin(static_cast<float>(i));  // 15 kHz at 96 kHz
    }
    float floor = 0.0F;

    detector.KOV_NoiseFloor(constant.data(), 20000, floor);
    EXPECT_NEAR(floor, 1.0F, 0.01F);
    detector.KOV_NoiseFloor(tone.data(), 20000, floor);
    EXPECT_LT(floor, 1e-4F);
}

TEST_F(PulseBlocks, GiveTheMagnitudeOfWhatIsDetected)
{
    feed(detector, {{-1.0F, 2.0F, -3.0F}}, 0);
    Samples magnitude(40000, -1.0F);

    detector.KOV_Abs(magnitude.data(), 40000);

    EXPECT_EQ(Samples(magnitude.begin(), magnitude.begin() + 4), (Samples{1.0F, 2.0F, 3.0F, 0.0F}));
    EXPECT_EQ(magnitude[36862], 0.0F);
    EXPECT_EQ(magnitude[36863], -1.0F) << "beyond the buffer";
}

TEST_F(PulseBlocks, EndASearchOfMoreThanTheBufferHolds)
{
    Samples envelope(40000, 0.0F);
    envelope[39999] = 1.0F;
    envelope[500] = 0.5F;

    detector.KOV_MaxPulseSegment(envelope.data(), 40000);

    EXPECT_EQ(envelope[500], 0.0F);
    EXPECT_EQ(envelope[39999], 1.0F);
}

TEST_F(PulseBlocks, EndASearchBelowAFifth)
{
    Samples envelope(1000, 0.0F);
    envelope[500] = 0.19F;

    detector.KOV_MaxPulseSegment(envelope.data(), 1000);

    EXPECT_EQ(envelope[500], 0.19F);
}

// A quiet stretch of 50 samples ends a burst; half a segment around it is cleared as well.
TEST_F(PulseBlocks, ClearABurstWithHalfASegmentAround)
{
    Samples envelope(1000, 0.0F);
    envelope[400] = 0.3F;
    envelope[449] = 1.0F;  // 49 samples on: the same burst
    envelope[600] = 0.3F;
    feed(detector, {envelope}, 0);
    Samples searched = envelope;
    searched[349] = searched[350] = searched[498] = searched[499] = 0.1F;  // quiet, but visible

    detector.KOV_MaxPulseSegment(searched.data(), 1000);

    EXPECT_EQ(searched[349], 0.1F);
    EXPECT_EQ(searched[350], 0.0F);
    EXPECT_EQ(searched[498], 0.0F);
    EXPECT_EQ(searched[499], 0.1F) << "the end lies one sample before what one may expect";
}

class PulseEnvelopes : public PulseBlocks, public ::testing::WithParamInterface<int>
{
};

// The analytic signal by its definition: one-sided spectrum of the zero-padded signal.
TEST_P(PulseEnvelopes, AreTheMagnitudeOfTheAnalyticSignal)
{
    const auto n = static_cast<std::size_t>(GetParam());
    Samples x = noise(n, 12);
    const int padded = static_cast<int>(std::exp2(std::ceil(std::log10(GetParam()) / 0.3010299956639812)));
    std::vector<double> expected;
    const auto turn = [padded](int k, std::size_t i) {
        return std::polar(1.0, 2.0 * std::numbers::pi * k * static_cast<double>(i) / padded);
    };
    std::vector<std::complex<double>> spectrum;
    for (int k = 0; k <= padded / 2; ++k) {
        std::complex<double> bin = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            bin += static_cast<double>(x[i]) * std::conj(turn(k, i));
        }
        spectrum.push_back(k == 0 || 2 * k == padded ? bin : 2.0 * bin);
    }
    for (std::size_t i = 0; i < n; ++i) {
        std::complex<double> value = 0.0;
        for (int k = 0; k <= padded / 2; ++k) {
            value += spectrum[static_cast<std::size_t>(k)] * turn(k, i);
        }
        expected.push_back(std::abs(value) / padded);
    }

    detector.KOV_Hilbert(x.data(), GetParam());

    for (std::size_t i = 0; i < n; ++i) {
        ASSERT_NEAR(x[i], expected[i], 1e-5) << "sample " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, PulseEnvelopes, ::testing::Values(1, 2, 3, 8, 100, 127, 128, 129),
                         [](const auto& samples) { return std::to_string(samples.param) + "Samples"; });

TEST_F(PulseBlocks, GiveTheEnvelopeOfAToneAsItsAmplitude)
{
    Samples x(4096);
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = 0.5F *
               static_cast<float>(std::cos(2.0 * std::numbers::pi * 100.0 * static_cast<double>(i) / 4096.0));
    }

    detector.KOV_Hilbert(x.data(), 4096);

    for (const float value : x) {
        ASSERT_NEAR(value, 0.5F, 1e-5);
    }
}

TEST_F(PulseBlocks, LeaveAnEmptySignalAlone)
{
    Samples x{3.0F};

    detector.KOV_Hilbert(x.data(), 0);
    detector.KOV_Hilbert(x.data(), -4);

    EXPECT_EQ(x[0], 3.0F);
}

TEST_F(PulseBlocks, TakeNegativeLengthsAsEmpty)
{
    for (const int n : {-1, std::numeric_limits<int>::min()}) {
        Samples x{3.0F};
        Samples a{1.0F, -0.5F};
        Samples b{2.0F, 1.0F};
        float floor = 0.0F;

        detector.KOV_Abs(x.data(), n);
        detector.KOV_Rescale(x.data(), n);
        detector.KOV_Filter(x.data(), n, a.data(), b.data(), 2);
        detector.KOV_NoiseFloor(x.data(), n, floor);
        detector.KOV_MaxPulseSegment(x.data(), n);

        EXPECT_EQ(x[0], 3.0F);
        EXPECT_TRUE(std::isnan(floor));
    }
}

TEST_F(PulseBlocks, LeaveThePlansOfOtherObjectsValid)
{
    KOVPrpdProcess prpd("no such folder");
    Samples samples = noise(100000, 3);
    prpd.audioInput(samples.data(), 100000);
    ASSERT_TRUE(prpd.updatePdd());
    const float before = prpd.getPddFrameData(nullptr, 0).F1;

    Samples x = noise(1000, 4);
    detector.KOV_Hilbert(x.data(), 1000);
    prpd.updatePdd();

    EXPECT_GT(before, 0.0F);
    EXPECT_EQ(prpd.getPddFrameData(nullptr, 0).F1, before);
}

}  // namespace
