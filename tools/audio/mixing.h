// Several sounds mixed into one by the library.
#ifndef KOVTOOLS_MIXING_H
#define KOVTOOLS_MIXING_H

#include <cstdint>
#include <vector>

namespace kovtools {

struct Mixture
{
    std::vector<float> samples;
    double reduction = 0.0;  // dB by which the library brought the sum down; 0 when its peak fits
    double lowest = 0.0;     // the lowest sample
};

// Sums the sounds; shorter ones are followed by silence. There is at least one, and none is empty. The library brings
// a sum whose largest sample exceeds 1 down until that is 1. It does not look at the lowest one.
Mixture mix(std::vector<std::vector<float>>& sounds);

// The same as 16 bits, as the library converts them. A mixture that falls below -1, which would wrap around, is first
// brought down until it fits; its reduction grows by that.
std::vector<std::int16_t> inSixteenBits(Mixture& mixture);

}  // namespace kovtools

#endif
