// Every variant that this processor runs is held to plain sums in double precision.
#include "tools/beamform/beamkernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

namespace {

using kovtools::BeamKernels;
using kovtools::beamKernelVariants;

constexpr double fullTurn = 6.283185307179586;

std::vector<float> randomNumbers(std::size_t count, float limit, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> even(-limit, limit);
    std::vector<float> numbers(count);
    for (float& number : numbers) {
        number = even(random);
    }
    return numbers;
}

TEST(BeamKernels, SteerByTheExactPhaseForAnyDelay)
{
    std::vector<float> advances = randomNumbers(1003, 1e-3F, 1);
    for (const float exact : {0.0F, 1.0F / 65536.0F, -1.0F / 65536.0F, 0.5F / 16384.0F, 0.25F / 16384.0F}) {
        advances.push_back(exact);
    }
    const auto count = static_cast<int>(advances.size());
    for (const BeamKernels& kernels : beamKernelVariants()) {
        for (const float frequency : {16384.0F, 8000.0F, 45000.0F}) {
            std::vector<float> real(advances.size());
            std::vector<float> imaginary(advances.size());

            kernels.steer(advances.data(), count, frequency, real.data(), imaginary.data());

            for (std::size_t i = 0; i < advances.size(); ++i) {
                // The product is rounded to single precision, a 24th bit of at most 45 turns.
                const double turns = static_cast<double>(advances[i] * frequency);
                EXPECT_NEAR(real[i], std::cos(fullTurn * turns), 1e-6) << kernels.name << " " << turns;
                EXPECT_NEAR(imaginary[i], std::sin(fullTurn * turns), 1e-6) << kernels.name << " " << turns;
            }
        }
    }
}

TEST(BeamKernels, AddThePowersOfPlainSums)
{
    constexpr int lanes = BeamKernels::lanes;
    constexpr int looks = BeamKernels::looks;
    for (const BeamKernels& kernels : beamKernelVariants()) {
        for (const int microphones : {1, 2, 7, 208}) {
            const auto count = static_cast<std::size_t>(microphones);
            const std::vector<float> group = randomNumbers(count * 2 * lanes, 1.0F, 2);
            const std::vector<float> real = randomNumbers(count * looks, 1.0F, 3);
            const std::vector<float> imaginary = randomNumbers(count * looks, 1.0F, 4);
            std::vector<float> powers(looks * lanes, 3.0F);

            kernels.addPowers(group.data(), microphones, real.data(), imaginary.data(), 0.5F, powers.data());

            for (std::size_t look = 0; look < looks; ++look) {
                for (std::size_t lane = 0; lane < lanes; ++lane) {
                    std::complex<double> sum = 0.0;
                    for (std::size_t m = 0; m < count; ++m) {
                        const std::complex<double> value(group[m * 2 * lanes + lane],
                                                         group[(m * 2 + 1) * lanes + lane]);
                        sum +=
                            value * std::complex<double>(real[look * count + m], imaginary[look * count + m]);
                    }
                    const double expected = 3.0 + 0.5 * std::norm(sum);
                    EXPECT_NEAR(powers[look * lanes + lane], expected,
                                1e-6 * (expected + 1.0) * std::sqrt(microphones))
                        << kernels.name << " " << microphones << " microphones";
                }
            }
        }
    }
}

}  // namespace
