// The high-pass filters in front of the discharge analysis.
#ifndef KOVDOA_DISCHARGEFILTERS_P_H
#define KOVDOA_DISCHARGEFILTERS_P_H

#include <vector>

#include <KOVDoaHandle/foundation/engine/kovfilter.h>

namespace KOVPrivate {

enum class DischargeBand { Low, Mid, Wide };

// Which pair of filters a band value selects: up to 8000 the low one, up to 20000 the mid one, otherwise, and
// whenever no band is selected, the wide one.
DischargeBand bandFor(bool selected, int value);

// Sum of the magnitudes of the last eight samples of a block (of all when it is shorter) as 16-bit numbers:
// each scaled by 32767, its fraction cut off. What lies beyond 16 bits counts as 32767, NaN as 0.
float blockLevel(const float* samples, int n);

// Three pairs of equal second-order high-pass sections at 96 kHz: 2, 10 and 25 kHz. No lock of its own.
class DischargeFilters
{
public:
    DischargeFilters();

    // Runs a block through the two filters of a pair, one after the other, continuing from the block before.
    // The result is n samples that stay valid until the next call. Allocates only for a block longer than any
    // before.
    float* run(DischargeBand band, float* samples, int n);

    // Forgets the stream so far, in all pairs.
    void reset();

private:
    struct Pair
    {
        explicit Pair(float cutoffHz);

        KOVFilter first;
        KOVFilter second;
    };

    Pair& pairOf(DischargeBand band);

    Pair m_wide;
    Pair m_mid;
    Pair m_low;
    std::vector<float> m_filtered;
};

}  // namespace KOVPrivate

#endif
