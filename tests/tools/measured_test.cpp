// The program on measured recordings, where they are at hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <vector>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::tests::brightestPlace;
using kovtools::tests::countFiles;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using nlohmann::json;

class Measured : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!std::filesystem::exists(KOVDOA_SHARED_DATA_DIR)) {
            GTEST_SKIP() << "shared/data is absent";
        }
    }

    static std::string data(const std::string& name)
    {
        return std::string(KOVDOA_SHARED_DATA_DIR) + "/" + name;
    }

    Sandbox sandbox;
};

TEST_F(Measured, RecordingsAreDescribed)
{
    const Outcome surf = sandbox.run({"info", data("array-real.kov"), "--json"});
    const Outcome chirps = sandbox.run({"info", data("array-chirps.kov"), "--json"});

    ASSERT_EQ(surf.status, 0) << surf.err;
    ASSERT_EQ(chirps.status, 0) << chirps.err;
    EXPECT_EQ(json::parse(surf.out)["frames"], 109);
    EXPECT_EQ(json::parse(surf.out)["map"]["rows"], 48);
    EXPECT_EQ(json::parse(surf.out)["picture"]["width"], 640);
    EXPECT_EQ(json::parse(chirps.out)["frames"], 189);
    EXPECT_EQ(json::parse(chirps.out)["map"]["cols"], 48);
    EXPECT_EQ(json::parse(chirps.out)["picture"]["height"], 640);
}

TEST_F(Measured, SurfIsShownWhereTheMapIsHighest)
{
    // The map of frame 51 (from 0) as an array of 48 x 64 floats behind a header of 128 bytes.
    const std::string bytes = readFile(data("array-real-frame.npy"));
    ASSERT_EQ(bytes.size(), 128U + 48U * 64U * 4U);
    std::vector<float> map(48 * 64);
    std::memcpy(map.data(), bytes.data() + 128, map.size() * sizeof(float));
    const auto cell = std::max_element(map.begin(), map.end()) - map.begin();

    ASSERT_EQ(sandbox
                  .run({"render", data("array-real.kov"), "-o", "frames", "--frames", "52", "--plain",
                        "--palette", "grey", "--dynamic", "1"})
                  .status,
              0);

    const cv::Point2d found = brightestPlace(sandbox / "frames/frame-00052.png");
    EXPECT_NEAR(found.x, (static_cast<double>(cell % 64) + 0.5) * 10.0, 10.0);
    EXPECT_NEAR(found.y, (static_cast<double>(cell / 64) + 0.5) * 10.0, 10.0);
}

TEST_F(Measured, ChirpsAreShownWhereTheLoudspeakerStood)
{
    // A chirp sounds in frame 82 (from 0); about half way, the source stood near azimuth -29 and elevation -4.5
    // degrees, the middle of the field of view, 0.4 degrees a cell.
    ASSERT_EQ(sandbox
                  .run({"render", data("array-chirps.kov"), "-o", "frames", "--frames", "83", "--plain",
                        "--palette", "grey", "--dynamic", "1"})
                  .status,
              0);

    const cv::Point2d found = brightestPlace(sandbox / "frames/frame-00083.png");
    EXPECT_NEAR(found.x, 240.0, 80.0);  // 8 cells: the source moved by 3 degrees to either side
    EXPECT_NEAR(found.y, 320.0, 80.0);
}

TEST_F(Measured, RecordingsAreRenderedOverACameraPicture)
{
    for (const char* const name : {"array-real.kov", "array-chirps.kov"}) {
        const Outcome outcome =
            sandbox.run({"render", data(name), "-o", name, "--frames", "25:28", "--camera",
                         data("camera.png"), "--cursors", "3", "--contact-sheet", "sheet.png"});

        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(countFiles(sandbox / name, ".png"), 4);
    }
}

}  // namespace
