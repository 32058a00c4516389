// kovdoa simulate array and kovdoa beamform, as child processes.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <filesystem>

#include "tests/tools/program.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using nlohmann::json;

using Arguments = std::vector<std::string>;
using Names = std::vector<std::string>;

Arguments operator+(Arguments first, const Arguments& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const Arguments simulate{"simulate", "array", "a", "--seconds", "0.1"};

class Directions : public ::testing::TestWithParam<const char*>
{
};

// From an empty folder to the cell of the map, at which the source must stand within one cell.
TEST_P(Directions, OfTheLoudestSourceComeOutOfTheWholeChain)
{
    const Sandbox sandbox;
    ASSERT_EQ(sandbox
                  .run(simulate + Arguments{"--truth", "t.json", "--source", GetParam(), "--source",
                                            "tone@20,18,5,0.05,23456"})
                  .status,
              0);

    const Outcome outcome = sandbox.run({"beamform", "a", "-o", "a.kov", "--map", "31x47"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const json truth = json::parse(readFile(sandbox / "t.json"))["sources"][0];
    const json info = json::parse(sandbox.run({"info", "a.kov", "--json"}).out);
    EXPECT_EQ(info["frames"], 3);
    EXPECT_NEAR(info["highest"]["row"].get<double>(), truth["v"].get<double>() * 31 - 0.5, 1.0);
    EXPECT_NEAR(info["highest"]["col"].get<double>(), truth["u"].get<double>() * 47 - 0.5, 1.0);
    EXPECT_NEAR(info["highest"]["level"].get<double>() / truth["level_at_array_pa"].get<double>(), 1.0, 0.15);
}

INSTANTIATE_TEST_SUITE_P(Sources, Directions,
                         ::testing::Values("leak@12,-6,5", "leak@-25,15,3,0.2", "tone@28,-20,5,0.2,31000",
                                           "pulses@-8,3,6,0.3,25000"));

TEST(SimulateArray, GivesTheSameBytesForTheSameSeedOnly)
{
    const Sandbox sandbox;
    for (const std::string seed : {"4", "4", "5"}) {
        static int run = 0;
        ASSERT_EQ(sandbox
                      .run({"simulate", "array", "run" + std::to_string(++run), "--seconds", "0.02", "--seed",
                            seed})
                      .status,
                  0);
    }
    EXPECT_EQ(readFile(sandbox / "run1/data-25.wav").size(), 44U + 1920U * 32U);
    EXPECT_EQ(readFile(sandbox / "run1/data-25.wav"), readFile(sandbox / "run2/data-25.wav"));
    EXPECT_NE(readFile(sandbox / "run1/data-25.wav"), readFile(sandbox / "run3/data-25.wav"));
}

TEST(SimulateArray, RefusesOptionsThatMeanNothingAndTouchesNothing)
{
    const Sandbox sandbox;
    const Arguments table[] = {
        {"--source", "leek@1,2,3"},
        {"--dead", "208"},
        {"--dead", "x"},
        {"--duplicate", "1:2"},
        {"--duplicate", "1=1"},
        {"--swap", "1:1"},
        {"--swap", "1=2"},
        {"--dead", "1", "--swap", "1:2"},
        {"--channels", "32"},
        {"--truth", "a/data-3.wav"},
        {"--log", "a"},
        {"--camera-picture", "c.jpg"},
    };
    for (const Arguments& wrong : table) {
        const Outcome outcome = sandbox.run(simulate + wrong);
        EXPECT_EQ(outcome.status, 2) << wrong[1];
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_EQ(sandbox.contents(), Names{}) << wrong[1];
    }
}

TEST(SimulateArray, LeavesNothingBehindWhenTheFolderCannotBeUsed)
{
    const Sandbox sandbox;
    writeFile(sandbox / "a", "a file");
    EXPECT_EQ(sandbox.run(simulate).status, 1);
    EXPECT_EQ(readFile(sandbox / "a"), "a file");
    std::filesystem::remove(sandbox / "a");
    std::filesystem::create_directory(sandbox / "a");
    writeFile(sandbox / "a/data-26.wav", "of a larger set");
    const Outcome outcome = sandbox.run(simulate);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(kovtools::tests::countFiles(sandbox / "a", ".wav"), 1);
}

TEST(Beamform, UsesASetAsFarAsItsShortestFileAndNamesThatFile)
{
    const Sandbox sandbox;
    ASSERT_EQ(sandbox.run(simulate).status, 0);
    ASSERT_EQ(sandbox.run({"beamform", "a", "-o", "whole.kov", "--map", "4x4"}).status, 0);
    std::filesystem::resize_file(sandbox / "a/data-7.wav", 44 + 4000 * 32);

    const Outcome outcome = sandbox.run({"beamform", "a", "-o", "cut.kov", "--map", "4x4"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("data-7.wav' ends after 4000 of 9600 samples"), std::string::npos)
        << outcome.err;
    // At 3840 samples a frame, of which the first 1024 must be there.
    EXPECT_EQ(json::parse(sandbox.run({"info", "whole.kov", "--json"}).out)["frames"], 3);
    EXPECT_EQ(json::parse(sandbox.run({"info", "cut.kov", "--json"}).out)["frames"], 1);
}

TEST(Beamform, ReplacesNoFileOfTheSetThatItReadsAPartOf)
{
    const Sandbox sandbox;
    ASSERT_EQ(sandbox.run(simulate).status, 0);
    const std::string file = readFile(sandbox / "a/data-5.wav");
    writeFile(sandbox / "two.txt", "0 0 0\n0.01 0 0\n");

    const Outcome outcome = sandbox.run({"beamform", "a", "-o", "a/data-5.wav", "--geometry", "two.txt"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(readFile(sandbox / "a/data-5.wav"), file);
}

TEST(Beamform, ServesOtherArraysByTheirGeometry)
{
    const Sandbox sandbox;
    std::string positions = "# a ring of 11\n";
    for (int m = 0; m < 11; ++m) {
        positions += std::to_string(0.06 * std::cos(0.5712 * m)) + " " +
                     std::to_string(0.06 * std::sin(0.5712 * m)) + " 0.01\n";
    }
    writeFile(sandbox / "ring.txt", positions);
    const Arguments ring{"--geometry", "ring.txt", "--channels", "11"};
    ASSERT_EQ(sandbox.run(simulate + ring + Arguments{"--source", "leak@12,-6,5"}).status, 0);
    EXPECT_EQ(kovtools::tests::countFiles(sandbox / "a", ".wav"), 2);

    const Outcome outcome = sandbox.run(Arguments{"beamform", "a", "-o", "a.kov"} + ring);

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const json info = json::parse(sandbox.run({"info", "a.kov", "--json"}).out);
    EXPECT_NEAR(info["highest"]["row"].get<double>(), 29.0, 2.0);  // an aperture of 12 cm and noise
    EXPECT_NEAR(info["highest"]["col"].get<double>(), 42.4, 2.0);
    EXPECT_EQ(
        sandbox.run({"beamform", "a", "-o", "b.kov", "--geometry", "ring.txt", "--channels", "12"}).status,
        2);
}

TEST(Beamform, SaysInOneSentenceWhatIsWrongWithTheSet)
{
    const Sandbox sandbox;
    const Arguments beamform{"beamform", "a", "-o", "a.kov"};
    const auto complains = [&](int status) {
        const Outcome outcome = sandbox.run(beamform);
        return outcome.status == status && isOneSentence(outcome.err) &&
               !std::filesystem::exists(sandbox / "a.kov");
    };
    EXPECT_TRUE(complains(1));  // no folder
    ASSERT_EQ(sandbox.run(simulate).status, 0);
    const std::string file = readFile(sandbox / "a/data-7.wav");
    std::filesystem::remove(sandbox / "a/data-7.wav");
    EXPECT_TRUE(complains(1));
    for (const std::size_t length : {0U, 20U, 44U, 44U + 32U * 1000U}) {  // the last is less than a block
        writeFile(sandbox / "a/data-7.wav", file.substr(0, length));
        EXPECT_TRUE(complains(1)) << length;
    }
    writeFile(sandbox / "a/data-7.wav", file);
    EXPECT_EQ(sandbox.run(beamform + Arguments{"--band", "0:1"}).status, 0);
    EXPECT_EQ(sandbox.run({"beamform", "a", "-o", "a/data-7.wav"}).status, 2);
    EXPECT_EQ(readFile(sandbox / "a/data-7.wav"), file);
    EXPECT_EQ(sandbox.run({"beamform", "a", "-o", "b.kov", "--band", "9000"}).status, 2);
    EXPECT_EQ(sandbox.run({"beamform", "a", "-o", "b.kov", "--window", "flat"}).status, 2);
    EXPECT_EQ(sandbox.contents(), (Names{"a", "a.kov"}));
}

TEST(Beamform, RefusesTheMeasuredSetWhileItTakesItForTheLargeArray)
{
    const std::filesystem::path folder = std::filesystem::path(KOVDOA_SHARED_DATA_DIR) / "array-wav";
    if (!std::filesystem::exists(folder)) {
        GTEST_SKIP() << "the measured recordings are not here";
    }
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run({"beamform", folder.string(), "-o", "a.kov"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("data-4.wav' does not exist"), std::string::npos) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{});
}

}  // namespace
