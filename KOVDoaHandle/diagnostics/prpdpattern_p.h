// From the samples of a span to the pages of a pattern: bins, noise floor, acceptance, sums over cycles.
#ifndef KOVDOA_PRPDPATTERN_P_H
#define KOVDOA_PRPDPATTERN_P_H

#include <KOVDoaHandle/diagnostics/prpdgeometry_p.h>

namespace KOVPrivate {

// Largest magnitude of n samples, n > 0: what KOVBlas::findMax gives for the magnitudes, NaN included (the
// first sample's counts, others are passed over), but in lanes instead of one by one.
float largestMagnitude(const float* samples, int n);

// binSums() of the magnitudes of the samples.
void magnitudeBins(const float* samples, float* out, int bins);

// out[i] = sum of the last seven of the eight samples of bin i, added in order; the first of each bin is left
// out on purpose, as KOVBlas::Sum does it.
void binSums(const float* samples, float* out, int bins);

// Floor after a pattern with this RMS: rises at once, falls by halves. A former floor that is not finite is
// dropped.
float nextFloor(float former, float rms);

// Whether a peak stands out of the floor: by 15 dB when it is weak, by 7.5 dB when it is strong.
bool peakStandsOut(float peak, float floor);

// Each of the ten pages is the sum (a + b) + c of three consecutive cycles, the first starting at bin
// `offset` (0 ... mains.cycle) of the envelope.
void sumPages(const float* envelope, int offset, const MainsGeometry& mains, float* frame);

}  // namespace KOVPrivate

#endif
