// A video file made of pictures.
#ifndef KOVTOOLS_VIDEOFILE_H
#define KOVTOOLS_VIDEOFILE_H

#include <memory>

#include "tools/pictures/videocodec.h"
#include "tools/render/framesink.h"
#include "tools/support/partialfile.h"

namespace kovtools {

// H.264 in .mp4, or MPEG-4 where no H.264 encoder is installed; Motion JPEG in .avi. Codecs want even sizes:
// an odd picture gets one row or column more, a copy of its last.
class VideoFile : public FrameSink
{
public:
    // Throws DataError.
    VideoFile(const std::filesystem::path& target, cv::Size picture, double frameRate);

    void add(const cv::Mat& picture, int number) override;

    // Closes the file, reads it back and counts the pictures in it: encoders report no errors.
    void finish() override;

private:
    std::filesystem::path m_target;
    cv::Size m_size;
    PartialFile m_file;
    std::unique_ptr<VideoEncoder> m_encoder;
    int m_added = 0;
};

}  // namespace kovtools

#endif
