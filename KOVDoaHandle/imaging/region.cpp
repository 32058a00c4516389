#include <KOVDoaHandle/imaging/region_p.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace KOVPrivate {

Region::Region(int height) : m_firstOfRow(static_cast<std::size_t>(height) + 1, 0) {}

Region Region::ellipse(int width, int height, int horizontal, int vertical)
{
    cv::Mat mask(height, width, CV_8UC1, cv::Scalar(0));
    const cv::Point centre(static_cast<int>(width * 0.5), static_cast<int>(height * 0.5));
    cv::ellipse(mask, centre, cv::Size(horizontal, vertical), 0.0, 0.0, 360.0, cv::Scalar(255), cv::FILLED,
                cv::LINE_8);

    Region region;
    region.m_firstOfRow.reserve(static_cast<std::size_t>(height) + 1);
    for (int y = 0; y < height; ++y) {
        const uchar* pixels = mask.ptr(y);
        const uchar* const end = pixels + width;
        const uchar* begin = std::find(pixels, end, 255);
        while (begin != end) {
            const uchar* const behind = std::find(begin, end, 0);
            region.m_runs.push_back({static_cast<int>(begin - pixels), static_cast<int>(behind - pixels)});
            begin = std::find(behind, end, 255);
        }
        region.m_firstOfRow.push_back(region.m_runs.size());
    }
    return region;
}

std::span<const PixelRun> Region::row(int y) const
{
    const std::size_t first = m_firstOfRow[static_cast<std::size_t>(y)];
    return std::span(m_runs).subspan(first, m_firstOfRow[static_cast<std::size_t>(y) + 1] - first);
}

}  // namespace KOVPrivate
