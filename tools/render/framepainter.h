// From an overlay to the picture that a user sees.
#ifndef KOVTOOLS_FRAMEPAINTER_H
#define KOVTOOLS_FRAMEPAINTER_H

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "tools/render/framereading.h"
#include "tools/render/regionellipse.h"
#include "tools/render/renderoptions.h"

namespace kovtools {

// What is painted on one frame's picture.
struct FrameNotes
{
    std::string caption;
    ColourRange range;
    std::vector<CursorMark> marks;
    std::vector<TargetPoint> tracks;  // confirmed ones, found in this frame or not
    int mapRows = 0;
    int mapCols = 0;
};

class FramePainter
{
public:
    // `camera`: of any size, stretched to the picture; empty: a dark background.
    FramePainter(const RenderOptions& options, const RegionEllipse& region, const cv::Mat& camera);

    // The overlay laid over the camera picture.
    cv::Mat compose(const cv::Mat& overlay) const;

    // Paints region, cursors, colour bar and caption on a picture of any size that shows the whole scene.
    void annotate(cv::Mat& picture, const FrameNotes& notes) const;

private:
    void drawRegion(cv::Mat& picture) const;
    void drawMark(cv::Mat& picture, const CursorMark& mark, const FrameNotes& notes) const;
    void drawTrack(cv::Mat& picture, const TargetPoint& track, const FrameNotes& notes) const;
    void drawCaption(cv::Mat& picture, const std::string& caption) const;

    RenderOptions m_options;
    RegionEllipse m_region;
    cv::Mat m_background;
    double m_blend;
};

// A level as text, for example "-31.2 dB".
std::string levelText(float level, double reference);

}  // namespace kovtools

#endif
