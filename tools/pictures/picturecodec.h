// Pictures as the bytes of a file. The decoders of every format take longer to load than all else that the program
// needs, so they wait in a module until a picture is read or written.
#ifndef KOVTOOLS_PICTURECODEC_H
#define KOVTOOLS_PICTURECODEC_H

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

namespace kovtools {

class PictureCodec
{
public:
    virtual ~PictureCodec() = default;

    // `picture`: 8 bits, 1, 3 or 4 channels.
    virtual std::vector<unsigned char> encodePng(const cv::Mat& picture) const = 0;

    // Blue, green, red, 8 bits each; empty when the bytes are no picture that can be read.
    virtual cv::Mat decode(const std::string& bytes) const = 0;
};

// The one of the module, for as long as the process lives. Throws DataError when the module cannot be loaded.
const PictureCodec& pictureCodec();

}  // namespace kovtools

#endif
