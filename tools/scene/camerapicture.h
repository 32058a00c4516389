// The picture that a camera in the middle of the array would take of the simulated scene.
#ifndef KOVTOOLS_CAMERAPICTURE_H
#define KOVTOOLS_CAMERAPICTURE_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "tools/scene/fieldofview.h"

namespace kovtools {

class SceneSimulation;

// Draws a workshop wall with pipes, a compressor, a tank and a cabinet, and on the wall, as dashed painted
// lines, the paths on which the sources move. 8-bit blue, green, red; the same bytes every time.
cv::Mat drawCameraPicture(const SceneSimulation& scene);

// A source that stands still.
struct StandingMark
{
    std::string name;
    PicturePosition position;
};

// The same wall with a ring around each source and its name beside it.
cv::Mat drawCameraPicture(cv::Size size, const std::vector<StandingMark>& sources);

}  // namespace kovtools

#endif
