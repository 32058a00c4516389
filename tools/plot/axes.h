// Axes of the pictures that show numbers.
#ifndef KOVTOOLS_AXES_H
#define KOVTOOLS_AXES_H

#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

namespace kovtools {

struct Tick
{
    double value;
    std::string text;
};

// One direction of a plot, evenly divided.
struct Axis
{
    double low;
    double high;  // above `low`, or below it for an axis that grows the other way
    std::vector<Tick> ticks;
    std::string title;
};

// Round values from `low` to `high`, about `count` of them, 1, 2 or 5 times a power of ten apart.
std::vector<Tick> roundTicks(double low, double high, int count);

extern const cv::Scalar paperColour;  // behind everything
extern const cv::Scalar gridColour;
extern const cv::Scalar rimColour;  // around the area

// Colours that stay apart for every eye, blue, green, red; after M. Okabe and K. Ito, Color Universal Design, 2008.
// Another number is another colour, up to eight of them.
cv::Scalar distinctColour(int number);

class Axes
{
public:
    // Where values are drawn: `area`, in pixels.
    Axes(cv::Rect area, Axis x, Axis y);

    // Grid lines, ticks and titles; nothing inside the area but the grid.
    void draw(cv::Mat& picture) const;

    cv::Point2d place(double x, double y) const;
    cv::Rect area() const { return m_area; }

private:
    cv::Rect m_area;
    Axis m_x;
    Axis m_y;
};

}  // namespace kovtools

#endif
