#include "tools/render/contactsheet.h"

#include <algorithm>
#include <cmath>

namespace kovtools {

namespace {

constexpr int columns = 4;
constexpr int tileWidth = 480;  // pixels; four of them fit on a usual screen
constexpr int gap = 8;          // pixels
const cv::Scalar paper(24, 24, 24);

}  // namespace

std::vector<int> evenlySpread(int first, int last, int count)
{
    const int available = last - first + 1;
    const int wanted = std::min(available, count);
    std::vector<int> numbers;
    for (int i = 0; i < wanted; ++i) {
        const double part = wanted > 1 ? static_cast<double>(i) / (wanted - 1) : 0.0;
        numbers.push_back(first + static_cast<int>(std::lround(part * (available - 1))));
    }
    return numbers;
}

ContactSheet::ContactSheet(int count, cv::Size picture)
    : m_tile(tileWidth, std::max(1, static_cast<int>(std::lround(static_cast<double>(tileWidth) *
                                                                 picture.height / picture.width)))),
      m_columns(std::clamp(count, 1, columns))
{
    const int rows = (count + m_columns - 1) / m_columns;
    m_sheet =
        cv::Mat(rows * (m_tile.height + gap) + gap, m_columns * (m_tile.width + gap) + gap, CV_8UC3, paper);
}

void ContactSheet::add(const cv::Mat& tile)
{
    const int x = gap + (m_added % m_columns) * (m_tile.width + gap);
    const int y = gap + (m_added / m_columns) * (m_tile.height + gap);
    tile.copyTo(m_sheet(cv::Rect(cv::Point(x, y), m_tile)));
    ++m_added;
}

}  // namespace kovtools
