// What the tests of sections share: the plain recursion they are held to, and their response.
#ifndef KOVDOA_TESTS_FOUNDATION_ENGINE_FILTERTESTING_H
#define KOVDOA_TESTS_FOUNDATION_ENGINE_FILTERTESTING_H

#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <algorithm>
#include <complex>
#include <cstddef>
#include <numbers>
#include <random>
#include <vector>

namespace filtertesting {

using Samples = std::vector<float>;

constexpr float rate = 96000.0F;

// Direct form I in the precision of `Number`, one sample after the other.
template <typename Number>
std::vector<Number> directForm(const IIRCoef_t& c, const Samples& in)
{
    const Number a0 = c.a0;
    const Number b0 = Number{c.b0} / a0;
    const Number b1 = Number{c.b1} / a0;
    const Number b2 = Number{c.b2} / a0;
    const Number a1 = Number{c.a1} / a0;
    const Number a2 = Number{c.a2} / a0;
    Number x1 = 0;
    Number x2 = 0;
    Number y1 = 0;
    Number y2 = 0;
    std::vector<Number> out;
    for (const float sample : in) {
        const Number x = sample;
        const Number y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        out.push_back(y);
    }
    return out;
}

// H at `frequency` Hz.
inline std::complex<double> response(const IIRCoef_t& c, double frequency, double sampleRate = rate)
{
    const std::complex<double> z1 = std::polar(1.0, -2.0 * std::numbers::pi * frequency / sampleRate);
    const std::complex<double> z2 = z1 * z1;
    return (double{c.b0} + double{c.b1} * z1 + double{c.b2} * z2) /
           (double{c.a0} + double{c.a1} * z1 + double{c.a2} * z2);
}

inline double gainAt(const IIRCoef_t& c, double frequency, double sampleRate = rate)
{
    return std::abs(response(c, frequency, sampleRate));
}

// Both poles inside the unit circle: the triangle of the normalised a1 and a2.
inline bool isStable(const IIRCoef_t& c)
{
    const double a1 = double{c.a1} / double{c.a0};
    const double a2 = double{c.a2} / double{c.a0};
    return a2 < 1.0 && std::abs(a1) < 1.0 + a2;
}

inline Samples noise(std::size_t count, unsigned seed = 5)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    Samples samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return uniform(random); });
    return samples;
}

inline Samples filtered(KOVFilter& filter, Samples samples)
{
    filter.filter(samples.data(), samples.data(), static_cast<int>(samples.size()));
    return samples;
}

inline Samples filtered(const IIRCoef_t& coefficients, Samples samples)
{
    KOVFilter filter(coefficients);
    return filtered(filter, std::move(samples));
}

}  // namespace filtertesting

#endif
