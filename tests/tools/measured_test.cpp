// The program on measured recordings, where they are at hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::tests::brightestPlace;
using kovtools::tests::countFiles;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using nlohmann::json;

constexpr double radiansPerDegree = std::numbers::pi / 180.0;

// Inclination from the zenith and azimuth to the left, degrees, of the capsules behind array-wav, in the order of its
// channels, as published for this sphere.
constexpr int capsuleAngles[32][2] = {
    {69, 0},    {90, 32},   {111, 0},   {90, 328}, {32, 0},   {55, 45},  {90, 69},   {125, 45},
    {148, 0},   {125, 315}, {90, 291},  {55, 315}, {21, 91},  {58, 90},  {121, 90},  {159, 89},
    {69, 180},  {90, 212},  {111, 180}, {90, 148}, {32, 180}, {55, 225}, {90, 249},  {125, 225},
    {148, 180}, {125, 135}, {90, 111},  {55, 135}, {21, 269}, {58, 270}, {122, 270}, {159, 271}};

// Positions as a geometry file has them: x to the right, y up, z ahead, metres.
std::string capsulePositions(double radius)
{
    std::ostringstream text;
    for (const auto& [inclinationDegrees, azimuthDegrees] : capsuleAngles) {
        const double inclination = inclinationDegrees * radiansPerDegree;
        const double azimuth = azimuthDegrees * radiansPerDegree;
        text << -radius * std::sin(inclination) * std::sin(azimuth) << ' ' << radius * std::cos(inclination)
             << ' ' << radius * std::sin(inclination) * std::cos(azimuth) << '\n';
    }
    return text.str();
}

struct Angles
{
    double azimuth;    // degrees to the right
    double elevation;  // degrees upwards
};

// Direction of the middle of a cell of a square map that is 64 degrees wide.
Angles directionOfCell(int row, int col, int cells)
{
    const double edge = std::tan(32.0 * radiansPerDegree);
    const double x = (2.0 * (col + 0.5) / cells - 1.0) * edge;
    const double y = (1.0 - 2.0 * (row + 0.5) / cells) * edge;
    return {std::atan(x) / radiansPerDegree, std::atan2(y, std::hypot(1.0, x)) / radiansPerDegree};
}

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

TEST_F(Measured, ArrayAudioHasItsPeakWhereTheSurfWasLoudest)
{
    // A sphere bends sound around itself: for long waves it is an open one of half as much again in radius. Free
    // paths through that are good to a few degrees, a fraction of the beam, which is more than 30 degrees wide here.
    // One frame of the whole recording.
    constexpr double openRadius = 1.5 * 0.042;
    writeFile(sandbox / "sphere.txt", capsulePositions(openRadius));

    const Outcome outcome = sandbox.run(
        {"beamform",   data("array-wav"), "-o",        "surf.kov", "--channels", "32",         "--geometry",
         "sphere.txt", "--band",          "2500:8000", "--bins",   "0",          "--distance", "0",
         "--picture",  "480x480",         "--map",     "48x48",    "--fps",      "3.35"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const json info = json::parse(sandbox.run({"info", "surf.kov", "--json"}).out);
    ASSERT_EQ(info["frames"], 1);
    const Angles found = directionOfCell(info["highest"]["row"], info["highest"]["col"], 48);
    // Where a superdirective beamformer on the rigid sphere finds it.
    EXPECT_NEAR(found.azimuth, 28.0, 8.0);
    EXPECT_NEAR(found.elevation, -12.0, 8.0);
}

}  // namespace
