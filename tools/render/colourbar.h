// The colour bar at the right edge of a picture.
#ifndef KOVTOOLS_COLOURBAR_H
#define KOVTOOLS_COLOURBAR_H

#include <opencv2/core/mat.hpp>
#include <vector>

#include "tools/render/framereading.h"

namespace kovtools {

// Round dB values within a range, highest first, four to eight of them where the range allows.
std::vector<double> tickValues(double highDb, double lowDb);

// Colours of a bar of `height` pixels, top to bottom, one column: heights are even steps in dB, while the
// palette follows the linear level, just as on the map.
cv::Mat barColours(const ColourRange& range, int palette, int height);

// Where on a picture of this size the bar with its scale is painted.
cv::Rect colourBarPanel(cv::Size picture);

void drawColourBar(cv::Mat& picture, const ColourRange& range, int palette);

}  // namespace kovtools

#endif
