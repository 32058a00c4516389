// How directions, map cells and picture positions belong together.
#ifndef KOVTOOLS_FIELDOFVIEW_H
#define KOVTOOLS_FIELDOFVIEW_H

#include <vector>

namespace kovtools {

// A unit vector from the array towards a direction: x to the right, y up, z straight ahead.
struct Direction
{
    double x;
    double y;
    double z;
};

// A position in the picture, in fractions of its width and height: (0, 0) the upper left corner, (1, 1) the
// lower right one.
struct PicturePosition
{
    double u;
    double v;
};

// A pinhole camera in the middle of the array, with square pixels. The map covers just the picture, and its
// cells are spaced evenly over the picture, so the overlay fits the camera picture without further
// calibration.
class FieldOfView
{
public:
    static constexpr double horizontalDegrees = 64.0;  // between the left and the right edge of the picture

    FieldOfView(int pictureWidth, int pictureHeight);

    double verticalDegrees() const;

    Direction direction(PicturePosition position) const;

    // Where a direction (z greater than 0) appears; outside 0 to 1 beside the picture.
    PicturePosition position(const Direction& direction) const;

    // Directions of the middles of all cells of a map, row-major: row 0 at the top, column 0 at the left.
    std::vector<Direction> cellDirections(int rows, int cols) const;

private:
    double m_tanX;  // tangent of half the horizontal angle
    double m_tanY;  // and of half the vertical one
};

// The position of a picture position on a map, in cells; the middle of cell (r, c) is at exactly (r, c).
double mapRow(PicturePosition position, int rows);
double mapCol(PicturePosition position, int cols);

double azimuthDegrees(const Direction& direction);    // positive to the right
double elevationDegrees(const Direction& direction);  // positive upwards

}  // namespace kovtools

#endif
