// Searches on energy maps: extremes of the whole map, inside and outside a region, and local maxima.
//
// Pure functions: no state, no lock, no logging; nothing is allocated but the growth of the output vector.
// Positions are (row, col) from 0. Ties keep the cell met first, rows top to bottom, columns left to right. A map
// must have at least one cell.
#ifndef KOVDOA_KOVMAPSEARCH_H
#define KOVDOA_KOVMAPSEARCH_H

#include <vector>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

namespace KOVPrivate {

// The five extremum searches write both outputs in every call. They start from a seed value whose position is not
// recorded: when no searched cell beats the seed, the output keeps the seed's value at position (0, 0).

// Searches every cell. Seed: cell (0, 0).
KOVDOA_EXPORT void findMaxMin(mat2d_fp32* map, fpoint2d& max, fpoint2d& min);

// Searches the cells with (r - rows / 2)^2 + (c - cols / 2)^2 <= radius^2, all in integers. Seed: cell
// (rows / 2, cols / 2).
KOVDOA_EXPORT void findMaxMinWithRadius(mat2d_fp32* map, int radius, fpoint2d& max, fpoint2d& min);

// Searches the cells that findMaxMinWithRadius leaves out. Seed: cell (0, 0).
KOVDOA_EXPORT void findMaxMinWithOutRadius(mat2d_fp32* map, int radius, fpoint2d& max, fpoint2d& min);

// Searches the cells with (r - cy)^2 / a^2 + (c - cx)^2 / b^2 <= 1, where cy = (rows - 1) / 2 and
// cx = (cols - 1) / 2; single precision.
//   a, b  semi-axes in cells, along the rows' index and along the columns' index
// Seed: one row and one column past the centre, (trunc(cy + 1), trunc(cx + 1)), held inside the map.
KOVDOA_EXPORT void findMaxMinWithEllipse(mat2d_fp32* map, float a, float b, fpoint2d& max, fpoint2d& min);

// Searches the cells with that sum > 1. Seed: cell (0, 0). A sum that is not a number is neither inside nor outside.
KOVDOA_EXPORT void findMaxMinWithOutEllipse(mat2d_fp32* map, float a, float b, fpoint2d& max, fpoint2d& min);

// True when none of the 25 values of `window` is strictly greater than `value`.
KOVDOA_EXPORT bool isPeak(float* window, float value);

// Appends the local maxima of `map` above `threshold` to `peaks`, then sorts the whole vector, earlier contents
// included, by descending value (equal values in any order).
//   rows, cols  the map's own dimensions
// A cell counts when its value is strictly above the threshold and none of its 5 x 5 surroundings is greater;
// surroundings outside the map count as 0. Three deliberate peculiarities, which recordings and hosts rely on: near
// the lower and the right edge some existing neighbours count as 0 too (row rows - 3 does not see the two rows
// below it, column cols - 3 not the second and column cols - 2 not the first column to its right); the rim itself
// holds no peaks; and after a peak the next two cells of its row are skipped.
KOVDOA_EXPORT void findpeaks(mat2d_fp32* map, int rows, int cols, float threshold,
                             std::vector<fpoint2d>& peaks);
KOVDOA_EXPORT void findpeaks(mat1d_fp32* map, int rows, int cols, float threshold,
                             std::vector<fpoint2d>& peaks);

}  // namespace KOVPrivate

#endif
