// The alignment test and its transforms.
#include <KOVDoaHandle/KOVAudio/kovmultmiccheck.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <memory>
#include <numbers>
#include <ostream>
#include <string>

#include <KOVDoaHandle/diagnostics/kovblas.h>
#include <KOVDoaHandle/foundation/engine/kovfftwindow.h>

#include "arraysignal.h"
#include "tests/support/bits.h"

using namespace miccheck;
using testsupport::sameBits;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t half = 48'000;

using Pairs = std::unique_ptr<float[][2]>;

Pairs makePairs(std::size_t n)
{
    return std::make_unique<float[][2]>(n);
}

// The transforms over a number of samples of the test's choice.
class Transforms : public KOVMultMicCheckPrivate
{
public:
    explicit Transforms(std::size_t n) { fillCount = static_cast<int>(n); }
};

// The lag, step by step through the exported transforms.
int plainLag(Transforms& transforms, Row a, Row b)
{
    const int n = transforms.fillCount;
    const Pairs spectrumA = makePairs(a.size());
    const Pairs spectrumB = makePairs(a.size());
    const Pairs product = makePairs(a.size());
    Row correlation(a.size());
    transforms.fftforward(a.data(), spectrumA.get());
    transforms.fftforward(b.data(), spectrumB.get());
    KOVBlas::CplxConJMul(spectrumA.get(), spectrumB.get(), product.get(), n);
    KOVBlas::CplxNomal(product.get(), n);
    transforms.fftBackward(product.get(), correlation.data());
    int place = 0;
    KOVBlas::findMax(correlation.data(), n, place);
    return ((place + (n >> 1)) % n) - (n >> 1);
}

TEST(MicCheckStore, HasARowOfOneSecondPerChannelAndIsEmpty)
{
    const KOVMultMicCheckPrivate store;

    EXPECT_EQ(store.samples->rows, 208);
    EXPECT_EQ(store.samples->cols, 96'000);
    EXPECT_EQ(store.fillCount, 0);
}

class MicCheckTransforms : public ::testing::TestWithParam<std::size_t>
{
protected:
    std::size_t n = GetParam();
    Transforms transforms{n};
};

TEST_P(MicCheckTransforms, GoForwardBehindTheWindow)
{
    Row x = noise(n, 1.0F, 1);
    KOVFFTWindow window(static_cast<int>(n), FFT_WINDOW_HANN, 0.0F, 0.0F, 0.0F);
    const Pairs found = makePairs(n);

    transforms.fftforward(x.data(), found.get());

    for (std::size_t k = 0; k < n; ++k) {
        std::complex<double> expected;
        for (std::size_t i = 0; i < n; ++i) {
            const double turns = static_cast<double>(i * k % n) / static_cast<double>(n);
            const float windowed = x[i] * window.data()->data[i];
            expected += double{windowed} * std::polar(1.0, -2.0 * std::numbers::pi * turns);
        }
        EXPECT_NEAR(found[k][0], expected.real(), 1e-5 * static_cast<double>(n)) << k;
        EXPECT_NEAR(found[k][1], expected.imag(), 1e-5 * static_cast<double>(n)) << k;
    }
}

TEST_P(MicCheckTransforms, GiveMagnitudesBackwardWithoutScaling)
{
    const Pairs bins = makePairs(n);
    const Row re = noise(n, 1.0F, 2);
    const Row im = noise(n, 1.0F, 3);
    for (std::size_t k = 0; k < n; ++k) {
        bins[k][0] = re[k];
        bins[k][1] = im[k];
    }
    Row found(n);

    transforms.fftBackward(bins.get(), found.data());

    for (std::size_t i = 0; i < n; ++i) {
        std::complex<double> expected;
        for (std::size_t k = 0; k < n; ++k) {
            const double turns = static_cast<double>(i * k % n) / static_cast<double>(n);
            expected += std::complex<double>(re[k], im[k]) * std::polar(1.0, 2.0 * std::numbers::pi * turns);
        }
        EXPECT_NEAR(found[i], std::abs(expected), 1e-5 * static_cast<double>(n)) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(All, MicCheckTransforms, ::testing::Values(1, 2, 31, 100, 256));

TEST(MicCheckTransform, DoesNothingForNoSamples)
{
    Transforms transforms(0);

    transforms.fftforward(nullptr, nullptr);
    transforms.fftBackward(nullptr, nullptr);

    EXPECT_EQ(transforms.gccphat(nullptr, nullptr), 0);
}

class MicCheckLag : public ::testing::TestWithParam<std::ptrdiff_t>
{
};

TEST_P(MicCheckLag, IsNegativeWhereTheSecondIsLate)
{
    const std::ptrdiff_t delay = GetParam();
    for (const std::size_t n : {std::size_t{4000}, std::size_t{4001}}) {
        Transforms transforms(n);
        // Far from the ends, where the window hides what comes round from the other side.
        Row a(n);
        const Row burst = noise(n / 2, 1.0F, 4);
        std::copy(burst.begin(), burst.end(), a.begin() + static_cast<std::ptrdiff_t>(n / 4));
        Row b = delayed(a, delay);

        EXPECT_EQ(transforms.gccphat(a.data(), b.data()), -delay) << n << " samples";
        EXPECT_EQ(transforms.gccphat(b.data(), a.data()), delay) << n << " samples";
    }
}

INSTANTIATE_TEST_SUITE_P(All, MicCheckLag, ::testing::Values(0, 1, -1, 10, -10, 99, 100, -100, 500));

TEST(MicCheckLags, ReachFromMinusHalfTheLengthToJustBelowHalf)
{
    for (const int n : {8, 9}) {
        Transforms transforms(static_cast<std::size_t>(n));
        // One click in each, not at the ends, where the window is zero.
        for (int placeInA = 1; placeInA < n - 1; ++placeInA) {
            for (int placeInB = 1; placeInB < n - 1; ++placeInB) {
                Row a(static_cast<std::size_t>(n));
                Row b(static_cast<std::size_t>(n));
                a[static_cast<std::size_t>(placeInA)] = 1.0F;
                b[static_cast<std::size_t>(placeInB)] = 1.0F;
                int expected = placeInA - placeInB;
                if (expected < -(n / 2)) {
                    expected += n;
                } else if (expected > (n - 1) / 2) {
                    expected -= n;
                }

                EXPECT_EQ(transforms.gccphat(a.data(), b.data()), expected)
                    << placeInA << " against " << placeInB << " of " << n;
            }
        }
    }
}

struct SelfPair
{
    const char* name;
    Row row;
};

void PrintTo(const SelfPair& pair, std::ostream* out)
{
    *out << pair.name;
}

class MicCheckSelf : public ::testing::TestWithParam<SelfPair>
{
};

// Why channel 0 need not be compared with itself a hundred times.
TEST_P(MicCheckSelf, IsAlwaysAligned)
{
    Row row = GetParam().row;
    Transforms transforms(row.size());

    EXPECT_EQ(transforms.gccphat(row.data(), row.data()), 0);
}

Row withNaN()
{
    Row row = noise(half, 0.1F, 5);
    row[1000] = notANumber;
    return row;
}

Row squareWave()
{
    Row row(half);
    for (std::size_t i = 0; i < half; ++i) {
        row[i] = i / 50 % 2 == 0 ? 0.3F : -0.3F;
    }
    return row;
}

INSTANTIATE_TEST_SUITE_P(All, MicCheckSelf,
                         ::testing::Values(SelfPair{"Noise", noise(half, 0.1F, 6)},
                                           SelfPair{"OddLength", noise(half + 1, 0.1F, 7)},
                                           SelfPair{"FullLength", noise(96'000, 0.1F, 8)},
                                           SelfPair{"Faint", noise(half, 1e-20F, 9)},
                                           SelfPair{"Vanishing", noise(half, 1e-23F, 10)},
                                           SelfPair{"Silence", Row(half, 0.0F)},
                                           SelfPair{"Constant", Row(half, 0.5F)},
                                           SelfPair{"SquareWave", squareWave()}, SelfPair{"NaN", withNaN()}),
                         [](const auto& test) { return std::string(test.param.name); });

// Half a second of an array that is silent but for what the test puts in.
class MicCheckXcorr : public ::testing::Test
{
protected:
    Row& row(std::size_t channel) { return signal.rows[channel]; }

    MicCheckResult run()
    {
        KOVMultMicCheck check;
        check.fillAudio(signal.from(), static_cast<int>(signal.rows[0].size()));
        return check.checkXcorr();
    }

    ArraySignal signal{half};
};

TEST_F(MicCheckXcorr, GivesMinusTenToAChannelThatIsTenSamplesLate)
{
    row(0) = noise(half, 0.1F, 10);
    row(4) = delayed(row(0), 10);

    const MicCheckResult result = run();

    EXPECT_EQ(result.values[4], -10.0F);
    EXPECT_TRUE(result.flags[4]);
    EXPECT_EQ(result.values[0], 0.0F);
    EXPECT_TRUE(result.flags[0]);
}

TEST_F(MicCheckXcorr, GivesBothOfAPairTheLagAndPassesUpToNinetyNineSamples)
{
    row(1) = noise(half, 0.1F, 11);
    row(5) = delayed(row(1), -99);
    row(2) = noise(half, 0.1F, 12);
    row(7) = delayed(row(2), 100);
    row(3) = noise(half, 0.1F, 13);
    row(6) = delayed(row(3), 99);

    const MicCheckResult result = run();

    EXPECT_EQ(result.values[1], 99.0F);
    EXPECT_EQ(result.values[5], 99.0F);
    EXPECT_TRUE(result.flags[1] && result.flags[5]);
    EXPECT_EQ(result.values[2], -100.0F);
    EXPECT_EQ(result.values[7], -100.0F);
    EXPECT_FALSE(result.flags[2] || result.flags[7]);
    EXPECT_EQ(result.values[3], -99.0F);
    EXPECT_EQ(result.values[6], -99.0F);
    EXPECT_TRUE(result.flags[3] && result.flags[6]);
}

TEST_F(MicCheckXcorr, PassesChannelZeroWhateverItsPartnerSays)
{
    row(0) = noise(half, 0.1F, 14);
    row(4) = delayed(row(0), 500);

    const MicCheckResult result = run();

    EXPECT_EQ(result.values[4], -500.0F);
    EXPECT_FALSE(result.flags[4]);
    EXPECT_EQ(result.values[0], 0.0F);
    EXPECT_TRUE(result.flags[0]);
}

TEST_F(MicCheckXcorr, GivesSilentAndSpoiledChannelsLagZero)
{
    row(1) = noise(half, 0.1F, 15);
    row(2) = noise(half, 0.1F, 16);
    row(7) = delayed(row(2), 30);
    row(7)[20] = notANumber;

    const MicCheckResult result = run();

    for (const std::size_t channel : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U}) {
        EXPECT_EQ(result.values[channel], 0.0F) << "channel " << channel;
        EXPECT_TRUE(result.flags[channel]) << "channel " << channel;
    }
}

TEST_F(MicCheckXcorr, LeavesTheOtherChannelsOut)
{
    signal = differentNoise(half, 0.1F);
    row(9) = row(8);

    const MicCheckResult result = run();

    for (std::size_t channel = 8; channel < channels; ++channel) {
        EXPECT_FALSE(result.flags[channel]) << "channel " << channel;
        EXPECT_EQ(result.values[channel], 0.0F) << "channel " << channel;
    }
}

class MicCheckTable : public ::testing::TestWithParam<std::size_t>
{
};

TEST_P(MicCheckTable, GivesWhatAllItsPairsGiveOneAfterTheOther)
{
    ArraySignal signal = differentNoise(GetParam(), 0.1F);
    signal.rows[7] = delayed(signal.rows[2], -40);
    Transforms transforms(GetParam());
    bool flags[channels] = {};
    float values[channels] = {};
    constexpr std::size_t firsts[] = {0, 1, 2, 3};
    constexpr std::size_t seconds[] = {4, 5, 7, 6};
    for (std::size_t pair = 0; pair < 104; ++pair) {
        const std::size_t p = pair < 4 ? firsts[pair] : 0;
        const std::size_t q = pair < 4 ? seconds[pair] : 0;
        const int lag = plainLag(transforms, signal.rows[p], signal.rows[q]);
        if (pair < 5) {
            EXPECT_EQ(lag, transforms.gccphat(signal.rows[p].data(), signal.rows[q].data()))
                << "pair " << pair;
        }
        values[p] = values[q] = static_cast<float>(lag);
        if (-99 <= lag && lag <= 99) {
            flags[p] = flags[q] = true;
        }
    }
    KOVMultMicCheck check;
    check.fillAudio(signal.from(), static_cast<int>(GetParam()));

    const MicCheckResult result = check.checkXcorr();

    for (std::size_t channel = 0; channel < channels; ++channel) {
        EXPECT_EQ(flags[channel], result.flags[channel]) << "channel " << channel;
        EXPECT_TRUE(sameBits(values[channel], result.values[channel])) << "channel " << channel;
    }
    EXPECT_EQ(result.values[7], 40.0F);
}

INSTANTIATE_TEST_SUITE_P(All, MicCheckTable, ::testing::Values(48'000, 50'001));

}  // namespace
