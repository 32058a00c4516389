#include "tools/render/colourbar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>

#include <KOVDoaHandle/imaging/kovmapcolor.h>

#include "tools/render/lettering.h"

namespace kovtools {

namespace {

constexpr std::array<double, 9> tickSteps{0.1, 0.2, 0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 50.0};  // dB
constexpr double mostTicks = 7.0;

constexpr double edgeGap = 6.0;    // pixels of a standard picture
constexpr double barWidth = 14.0;  // likewise
constexpr double barShare = 0.56;  // of the picture's height
constexpr const char* widestTick = "-88";

std::string tickText(double db)
{
    std::string text = std::to_string(std::round(db * 10.0) / 10.0);
    text.erase(text.find('.') + 2);
    if (text.ends_with(".0")) {
        text.erase(text.size() - 2);
    }
    if (text == "-0") {
        return "0";
    }
    return db > 0.05 ? "+" + text : text;
}

void colour(mat1d_fp32* levels, const ColourRange& range, int palette, mat1d_uint8* pixels)
{
    switch (palette) {
        case 1:
            KOVPrivate::scale_bryw_mat(levels, range.low, range.high, pixels);
            break;
        case 2:
            KOVPrivate::scale_gray_mat(levels, range.low, range.high, pixels);
            break;
        default:
            KOVPrivate::scale_bgr_mat(levels, range.low, range.high, pixels);
            break;
    }
}

}  // namespace

std::vector<double> tickValues(double highDb, double lowDb)
{
    const double span = highDb - lowDb;
    double step = tickSteps.back();
    for (const double candidate : tickSteps) {
        if (span / candidate <= mostTicks) {
            step = candidate;
            break;
        }
    }
    std::vector<double> values;
    constexpr double slack = 1e-3;  // dB; the ends of the range carry rounding errors
    for (double k = std::floor((highDb + slack) / step); k * step >= lowDb - slack; k -= 1.0) {
        values.push_back(k * step);
    }
    return values;
}

cv::Mat barColours(const ColourRange& range, int palette, int height)
{
    cv::Mat bar(height, 1, CV_8UC3, cv::Scalar(60, 60, 60));
    if (!range.isUsable()) {
        return bar;
    }
    cv::Mat1f levels(height, 1);
    for (int y = 0; y < height; ++y) {
        const double part = (y + 0.5) / height;
        const double db = range.highDb() + part * (range.lowDb() - range.highDb());
        levels(y) = static_cast<float>(range.frameMaximum * std::pow(10.0, 0.05 * db));
    }
    mat1d_fp32 source{height, 1, levels.ptr<float>()};
    mat1d_uint8 target{height, 3, bar.ptr<unsigned char>()};
    colour(&source, range, palette, &target);
    return bar;
}

cv::Rect colourBarPanel(cv::Size picture)
{
    const Layout layout(picture);
    const int gap = layout.px(edgeGap);
    const int width = layout.px(barWidth) + textSize(widestTick, layout).width + 4 * gap;
    const int barHeight = static_cast<int>(barShare * picture.height);
    const int height = barHeight + layout.lineHeight + 2 * gap;
    return {picture.width - width - gap, (picture.height - barHeight) / 2 - layout.lineHeight, width, height};
}

void drawColourBar(cv::Mat& picture, const ColourRange& range, int palette)
{
    const Layout layout(picture.size());
    const int gap = layout.px(edgeGap);
    const cv::Rect panel = colourBarPanel(picture.size());
    dimBox(picture, panel);

    const cv::Rect bar(panel.x + panel.width - gap - layout.px(barWidth), panel.y + layout.lineHeight,
                       layout.px(barWidth), panel.height - layout.lineHeight - 2 * gap);
    cv::rectangle(picture, cv::Rect(bar.x - 1, bar.y - 1, bar.width + 2, bar.height + 2), outlineColour);
    cv::Mat area = picture(bar);
    cv::repeat(barColours(range, palette, bar.height), 1, bar.width, area);

    drawText(picture, "dB", cv::Point(panel.x + gap, bar.y - layout.lineHeight / 3), layout);
    if (!range.isUsable()) {
        return;
    }
    for (const double db : tickValues(range.highDb(), range.lowDb())) {
        const double part = (db - range.highDb()) / (range.lowDb() - range.highDb());
        const int y = bar.y + static_cast<int>(std::lround(std::clamp(part, 0.0, 1.0) * (bar.height - 1)));
        cv::line(picture, cv::Point(bar.x - gap / 2, y), cv::Point(bar.x, y), inkColour,
                 std::max(1, layout.stroke / 2));
        const std::string text = tickText(db);
        const cv::Size size = textSize(text, layout);
        drawText(picture, text, cv::Point(bar.x - gap - size.width, y + size.height / 2), layout);
    }
}

}  // namespace kovtools
