// Text that stays readable on any picture.
#ifndef KOVTOOLS_LETTERING_H
#define KOVTOOLS_LETTERING_H

#include <opencv2/core/mat.hpp>
#include <string>

namespace kovtools {

// Sizes of everything that is painted on a picture, scaled to the picture: what is readable at 640 x 480
// keeps its share of a larger picture, and does not shrink below legibility in a smaller one.
struct Layout
{
    explicit Layout(cv::Size picture);

    int px(double atStandardSize) const;  // pixels, at least 1

    double scale;
    double fontScale;  // of the text functions
    int stroke;        // pixels, of letters
    int lineHeight;    // pixels
};

extern const cv::Scalar inkColour;      // near white
extern const cv::Scalar outlineColour;  // near black

cv::Size textSize(const std::string& text, const Layout& layout);

// White letters with a dark outline; `origin` is the left end of the base line.
void drawText(cv::Mat& picture, const std::string& text, cv::Point origin, const Layout& layout);

// White lines with a dark outline.
void drawOutlinedLine(cv::Mat& picture, cv::Point from, cv::Point to, const Layout& layout);
void drawOutlinedEllipse(cv::Mat& picture, cv::Point2d middle, cv::Size2d halfAxes, const Layout& layout);

// Darkens a box, so that what is painted there next stands out.
void dimBox(cv::Mat& picture, cv::Rect box);

}  // namespace kovtools

#endif
