#include "tools/beamform/delayandsum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

namespace {

using kovtools::BeamformedBin;
using kovtools::DelayAndSum;
using kovtools::Direction;
using kovtools::FieldOfView;
using kovtools::Microphone;
using kovtools::MicrophoneSpectra;
using kovtools::steeringPhase;
using kovtools::sunflowerSpiral;

Direction atAzimuth(double degrees)
{
    const double angle = degrees * std::acos(-1.0) / 180.0;
    return {std::sin(angle), 0.0, std::cos(angle)};
}

// One plane wave of amplitude 1.
MicrophoneSpectra planeWave(const std::vector<Microphone>& array, const Direction& from, double frequency)
{
    MicrophoneSpectra spectra(static_cast<int>(array.size()), 1);
    for (std::size_t m = 0; m < array.size(); ++m) {
        const double phase = -steeringPhase(array[m], from, frequency);
        spectra.set(static_cast<int>(m), 0, std::complex<float>(std::polar(1.0, phase)));
    }
    return spectra;
}

std::vector<float> response(const Direction& from, const std::vector<Direction>& looks, double frequency)
{
    const std::vector<Microphone> array = sunflowerSpiral();
    std::vector<float> powers(looks.size());
    DelayAndSum(array, looks).addPowers({{frequency, 1.0F, planeWave(array, from, frequency)}}, 1, powers);
    return powers;
}

TEST(DelayAndSum, ReachesAMicrophoneInTheDirectionOfTheSourceEarlier)
{
    // 0.1 m nearer to the source is one wavelength at 3430 Hz.
    EXPECT_NEAR(steeringPhase({0.1, 0.0}, {1.0, 0.0, 0.0}, 3430.0), 2.0 * std::acos(-1.0), 1e-9);
}

TEST(DelayAndSum, PassesAWaveFromTheLookDirectionUnchanged)
{
    const std::vector<float> powers = response(atAzimuth(-20.0), {atAzimuth(-20.0)}, 20e3);

    EXPECT_NEAR(powers[0], 1.0F, 1e-4F);
}

TEST(DelayAndSum, HasTheBeamWidthOfACircularAperture)
{
    // An evenly filled circle of diameter D falls to half its power at 0.514 wavelengths / D from the axis.
    const double frequency = 20e3;
    const double halfPower = std::asin(0.514 * (343.0 / frequency) / 0.20) * 180.0 / std::acos(-1.0);

    const std::vector<float> powers =
        response(atAzimuth(0.0), {atAzimuth(halfPower), atAzimuth(-halfPower)}, frequency);

    EXPECT_NEAR(powers[0], 0.5F, 0.04F);
    EXPECT_NEAR(powers[1], 0.5F, 0.04F);
}

TEST(DelayAndSum, HasSideLobesButNoGratingLobes)
{
    const std::vector<Direction> looks = FieldOfView(640, 480).cellDirections(96, 128);

    const std::vector<float> powers = response(atAzimuth(0.0), looks, 30e3);

    float strongest = 0.0F;
    for (std::size_t i = 0; i < looks.size(); ++i) {
        if (std::hypot(looks[i].x, looks[i].y) > 0.12) {  // outside the main lobe
            strongest = std::max(strongest, powers[i]);
        }
    }
    EXPECT_GT(10.0F * std::log10(strongest), -25.0F);
    EXPECT_LT(10.0F * std::log10(strongest), -10.0F);
}

// Spectra of random numbers, and the same as they were drawn: microphones x snapshots.
struct RandomSpectra
{
    RandomSpectra(int microphones, int snapshots, std::mt19937& random)
        : packed(microphones, snapshots), plain(static_cast<std::size_t>(microphones * snapshots))
    {
        std::normal_distribution<double> normal;
        for (int m = 0; m < microphones; ++m) {
            for (int s = 0; s < snapshots; ++s) {
                const std::complex<double> value(normal(random), normal(random));
                plain[static_cast<std::size_t>(m * snapshots + s)] = value;
                packed.set(m, s, std::complex<float>(value));
            }
        }
    }

    MicrophoneSpectra packed;
    std::vector<std::complex<double>> plain;
};

double plainPower(const std::vector<Microphone>& array, const RandomSpectra& spectra, int snapshot,
                  const Direction& look, double distance, double frequency)
{
    std::complex<double> sum = 0.0;
    for (std::size_t m = 0; m < array.size(); ++m) {
        const double phase = 2.0 * std::acos(-1.0) * frequency * kovtools::advance(array[m], look, distance);
        sum += spectra.plain[m * static_cast<std::size_t>(spectra.packed.snapshots()) +
                             static_cast<std::size_t>(snapshot)] *
               std::polar(1.0, phase);
    }
    return std::norm(sum / static_cast<double>(array.size()));
}

TEST(DelayAndSum, EqualsThePlainSumForAnySpectraAndAnyNumberOfSnapshots)
{
    std::mt19937 random(7);
    const std::vector<Microphone> array = sunflowerSpiral(13, 0.2);
    const std::vector<Direction> looks = FieldOfView(640, 480).cellDirections(3, 5);
    for (const int snapshots : {1, 7, 8, 9, 17}) {
        const RandomSpectra low(13, snapshots, random);
        const RandomSpectra high(13, snapshots, random);
        std::vector<float> powers(looks.size() * static_cast<std::size_t>(snapshots), 1.0F);

        DelayAndSum(array, looks, 0.7)
            .addPowers({{15e3, 1.0F, low.packed}, {31e3, 0.25F, high.packed}}, 1, powers);

        for (std::size_t look = 0; look < looks.size(); ++look) {
            for (int s = 0; s < snapshots; ++s) {
                const double expected = 1.0 + plainPower(array, low, s, looks[look], 0.7, 15e3) +
                                        0.25 * plainPower(array, high, s, looks[look], 0.7, 31e3);
                const float found =
                    powers[look * static_cast<std::size_t>(snapshots) + static_cast<std::size_t>(s)];
                // Single precision, a dozen terms of about 1.
                EXPECT_NEAR(found, expected, 1e-5)
                    << "look " << look << " snapshot " << s << " of " << snapshots;
            }
        }
    }
}

TEST(DelayAndSum, SumsRunsOfSnapshotsOfWhichTheLastMayBeShorter)
{
    std::mt19937 random(8);
    const std::vector<Microphone> array = sunflowerSpiral(9, 0.2);
    const std::vector<Direction> looks = FieldOfView(640, 480).cellDirections(1, 2);
    const RandomSpectra spectra(9, 11, random);
    std::vector<float> sums(2 * 3);

    DelayAndSum(array, looks).addPowers({{20e3, 1.0F, spectra.packed}}, 4, sums);

    for (std::size_t look = 0; look < 2; ++look) {
        double expected[3] = {};
        for (int s = 0; s < 11; ++s) {
            expected[s / 4] += plainPower(array, spectra, s, looks[look], kovtools::infinitelyFar, 20e3);
        }
        for (std::size_t run = 0; run < 3; ++run) {
            EXPECT_NEAR(sums[look * 3 + run], expected[run], 1e-5) << "look " << look << " run " << run;
        }
    }
}

}  // namespace
