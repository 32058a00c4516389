// Which pixels of a picture lie inside the region of interest.
#ifndef KOVDOA_REGION_P_H
#define KOVDOA_REGION_P_H

#include <span>
#include <vector>

namespace KOVPrivate {

// Pixels [begin, end) of one row.
struct PixelRun
{
    int begin;
    int end;
};

class Region
{
public:
    // An empty region of a picture with `height` rows.
    explicit Region(int height = 0);

    // A filled ellipse (8-connected, as OpenCV draws it) around ((int)(width * 0.5), (int)(height * 0.5))
    // with the half-axes horizontal and vertical, in pixels. Throws cv::Exception when one is negative.
    static Region ellipse(int width, int height, int horizontal, int vertical);

    // The runs of a row, from left to right.
    std::span<const PixelRun> row(int y) const;

private:
    std::vector<PixelRun> m_runs;
    std::vector<std::size_t> m_firstOfRow;  // height + 1 entries
};

}  // namespace KOVPrivate

#endif
