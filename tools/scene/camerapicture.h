// The picture that a camera in the middle of the array would take of the simulated scene.
#ifndef KOVTOOLS_CAMERAPICTURE_H
#define KOVTOOLS_CAMERAPICTURE_H

#include <opencv2/core.hpp>

namespace kovtools {

class SceneSimulation;

// Draws a workshop wall with pipes, a compressor, a tank and a cabinet, and on the wall, as dashed painted
// lines, the paths on which the sources move. 8-bit blue, green, red; the same bytes every time.
cv::Mat drawCameraPicture(const SceneSimulation& scene);

}  // namespace kovtools

#endif
