// Pairs of corresponding points in two pictures, as a user writes them down.
#ifndef KOVTOOLS_POINTPAIRS_H
#define KOVTOOLS_POINTPAIRS_H

#include <array>
#include <filesystem>

namespace kovtools {

struct PixelPoint
{
    unsigned x;
    unsigned y;
};

struct PointPair
{
    int line;  // of the file, from 1
    PixelPoint source;
    PixelPoint target;
};

constexpr int calibrationPairs = 16;
constexpr unsigned largestCoordinate = 65535;  // pixels; sums of their squares stay exact

using PointPairs = std::array<PointPair, calibrationPairs>;

// Reads 16 lines "sx,sy,dx,dy" in whole pixels. Blank lines are passed over, and so is a first line that names the
// columns. Throws DataError, naming the line, when a line is anything else; and when there are not 16 of them.
PointPairs readPointPairs(const std::filesystem::path& file);

}  // namespace kovtools

#endif
