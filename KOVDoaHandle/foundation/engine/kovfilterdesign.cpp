// Design of second-order sections, and the rounding of their coefficients to single precision.
//
// Low corners are where rounding hurts. The corner is set by a0 + a1 + a2, which for 10 Hz at 96 kHz is 4e-7 of
// a0: with a0 = 1 the nearest single-precision sums lie 14 % apart, the corners 7 %. So a0 is left free. On the
// grid of 2^-24, where all three values are single-precision numbers, the sum is chosen first, as a whole
// number of steps; then a0 is the value that makes it the right sum, and a2 sets the damping.
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace {

// Steps in 1. Values up to 1 are single-precision numbers at any count of steps, up to 2 at even ones.
constexpr double stepsInOne = 16777216.0;
constexpr std::int64_t largestOddCount = 16777216;

// Nearest that a corner comes to 0 and to half the rate, as a part of the rate. Nearer, the sum of the
// denominator would be less than one step.
constexpr double cornerMargin = 1.0 / 25000.0;

constexpr double smallestQ = 0.01;
constexpr double largestQ = 1000.0;
constexpr double largestGain = 1e30;

struct Denominator
{
    float a0;
    float a1;
    float a2;
};

double usableGain(float gain)
{
    return std::isfinite(gain) ? std::clamp(double{gain}, -largestGain, largestGain) : 1.0;
}

double usableQ(float q)
{
    return q > 0.0F ? std::clamp(double{q}, smallestQ, largestQ) : std::numbers::sqrt2 / 2.0;
}

bool usableRate(float sampleRate)
{
    return sampleRate > 0.0F && std::isfinite(sampleRate);
}

IIRCoef_t gainOnly(double gain)
{
    return {static_cast<float>(gain), 0.0F, 0.0F, 1.0F, 0.0F, 0.0F};
}

// Denominator for a corner of at most a quarter of the rate (angle up to pi / 2).
Denominator roundedDenominator(double angle, double q)
{
    const double alpha = std::sin(angle) / (2.0 * q);
    const double halfSine = std::sin(angle / 2.0);
    // Both relative to a0. The sum by the half angle: 2 - 2 cos would lose it to rounding.
    const double sum = 4.0 * halfSine * halfSine / (1.0 + alpha);
    const double a2 = (1.0 - alpha) / (1.0 + alpha);

    const std::int64_t sumSteps = std::max<std::int64_t>(1, static_cast<std::int64_t>(sum * stepsInOne));
    const std::int64_t a0Steps = std::min(
        largestOddCount, static_cast<std::int64_t>(std::llround(static_cast<double>(sumSteps) / sum)));
    const double a2Exact = a2 * static_cast<double>(a0Steps);
    // Below a0, or the poles would reach the unit circle.
    std::int64_t a2Steps = std::min<std::int64_t>(std::llround(a2Exact), a0Steps - 1);
    std::int64_t a1Steps = sumSteps - a0Steps - a2Steps;
    if (-a1Steps > largestOddCount && a1Steps % 2 != 0) {
        a2Steps += (static_cast<double>(a2Steps) < a2Exact && a2Steps + 1 < a0Steps) ? 1 : -1;
        a1Steps = sumSteps - a0Steps - a2Steps;
    }
    const auto value = [](std::int64_t steps) {
        return static_cast<float>(static_cast<double>(steps) / stepsInOne);
    };
    return {value(a0Steps), value(a1Steps), value(a2Steps)};
}

Denominator denominator(double corner, double q)
{
    const double usableCorner = std::clamp(corner, cornerMargin, 0.5 - cornerMargin);
    if (usableCorner <= 0.25) {
        return roundedDenominator(2.0 * std::numbers::pi * usableCorner, q);
    }
    // The upper half of the band is the lower one mirrored: z becomes -z.
    Denominator mirrored = roundedDenominator(2.0 * std::numbers::pi * (0.5 - usableCorner), q);
    mirrored.a1 = -mirrored.a1;
    return mirrored;
}

}  // namespace

IIRCoef_t KOVIIRDesigner::createLowPass(float cutoff, float q, float gain, float sampleRate)
{
    const double corner = double{cutoff} / double{sampleRate};
    if (!usableRate(sampleRate) || !(corner < 0.5)) {
        return gainOnly(usableGain(gain));
    }
    const Denominator a = denominator(corner, usableQ(q));
    // Taken from the rounded denominator, so that the gain at 0 Hz is exact.
    const auto b = static_cast<float>(usableGain(gain) * (double{a.a0} + double{a.a1} + double{a.a2}) / 4.0);
    return {b, 2.0F * b, b, a.a0, a.a1, a.a2};
}

IIRCoef_t KOVIIRDesigner::createHighPass(float cutoff, float q, float gain, float sampleRate)
{
    const double corner = double{cutoff} / double{sampleRate};
    if (!usableRate(sampleRate) || !(corner > 0.0)) {
        return gainOnly(usableGain(gain));
    }
    const Denominator a = denominator(corner, usableQ(q));
    // Likewise for the gain at half the rate.
    const auto b = static_cast<float>(usableGain(gain) * (double{a.a0} - double{a.a1} + double{a.a2}) / 4.0);
    return {b, -2.0F * b, b, a.a0, a.a1, a.a2};
}
