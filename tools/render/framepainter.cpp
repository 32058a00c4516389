#include "tools/render/framepainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>

#include "tools/plot/axes.h"
#include "tools/render/colourbar.h"
#include "tools/render/lettering.h"

namespace kovtools {

namespace {

const cv::Scalar emptyBackground(34, 30, 28);

// Pixels of a standard picture. A cursor's cross has room inside the ring of a track.
constexpr double trackRadius = 15.0;
constexpr double lostTrackRadius = 8.0;

// White where any channel of the overlay shows something.
cv::Mat colouredPixels(const cv::Mat& overlay)
{
    cv::Mat mask;
    cv::inRange(overlay, cv::Scalar(0, 0, 0), cv::Scalar(0, 0, 0), mask);
    cv::bitwise_not(mask, mask);
    return mask;
}

cv::Point middleOfCell(const cv::Mat& picture, int row, int col, const FrameNotes& notes)
{
    const cv::Point2d place((col + 0.5) * picture.cols / notes.mapCols,
                            (row + 0.5) * picture.rows / notes.mapRows);
    return {cvRound(place.x - 0.5), cvRound(place.y - 0.5)};
}

}  // namespace

std::string levelText(float level, double reference)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f dB", 20.0 * std::log10(level / reference));
    return text.data();
}

FramePainter::FramePainter(const RenderOptions& options, const RegionEllipse& region, const cv::Mat& camera)
    : m_options(options), m_region(region), m_blend(options.blend)
{
    if (camera.empty()) {
        m_background =
            cv::Mat(options.picture, CV_8UC3, options.plain ? cv::Scalar::all(0) : emptyBackground);
        m_blend = 1.0;  // there is nothing to see through the overlay
        return;
    }
    const bool isShrunk = camera.cols > options.picture.width || camera.rows > options.picture.height;
    cv::resize(camera, m_background, options.picture, 0.0, 0.0, isShrunk ? cv::INTER_AREA : cv::INTER_LINEAR);
}

cv::Mat FramePainter::compose(const cv::Mat& overlay) const
{
    cv::Mat picture = m_background.clone();
    if (m_blend >= 1.0) {
        overlay.copyTo(picture, colouredPixels(overlay));
        return picture;
    }
    cv::Mat mixed;
    cv::addWeighted(overlay, m_blend, m_background, 1.0 - m_blend, 0.0, mixed);
    mixed.copyTo(picture, colouredPixels(overlay));
    return picture;
}

void FramePainter::annotate(cv::Mat& picture, const FrameNotes& notes) const
{
    if (m_options.plain) {
        return;
    }
    drawRegion(picture);
    drawColourBar(picture, notes.range, m_options.palette);
    drawCaption(picture, notes.caption);
    for (const TargetPoint& track : notes.tracks) {
        drawTrack(picture, track, notes);
    }
    // The strongest last, so that its mark lies on top.
    for (auto mark = notes.marks.rbegin(); mark != notes.marks.rend(); ++mark) {
        drawMark(picture, *mark, notes);
    }
}

void FramePainter::drawRegion(cv::Mat& picture) const
{
    if (!m_region.active) {
        return;
    }
    const double scaleX = static_cast<double>(picture.cols) / m_options.picture.width;
    const double scaleY = static_cast<double>(picture.rows) / m_options.picture.height;
    drawOutlinedEllipse(picture, {0.5 * picture.cols, 0.5 * picture.rows},
                        {m_region.halfWidth * scaleX, m_region.halfHeight * scaleY}, Layout(picture.size()));
}

// A cross with an open middle, so that the place itself stays visible, and the level beside it where there is
// room.
void FramePainter::drawMark(cv::Mat& picture, const CursorMark& mark, const FrameNotes& notes) const
{
    const Layout layout(picture.size());
    const cv::Point middle = middleOfCell(picture, mark.row, mark.col, notes);
    const int inner = layout.px(5);
    const int outer = layout.px(12);
    for (const cv::Point& way : {cv::Point(1, 0), cv::Point(-1, 0), cv::Point(0, 1), cv::Point(0, -1)}) {
        drawOutlinedLine(picture, middle + inner * way, middle + outer * way, layout);
    }

    const std::string text = levelText(mark.level, m_options.referenceLevel);
    const cv::Size size = textSize(text, layout);
    const int gap = layout.px(4);
    cv::Point origin = middle + cv::Point(inner + gap, -inner - gap);
    if (origin.x + size.width + gap > colourBarPanel(picture.size()).x) {
        origin.x = middle.x - inner - gap - size.width;
    }
    if (origin.y - size.height < gap) {
        origin.y = middle.y + inner + gap + size.height;
    }
    drawText(picture, text, origin, layout);
}

// A ring around the place, in the colour of the identity, which stands below it. Thin and small while the track goes on
// without a peak.
void FramePainter::drawTrack(cv::Mat& picture, const TargetPoint& track, const FrameNotes& notes) const
{
    const Layout layout(picture.size());
    const cv::Point middle = middleOfCell(picture, track.row, track.col, notes);
    const int radius = layout.px(track.matched ? trackRadius : lostTrackRadius);
    const int stroke = layout.px(track.matched ? 3.0 : 1.4);
    cv::circle(picture, middle, radius, outlineColour, stroke + 2, cv::LINE_AA);
    cv::circle(picture, middle, radius, distinctColour(track.id), stroke, cv::LINE_AA);

    std::string text("#");
    text += std::to_string(track.id);
    const cv::Size size = textSize(text, layout);
    const int gap = layout.px(4);
    cv::Point origin = middle + cv::Point(-size.width / 2, radius + stroke + gap + size.height);
    if (origin.y > picture.rows - layout.lineHeight) {
        origin.y = middle.y - radius - stroke - gap;
    }
    drawText(picture, text, origin, layout);
}

void FramePainter::drawCaption(cv::Mat& picture, const std::string& caption) const
{
    const Layout layout(picture.size());
    const int gap = layout.px(8);
    drawText(picture, caption, cv::Point(gap, picture.rows - gap), layout);
}

}  // namespace kovtools
