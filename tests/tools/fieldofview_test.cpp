#include "tools/scene/fieldofview.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using kovtools::azimuthDegrees;
using kovtools::Direction;
using kovtools::elevationDegrees;
using kovtools::FieldOfView;

TEST(FieldOfView, SpansSixtyFourDegreesFromTheLeftToTheRightEdge)
{
    const FieldOfView view(640, 480);

    EXPECT_NEAR(azimuthDegrees(view.direction({0.0, 0.5})), -32.0, 1e-9);
    EXPECT_NEAR(azimuthDegrees(view.direction({1.0, 0.5})), 32.0, 1e-9);
}

TEST(FieldOfView, HasSquarePixels)
{
    // Three quarters of tan 32 degrees = 0.62487 are 0.46865, the tangent of 25.110 degrees.
    EXPECT_NEAR(FieldOfView(640, 480).verticalDegrees(), 50.220, 0.001);
    EXPECT_NEAR(FieldOfView(480, 480).verticalDegrees(), 64.0, 1e-9);
}

TEST(FieldOfView, LooksUpInRowZeroAndLeftInColumnZero)
{
    const std::vector<Direction> cells = FieldOfView(640, 480).cellDirections(48, 64);

    ASSERT_EQ(cells.size(), 48U * 64U);
    EXPECT_GT(elevationDegrees(cells.front()), 15.0);
    EXPECT_LT(azimuthDegrees(cells.front()), -30.0);
    EXPECT_LT(elevationDegrees(cells.back()), -15.0);
    EXPECT_GT(azimuthDegrees(cells.back()), 30.0);
}

TEST(FieldOfView, GivesUnitVectors)
{
    const Direction direction = FieldOfView(640, 480).direction({0.1, 0.8});

    EXPECT_NEAR(std::hypot(direction.x, direction.y, direction.z), 1.0, 1e-12);
}

TEST(FieldOfView, PutsTheMiddleOfACellAtItsWholeNumbers)
{
    EXPECT_NEAR(kovtools::mapCol({3.5 / 64, 0.0}, 64), 3.0, 1e-12);
    EXPECT_NEAR(kovtools::mapRow({0.0, 47.5 / 48}, 48), 47.0, 1e-12);
}

}  // namespace
