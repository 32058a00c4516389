// The loops that run once per picture element, in one version per instruction set; the best one that the
// processor has is chosen at run time. All versions give the same bits: they are the same source, compiled
// without fused multiply-add, and tests hold each to a plain reference.
#ifndef KOVDOA_PIXELKERNELS_P_H
#define KOVDOA_PIXELKERNELS_P_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace KOVPrivate {

// How a level becomes an index into the table of makeColourTable(): 0 (black) where it is not above `floor`, otherwise
// 1 + round((level - floor) * scale), at most 1 + top.
struct IndexRule
{
    float floor;
    float scale;
    float top;  // the palette's last index
};

struct PixelKernels
{
    const char* name;

    // destination[i] = source[first[i]] * lower[i] + source[first[i] + step] * upper[i]
    void (*interpolateRow)(const float* source, const int* first, int step, const float* lower,
                           const float* upper, float* destination, int count);

    // destination[i] = upper[i] * upperWeight + lower[i] * lowerWeight
    void (*blendRows)(const float* upper, const float* lower, float upperWeight, float lowerWeight,
                      float* destination, int count);

    // indices[i] by the rule, for given levels
    void (*indexLevels)(const float* levels, IndexRule rule, std::int32_t* indices, int count);

    // the two above in one pass: indices of blended rows
    void (*indexBlendedRows)(const float* upper, const float* lower, float upperWeight, float lowerWeight,
                             IndexRule rule, std::int32_t* indices, int count);

    // pixels[3 * i ...] = the first three bytes of table[indices[i]]; writes exactly 3 * count bytes
    void (*packPixels)(const std::int32_t* indices, const std::uint32_t* table, std::uint8_t* pixels,
                       int count);

    // sums[i] = min(sums[i] + addends[i], 255)
    void (*addSaturating)(std::uint8_t* sums, const std::uint8_t* addends, std::size_t count);
};

// The best version for this processor.
const PixelKernels& pixelKernels();

// Every version that this processor can run, for the tests.
std::span<const PixelKernels> pixelKernelVariants();

}  // namespace KOVPrivate

#endif
