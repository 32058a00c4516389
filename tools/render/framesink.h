// Where finished pictures go.
#ifndef KOVTOOLS_FRAMESINK_H
#define KOVTOOLS_FRAMESINK_H

#include <filesystem>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>

namespace kovtools {

class PartialFile;

class FrameSink
{
public:
    FrameSink() = default;
    virtual ~FrameSink() = default;
    FrameSink(const FrameSink&) = delete;
    FrameSink& operator=(const FrameSink&) = delete;

    // One picture more. `number`: of the frame, from 1. All pictures have the same size. Throws DataError.
    virtual void add(const cv::Mat& picture, int number) = 0;

    // Everything has been added. Until then nothing shows under the final name of a video. Throws DataError.
    virtual void finish() = 0;
};

// A video file where `target` ends in .mp4 or .avi, else a folder of PNG files, which is created. Throws
// UsageError for the ending of another kind of video or picture, DataError when nothing can be written there.
std::unique_ptr<FrameSink> openFrameSink(const std::filesystem::path& target, cv::Size picture,
                                         double frameRate);

// Whether openFrameSink makes a video file of that name, not a folder.
bool isVideoName(const std::filesystem::path& target);

// Throws UsageError like openFrameSink, before anything is done.
void checkFrameSinkName(const std::filesystem::path& target);

// Throws UsageError when the name of a single picture, given with `option`, does not end in .png.
void checkPngName(const std::string& option, const std::filesystem::path& target);

// Writes one PNG file, whole or not at all. Throws DataError.
void writePng(const std::filesystem::path& target, const cv::Mat& picture);

// The same as the content of a file that is committed later.
void writePng(PartialFile& file, const cv::Mat& picture);

}  // namespace kovtools

#endif
