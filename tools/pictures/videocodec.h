// Videos made of pictures. Encoders and decoders wait in a module, as those of pictures do.
#ifndef KOVTOOLS_VIDEOCODEC_H
#define KOVTOOLS_VIDEOCODEC_H

#include <filesystem>
#include <memory>
#include <opencv2/core/mat.hpp>

namespace kovtools {

// A video that is being written; destroying it closes the file. Encoders report no errors.
class VideoEncoder
{
public:
    virtual ~VideoEncoder() = default;

    // `picture`: of the size that the video was begun with; blue, green, red, 8 bits each.
    virtual void add(const cv::Mat& picture) = 0;
};

class VideoCodec
{
public:
    virtual ~VideoCodec() = default;

    // Null when no encoder is installed or the file cannot be written. The name's ending chooses: Motion JPEG for .avi,
    // else H.264, or MPEG-4 where there is none. `size`: even, pixels; `frameRate`: pictures per second.
    virtual std::unique_ptr<VideoEncoder> begin(const std::filesystem::path& file, cv::Size size,
                                                double frameRate) const = 0;

    // How many pictures can be read back; 0 for a file that is no video.
    virtual int picturesIn(const std::filesystem::path& file) const = 0;
};

// The one of the module, for as long as the process lives. Throws DataError when the module cannot be loaded.
const VideoCodec& videoCodec();

}  // namespace kovtools

#endif
