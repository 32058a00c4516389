// The region of interest: where it lies in the picture, and how to ask the imager for it.
#ifndef KOVTOOLS_REGIONELLIPSE_H
#define KOVTOOLS_REGIONELLIPSE_H

#include "tools/render/renderoptions.h"

namespace kovtools {

// An ellipse around the middle of the picture and of the map.
struct RegionEllipse
{
    bool active = false;
    double halfWidth = 0.0;  // pixels
    double halfHeight = 0.0;
    // What the imager is initialised with. It turns the half-axes into map cells in a crossed way: its first
    // number scales the half-width to give the semi-axis along the rows' index, the second the half-height to
    // give that along the columns' index. These two values undo the crossing, so that the region on the map,
    // where extremes are searched, is the one that is seen in the picture.
    int mapScaleA = 0;
    int mapScaleB = 0;
    double rowSemiAxis = 0.0;  // cells
    double colSemiAxis = 0.0;

    // Whether a map cell's middle lies in the region. Always true without a region.
    bool contains(int row, int col, int rows, int cols) const;
};

// Throws UsageError when the region is too small to be drawn (the imager would fail) or absurdly large.
RegionEllipse regionEllipse(const RenderOptions& options, int mapRows, int mapCols);

}  // namespace kovtools

#endif
