#include "tools/discharge/dischargefeatures.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include <KOVDoaHandle/diagnostics/kovblas.h>

namespace kovtools {

namespace {

constexpr int profileBins = 240;
using Profile = std::array<float, profileBins>;

constexpr unsigned harmonics = 8;
constexpr unsigned mainsBin = 10;  // a pattern spans ten cycles
constexpr double harmonicShare = 0.25;
constexpr double lineShare = 0.05;

Profile normalisedProfile(const std::vector<float>& frame)
{
    Profile profile{};
    for (std::size_t j = 0; j < profile.size(); ++j) {
        profile[j] = ((frame[j] + frame[j + profileBins]) + frame[j + 2 * profileBins]) / 3.0F;
    }
    const float least = KOVBlas::findMin(profile.data(), profileBins);
    const float range = KOVBlas::findMax(profile.data(), profileBins) - least;
    for (float& value : profile) {
        value = (value - least) / range;
    }
    return profile;
}

double linePower(const std::vector<float>& frame, unsigned bin)
{
    const double step = 2.0 * std::numbers::pi * bin / static_cast<double>(frame.size());
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < frame.size(); ++i) {
        sum += std::polar(static_cast<double>(frame[i]), -step * static_cast<double>(i));
    }
    return std::norm(sum);
}

// Of the lines between zero and half the sampling rate, without both: by Parseval's theorem.
double powerBetween(const std::vector<float>& frame)
{
    double squares = 0.0;
    double sum = 0.0;
    double alternating = 0.0;
    double sign = 1.0;
    for (const float value : frame) {
        squares += static_cast<double>(value) * static_cast<double>(value);
        sum += static_cast<double>(value);
        alternating += sign * static_cast<double>(value);
        sign = -sign;
    }
    return (static_cast<double>(frame.size()) * squares - sum * sum - alternating * alternating) / 2.0;
}

}  // namespace

DischargeFeatures featuresOf(const std::vector<float>& frame)
{
    Profile profile = normalisedProfile(frame);
    float* const x = profile.data();
    const float rms = KOVBlas::Rms(x, profileBins, false);
    const float halfRatio =
        KOVBlas::Sum(x, profileBins / 2) / KOVBlas::Sum(x + profileBins / 2, profileBins / 2);
    // Not the mean; the library has this in its place.
    const float centre = rms / static_cast<float>(profileBins);
    const float variance = KOVBlas::Var(x, profileBins, centre);
    const float skewness = KOVBlas::Skew(x, profileBins, centre, variance);
    const float kurtosis = KOVBlas::Kurt(x, profileBins, centre, variance);
    const float shapeFactor = KOVBlas::ShapeFactor(x, profileBins, rms);
    return {{halfRatio, skewness, kurtosis, shapeFactor}, {variance, skewness, kurtosis, shapeFactor}};
}

bool isClassified(const std::vector<float>& frame)
{
    const double total = powerBetween(frame);
    const double first = linePower(frame, mainsBin);
    const double second = linePower(frame, 2 * mainsBin);
    double sum = first + second;
    for (unsigned k = 3; k <= harmonics; ++k) {
        sum += linePower(frame, k * mainsBin);
    }
    return sum > harmonicShare * total && std::max(first, second) > lineShare * total && !(first > second);
}

}  // namespace kovtools
