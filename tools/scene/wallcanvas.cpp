#include "tools/scene/wallcanvas.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <opencv2/imgproc.hpp>

namespace kovtools {

namespace {

constexpr int fractionBits = 4;   // sub-pixel precision of the drawing functions
constexpr int largeWidth = 1600;  // pixels; wider pictures are fine enough without as much oversampling
constexpr int strips = 40;        // stripes that a rounded surface is painted in

// Brightness across a cylinder, `side` from -1 (away from the light) to 1: diffuse light, a gleam, and a
// little light thrown back by the wall at the dark side.
double cylinderBrightness(double side)
{
    const double normal = std::sqrt(std::max(0.0, 1.0 - side * side));
    const double lit = std::max(0.0, 0.62 * side + 0.78 * normal);
    const double gleam = std::exp(-40.0 * (side - 0.55) * (side - 0.55));
    return 0.22 + 0.72 * lit + 0.45 * gleam;
}

WallPoint turned(double angle, double length)
{
    return {length * std::cos(angle), length * std::sin(angle)};
}

}  // namespace

Paint shaded(const Paint& paint, double brightness)
{
    Paint result;
    for (int i = 0; i < 3; ++i) {
        result[i] = std::clamp(paint[i] * brightness, 0.0, 255.0);
    }
    return result;
}

WallCanvas::WallCanvas(int pictureWidth, int pictureHeight, double halfWidth, double wallDistance)
    : m_size(pictureWidth, pictureHeight),
      m_oversampling(pictureWidth > largeWidth ? 2 : 3),
      m_halfWidth(halfWidth),
      m_halfHeight(halfWidth * pictureHeight / pictureWidth),
      m_wallDistance(wallDistance),
      m_pixelsPerMetre(0.5 * pictureWidth * m_oversampling / halfWidth),
      m_pixels(pictureHeight * m_oversampling, pictureWidth * m_oversampling, CV_8UC3, cv::Scalar::all(0))
{
}

cv::Point2d WallCanvas::toPixels(WallPoint point, double depth) const
{
    const double scale = m_pixelsPerMetre * m_wallDistance / depth;
    return {0.5 * m_pixels.cols + point.x * scale, 0.5 * m_pixels.rows - point.y * scale};
}

cv::Point WallCanvas::fixedPoint(cv::Point2d pixels) const
{
    return {cvRound(pixels.x * (1 << fractionBits)), cvRound(pixels.y * (1 << fractionBits))};
}

void WallCanvas::polygon(const std::vector<WallPoint>& corners, const Paint& paint)
{
    std::vector<cv::Point3d> atWall;
    for (const WallPoint& corner : corners) {
        atWall.emplace_back(corner.x, corner.y, m_wallDistance);
    }
    polygonAt(atWall, paint);
}

void WallCanvas::polygonAt(const std::vector<cv::Point3d>& corners, const Paint& paint)
{
    std::vector<cv::Point> points;
    for (const cv::Point3d& corner : corners) {
        points.push_back(fixedPoint(toPixels({corner.x, corner.y}, corner.z)));
    }
    cv::fillConvexPoly(m_pixels, points, paint, cv::LINE_8, fractionBits);
}

void WallCanvas::box(WallPoint lowerLeft, WallPoint upperRight, const Paint& paint)
{
    polygon({lowerLeft, {upperRight.x, lowerLeft.y}, upperRight, {lowerLeft.x, upperRight.y}}, paint);
}

void WallCanvas::disc(WallPoint middle, double radius, const Paint& paint)
{
    cv::circle(m_pixels, fixedPoint(toPixels(middle)), cvRound(toPixels(radius) * (1 << fractionBits)), paint,
               cv::FILLED, cv::LINE_8, fractionBits);
}

void WallCanvas::ring(WallPoint middle, double radius, double thickness, const Paint& paint)
{
    cv::circle(m_pixels, fixedPoint(toPixels(middle)), cvRound(toPixels(radius) * (1 << fractionBits)), paint,
               std::max(1, cvRound(toPixels(thickness))), cv::LINE_8, fractionBits);
}

void WallCanvas::line(WallPoint from, WallPoint to, double thickness, const Paint& paint)
{
    cv::line(m_pixels, fixedPoint(toPixels(from)), fixedPoint(toPixels(to)), paint,
             std::max(1, cvRound(toPixels(thickness))), cv::LINE_8, fractionBits);
}

void WallCanvas::lettering(const std::string& text, WallPoint middle, double height, const Paint& paint)
{
    constexpr double capitalHeight = 21.0;  // pixels of a capital letter at scale 1
    const double scale = toPixels(height) / capitalHeight;
    const int thickness = std::max(1, cvRound(toPixels(height) * 0.14));
    int baseline = 0;
    const cv::Size size = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, scale, thickness, &baseline);
    const cv::Point2d at = toPixels(middle);
    cv::putText(m_pixels, text,
                cv::Point(cvRound(at.x - 0.5 * size.width), cvRound(at.y + 0.5 * size.height)),
                cv::FONT_HERSHEY_SIMPLEX, scale, paint, thickness, cv::LINE_8);
}

void WallCanvas::pipe(WallPoint from, WallPoint to, double diameter, const Paint& paint)
{
    WallPoint across(from.y - to.y, to.x - from.x);
    across *= 0.5 * diameter / std::hypot(across.x, across.y);
    // The light comes from above and left, whichever way the pipe runs.
    if (across.y < -std::abs(across.x) || (across.x > 0.0 && std::abs(across.y) <= across.x)) {
        across = -across;
    }
    for (int i = 0; i < strips; ++i) {
        const double low = 2.0 * i / strips - 1.0;
        const double high = 2.0 * (i + 1) / strips - 1.0;
        polygon({from + low * across, to + low * across, to + high * across, from + high * across},
                shaded(paint, cylinderBrightness(0.5 * (low + high))));
    }
}

void WallCanvas::bend(WallPoint middle, double bendRadius, double startDegrees, double diameter,
                      const Paint& paint)
{
    constexpr int segments = 24;
    const double degree = std::numbers::pi / 180.0;
    const WallPoint light(-0.6, 0.8);
    for (int segment = 0; segment < segments; ++segment) {
        const double a0 = (startDegrees + 90.0 * segment / segments) * degree;
        const double a1 = (startDegrees + 90.0 * (segment + 1.15) / segments) * degree;
        const WallPoint outwards = turned(0.5 * (a0 + a1), 1.0);
        const double lit = outwards.dot(light) >= 0.0 ? 1.0 : -1.0;
        for (int i = 0; i < strips; ++i) {
            const double low = 2.0 * i / strips - 1.0;
            const double high = 2.0 * (i + 1) / strips - 1.0;
            const double r0 = bendRadius + 0.5 * diameter * low;
            const double r1 = bendRadius + 0.5 * diameter * high;
            polygon({middle + turned(a0, r0), middle + turned(a0, r1), middle + turned(a1, r1),
                     middle + turned(a1, r0)},
                    shaded(paint, cylinderBrightness(lit * 0.5 * (low + high))));
        }
    }
}

void WallCanvas::flange(WallPoint middle, bool horizontalPipe, double pipeDiameter, const Paint& paint)
{
    const double thickness = 0.32 * pipeDiameter;
    const double diameter = 1.75 * pipeDiameter;
    const WallPoint along = horizontalPipe ? WallPoint(1.0, 0.0) : WallPoint(0.0, 1.0);
    const WallPoint across = horizontalPipe ? WallPoint(0.0, 1.0) : WallPoint(1.0, 0.0);
    for (const double place : {-0.62, 0.62}) {
        const WallPoint at = middle + place * thickness * along;
        pipe(at - 0.5 * thickness * along, at + 0.5 * thickness * along, diameter, paint);
    }
    line(middle - 0.5 * diameter * across, middle + 0.5 * diameter * across, 0.012, Paint(25, 25, 28));
    for (const double place : {-0.80, -0.30, 0.30, 0.80}) {
        const WallPoint bolt = middle + 0.5 * place * diameter * across;
        pipe(bolt - 1.35 * thickness * along, bolt + 1.35 * thickness * along, 0.075 * diameter,
             Paint(120, 125, 130));
    }
}

void WallCanvas::handWheel(WallPoint middle, double radius, const Paint& paint)
{
    const WallPoint lower = middle + WallPoint(0.012, -0.012);
    ring(lower, radius, 0.034, shaded(paint, 0.35));
    for (int spoke = 0; spoke < 5; ++spoke) {
        line(middle, middle + turned(spoke * 2.0 * std::numbers::pi / 5.0 + 0.3, radius), 0.022,
             shaded(paint, 0.8));
    }
    ring(middle, radius, 0.032, paint);
    ring(middle + WallPoint(-0.004, 0.006), radius, 0.008, shaded(paint, 1.5));
    disc(middle, 0.028, Paint(70, 72, 75));
}

void WallCanvas::gauge(WallPoint middle, double radius, double needleDegrees)
{
    const double degree = std::numbers::pi / 180.0;
    disc(middle + WallPoint(0.02, -0.02), radius * 1.12, Paint(30, 32, 34));
    disc(middle, radius * 1.12, Paint(95, 140, 160));
    disc(middle, radius, Paint(225, 230, 230));
    for (int tick = 0; tick <= 10; ++tick) {
        const double angle = (225.0 - 27.0 * tick) * degree;
        line(middle + turned(angle, 0.72 * radius), middle + turned(angle, 0.92 * radius), 0.012,
             Paint(40, 40, 40));
    }
    line(middle, middle + turned(needleDegrees * degree, 0.75 * radius), 0.014, Paint(30, 30, 200));
    disc(middle, 0.12 * radius, Paint(40, 40, 40));
}

void WallCanvas::castShadows(const cv::Mat& outlines, double distance, double softness, double strength)
{
    const double shift = toPixels(distance);
    const cv::Mat move = (cv::Mat_<double>(2, 3) << 1.0, 0.0, 0.7 * shift, 0.0, 1.0, shift);
    cv::Mat shadow;
    cv::warpAffine(outlines, shadow, move, outlines.size());
    cv::GaussianBlur(shadow, shadow, cv::Size(), toPixels(softness));
    for (int y = 0; y < m_pixels.rows; ++y) {
        auto* const pixel = m_pixels.ptr<cv::Vec3b>(y);
        const auto* const shade = shadow.ptr<unsigned char>(y);
        for (int x = 0; x < m_pixels.cols; ++x) {
            const double left = 1.0 - strength * shade[x] / 255.0;
            for (int channel = 0; channel < 3; ++channel) {
                pixel[x][channel] = static_cast<unsigned char>(pixel[x][channel] * left);
            }
        }
    }
}

cv::Mat WallCanvas::finish() const
{
    cv::Mat picture;
    cv::resize(m_pixels, picture, m_size, 0.0, 0.0, cv::INTER_AREA);
    return picture;
}

}  // namespace kovtools
