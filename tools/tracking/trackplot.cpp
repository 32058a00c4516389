#include "tools/tracking/trackplot.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "tools/plot/axes.h"
#include "tools/render/lettering.h"

namespace kovtools {

namespace {

const cv::Rect room(70, 70, 860, 590);   // pixels; the map fits into it
constexpr double greyRange = 20.0;       // dB
constexpr double brightestGrey = 150.0;  // darker than any track
constexpr int wantedTicks = 10;
constexpr int fractionBits = 4;

Axes axesFor(cv::Size map, cv::Size pictureSize)
{
    const cv::Size shape = pictureSize.empty() ? map : pictureSize;
    const double scale = std::min(static_cast<double>(room.width) / shape.width,
                                  static_cast<double>(room.height) / shape.height);
    const cv::Size size(std::max(cvRound(scale * shape.width), 1),
                        std::max(cvRound(scale * shape.height), 1));
    const cv::Rect area(cv::Point(room.x + (room.width - size.width) / 2, room.y), size);
    return {area, Axis{-0.5, map.width - 0.5, roundTicks(0.0, map.width - 1.0, wantedTicks), "column"},
            Axis{map.height - 0.5, -0.5, roundTicks(0.0, map.height - 1.0, wantedTicks), "row"}};
}

void drawMap(cv::Mat& picture, const cv::Mat1f& highest, cv::Rect area)
{
    double top = 0.0;
    cv::minMaxLoc(highest, nullptr, &top);
    if (!(top > 0.0)) {
        return;
    }
    cv::Mat1b grey(highest.size());
    for (int row = 0; row < highest.rows; ++row) {
        for (int col = 0; col < highest.cols; ++col) {
            const double db = 20.0 * std::log10(std::max(highest(row, col) / top, 1e-9));
            grey(row, col) =
                cv::saturate_cast<unsigned char>(brightestGrey * std::max(1.0 + db / greyRange, 0.0));
        }
    }
    cv::Mat shown;
    cv::resize(grey, shown, area.size(), 0.0, 0.0, cv::INTER_LINEAR);
    cv::cvtColor(shown, shown, cv::COLOR_GRAY2BGR);
    cv::max(shown, cv::Mat(shown.size(), CV_8UC3, paperColour), shown);
    shown.copyTo(picture(area));
}

cv::Point fine(cv::Point2d place)
{
    return {cvRound(place.x * (1 << fractionBits)), cvRound(place.y * (1 << fractionBits))};
}

// Stored peaks may lie anywhere; what is off the map is drawn at its rim.
cv::Point2d placeOf(const Axes& axes, cv::Size map, const TrackPoint& point)
{
    return axes.place(std::clamp(point.col, 0, map.width - 1), std::clamp(point.row, 0, map.height - 1));
}

void drawLines(cv::Mat& picture, const Axes& axes, cv::Size map, const Track& track, const cv::Scalar& colour,
               int stroke)
{
    for (std::size_t i = 1; i < track.points.size(); ++i) {
        const TrackPoint& from = track.points[i - 1];
        const TrackPoint& to = track.points[i];
        cv::line(picture, fine(placeOf(axes, map, from)), fine(placeOf(axes, map, to)), colour, stroke,
                 cv::LINE_AA, fractionBits);
    }
}

void drawEnd(cv::Mat& picture, const Axes& axes, cv::Size map, const Track& track)
{
    const cv::Point2d place = placeOf(axes, map, track.points.back());
    cv::circle(picture, fine(place), 8 << fractionBits, outlineColour, cv::FILLED, cv::LINE_AA, fractionBits);
    cv::circle(picture, fine(place), 6 << fractionBits, distinctColour(track.id), cv::FILLED, cv::LINE_AA,
               fractionBits);
    std::string text("#");
    text += std::to_string(track.id);
    const Layout layout(picture.size());
    const cv::Size size = textSize(text, layout);
    const bool isLeft = place.x + size.width + 16 > axes.area().x + axes.area().width;
    drawText(picture, text,
             cv::Point(cvRound(place.x) + (isLeft ? -size.width - 12 : 12),
                       std::max(cvRound(place.y) - 10, axes.area().y + size.height + 4)),
             layout);
}

}  // namespace

HighestLevels::HighestLevels(int rows, int cols) : m_map(rows, cols, 0.0F) {}

void HighestLevels::add(const EngMapResult& frame)
{
    for (int row = 0; row < m_map.rows; ++row) {
        for (int col = 0; col < m_map.cols; ++col) {
            const float level = frame.ResEngMap->data[row][col];
            if (std::isfinite(level) && level > m_map(row, col)) {
                m_map(row, col) = level;
            }
        }
    }
}

cv::Mat drawTracks(const std::vector<Track>& tracks, const cv::Mat1f& highest, cv::Size pictureSize,
                   const std::string& title)
{
    const cv::Size map = highest.size();
    const Axes axes = axesFor(map, pictureSize);
    cv::Mat picture(trackPlotHeight, trackPlotWidth, CV_8UC3, paperColour);
    axes.draw(picture);
    drawMap(picture, highest, axes.area());
    cv::rectangle(picture, axes.area(), rimColour);
    const auto forEach = [&tracks](const auto& draw) {
        for (const Track& track : tracks) {
            draw(track);
        }
    };
    forEach([&](const Track& track) { drawLines(picture, axes, map, track, outlineColour, 6); });
    forEach([&](const Track& track) { drawLines(picture, axes, map, track, distinctColour(track.id), 3); });
    forEach([&](const Track& track) { drawEnd(picture, axes, map, track); });
    const Layout layout(picture.size());
    const cv::Size size = textSize(title, layout);
    drawText(picture, title, cv::Point((picture.cols - size.width) / 2, layout.lineHeight), layout);
    return picture;
}

cv::Point2d placeInTrackPlot(cv::Size map, cv::Size pictureSize, int row, int col)
{
    return axesFor(map, pictureSize).place(col, row);
}

}  // namespace kovtools
