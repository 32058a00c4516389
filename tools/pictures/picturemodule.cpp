// The module behind picturecodec.h.
#include <opencv2/imgcodecs.hpp>

#include "tools/pictures/picturecodec.h"

namespace kovtools {

namespace {

class OpenCvPictureCodec : public PictureCodec
{
public:
    std::vector<unsigned char> encodePng(const cv::Mat& picture) const override
    {
        std::vector<unsigned char> bytes;
        cv::imencode(".png", picture, bytes, {cv::IMWRITE_PNG_COMPRESSION, 3});
        return bytes;
    }

    cv::Mat decode(const std::string& bytes) const override
    {
        if (bytes.empty()) {
            return {};
        }
        const std::vector<unsigned char> buffer(bytes.begin(), bytes.end());
        try {
            return cv::imdecode(buffer, cv::IMREAD_COLOR);
        } catch (const cv::Exception&) {
            return {};  // a size that nobody can want, for example
        }
    }
};

}  // namespace

}  // namespace kovtools

extern "C" __attribute__((visibility("default"))) const kovtools::PictureCodec& kovdoaPictureCodec()
{
    static const kovtools::OpenCvPictureCodec codec;
    return codec;
}
