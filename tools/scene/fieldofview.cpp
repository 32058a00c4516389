#include "tools/scene/fieldofview.h"

#include <cmath>
#include <numbers>

namespace kovtools {

namespace {

constexpr double degree = std::numbers::pi / 180.0;

}  // namespace

FieldOfView::FieldOfView(int pictureWidth, int pictureHeight)
    : m_tanX(std::tan(0.5 * horizontalDegrees * degree)), m_tanY(m_tanX * pictureHeight / pictureWidth)
{
}

double FieldOfView::verticalDegrees() const
{
    return 2.0 * std::atan(m_tanY) / degree;
}

Direction FieldOfView::direction(PicturePosition position) const
{
    const double x = (2.0 * position.u - 1.0) * m_tanX;
    const double y = (1.0 - 2.0 * position.v) * m_tanY;
    const double length = std::sqrt(x * x + y * y + 1.0);
    return {x / length, y / length, 1.0 / length};
}

PicturePosition FieldOfView::position(const Direction& direction) const
{
    return {0.5 + 0.5 * direction.x / direction.z / m_tanX, 0.5 - 0.5 * direction.y / direction.z / m_tanY};
}

std::vector<Direction> FieldOfView::cellDirections(int rows, int cols) const
{
    std::vector<Direction> directions;
    directions.reserve(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols));
    for (int row = 0; row < rows; ++row) {
        for (int col = 0; col < cols; ++col) {
            directions.push_back(direction({(col + 0.5) / cols, (row + 0.5) / rows}));
        }
    }
    return directions;
}

double mapRow(PicturePosition position, int rows)
{
    return position.v * rows - 0.5;
}

double mapCol(PicturePosition position, int cols)
{
    return position.u * cols - 0.5;
}

double azimuthDegrees(const Direction& direction)
{
    return std::atan2(direction.x, direction.z) / degree;
}

double elevationDegrees(const Direction& direction)
{
    return std::asin(direction.y) / degree;
}

}  // namespace kovtools
