// A palette stretched over a range of levels, in the form the pixel kernels use.
#ifndef KOVDOA_COLOURSCALE_P_H
#define KOVDOA_COLOURSCALE_P_H

#include <cstdint>
#include <vector>

#include <KOVDoaHandle/imaging/palettes_p.h>
#include <KOVDoaHandle/imaging/pixelkernels_p.h>

namespace KOVPrivate {

// The palette's pixels behind one black pixel, each as the four bytes blue, green, red, alpha in memory
// order.
std::vector<std::uint32_t> makeColourTable(const Palette& palette, std::uint8_t alpha);

// The rule that colours (min, max] with the whole palette, levels above max with its last entry and all
// others black. Where max is not above min (or either is not a number) nothing lies between, and the rule
// colours what is above max alone.
IndexRule makeIndexRule(const Palette& palette, float min, float max);

}  // namespace KOVPrivate

#endif
