#include "tools/render/videofile.h"

#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/silence.h"
#include "tools/support/wording.h"

namespace kovtools {

namespace {

struct Codec
{
    int api;
    int code;
};

std::vector<Codec> codecsFor(const std::filesystem::path& target)
{
    if (target.extension() == ".avi" || target.extension() == ".AVI") {
        const int motionJpeg = cv::VideoWriter::fourcc('M', 'J', 'P', 'G');
        return {{cv::CAP_OPENCV_MJPEG, motionJpeg}, {cv::CAP_FFMPEG, motionJpeg}};
    }
    return {{cv::CAP_FFMPEG, cv::VideoWriter::fourcc('a', 'v', 'c', '1')},
            {cv::CAP_FFMPEG, cv::VideoWriter::fourcc('m', 'p', '4', 'v')},
            {cv::CAP_ANY, cv::VideoWriter::fourcc('m', 'p', '4', 'v')}};
}

int picturesIn(const std::filesystem::path& file)
{
    cv::VideoCapture capture(file.string(), cv::CAP_ANY);
    int count = 0;
    while (capture.isOpened() && capture.grab()) {
        ++count;
    }
    return count;
}

}  // namespace

VideoFile::VideoFile(const std::filesystem::path& target, cv::Size picture, double frameRate)
    : m_target(target),
      m_size(picture.width + picture.width % 2, picture.height + picture.height % 2),
      m_file(target)
{
    const SilencedStderr silenced;
    if (!open(frameRate)) {
        throw DataError("cannot write the video " + inQuotes(target) + ": no encoder for it is installed");
    }
}

bool VideoFile::open(double frameRate)
{
    for (const Codec& codec : codecsFor(m_target)) {
        if (m_writer.open(m_file.path().string(), codec.api, codec.code, frameRate, m_size, true)) {
            return true;
        }
    }
    return false;
}

void VideoFile::add(const cv::Mat& picture, int)
{
    const SilencedStderr silenced;
    cv::Mat even = picture;
    if (picture.size() != m_size) {
        cv::copyMakeBorder(picture, even, 0, m_size.height - picture.rows, 0, m_size.width - picture.cols,
                           cv::BORDER_REPLICATE);
    }
    m_writer.write(even);
    ++m_added;
}

void VideoFile::finish()
{
    int found = 0;
    {
        const SilencedStderr silenced;
        m_writer.release();
        found = picturesIn(m_file.path());
    }
    if (found != m_added) {
        throw DataError("the video " + inQuotes(m_target) + " came out with " + counted(found, "picture") +
                        " instead of " + std::to_string(m_added) + " (is the disk full?)");
    }
    m_file.commit();
}

}  // namespace kovtools
