#include "tools/gasleak/leakplot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <string>

#include "tools/plot/axes.h"
#include "tools/render/lettering.h"
#include "tools/support/errors.h"

namespace kovtools {

namespace {

const cv::Rect plotArea(110, 90, 810, 450);  // pixels
constexpr double levelStep = 0.1;            // dB, the resolution of the tables
constexpr double mostSteps = 4000.0;
constexpr float joined = 1.25F;  // dB; the line bridges gaps of a table in whole decibels, not larger ones
constexpr int wantedTicks = 10;
constexpr int mostDecadeTicks = 10;
constexpr int aloneRadius = 6;  // pixels, of an entry that no line joins to another
constexpr double margin = 0.5;  // dB, beside a curve that is hardly wider than a point
constexpr int fractionBits = 4;

bool isDrawable(const LeakPoint& point)
{
    return point.answer.entry != LeakEntry::None && point.answer.rate > 0.0F &&
           std::isfinite(point.answer.rate);
}

double decades(const LeakPoint& point)
{
    return std::log10(static_cast<double>(point.answer.rate));
}

std::string decadeText(int exponent)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), exponent < -4 || exponent > 5 ? "%.0e" : "%.12g",
                  std::pow(10.0, exponent));
    return text.data();
}

Axis rateAxis(double lowest, double highest)
{
    const int low = static_cast<int>(std::floor(lowest));
    const int high = std::max(static_cast<int>(std::ceil(highest)), low + 1);
    Axis axis{static_cast<double>(low), static_cast<double>(high), {}, "leak rate (unit of the table)"};
    const int step = (high - low + mostDecadeTicks - 1) / mostDecadeTicks;
    for (int exponent = low; exponent <= high; exponent += step) {
        axis.ticks.push_back({static_cast<double>(exponent), decadeText(exponent)});
    }
    return axis;
}

Axes axesFor(const std::vector<LeakPoint>& curve)
{
    double lowest = std::numeric_limits<double>::max();
    double highest = std::numeric_limits<double>::lowest();
    for (const LeakPoint& point : curve) {
        if (isDrawable(point)) {
            lowest = std::min(lowest, decades(point));
            highest = std::max(highest, decades(point));
        }
    }
    if (lowest > highest) {
        throw DataError("there is nothing to plot: the table has no leak rate above 0 for this distance");
    }
    double left = curve.front().level;
    double right = curve.back().level;
    if (right - left < 2.0 * margin) {
        left -= margin;
        right += margin;
    }
    return {plotArea, Axis{left, right, roundTicks(left, right, wantedTicks), "sound pressure level (dB)"},
            rateAxis(lowest, highest)};
}

// Without what lies before the first and behind the last entry of the table's own.
std::vector<LeakPoint> betweenEntries(const std::vector<LeakPoint>& curve)
{
    const auto isExact = [](const LeakPoint& point) { return point.answer.entry == LeakEntry::Exact; };
    const auto first = std::find_if(curve.begin(), curve.end(), isExact);
    const auto last = std::find_if(curve.rbegin(), curve.rend(), isExact).base();
    return first == curve.end() ? curve : std::vector<LeakPoint>(first, last);
}

cv::Point fine(cv::Point2d place)
{
    return {cvRound(place.x * (1 << fractionBits)), cvRound(place.y * (1 << fractionBits))};
}

cv::Point2d placeOf(const Axes& axes, const LeakPoint& point)
{
    return axes.place(point.level, decades(point));
}

void drawDot(cv::Mat& picture, const Axes& axes, const LeakPoint& point, int radius, const cv::Scalar& colour)
{
    cv::circle(picture, fine(placeOf(axes, point)), radius << fractionBits, colour, cv::FILLED, cv::LINE_AA,
               fractionBits);
}

void drawCurve(cv::Mat& picture, const Axes& axes, const std::vector<LeakPoint>& curve)
{
    std::vector<LeakPoint> entries;
    for (const LeakPoint& point : curve) {
        if (isDrawable(point) && point.answer.entry == LeakEntry::Clamped) {
            drawDot(picture, axes, point, 2, leakClampedColour);
        } else if (isDrawable(point)) {
            entries.push_back(point);
        }
    }
    // Above the others, which may lie side by side as a line.
    const auto isJoined = [&entries](std::size_t i) {  // to the one before
        return i > 0 && i < entries.size() && entries[i].level - entries[i - 1].level < joined;
    };
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (isJoined(i)) {
            cv::line(picture, fine(placeOf(axes, entries[i - 1])), fine(placeOf(axes, entries[i])),
                     leakLineColour, 3, cv::LINE_AA, fractionBits);
        }
        const bool isAlone = !isJoined(i) && !isJoined(i + 1);
        drawDot(picture, axes, entries[i], isAlone ? aloneRadius : 2, leakLineColour);
    }
}

void drawMarked(cv::Mat& picture, const Axes& axes, const LeakPoint& marked)
{
    const cv::Point2d place = placeOf(axes, marked);
    if (!axes.area().contains(cv::Point(place))) {
        return;
    }
    cv::circle(picture, fine(place), 8 << fractionBits, outlineColour, cv::FILLED, cv::LINE_AA, fractionBits);
    cv::circle(picture, fine(place), 6 << fractionBits, leakMarkColour, cv::FILLED, cv::LINE_AA,
               fractionBits);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.4g at %.4g dB", static_cast<double>(marked.answer.rate),
                  static_cast<double>(marked.level));
    const Layout layout(picture.size());
    const cv::Size size = textSize(text.data(), layout);
    const bool isLeft = place.x > plotArea.x + 0.5 * plotArea.width;
    drawText(picture, text.data(),
             cv::Point(cvRound(place.x) + (isLeft ? -size.width - 14 : 14),
                       cvRound(place.y) + (isLeft ? -8 : size.height + 12)),
             layout);
}

void drawLegend(cv::Mat& picture, const std::vector<LeakPoint>& curve)
{
    const bool isAnyClamped = std::any_of(curve.begin(), curve.end(), [](const LeakPoint& point) {
        return isDrawable(point) && point.answer.entry == LeakEntry::Clamped;
    });
    if (!isAnyClamped) {
        return;
    }
    const Layout layout(picture.size());
    const std::string text = "no entry there: that of a bound";
    const cv::Point at(plotArea.x + plotArea.width - textSize(text, layout).width, plotArea.y - 12);
    cv::circle(picture, at + cv::Point(-14, -6), 5, leakClampedColour, cv::FILLED, cv::LINE_AA);
    drawText(picture, text, at, layout);
}

}  // namespace

const cv::Scalar leakLineColour = cv::Scalar(0, 159, 230);
const cv::Scalar leakClampedColour = cv::Scalar(160, 160, 160);
const cv::Scalar leakMarkColour = cv::Scalar(233, 180, 86);

std::vector<LeakPoint> leakCurve(const LeakMeter& meter, float distance)
{
    // Pressure levels whose power levels the table covers; its bounds are truncated to whole decibels.
    const double spreading = static_cast<double>(meter.measure({distance, 0.0F}).powerLevel);
    const double low = meter.lowestLevel() - 1.0 - spreading;
    const double high = meter.highestLevel() + 1.0 - spreading;
    const double steps = std::clamp(std::floor((high - low) / levelStep), 1.0, mostSteps);
    std::vector<LeakPoint> curve;
    for (double i = 0.0; i < steps; i += 1.0) {
        // In the middle of a tenth, where no rounding decides which entry is meant.
        const auto level = static_cast<float>(low + (i + 0.5) * (high - low) / steps);
        curve.push_back({level, meter.measure({distance, level})});
    }
    return betweenEntries(curve);
}

cv::Mat drawLeakPlot(const std::vector<LeakPoint>& curve, float distance,
                     const std::optional<LeakPoint>& marked)
{
    const Axes axes = axesFor(curve);
    cv::Mat picture(leakPlotHeight, leakPlotWidth, CV_8UC3, paperColour);
    axes.draw(picture);
    drawCurve(picture, axes, curve);
    if (marked && isDrawable(*marked)) {
        drawMarked(picture, axes, *marked);
    }
    std::array<char, 64> title{};
    std::snprintf(title.data(), title.size(), "Leak rate at a distance of %.4g m",
                  static_cast<double>(distance));
    const Layout layout(picture.size());
    drawText(picture, title.data(), cv::Point(layout.px(6), layout.lineHeight + layout.px(4)), layout);
    drawLegend(picture, curve);
    return picture;
}

cv::Point2d placeInLeakPlot(const std::vector<LeakPoint>& curve, const LeakPoint& point)
{
    return placeOf(axesFor(curve), point);
}

}  // namespace kovtools
