// What the marks and the colour bar of one rendered frame say.
#ifndef KOVTOOLS_FRAMEREADING_H
#define KOVTOOLS_FRAMEREADING_H

#include <vector>

#include <KOVDoaHandle/imaging/engmapresult.h>

#include "tools/render/regionellipse.h"
#include "tools/render/renderoptions.h"

namespace kovtools {

// The levels that the colours stand for. Colours follow the level linearly, from `low` (the first colour) to
// `high` (the last), all above the map's median.
struct ColourRange
{
    float low = 0.0F;
    float high = 0.0F;
    float frameMaximum = 0.0F;  // the level that 0 dB is

    // False for a frame without anything above its median: nothing is coloured.
    bool isUsable() const;
    double highDb() const;
    double lowDb() const;
};

// The range that the imager used for the region of interest, or for the whole picture without one. `frame`
// must have been rendered with these options.
ColourRange colourRange(const EngMapResult& frame, const RenderOptions& options);

// A cell to mark, with its level in the unit of the map.
struct CursorMark
{
    int row;
    int col;
    float level;
};

// The places that the imager treats as cursors: as many of the frame's peaks as it allows, without those that
// lie outside what is shown. A frame without a usable peak shows the highest cell instead.
std::vector<CursorMark> cursorMarks(const EngMapResult& frame, const RenderOptions& options,
                                    const RegionEllipse& region);

}  // namespace kovtools

#endif
