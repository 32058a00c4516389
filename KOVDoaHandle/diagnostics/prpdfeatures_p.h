// The shape of the averaged mains cycle in a few numbers, for the classifier.
#ifndef KOVDOA_PRPDFEATURES_P_H
#define KOVDOA_PRPDFEATURES_P_H

#include <array>

#include <KOVDoaHandle/diagnostics/prpdgeometry_p.h>

namespace KOVPrivate {

// Numbers in an input vector of the classifier.
constexpr int featureCount = 4;
using FeatureVector = std::array<float, featureCount>;

// Moments of the phase-resolved shape as fingerprints of discharge types: E. Gulski and F. H. Kreuger,
// Computer-aided recognition of discharge sources, IEEE Transactions on Electrical Insulation 27 (1992).
struct PrpdFeatures
{
    // From the first 720 values of a frame, taken as three cycles of 240 bins. With 60 Hz mains a cycle has
    // 200; the three are then not in phase, and models are trained on exactly that. A constant profile gives
    // NaNs.
    void calculate(const float* frame);

    std::array<float, largestCycle> profile{};     // mean of the three cycles
    std::array<float, largestCycle> normalised{};  // the same, from 0 to 1
    float max = 0.0F;                              // of the profile
    float min = 0.0F;
    float range = 0.0F;
    float rms = 0.0F;  // this and the rest: of the normalised profile
    float halfRatio = 0.0F;
    float variance = 0.0F;
    float skewness = 0.0F;
    float kurtosis = 0.0F;
    float crestFactor = 0.0F;  // this and the next with the profile's own maximum
    float latitudeFactor = 0.0F;
    float shapeFactor = 0.0F;
    FeatureVector halvesVector{};  // half ratio, skewness, kurtosis, shape factor: belongs to the first model
    FeatureVector varianceVector{};  // variance, skewness, kurtosis, shape factor: what is decided by
};

}  // namespace KOVPrivate

#endif
