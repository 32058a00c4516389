#include "tools/render/videofile.h"

#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/silence.h"
#include "tools/support/wording.h"

namespace kovtools {

VideoFile::VideoFile(const std::filesystem::path& target, cv::Size picture, double frameRate)
    : m_target(target),
      m_size(picture.width + picture.width % 2, picture.height + picture.height % 2),
      m_file(target)
{
    const SilencedStderr silenced;
    m_encoder = videoCodec().begin(m_file.path(), m_size, frameRate);
    if (m_encoder == nullptr) {
        throw DataError("cannot write the video " + inQuotes(target) + ": no encoder for it is installed");
    }
}

void VideoFile::add(const cv::Mat& picture, int)
{
    const SilencedStderr silenced;
    cv::Mat even = picture;
    if (picture.size() != m_size) {
        cv::copyMakeBorder(picture, even, 0, m_size.height - picture.rows, 0, m_size.width - picture.cols,
                           cv::BORDER_REPLICATE);
    }
    m_encoder->add(even);
    ++m_added;
}

void VideoFile::finish()
{
    int found = 0;
    {
        const SilencedStderr silenced;
        m_encoder.reset();
        found = videoCodec().picturesIn(m_file.path());
    }
    if (found != m_added) {
        throw DataError("the video " + inQuotes(m_target) + " came out with " + counted(found, "picture") +
                        " instead of " + std::to_string(m_added) + " (is the disk full?)");
    }
    m_file.commit();
}

}  // namespace kovtools
