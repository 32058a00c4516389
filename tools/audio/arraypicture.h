// A picture of the microphone array that shows which microphones fail.
#ifndef KOVTOOLS_ARRAYPICTURE_H
#define KOVTOOLS_ARRAYPICTURE_H

#include <opencv2/core/mat.hpp>

#include "tools/audio/microphonecheck.h"

namespace kovtools {

constexpr int arrayPictureWidth = 1000;  // pixels
constexpr int arrayPictureHeight = 760;  // pixels

// Blue, green, red. Colours that are told apart by colour-blind eyes too; each fault also has a shape of its own.
cv::Scalar faultColour(Fault fault);

// Where the middle of a microphone's mark is, in pixels; the array is seen from behind, as the camera looks.
cv::Point microphonePlace(int microphone);

// Every microphone at its place in the documented geometry: quiet dots, and marks with numbers for those that fail. A
// legend names the faults.
cv::Mat drawArray(const ArrayCheck& check);

}  // namespace kovtools

#endif
