// The picture of what a calibration table says at one distance.
#ifndef KOVTOOLS_LEAKPLOT_H
#define KOVTOOLS_LEAKPLOT_H

#include <opencv2/core/mat.hpp>
#include <optional>
#include <vector>

#include "tools/gasleak/leakmeter.h"

namespace kovtools {

constexpr int leakPlotWidth = 960;   // pixels
constexpr int leakPlotHeight = 640;  // pixels

struct LeakPoint
{
    float level;  // sound pressure level, dB
    LeakAnswer answer;
};

// What the meter answers at `distance`, every tenth of a decibel from the table's first entry there to its last. The
// table's whole range, if only its bounds answer; more than 400 dB are thinned out.
std::vector<LeakPoint> leakCurve(const LeakMeter& meter, float distance);

// Leak rate over sound pressure level, the rate in decades. Answers from the table's own entries are the line, or
// larger dots where they are too far apart for one; those that a bound of the table stands in for are small dots of
// another colour.
//   marked  a measurement that stands out; may be none
// Throws DataError when no point has a rate above 0.
cv::Mat drawLeakPlot(const std::vector<LeakPoint>& curve, float distance,
                     const std::optional<LeakPoint>& marked);

// Where a point lies in that picture; for tests of what is drawn there.
cv::Point2d placeInLeakPlot(const std::vector<LeakPoint>& curve, const LeakPoint& point);

extern const cv::Scalar leakLineColour;
extern const cv::Scalar leakClampedColour;
extern const cv::Scalar leakMarkColour;

}  // namespace kovtools

#endif
