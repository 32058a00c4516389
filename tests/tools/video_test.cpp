// kovdoa render into a video, as a child process.
#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/videoio.hpp>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::tests::Outcome;
using kovtools::tests::Sandbox;

using Names = std::vector<std::string>;

class Video : public testing::TestWithParam<std::string>
{
};

TEST_P(Video, HasEveryFrameOnceAtTheRateAskedFor)
{
    const Sandbox sandbox;
    kovtools::tests::writeRecording(sandbox / "a.kov", 7, 12, 16, [](int frame, int row, int col) {
        return kovtools::tests::hill(6, 4 + frame, row, col);
    });

    const Outcome outcome = sandbox.run({"render", "a.kov", "-o", GetParam(), "--fps", "10"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    Names expected{"a.kov", GetParam()};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(sandbox.contents(), expected);
    cv::VideoCapture capture((sandbox / GetParam()).string());
    ASSERT_TRUE(capture.isOpened());
    EXPECT_NEAR(capture.get(cv::CAP_PROP_FPS), 10.0, 0.01);
    cv::Mat picture;
    int count = 0;
    double strongest = 0.0;
    while (capture.read(picture)) {
        EXPECT_EQ(picture.size(), cv::Size(320, 240));
        cv::minMaxLoc(picture.reshape(1), nullptr, &strongest);
        EXPECT_GT(strongest, 100.0);
        ++count;
    }
    EXPECT_EQ(count, 7);
}

INSTANTIATE_TEST_SUITE_P(Formats, Video, testing::Values("a.mp4", "a.avi", "A.MP4", "A.AVI"));

TEST(VideoSize, IsMadeEvenBecauseCodecsWantThat)
{
    const Sandbox sandbox;
    kovtools::tests::writeRecording(sandbox / "a.kov", 2, 12, 16, [](int, int row, int col) {
        return kovtools::tests::hill(6, 4, row, col);
    });

    ASSERT_EQ(sandbox.run({"render", "a.kov", "-o", "a.mp4", "--picture", "321x241"}).status, 0);

    cv::VideoCapture capture((sandbox / "a.mp4").string());
    EXPECT_EQ(capture.get(cv::CAP_PROP_FRAME_WIDTH), 322.0);
    EXPECT_EQ(capture.get(cv::CAP_PROP_FRAME_HEIGHT), 242.0);
}

}  // namespace
