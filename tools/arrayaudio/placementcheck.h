// Whether every microphone stands where it is said to stand.
#ifndef KOVTOOLS_PLACEMENTCHECK_H
#define KOVTOOLS_PLACEMENTCHECK_H

#include <string>
#include <vector>

#include "tools/scene/arraygeometry.h"

namespace kovtools {

class ArrayRecording;

struct PlacementCheck
{
    // False when the recording does not allow an answer; then `reason` is a half sentence for "cannot tell: ...",
    // and `agreement` and `passed` are empty.
    bool possible = false;
    std::string reason;

    // Per microphone: how well its phase follows the wave of the strongest source as all the others have it,
    // 1 in step, near 0 unrelated; NaN for a silent one.
    std::vector<float> agreement;

    // Per microphone. A silent one passes: that is for the level test to tell. One that carries the signal of
    // another fails, since it does not stand where that one does.
    std::vector<bool> passed;

    // Share of all pairs of microphones that the source reaches so nearly together that it would not show if they
    // were swapped, 0 to 1.
    float alikePairs = 0.0F;
};

// Compares each microphone's phase with the beam that all the others form towards the strongest source. Two that
// are swapped disagree, which no test of levels or of pairs can see. Looks at the beginning of the recording, less
// than a second. `geometry` has one position per channel of the recording. Throws DataError when it cannot be
// read.
PlacementCheck checkPlacement(ArrayRecording& recording, const std::vector<Microphone>& geometry);

}  // namespace kovtools

#endif
