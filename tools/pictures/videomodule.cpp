// The module behind videocodec.h.
#include <opencv2/videoio.hpp>
#include <vector>

#include "tools/pictures/videocodec.h"

namespace kovtools {

namespace {

struct Encoding
{
    int api;
    int code;
};

std::vector<Encoding> encodingsFor(const std::filesystem::path& file)
{
    if (file.extension() == ".avi" || file.extension() == ".AVI") {
        const int motionJpeg = cv::VideoWriter::fourcc('M', 'J', 'P', 'G');
        return {{cv::CAP_OPENCV_MJPEG, motionJpeg}, {cv::CAP_FFMPEG, motionJpeg}};
    }
    return {{cv::CAP_FFMPEG, cv::VideoWriter::fourcc('a', 'v', 'c', '1')},
            {cv::CAP_FFMPEG, cv::VideoWriter::fourcc('m', 'p', '4', 'v')},
            {cv::CAP_ANY, cv::VideoWriter::fourcc('m', 'p', '4', 'v')}};
}

class OpenCvVideoEncoder : public VideoEncoder
{
public:
    bool open(const std::filesystem::path& file, const Encoding& encoding, cv::Size size, double frameRate)
    {
        return m_writer.open(file.string(), encoding.api, encoding.code, frameRate, size, true);
    }

    void add(const cv::Mat& picture) override { m_writer.write(picture); }

private:
    cv::VideoWriter m_writer;
};

class OpenCvVideoCodec : public VideoCodec
{
public:
    std::unique_ptr<VideoEncoder> begin(const std::filesystem::path& file, cv::Size size,
                                        double frameRate) const override
    {
        auto encoder = std::make_unique<OpenCvVideoEncoder>();
        for (const Encoding& encoding : encodingsFor(file)) {
            if (encoder->open(file, encoding, size, frameRate)) {
                return encoder;
            }
        }
        return nullptr;
    }

    int picturesIn(const std::filesystem::path& file) const override
    {
        // Only those that read files: others would look for cameras.
        for (const int api : {cv::CAP_FFMPEG, cv::CAP_OPENCV_MJPEG, cv::CAP_GSTREAMER}) {
            cv::VideoCapture capture(file.string(), api);
            int count = 0;
            while (capture.isOpened() && capture.grab()) {
                ++count;
            }
            if (count > 0) {
                return count;
            }
        }
        return 0;
    }
};

}  // namespace

}  // namespace kovtools

extern "C" __attribute__((visibility("default"))) const kovtools::VideoCodec& kovdoaVideoCodec()
{
    static const kovtools::OpenCvVideoCodec codec;
    return codec;
}
