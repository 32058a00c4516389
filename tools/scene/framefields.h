// From a map and a spectrum to the record that is written: extremes, median, levels and peaks.
#ifndef KOVTOOLS_FRAMEFIELDS_H
#define KOVTOOLS_FRAMEFIELDS_H

#include <vector>

#include <KOVDoaHandle/imaging/engmapresult.h>

namespace kovtools {

// What all frames of a recording share.
struct FrameContext
{
    int firstBandBin;  // of the working band, over which the spectrum is summed
    int lastBandBin;
    float distance;  // m
};

// Fills every field of `record` but the peaks, which become empty. `map` (row-major) and `spectrum` have the record's
// sizes.
void fillFrameFields(const FrameContext& context, const std::vector<float>& map,
                     const std::vector<float>& spectrum, EngMapResult& record);

// Stores the strongest peaks of the frames and gives each the identity of the nearest peak of the frame
// before.
class PeakMarker
{
public:
    void mark(EngMapResult& record);

private:
    std::vector<TargetPoint> m_before;
    int m_identities = 0;
};

}  // namespace kovtools

#endif
