// Drawing in metres on the wall that the simulated camera looks at.
#ifndef KOVTOOLS_WALLCANVAS_H
#define KOVTOOLS_WALLCANVAS_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace kovtools {

// A point of the scene, metres: x to the right and y up from the camera's axis. Things lie on the wall unless
// a depth is given.
using WallPoint = cv::Point2d;

// Blue, green, red, 0 to 255.
using Paint = cv::Scalar;

Paint shaded(const Paint& paint, double brightness);

// An oversampled picture with a camera in front of it: everything is drawn at several times the final size
// and averaged down, which smooths every edge alike.
class WallCanvas
{
public:
    // `halfWidth`: metres of the wall from the middle to the left edge of the picture; `wallDistance` in
    // metres.
    WallCanvas(int pictureWidth, int pictureHeight, double halfWidth, double wallDistance);

    double halfWidth() const { return m_halfWidth; }
    double halfHeight() const { return m_halfHeight; }
    cv::Mat& pixels() { return m_pixels; }

    cv::Point2d toPixels(WallPoint point) const { return toPixels(point, m_wallDistance); }
    cv::Point2d toPixels(WallPoint point, double depth) const;
    double toPixels(double length) const { return length * m_pixelsPerMetre; }

    void polygon(const std::vector<WallPoint>& corners, const Paint& paint);
    void polygonAt(const std::vector<cv::Point3d>& corners, const Paint& paint);  // z is the depth
    void box(WallPoint lowerLeft, WallPoint upperRight, const Paint& paint);
    void disc(WallPoint middle, double radius, const Paint& paint);
    void ring(WallPoint middle, double radius, double thickness, const Paint& paint);
    void line(WallPoint from, WallPoint to, double thickness, const Paint& paint);
    void lettering(const std::string& text, WallPoint middle, double height, const Paint& paint);

    // A cylinder seen from the side, lit from above and left, and a quarter of a bent pipe around `middle`,
    // beginning at `startDegrees` counter-clockwise from the x axis.
    void pipe(WallPoint from, WallPoint to, double diameter, const Paint& paint);
    void bend(WallPoint middle, double bendRadius, double startDegrees, double diameter, const Paint& paint);
    // Two bolted rings across a pipe.
    void flange(WallPoint middle, bool horizontalPipe, double pipeDiameter, const Paint& paint);
    void handWheel(WallPoint middle, double radius, const Paint& paint);
    void gauge(WallPoint middle, double radius, double needleDegrees);

    // Darkens the wall below and right of what `draw` outlines; called before the things themselves are
    // drawn.
    void castShadows(const cv::Mat& outlines, double distance, double softness, double strength);
    cv::Mat emptyOutlines() const { return cv::Mat(m_pixels.size(), CV_8UC1, cv::Scalar(0)); }

    // The picture at its final size.
    cv::Mat finish() const;

private:
    cv::Point fixedPoint(cv::Point2d pixels) const;

    cv::Size m_size;  // of the final picture
    int m_oversampling;
    double m_halfWidth;
    double m_halfHeight;
    double m_wallDistance;
    double m_pixelsPerMetre;  // on the wall, in the oversampled picture
    cv::Mat m_pixels;
};

}  // namespace kovtools

#endif
