// What stands out of a pattern's spectrum, by the definition of the discrete Fourier transform.
#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <ostream>
#include <vector>

#include "prpdfixture.h"

namespace {

using namespace prpdfixture;

struct Harmonic
{
    int number;  // times the mains frequency
    double amplitude;
};

// A level with harmonics of the mains, and a square wave that changes its sign with every page: its power lies in the
// odd multiples of half the mains frequency, so in none of the harmonics.
std::vector<float> signalOf(const std::vector<Harmonic>& harmonics, int cycleSamples)
{
    constexpr double level = 0.2;
    constexpr double square = 0.02;
    std::vector<float> samples(200000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const int at = static_cast<int>(i);
        double value = level + (at / (3 * cycleSamples) % 2 == 0 ? square : -square);
        for (const auto& [number, amplitude] : harmonics) {
            value += amplitude * std::cos(2.0 * std::numbers::pi * number * at / cycleSamples);
        }
        samples[i] = static_cast<float>(value);
    }
    return samples;
}

// Shares of the power above DC and below half the sampling rate.
struct Shares
{
    double harmonics;  // the first eight together
    double first;
    double second;
};

Shares sharesOf(const std::vector<float>& frame)
{
    const auto power = [&frame](std::size_t bin) {
        double re = 0.0;
        double im = 0.0;
        for (std::size_t i = 0; i < frame.size(); ++i) {
            const double angle = 2.0 * std::numbers::pi * static_cast<double>(bin * i % frame.size()) /
                                 static_cast<double>(frame.size());
            re += static_cast<double>(frame[i]) * std::cos(angle);
            im -= static_cast<double>(frame[i]) * std::sin(angle);
        }
        return re * re + im * im;
    };
    // Parseval: the squares hold every bin twice, except the first and the middle one.
    double squares = 0.0;
    for (const float value : frame) {
        squares += static_cast<double>(value) * static_cast<double>(value);
    }
    const double total =
        (squares * static_cast<double>(frame.size()) - power(0) - power(frame.size() / 2)) / 2.0;
    double harmonics = 0.0;
    for (std::size_t number = 1; number <= 8; ++number) {
        harmonics += power(10 * number);
    }
    return {harmonics / total, power(10) / total, power(20) / total};
}

struct Limit
{
    const char* name;
    std::vector<Harmonic> fixed;
    Harmonic searched;  // with this amplitude a discharge, without it noise
    double Shares::*share;
    double limit;  // what that share must exceed
};

void PrintTo(const Limit& limit, std::ostream* stream)
{
    *stream << limit.name;
}

class PrpdLimits : public PrpdFixture, public ::testing::WithParamInterface<Limit>
{
protected:
    // The shares in the pattern of the signal, and whether each poll took it for a discharge.
    bool isDischarge(PddMode mode, const std::vector<Harmonic>& harmonics, Shares& shares)
    {
        process->resetResult();
        process->setPddMode(mode);
        store(signalOf(harmonics, mode == PDD_MODE_60HZ ? 1600 : 1920));
        poll(26);
        std::vector<float> frame(mode == PDD_MODE_60HZ ? 2000 : 2400);
        const PRPDResult found = process->getPddFrameData(frame.data(), static_cast<int>(frame.size()));
        shares = sharesOf(frame);
        return found.coronaPercent + found.alongSurfacePercent > 50.0F;
    }
};

// Between the two sides of a limit, which the amplitudes come ever closer to.
TEST_P(PrpdLimits, DivideDischargesFromNoise)
{
    for (const PddMode mode : {PDD_MODE_50HZ, PDD_MODE_60HZ}) {
        double noise = 0.0;
        double discharge = GetParam().searched.amplitude;
        Shares below{};
        Shares above{};
        const auto isDischargeAt = [&](double amplitude, Shares& shares) {
            std::vector<Harmonic> harmonics = GetParam().fixed;
            harmonics.push_back({GetParam().searched.number, amplitude});
            return isDischarge(mode, harmonics, shares);
        };
        ASSERT_FALSE(isDischargeAt(noise, below));
        ASSERT_TRUE(isDischargeAt(discharge, above));

        for (int step = 0; step < 14; ++step) {
            const double middle = (noise + discharge) / 2.0;
            Shares shares{};
            const bool isAbove = isDischargeAt(middle, shares);
            (isAbove ? discharge : noise) = middle;
            (isAbove ? above : below) = shares;
        }

        const double limit = GetParam().limit;
        EXPECT_NEAR(below.*GetParam().share, limit, 1e-3 * limit);
        EXPECT_NEAR(above.*GetParam().share, limit, 1e-3 * limit);
    }
}

INSTANTIATE_TEST_SUITE_P(
    PrpdSpectrum, PrpdLimits,
    ::testing::Values(Limit{"AllHarmonicsTogether", {}, {1, 0.03}, &Shares::harmonics, 0.25},
                      Limit{"TheEighthIsOneOfThem", {{1, 0.0068}}, {8, 0.012}, &Shares::harmonics, 0.25},
                      Limit{"TheFirstAlone", {{3, 0.03}}, {1, 0.03}, &Shares::first, 0.05},
                      Limit{"TheSecondAlone", {{3, 0.03}}, {2, 0.03}, &Shares::second, 0.05}),
    [](const auto& limit) { return limit.param.name; });

using PrpdHarmonics = PrpdLimits;

TEST_F(PrpdHarmonics, EndWithTheEighth)
{
    Shares shares{};

    EXPECT_TRUE(isDischarge(PDD_MODE_50HZ, {{1, 0.0068}, {8, 0.012}}, shares));
    EXPECT_FALSE(isDischarge(PDD_MODE_50HZ, {{1, 0.0068}, {9, 0.012}}, shares));
}

}  // namespace
