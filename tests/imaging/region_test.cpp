#include <KOVDoaHandle/imaging/region_p.h>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <string>

using KOVPrivate::PixelRun;
using KOVPrivate::Region;

TEST(Region, IsEmptyInEveryRowAtFirst)
{
    const Region region(5);

    for (int y = 0; y < 5; ++y) {
        EXPECT_TRUE(region.row(y).empty());
    }
}

TEST(Region, IsASinglePixelForHalfAxesOfZero)
{
    const Region region = Region::ellipse(9, 7, 0, 0);

    ASSERT_EQ(region.row(3).size(), 1U);
    EXPECT_EQ(region.row(3)[0].begin, 4);
    EXPECT_EQ(region.row(3)[0].end, 5);
    EXPECT_TRUE(region.row(2).empty());
}

TEST(Region, RefusesANegativeHalfAxis)
{
    EXPECT_THROW(Region::ellipse(9, 7, -1, 2), cv::Exception);
}

struct EllipseCase
{
    int width, height, horizontal, vertical;
};

class RegionEllipse : public ::testing::TestWithParam<EllipseCase>
{
};

TEST_P(RegionEllipse, HoldsThePixelsThatADrawnMaskHolds)
{
    const auto [width, height, horizontal, vertical] = GetParam();
    cv::Mat mask = cv::Mat::zeros(height, width, CV_8UC1);
    cv::ellipse(mask, {width / 2, height / 2}, {horizontal, vertical}, 0, 0, 360, cv::Scalar(255), -1);

    const Region region = Region::ellipse(width, height, horizontal, vertical);

    cv::Mat found = cv::Mat::zeros(height, width, CV_8UC1);
    for (int y = 0; y < height; ++y) {
        for (const PixelRun run : region.row(y)) {
            found.row(y).colRange(run.begin, run.end).setTo(255);
        }
    }
    EXPECT_EQ(cv::countNonZero(mask != found), 0);
}

INSTANTIATE_TEST_SUITE_P(Sizes, RegionEllipse,
                         ::testing::Values(EllipseCase{640, 480, 98, 98}, EllipseCase{641, 479, 5, 200},
                                           EllipseCase{64, 48, 500, 300}, EllipseCase{33, 21, 16, 0},
                                           EllipseCase{1, 1, 0, 0}),
                         [](const auto& instance) {
                             return std::to_string(instance.param.width) + "by" +
                                    std::to_string(instance.param.height);
                         });
