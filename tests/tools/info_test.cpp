// kovdoa info, as a child process.
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeRecording;
using nlohmann::json;

using Names = std::vector<std::string>;

void writeSample(const Sandbox& sandbox)
{
    writeRecording(sandbox / "a.kov", 5, 6, 8, [](int frame, int row, int col) {
        return frame == 2 && row == 1 && col == 3 ? 0.5F : 0.01F * static_cast<float>(1 + frame + row);
    });
}

TEST(Info, TellsEverythingInJson)
{
    const Sandbox sandbox;
    writeSample(sandbox);

    const Outcome outcome = sandbox.run({"info", "a.kov", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const json info = json::parse(outcome.out);
    EXPECT_EQ(info["bytes"], std::filesystem::file_size(sandbox / "a.kov"));
    EXPECT_EQ(info["complete"], true);
    EXPECT_EQ(info["damage"], nullptr);
    EXPECT_EQ(info["version"], "0015");
    EXPECT_EQ(info["map"], (json{{"rows", 6}, {"cols", 8}}));
    EXPECT_EQ(info["picture"], (json{{"width", 320}, {"height", 240}}));
    EXPECT_EQ(info["fft_length"], 64);
    EXPECT_EQ(info["records"], 5);
    EXPECT_EQ(info["frames"], 5);
    EXPECT_EQ(info["assumed_frame_rate_hz"], 25.0);
    EXPECT_DOUBLE_EQ(info["assumed_duration_s"], 0.2);
    EXPECT_EQ(info["highest"]["level"], 0.5);
    EXPECT_NEAR(info["highest"]["db"], -6.0206, 1e-4);
    EXPECT_EQ(info["highest"]["frame"], 3);
    EXPECT_EQ(info["highest"]["row"], 1);
    EXPECT_EQ(info["highest"]["col"], 3);
    EXPECT_EQ(info["lowest"]["frame"], 1);
    EXPECT_EQ(info["unusable_cells"], 0);
    EXPECT_EQ(info["peaks"]["stored"], 0);
}

TEST(Info, SaysThatItsAnswerCouldNotBeWritten)
{
    const Sandbox sandbox;
    writeSample(sandbox);

    const Outcome outcome = sandbox.runInto("/dev/full", {"info", "a.kov"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(kovtools::tests::isOneSentence(outcome.err)) << outcome.err;
}

TEST(Info, SaysThatTheDurationIsAnAssumption)
{
    const Sandbox sandbox;
    writeSample(sandbox);

    const Outcome outcome = sandbox.run({"info", "a.kov", "--fps", "10"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("0.5 s, assuming 10 frames per second"), std::string::npos) << outcome.out;
}

TEST(Info, LeavesNoLogAndNoCacheWhereTheUserStands)
{
    const Sandbox sandbox;
    writeSample(sandbox);

    sandbox.run({"info", "a.kov"});

    EXPECT_EQ(sandbox.contents(), Names{"a.kov"});
}

TEST(Info, KeepsTheLibrarysLogWhenAsked)
{
    const Sandbox sandbox;
    writeSample(sandbox);

    const Outcome outcome = sandbox.run({"info", "a.kov", "--log", "library.txt"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(readFile(sandbox / "library.txt").find("Flie(kovdoaresultserialize)"), std::string::npos);
    EXPECT_EQ(sandbox.contents(), (Names{"a.kov", "library.txt"}));
}

TEST(Info, ReadsPathsOfAnyLetters)
{
    const Sandbox sandbox;
    writeSample(sandbox);
    std::filesystem::create_directory(sandbox / "Prüfstand");
    std::filesystem::rename(sandbox / "a.kov", sandbox / "Prüfstand/утечка \xFF.kov");

    const Outcome outcome = sandbox.run({"info", "Prüfstand/утечка \xFF.kov", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(json::parse(outcome.out)["frames"], 5);
}

TEST(Info, CountsCellsThatAreNoNumbers)
{
    const Sandbox sandbox;
    writeRecording(sandbox / "a.kov", 2, 4, 4, [](int, int row, int col) {
        return row == col ? std::numeric_limits<float>::quiet_NaN() : 1.0F;
    });

    const Outcome outcome = sandbox.run({"info", "a.kov", "--json"});

    ASSERT_EQ(outcome.status, 0);
    const json info = json::parse(outcome.out);
    EXPECT_EQ(info["unusable_cells"], 8);
    EXPECT_EQ(info["highest"]["level"], 1.0);
}

TEST(Info, DescribesARecordingWithoutFrames)
{
    const Sandbox sandbox;
    writeRecording(sandbox / "a.kov", 0, 4, 4, [](int, int, int) { return 1.0F; });

    const Outcome outcome = sandbox.run({"info", "a.kov", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(json::parse(outcome.out)["frames"], 0);
    EXPECT_EQ(json::parse(outcome.out)["highest"], nullptr);
}

}  // namespace
