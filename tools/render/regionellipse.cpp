#include "tools/render/regionellipse.h"

#include <cmath>
#include <string>

#include "tools/support/errors.h"

namespace kovtools {

namespace {

constexpr double smallestHalfAxis = 3.0;     // pixels; the drawn ellipse is two smaller
constexpr double largestHalfAxis = 20000.0;  // pixels; far outside any picture

// By how much the imager shrinks the region for a zoom of the camera picture, with the steps of its lenses.
double zoomFactor(double imageScale)
{
    if (imageScale >= 4.0) {
        return (imageScale - 4.0) * 0.25 + 1.0;
    }
    if (imageScale >= 2.0) {
        return (imageScale - 2.0) * 0.5 + 1.0;
    }
    return imageScale;
}

}  // namespace

bool RegionEllipse::contains(int row, int col, int rows, int cols) const
{
    if (!active) {
        return true;
    }
    const double y = (row - 0.5 * (rows - 1)) / rowSemiAxis;
    const double x = (col - 0.5 * (cols - 1)) / colSemiAxis;
    return y * y + x * x <= 1.0;
}

RegionEllipse regionEllipse(const RenderOptions& options, int mapRows, int mapCols)
{
    RegionEllipse region;
    region.mapScaleA = mapRows;
    region.mapScaleB = mapCols;
    if (options.radius <= 0) {
        return region;
    }
    const cv::Size measure = options.radiusSize.empty() ? options.picture : options.radiusSize;
    const double zoom = zoomFactor(options.imageScale);
    region.active = true;
    region.halfWidth = options.picture.width * static_cast<double>(options.radius) / (measure.width * zoom);
    region.halfHeight =
        options.picture.height * static_cast<double>(options.radius) / (measure.height * zoom);
    if (!(region.halfWidth >= smallestHalfAxis && region.halfHeight >= smallestHalfAxis)) {
        throw UsageError("--radius " + std::to_string(options.radius) +
                         " makes a region of less than 3 pixels in the picture; choose a larger one");
    }
    if (!(region.halfWidth <= largestHalfAxis && region.halfHeight <= largestHalfAxis)) {
        throw UsageError("--radius " + std::to_string(options.radius) +
                         " makes a region far larger than the picture; choose a smaller one");
    }
    const double aspect = static_cast<double>(measure.width) / measure.height;
    region.mapScaleA = static_cast<int>(std::lround(mapRows * aspect));
    region.mapScaleB = static_cast<int>(std::lround(mapCols / aspect));
    if (region.mapScaleA < 1 || region.mapScaleB < 1) {
        throw UsageError("--radius-size is too long and thin for this map");
    }
    region.rowSemiAxis = region.mapScaleA * region.halfWidth / options.picture.width;
    region.colSemiAxis = region.mapScaleB * region.halfHeight / options.picture.height;
    return region;
}

}  // namespace kovtools
