#include "tools/render/lettering.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace kovtools {

namespace {

constexpr int font = cv::FONT_HERSHEY_SIMPLEX;
constexpr double standardPixels = 640.0 * 480.0;
constexpr int fractionBits = 4;

int outlineStroke(int stroke, const Layout& layout)
{
    return stroke + 2 * std::max(1, static_cast<int>(std::lround(layout.scale)));
}

}  // namespace

const cv::Scalar inkColour(250, 250, 250);
const cv::Scalar outlineColour(16, 16, 16);

Layout::Layout(cv::Size picture)
    : scale(std::sqrt(picture.width * static_cast<double>(picture.height) / standardPixels)),
      fontScale(std::max(0.34, 0.46 * scale)),
      stroke(std::max(1, static_cast<int>(std::lround(1.15 * scale)))),
      lineHeight(static_cast<int>(std::lround(36.0 * fontScale)))
{
}

int Layout::px(double atStandardSize) const
{
    return std::max(1, static_cast<int>(std::lround(atStandardSize * scale)));
}

cv::Size textSize(const std::string& text, const Layout& layout)
{
    int baseline = 0;
    return cv::getTextSize(text, font, layout.fontScale, layout.stroke, &baseline);
}

void drawText(cv::Mat& picture, const std::string& text, cv::Point origin, const Layout& layout)
{
    cv::putText(picture, text, origin, font, layout.fontScale, outlineColour,
                outlineStroke(layout.stroke, layout), cv::LINE_AA);
    cv::putText(picture, text, origin, font, layout.fontScale, inkColour, layout.stroke, cv::LINE_AA);
}

void drawOutlinedLine(cv::Mat& picture, cv::Point from, cv::Point to, const Layout& layout)
{
    const int stroke = layout.px(1.4);
    cv::line(picture, from, to, outlineColour, outlineStroke(stroke, layout), cv::LINE_AA);
    cv::line(picture, from, to, inkColour, stroke, cv::LINE_AA);
}

void drawOutlinedEllipse(cv::Mat& picture, cv::Point2d middle, cv::Size2d halfAxes, const Layout& layout)
{
    const int stroke = layout.px(1.4);
    const double unit = 1 << fractionBits;
    const cv::Point centre(cvRound(middle.x * unit), cvRound(middle.y * unit));
    const cv::Size axes(cvRound(halfAxes.width * unit), cvRound(halfAxes.height * unit));
    cv::ellipse(picture, centre, axes, 0.0, 0.0, 360.0, outlineColour, outlineStroke(stroke, layout),
                cv::LINE_AA, fractionBits);
    cv::ellipse(picture, centre, axes, 0.0, 0.0, 360.0, inkColour, stroke, cv::LINE_AA, fractionBits);
}

void dimBox(cv::Mat& picture, cv::Rect box)
{
    cv::Mat part = picture(box & cv::Rect(cv::Point(0, 0), picture.size()));
    part.convertTo(part, -1, 0.45, 0.0);
}

}  // namespace kovtools
