#include <KOVDoaHandle/diagnostics/prpdfeatures_p.h>

#include <cstddef>

#include <KOVDoaHandle/diagnostics/kovblas.h>

namespace KOVPrivate {

void PrpdFeatures::calculate(const float* frame)
{
    constexpr int n = largestCycle;
    for (std::size_t j = 0; j < profile.size(); ++j) {
        profile[j] = ((frame[j] + frame[j + n]) + frame[j + 2 * n]) / 3.0F;
    }
    max = KOVBlas::findMax(profile.data(), n);
    min = KOVBlas::findMin(profile.data(), n);
    range = max - min;
    for (std::size_t j = 0; j < profile.size(); ++j) {
        normalised[j] = (profile[j] - min) / range;
    }

    float* const x = normalised.data();
    rms = KOVBlas::Rms(x, n, false);
    halfRatio = KOVBlas::Sum(x, n / 2) / KOVBlas::Sum(x + n / 2, n / 2);
    // Not the mean, but what all models have been trained with in its place.
    const float centre = rms / static_cast<float>(n);
    variance = KOVBlas::Var(x, n, centre);
    skewness = KOVBlas::Skew(x, n, centre, variance);
    kurtosis = KOVBlas::Kurt(x, n, centre, variance);
    crestFactor = KOVBlas::CrestFactor(x, n, max);
    latitudeFactor = KOVBlas::LatitudeFactor(x, n, max);
    shapeFactor = KOVBlas::ShapeFactor(x, n, rms);

    halvesVector = {halfRatio, skewness, kurtosis, shapeFactor};
    varianceVector = {variance, skewness, kurtosis, shapeFactor};
}

}  // namespace KOVPrivate
