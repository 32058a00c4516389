#include <KOVDoaHandle/diagnostics/prpdpattern_p.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace KOVPrivate {

namespace {

// Decibels such that an amplitude of 1e-6 is at 0. Single precision, so that a difference of a whole tenth
// comes out as that tenth.
float levelDb(float amplitude)
{
    return 20.0F * std::log10(amplitude) + 120.0F;
}

// dB that a peak at this level must exceed the floor by: weak peaks are more often noise.
float requiredDb(float peakDb)
{
    if (peakDb < 42.0F) {
        return 15.0F;
    }
    if (peakDb < 45.0F) {
        return 13.5F;
    }
    if (peakDb < 48.0F) {
        return 12.0F;
    }
    if (peakDb < 51.0F) {
        return 10.5F;
    }
    if (peakDb < 54.0F) {
        return 9.0F;
    }
    return 7.5F;
}

}  // namespace

float largestMagnitude(const float* samples, int n)
{
    constexpr int laneCount = 8;
    float lanes[laneCount];
    std::fill_n(lanes, laneCount, std::fabs(samples[0]));
    // False for NaN on either side: the lane keeps what it has.
    const auto take = [](float& lane, float magnitude) { lane = std::max(lane, magnitude); };
    int i = 0;
    for (; i + laneCount <= n; i += laneCount) {
        for (int k = 0; k < laneCount; ++k) {
            take(lanes[k], std::fabs(samples[i + k]));
        }
    }
    for (; i < n; ++i) {
        take(lanes[0], std::fabs(samples[i]));
    }
    for (int k = 1; k < laneCount; ++k) {
        take(lanes[0], lanes[k]);
    }
    return lanes[0];
}

void magnitudeBins(const float* samples, float* out, int bins)
{
    for (int i = 0; i < bins; ++i) {
        const float* bin = samples + static_cast<std::ptrdiff_t>(i) * binSamples;
        float sum = 0.0F;
        for (int k = 1; k < binSamples; ++k) {
            sum += std::fabs(bin[k]);
        }
        out[i] = sum;
    }
}

void binSums(const float* samples, float* out, int bins)
{
    for (int i = 0; i < bins; ++i) {
        const float* bin = samples + static_cast<std::ptrdiff_t>(i) * binSamples;
        float sum = 0.0F;
        for (int k = 1; k < binSamples; ++k) {
            sum += bin[k];
        }
        out[i] = sum;
    }
}

float nextFloor(float former, float rms)
{
    return std::isfinite(former) && former > rms ? (rms + former) / 2.0F : rms;
}

bool peakStandsOut(float peak, float floor)
{
    const float peakDb = levelDb(peak);
    return peakDb - levelDb(floor) > requiredDb(peakDb);
}

void sumPages(const float* envelope, int offset, const MainsGeometry& mains, float* frame)
{
    const int cycle = mains.cycle;
    for (int page = 0; page < pageCount; ++page) {
        const float* first = envelope + offset + page * cyclesPerPage * cycle;
        float* out = frame + page * cycle;
        for (int j = 0; j < cycle; ++j) {
            out[j] = (first[j] + first[cycle + j]) + first[2 * cycle + j];
        }
    }
}

}  // namespace KOVPrivate
