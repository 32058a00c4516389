// The mapping that the library fits to pairs of points, and how well it meets them.
#ifndef KOVTOOLS_PICTUREMAPPING_H
#define KOVTOOLS_PICTUREMAPPING_H

#include <array>
#include <nlohmann/json.hpp>
#include <opencv2/core/types.hpp>
#include <string>

#include "tools/calibration/pointpairs.h"

namespace kovtools {

// As the library has it: row 0 the constants, row 1 the factors of y, row 2 those of x; column 0 for x', 1 for y'.
using MappingRows = std::array<std::array<double, 2>, 3>;

struct PictureMapping
{
    MappingRows rows;
    std::array<cv::Point2d, calibrationPairs> mapped;     // the source points
    std::array<cv::Point2d, calibrationPairs> residuals;  // mapped less target, pixels
    double rms = 0.0;                                     // of the residuals' lengths, pixels
    int worst = 0;                                        // index of the longest residual
};

// Throws DataError when the source points lie on one line or in one place, so that nothing says how to map what lies
// beside it; also when they lie so nearly on one line that their rounding to whole pixels decides.
PictureMapping fitMapping(const PointPairs& pairs);

std::string mappingText(const PictureMapping& mapping, const PointPairs& pairs);

// Keys `mapping` (the rows), `pairs` (`line`, `source`, `target`, `mapped`, `residual`, each x and y, and `error`, the
// residual's length), `rms_px`, and `worst_line`.
nlohmann::ordered_json mappingJson(const PictureMapping& mapping, const PointPairs& pairs);

}  // namespace kovtools

#endif
