#include "tools/plot/axes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "tools/render/lettering.h"

namespace kovtools {

namespace {

std::string numberText(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", value == 0.0 ? 0.0 : value);
    return text.data();
}

}  // namespace

const cv::Scalar paperColour(24, 24, 24);
const cv::Scalar gridColour(58, 58, 58);
const cv::Scalar rimColour(150, 150, 150);

cv::Scalar distinctColour(int number)
{
    static const std::array<cv::Scalar, 8> colours{cv::Scalar(0, 159, 230),   cv::Scalar(233, 180, 86),
                                                   cv::Scalar(115, 158, 0),   cv::Scalar(66, 228, 240),
                                                   cv::Scalar(178, 114, 0),   cv::Scalar(0, 94, 213),
                                                   cv::Scalar(167, 121, 204), cv::Scalar(230, 230, 230)};
    return colours[static_cast<std::size_t>(number) % colours.size()];
}

std::vector<Tick> roundTicks(double low, double high, int count)
{
    const double wanted = std::abs(high - low) / std::max(count, 1);
    const double decade = std::pow(10.0, std::floor(std::log10(wanted)));
    double step = 10.0 * decade;
    for (const double factor : {5.0, 2.0, 1.0}) {
        step = factor * decade >= wanted ? factor * decade : step;
    }
    const double slack = 1e-6 * step;
    std::vector<Tick> ticks;
    for (double k = std::ceil((std::min(low, high) - slack) / step); k * step <= std::max(low, high) + slack;
         k += 1.0) {
        ticks.push_back({k * step, numberText(k * step)});
    }
    return ticks;
}

Axes::Axes(cv::Rect area, Axis x, Axis y) : m_area(area), m_x(std::move(x)), m_y(std::move(y)) {}

cv::Point2d Axes::place(double x, double y) const
{
    return {m_area.x + m_area.width * (x - m_x.low) / (m_x.high - m_x.low),
            m_area.y + m_area.height * (m_y.high - y) / (m_y.high - m_y.low)};
}

void Axes::draw(cv::Mat& picture) const
{
    const Layout layout(picture.size());
    const int gap = layout.px(6);
    for (const Tick& tick : m_x.ticks) {
        const int x = cvRound(place(tick.value, m_y.low).x);
        cv::line(picture, cv::Point(x, m_area.y), cv::Point(x, m_area.y + m_area.height), gridColour);
        const cv::Size size = textSize(tick.text, layout);
        drawText(picture, tick.text,
                 cv::Point(x - size.width / 2, m_area.y + m_area.height + gap + size.height), layout);
    }
    for (const Tick& tick : m_y.ticks) {
        const int y = cvRound(place(m_x.low, tick.value).y);
        cv::line(picture, cv::Point(m_area.x, y), cv::Point(m_area.x + m_area.width, y), gridColour);
        const cv::Size size = textSize(tick.text, layout);
        drawText(picture, tick.text, cv::Point(m_area.x - gap - size.width, y + size.height / 2), layout);
    }
    cv::rectangle(picture, m_area, rimColour);
    const cv::Size below = textSize(m_x.title, layout);
    drawText(picture, m_x.title,
             cv::Point(m_area.x + (m_area.width - below.width) / 2,
                       m_area.y + m_area.height + 2 * gap + 2 * layout.lineHeight),
             layout);
    // Above the axis instead of along it: letters are not turned.
    const cv::Size above = textSize(m_y.title, layout);
    drawText(picture, m_y.title, cv::Point(std::max(gap, m_area.x - above.width), m_area.y - 2 * gap),
             layout);
}

}  // namespace kovtools
