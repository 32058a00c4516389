#include "tools/render/colourbar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using kovtools::barColours;
using kovtools::ColourRange;
using kovtools::tickValues;

ColourRange sixDb()
{
    return {static_cast<float>(std::pow(10.0, -0.3)), 1.0F, 1.0F};
}

TEST(ColourBar, TicksAtRoundValuesFromTheTopDown)
{
    EXPECT_EQ(tickValues(0.0, -3.0), (std::vector<double>{0.0, -0.5, -1.0, -1.5, -2.0, -2.5, -3.0}));
    EXPECT_EQ(tickValues(0.0, -6.0).size(), 7U);
    EXPECT_EQ(tickValues(0.0, -20.0), (std::vector<double>{0.0, -5.0, -10.0, -15.0, -20.0}));
    EXPECT_EQ(tickValues(0.0, -100.0), (std::vector<double>{0.0, -20.0, -40.0, -60.0, -80.0, -100.0}));
    EXPECT_EQ(tickValues(2.3, -0.7), (std::vector<double>{2.0, 1.5, 1.0, 0.5, 0.0, -0.5}));
}

TEST(ColourBar, EndsInTheColoursOfThePalette)
{
    const cv::Mat bar = barColours(sixDb(), 0, 2000);

    EXPECT_EQ(bar.at<cv::Vec3b>(0, 0), cv::Vec3b(47, 18, 62));
    EXPECT_EQ(bar.at<cv::Vec3b>(1999, 0), cv::Vec3b(123, 3, 2));
}

TEST(ColourBar, FollowsTheLevelNotTheDecibels)
{
    // Half way down a bar of 20 dB the level is 0.316 of the maximum: (0.316 - 0.1) / 0.9 = 0.24 of the grey palette.
    const ColourRange range{0.1F, 1.0F, 1.0F};
    const cv::Mat bar = barColours(range, 2, 1001);

    const cv::Vec3b middle = bar.at<cv::Vec3b>(500, 0);

    EXPECT_GT(middle[1], 40);
    EXPECT_LT(middle[1], 80);
}

TEST(ColourBar, IsPlainForAFrameWithoutColours)
{
    const cv::Mat bar = barColours({std::numeric_limits<float>::quiet_NaN(), 0.0F, 0.0F}, 1, 10);

    EXPECT_EQ(bar.at<cv::Vec3b>(0, 0), bar.at<cv::Vec3b>(9, 0));
}

TEST(ColourBar, FitsIntoSmallAndLargePictures)
{
    for (const cv::Size size :
         {cv::Size(160, 120), cv::Size(320, 240), cv::Size(3840, 2160), cv::Size(480, 1920)}) {
        const cv::Rect panel = kovtools::colourBarPanel(size);

        EXPECT_EQ(panel & cv::Rect(cv::Point(), size), panel) << size.width;
        EXPECT_LT(panel.width, size.width / 2) << size.width;
    }
}

}  // namespace
