#include "tools/render/regionellipse.h"

#include <gtest/gtest.h>

#include "tools/support/errors.h"

namespace {

using kovtools::RegionEllipse;
using kovtools::regionEllipse;
using kovtools::RenderOptions;
using kovtools::UsageError;

RenderOptions withRadius(int radius, cv::Size measure = {})
{
    RenderOptions options;
    options.picture = {640, 480};
    options.radius = radius;
    options.radiusSize = measure;
    return options;
}

TEST(RegionEllipse, IsNoneWithoutARadius)
{
    const RegionEllipse region = regionEllipse(withRadius(0), 48, 64);

    EXPECT_FALSE(region.active);
    EXPECT_TRUE(region.contains(0, 0, 48, 64));
}

TEST(RegionEllipse, HasARadiusInPixelsWhenMeasuredAgainstThePicture)
{
    const RegionEllipse region = regionEllipse(withRadius(120), 48, 64);

    EXPECT_DOUBLE_EQ(region.halfWidth, 120.0);
    EXPECT_DOUBLE_EQ(region.halfHeight, 120.0);
}

TEST(RegionEllipse, CoversTheSamePartOfTheMapAsOfThePicture)
{
    for (const cv::Size measure : {cv::Size(), cv::Size(100, 100), cv::Size(1000, 500)}) {
        const RegionEllipse region = regionEllipse(withRadius(40, measure), 48, 64);

        EXPECT_NEAR(region.rowSemiAxis / 48, region.halfHeight / 480, 0.01) << measure.width;
        EXPECT_NEAR(region.colSemiAxis / 64, region.halfWidth / 640, 0.01) << measure.width;
    }
}

TEST(RegionEllipse, HoldsTheMiddleAndNotTheCorner)
{
    const RegionEllipse region = regionEllipse(withRadius(120), 48, 64);

    EXPECT_TRUE(region.contains(24, 32, 48, 64));
    EXPECT_TRUE(region.contains(24, 43, 48, 64));  // 11.5 cells of 10 pixels
    EXPECT_FALSE(region.contains(24, 44, 48, 64));
    EXPECT_FALSE(region.contains(0, 0, 48, 64));
}

TEST(RegionEllipse, ShrinksWithTheZoomInTheStepsOfTheLenses)
{
    const auto halfWidthAt = [](double scale) {
        RenderOptions options = withRadius(120);
        options.imageScale = scale;
        return regionEllipse(options, 48, 64).halfWidth;
    };

    EXPECT_DOUBLE_EQ(halfWidthAt(1.5), 80.0);
    EXPECT_DOUBLE_EQ(halfWidthAt(2.0), 120.0);
    EXPECT_DOUBLE_EQ(halfWidthAt(3.0), 80.0);
    EXPECT_DOUBLE_EQ(halfWidthAt(4.0), 120.0);
    EXPECT_DOUBLE_EQ(halfWidthAt(8.0), 60.0);
}

TEST(RegionEllipse, IsRefusedWhereTheImagerWouldFail)
{
    EXPECT_THROW(regionEllipse(withRadius(1), 48, 64), UsageError);
    EXPECT_THROW(regionEllipse(withRadius(10, {65535, 100}), 48, 64), UsageError);
    EXPECT_THROW(regionEllipse(withRadius(100000, {1, 1}), 48, 64), UsageError);
}

}  // namespace
