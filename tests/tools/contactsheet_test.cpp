#include "tools/render/contactsheet.h"

#include <gtest/gtest.h>

namespace {

using kovtools::ContactSheet;
using kovtools::evenlySpread;

TEST(ContactSheet, ShowsTheFirstTheLastAndEvenStepsBetween)
{
    EXPECT_EQ(evenlySpread(1, 100), (std::vector<int>{1, 10, 19, 28, 37, 46, 55, 64, 73, 82, 91, 100}));
}

TEST(ContactSheet, ShowsEveryFrameOfAShortRecordingOnce)
{
    EXPECT_EQ(evenlySpread(5, 7), (std::vector<int>{5, 6, 7}));
    EXPECT_EQ(evenlySpread(9, 9), (std::vector<int>{9}));
}

TEST(ContactSheet, PutsTilesSideBySideInRowsOfFour)
{
    ContactSheet sheet(6, {640, 480});
    for (int i = 0; i < 6; ++i) {
        sheet.add(cv::Mat(sheet.tileSize(), CV_8UC3, cv::Scalar::all(40 * (i + 1))));
    }

    EXPECT_EQ(sheet.tileSize(), cv::Size(480, 360));
    EXPECT_EQ(sheet.picture().size(), cv::Size(4 * 488 + 8, 2 * 368 + 8));
    EXPECT_EQ(sheet.picture().at<cv::Vec3b>(180, 240)[0], 40);
    EXPECT_EQ(sheet.picture().at<cv::Vec3b>(180, 240 + 3 * 488)[0], 160);
    EXPECT_EQ(sheet.picture().at<cv::Vec3b>(180 + 368, 240 + 488)[0], 240);
}

}  // namespace
