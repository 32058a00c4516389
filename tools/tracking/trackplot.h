// The picture of tracks on the map.
#ifndef KOVTOOLS_TRACKPLOT_H
#define KOVTOOLS_TRACKPLOT_H

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "tools/tracking/tracks.h"

namespace kovtools {

constexpr int trackPlotWidth = 960;   // pixels
constexpr int trackPlotHeight = 760;  // pixels

// The highest level of each cell over the frames of a recording.
class HighestLevels
{
public:
    HighestLevels(int rows, int cols);
    void add(const EngMapResult& frame);
    const cv::Mat1f& map() const { return m_map; }

private:
    cv::Mat1f m_map;
};

// Each track as a line in the colour of its identity, with a dot where it ends and the identity beside it, over the
// highest levels in grey (from 0 to -20 dB).
//   pictureSize  of the camera picture that the map covers; gives the proportions
//   title        what stands above
cv::Mat drawTracks(const std::vector<Track>& tracks, const cv::Mat1f& highest, cv::Size pictureSize,
                   const std::string& title);

// Where the middle of a cell lies in that picture; for tests of what is drawn there.
cv::Point2d placeInTrackPlot(cv::Size map, cv::Size pictureSize, int row, int col);

}  // namespace kovtools

#endif
