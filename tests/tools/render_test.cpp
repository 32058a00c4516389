// kovdoa render into a folder, as a child process.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"
#include "tools/render/framesink.h"

namespace {

using kovtools::tests::brightestPlace;
using kovtools::tests::countFiles;
using kovtools::tests::hill;
using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::readPicture;
using kovtools::tests::Sandbox;
using kovtools::tests::writeRecording;
using nlohmann::json;

using Arguments = std::vector<std::string>;
using Names = std::vector<std::string>;

// One hill that moves to the right by a cell a frame, at the left of the middle; 12 x 16 cells of 20 pixels.
void writeSample(const Sandbox& sandbox, int frames = 3)
{
    writeRecording(sandbox / "a.kov", frames, 12, 16,
                   [](int frame, int row, int col) { return hill(6, 4 + frame, row, col); });
}

Arguments render(const Arguments& more)
{
    Arguments arguments{"render", "a.kov", "-o", "frames"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

cv::Mat firstPicture(const Sandbox& sandbox, const Arguments& more)
{
    const Outcome outcome = sandbox.run(render(more));
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return readPicture(sandbox / "frames/frame-00001.png");
}

TEST(Render, WritesOnePngAFrameOfThePictureSizeInTheHeader)
{
    const Sandbox sandbox;
    writeSample(sandbox);

    const Outcome outcome = sandbox.run(render({}));

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("frames: 3 pictures of 320 x 240"), std::string::npos);
    EXPECT_EQ(countFiles(sandbox / "frames", ".png"), 3);
    EXPECT_EQ(readPicture(sandbox / "frames/frame-00003.png").size(), cv::Size(320, 240));
    EXPECT_EQ(sandbox.contents(), (Names{"a.kov", "frames"}));
}

TEST(Render, MakesPicturesOfAnySize)
{
    const Sandbox sandbox;
    writeSample(sandbox, 1);
    for (const cv::Size size : {cv::Size(160, 120), cv::Size(641, 359), cv::Size(3840, 2160)}) {
        const std::string text = std::to_string(size.width) + "x" + std::to_string(size.height);
        EXPECT_EQ(firstPicture(sandbox, {"--picture", text}).size(), size);
    }
}

struct Range
{
    std::string text;
    Names files;
};

class FrameRanges : public testing::TestWithParam<Range>
{
};

TEST_P(FrameRanges, CountFromOneAndIncludeBothEnds)
{
    const Sandbox sandbox;
    writeSample(sandbox, 4);

    ASSERT_EQ(sandbox.run(render({"--frames", GetParam().text})).status, 0);

    EXPECT_EQ(countFiles(sandbox / "frames", ".png"), static_cast<int>(GetParam().files.size()));
    for (const std::string& file : GetParam().files) {
        EXPECT_TRUE(std::filesystem::exists(sandbox / ("frames/frame-0000" + file + ".png"))) << file;
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, FrameRanges,
                         testing::Values(Range{"2:3", {"2", "3"}}, Range{"3:", {"3", "4"}},
                                         Range{":2", {"1", "2"}}, Range{"4", {"4"}},
                                         Range{"3:99", {"3", "4"}}));

TEST(Render, RefusesFramesBeyondTheEnd)
{
    const Sandbox sandbox;
    writeSample(sandbox);

    const Outcome outcome = sandbox.run(render({"--frames", "4:"}));

    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"a.kov"});
}

TEST(Render, RefusesARegionTooSmallToBeDrawn)
{
    const Sandbox sandbox;
    writeSample(sandbox);

    const Outcome outcome = sandbox.run(render({"--radius", "2"}));

    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"a.kov"});
}

TEST(Render, PutsTheColoursWhereTheMapIsHighest)
{
    const Sandbox sandbox;
    writeSample(sandbox);
    ASSERT_EQ(sandbox.run(render({"--plain", "--palette", "grey"})).status, 0);

    for (int frame = 0; frame < 3; ++frame) {
        const cv::Point2d place =
            brightestPlace(sandbox / ("frames/frame-0000" + std::to_string(frame + 1) + ".png"));
        EXPECT_NEAR(place.x, (4.5 + frame) * 20.0, 4.0);
        EXPECT_NEAR(place.y, 6.5 * 20.0, 4.0);
    }
}

TEST(Render, AcceptsPalettesByNameAndByNumber)
{
    const Sandbox sandbox;
    writeSample(sandbox, 1);
    const auto bytesOf = [&](const std::string& palette) {
        EXPECT_EQ(sandbox.run(render({"--palette", palette})).status, 0) << palette;
        return readFile(sandbox / "frames/frame-00001.png");
    };

    EXPECT_EQ(bytesOf("rainbow"), bytesOf("0"));
    EXPECT_EQ(bytesOf("hot"), bytesOf("1"));
    EXPECT_EQ(bytesOf("hot"), bytesOf("bryw"));
    EXPECT_EQ(bytesOf("grey"), bytesOf("2"));
    EXPECT_NE(bytesOf("grey"), bytesOf("hot"));
    EXPECT_NE(bytesOf("grey"), bytesOf("rainbow"));
}

TEST(Render, ShowsMoreOfTheMapWithALargerDynamicRange)
{
    const Sandbox sandbox;
    writeSample(sandbox, 1);
    const auto colouredPixels = [&](const std::string& range) {
        cv::Mat grey;
        cv::extractChannel(firstPicture(sandbox, {"--plain", "--dynamic", range}), grey, 0);
        return cv::countNonZero(grey);
    };

    const int few = colouredPixels("2");

    EXPECT_GT(few, 100);
    EXPECT_GT(colouredPixels("12"), 2 * few);
}

TEST(Render, ShowsNothingBelowTheMinimumLevel)
{
    const Sandbox sandbox;
    writeSample(sandbox, 1);

    const cv::Mat picture = firstPicture(sandbox, {"--plain", "--min-level", "5"});

    EXPECT_EQ(cv::norm(picture, cv::NORM_INF), 0.0);
}

TEST(Render, LeavesThePictureOutsideTheRegionAlone)
{
    const Sandbox sandbox;
    writeSample(sandbox, 1);

    const cv::Mat region = firstPicture(sandbox, {"--plain", "--radius", "60", "--dynamic", "30"});

    EXPECT_EQ(cv::norm(region(cv::Rect(0, 0, 99, 240)), cv::NORM_INF), 0.0);
    EXPECT_GT(cv::norm(region(cv::Rect(105, 100, 40, 40)), cv::NORM_INF), 0.0);
}

TEST(Render, SearchesTheMapInTheVeryRegionThatThePictureShows)
{
    // The region is higher than wide: 3 columns to either side of the middle, 4.5 rows up and down. The louder of the
    // two places lies beside it, the weaker one in its upper part.
    const Sandbox sandbox;
    writeRecording(sandbox / "a.kov", 1, 12, 16, [](int, int row, int col) {
        return std::max(0.5F * hill(3, 8, row, col), hill(6, 15, row, col));
    });

    firstPicture(sandbox, {"--plain", "--palette", "grey", "--radius", "60", "--radius-size", "320x160"});

    const cv::Point2d found = brightestPlace(sandbox / "frames/frame-00001.png");
    EXPECT_NEAR(found.x, 8.5 * 20.0, 10.0);
    EXPECT_NEAR(found.y, 3.5 * 20.0, 10.0);
}

TEST(Render, ColoursOutsideTheRegionWhenAsked)
{
    const Sandbox sandbox;
    writeSample(sandbox, 1);

    const cv::Mat picture = firstPicture(sandbox, {"--plain", "--radius", "40", "--outside"});

    EXPECT_GT(cv::norm(picture(cv::Rect(80, 120, 20, 20)), cv::NORM_INF), 0.0);
}

TEST(Render, BlendsTheColoursWithTheCameraPicture)
{
    const Sandbox sandbox;
    writeSample(sandbox, 1);
    kovtools::writePng(sandbox / "camera.png", cv::Mat(100, 200, CV_8UC3, cv::Scalar(10, 200, 100)));
    const cv::Mat overlay = firstPicture(sandbox, {"--plain"});
    const cv::Vec3b colour = overlay.at<cv::Vec3b>(130, 90);

    const cv::Mat mixed = firstPicture(sandbox, {"--plain", "--camera", "camera.png", "--blend", "0.25"});

    EXPECT_EQ(mixed.at<cv::Vec3b>(10, 300), cv::Vec3b(10, 200, 100));
    for (int channel = 0; channel < 3; ++channel) {
        const double expected = 0.25 * colour[channel] + 0.75 * cv::Vec3b(10, 200, 100)[channel];
        EXPECT_NEAR(mixed.at<cv::Vec3b>(130, 90)[channel], expected, 0.51);
    }
}

TEST(Render, MarksCursorsTheBarAndTheFrameNumberUnlessPlain)
{
    const Sandbox sandbox;
    writeSample(sandbox, 1);
    const cv::Mat plain = firstPicture(sandbox, {"--plain"});

    const cv::Mat marked = firstPicture(sandbox, {});
    const cv::Mat withoutCursor = firstPicture(sandbox, {"--cursors", "0"});

    const cv::Rect caption(0, 220, 100, 20);
    const cv::Rect bar(290, 60, 30, 120);
    const cv::Rect cursor(70, 110, 40, 40);
    EXPECT_GT(cv::norm(marked(caption), plain(caption), cv::NORM_INF), 100.0);
    EXPECT_GT(cv::norm(marked(bar), plain(bar), cv::NORM_INF), 100.0);
    EXPECT_GT(cv::norm(marked(cursor), withoutCursor(cursor), cv::NORM_INF), 100.0);
}

TEST(Render, ShowsOnlyBumpsAroundTheCursorsWithSeveralCursors)
{
    const Sandbox sandbox;
    writeRecording(sandbox / "a.kov", 1, 12, 16, [](int, int row, int col) {
        return std::max(hill(6, 4, row, col), 0.9F * hill(5, 12, row, col));
    });

    const cv::Mat both = firstPicture(sandbox, {"--plain", "--cursors", "2", "--several-cursors"});
    const cv::Mat one = firstPicture(sandbox, {"--plain", "--cursors", "1", "--several-cursors"});

    const cv::Rect second(240, 100, 20, 20);
    EXPECT_GT(cv::norm(both(second), cv::NORM_INF), 0.0);
    EXPECT_EQ(cv::norm(one(second), cv::NORM_INF), 0.0);
}

TEST(Render, WritesAContactSheet)
{
    const Sandbox sandbox;
    writeSample(sandbox, 20);

    ASSERT_EQ(sandbox.run(render({"--contact-sheet", "sheet.png"})).status, 0);

    EXPECT_EQ(readPicture(sandbox / "sheet.png").size(), cv::Size(4 * 488 + 8, 3 * 368 + 8));
}

TEST(Render, ShowsTheStrongestSimulatedSourceWhereItIs)
{
    const Sandbox sandbox;
    ASSERT_EQ(sandbox
                  .run({"simulate", "scene", "a.kov", "--frames", "8", "--fps", "4", "--seed", "3", "--truth",
                        "truth.json"})
                  .status,
              0);
    ASSERT_EQ(sandbox.run(render({"--plain", "--palette", "grey", "--dynamic", "1"})).status, 0);

    const json truth = json::parse(readFile(sandbox / "truth.json"));
    ASSERT_EQ(truth["frames"].size(), 8U);
    for (const json& frame : truth["frames"]) {
        const std::string name = "frames/frame-0000" + std::to_string(frame["frame"].get<int>()) + ".png";
        const cv::Point2d found = brightestPlace(sandbox / name);
        // Random amplitudes may lift a source that is a little weaker above the strongest one.
        double strongest = 0.0;
        for (const json& source : frame["sources"]) {
            strongest = std::max(strongest, source["level_pa"].get<double>());
        }
        double nearest = 1e9;
        for (const json& source : frame["sources"]) {
            if (source["level_pa"].get<double>() > 0.8 * strongest) {
                nearest = std::min(nearest, std::hypot(found.x - source["x"].get<double>(),
                                                       found.y - source["y"].get<double>()));
            }
        }
        EXPECT_LT(nearest, 10.0) << "pixels, that is one cell, in " << name;
    }
}

}  // namespace
