// Recordings and pictures for the tests.
#ifndef KOVTOOLS_TESTS_SAMPLES_H
#define KOVTOOLS_TESTS_SAMPLES_H

#include <filesystem>
#include <functional>
#include <opencv2/core/mat.hpp>
#include <string>

namespace kovtools::tests {

// Writes a recording through the library: `frames` maps of rows x cols with the levels level(frame, row, col) (frame
// from 0), FFT length 64, for pictures of 320 x 240.
void writeRecording(const std::filesystem::path& file, int frames, int rows, int cols,
                    const std::function<float(int, int, int)>& level);

// A smooth hill, 1 at (row, col) and 0.1 far from it.
float hill(int atRow, int atCol, int row, int col);

// Blue, green, red, 8 bits each; empty when there is no picture.
cv::Mat readPicture(const std::filesystem::path& file);

// Middle of the pixels of a grey picture that are within 2 steps of its brightest; x, y.
cv::Point2d brightestPlace(const std::filesystem::path& picture);

}  // namespace kovtools::tests

#endif
