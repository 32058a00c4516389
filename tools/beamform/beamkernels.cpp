// Each loop is written once, as an always-inlined function, and instantiated per instruction set by a thin wrapper
// that carries the target attribute. The build lets the compiler join products and sums in this file: that doubles
// the speed of the beamformer, and levels do not depend on their last bits.
#include "tools/beamform/beamkernels.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace kovtools {

namespace {

#define KOVTOOLS_INLINE [[gnu::always_inline]] inline

constexpr int lanes = BeamKernels::lanes;
constexpr int looks = BeamKernels::looks;

using Lanes [[gnu::vector_size(lanes * sizeof(float))]] = float;

// Sine and cosine of pi r for |r| <= 1/2 by their power series, then both of twice the angle.
KOVTOOLS_INLINE void steerLoop(const float* advances, int count, float frequency, float* __restrict real,
                               float* __restrict imaginary)
{
    constexpr float pi = 3.14159265F;
    for (int i = 0; i < count; ++i) {
        const float turns = advances[i] * frequency;
        const float half = turns < 0.0F ? -0.5F : 0.5F;
        const float x = pi * (turns - static_cast<float>(static_cast<std::int32_t>(turns + half)));
        const float y = x * x;
        const float sine =
            x * (1.0F + y * (-1.66666667e-1F +
                             y * (8.33333333e-3F +
                                  y * (-1.98412698e-4F + y * (2.75573192e-6F + y * -2.50521084e-8F)))));
        const float cosine =
            1.0F +
            y * (-0.5F + y * (4.16666667e-2F +
                              y * (-1.38888889e-3F +
                                   y * (2.48015873e-5F + y * (-2.75573192e-7F + y * 2.08767570e-9F)))));
        real[i] = 1.0F - 2.0F * sine * sine;
        imaginary[i] = 2.0F * sine * cosine;
    }
}

KOVTOOLS_INLINE void addPowersLoop(const float* group, int microphones, const float* real,
                                   const float* imaginary, float weight, float* powers)
{
    Lanes sumReal[looks] = {};
    Lanes sumImaginary[looks] = {};
    for (int m = 0; m < microphones; ++m, group += 2 * lanes) {
        Lanes re;
        Lanes im;
        std::memcpy(&re, group, sizeof re);
        std::memcpy(&im, group + lanes, sizeof im);
        for (int look = 0; look < looks; ++look) {
            const float factorReal = real[look * microphones + m];
            const float factorImaginary = imaginary[look * microphones + m];
            sumReal[look] += factorReal * re;
            sumImaginary[look] += factorReal * im;
            sumReal[look] -= factorImaginary * im;
            sumImaginary[look] += factorImaginary * re;
        }
    }
    for (int look = 0; look < looks; ++look) {
        const Lanes power = sumReal[look] * sumReal[look] + sumImaginary[look] * sumImaginary[look];
        for (int k = 0; k < lanes; ++k) {
            powers[look * lanes + k] += weight * power[k];
        }
    }
}

#define KOVTOOLS_BEAM_KERNELS(suffix, attributes)                                                 \
    attributes void steer##suffix(const float* advances, int count, float frequency, float* real, \
                                  float* imaginary)                                               \
    {                                                                                             \
        steerLoop(advances, count, frequency, real, imaginary);                                   \
    }                                                                                             \
    attributes void addPowers##suffix(const float* group, int microphones, const float* real,     \
                                      const float* imaginary, float weight, float* powers)        \
    {                                                                                             \
        addPowersLoop(group, microphones, real, imaginary, weight, powers);                       \
    }                                                                                             \
    constexpr BeamKernels kernels##suffix{#suffix, steer##suffix, addPowers##suffix};

KOVTOOLS_BEAM_KERNELS(Portable, )
#if defined(__x86_64__)
KOVTOOLS_BEAM_KERNELS(Avx2, [[gnu::target("avx2,fma")]])
#endif

// Fastest last.
std::span<const BeamKernels> supportedKernels()
{
#if defined(__x86_64__)
    static constexpr std::array all{kernelsPortable, kernelsAvx2};
    const bool fast = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
    return std::span(all).first(fast ? 2 : 1);
#else
    static constexpr std::array all{kernelsPortable};
    return all;
#endif
}

}  // namespace

const BeamKernels& beamKernels()
{
    static const BeamKernels& best = supportedKernels().back();
    return best;
}

std::span<const BeamKernels> beamKernelVariants()
{
    return supportedKernels();
}

}  // namespace kovtools
