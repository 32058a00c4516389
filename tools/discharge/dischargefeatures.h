// The numbers that the library's classifier tells discharges apart by.
#ifndef KOVTOOLS_DISCHARGEFEATURES_H
#define KOVTOOLS_DISCHARGEFEATURES_H

#include <array>
#include <vector>

namespace kovtools {

constexpr int dischargeFeatureCount = 4;
using FeatureVector = std::array<float, dischargeFeatureCount>;

struct DischargeFeatures
{
    FeatureVector halves;    // half ratio, skewness, kurtosis, shape factor
    FeatureVector variance;  // variance, skewness, kurtosis, shape factor: what the verdict rests on
};

// Computed from a pattern just as the library computes them, which keeps its own to itself: from the mean of
// the first three stretches of 240 bins, scaled to 0 ... 1. At 60 Hz, with pages of 200 bins, these stretches
// are not in phase; the numbers differ between the two mains frequencies for that reason.
DischargeFeatures featuresOf(const std::vector<float>& frame);

// Whether the pattern is one that the library asks the classifier about: bound to the mains (the first eight
// harmonics of the mains frequency have more than a quarter of its power, the first or the second more than a
// twentieth), and not stronger at the mains frequency than at twice that, which would be corona.
bool isClassified(const std::vector<float>& frame);

}  // namespace kovtools

#endif
