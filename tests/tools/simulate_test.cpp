// kovdoa simulate scene, as a child process.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::readPicture;
using kovtools::tests::Sandbox;
using nlohmann::json;

using Arguments = std::vector<std::string>;
using Names = std::vector<std::string>;

Arguments simulate(const std::string& file, const Arguments& more = {})
{
    Arguments arguments{"simulate", "scene", file, "--frames", "3", "--map", "12x16"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

TEST(Simulate, WritesARecordingAndNothingElse)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run(simulate("a.kov"));

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("a.kov: 3 frames"), std::string::npos) << outcome.out;
    EXPECT_EQ(sandbox.contents(), Names{"a.kov"});
    EXPECT_TRUE(readFile(sandbox / "a.kov")
                    .starts_with("==FILE_INFO_START==\r\nVERSION:0015\r\nRESROW:12\r\nRESCOL:16"));
}

TEST(Simulate, GivesTheSameBytesForTheSameSeed)
{
    const Sandbox sandbox;
    const Arguments pictures{"--seed", "7", "--peaks", "--camera-picture", "1.png", "--truth", "1.json"};
    ASSERT_EQ(sandbox.run(simulate("1.kov", pictures)).status, 0);
    ASSERT_EQ(sandbox
                  .run(simulate("2.kov",
                                {"--seed", "7", "--peaks", "--camera-picture", "2.png", "--truth", "2.json"}))
                  .status,
              0);

    EXPECT_EQ(readFile(sandbox / "1.kov"), readFile(sandbox / "2.kov"));
    EXPECT_EQ(readFile(sandbox / "1.png"), readFile(sandbox / "2.png"));
    EXPECT_EQ(readFile(sandbox / "1.json"), readFile(sandbox / "2.json"));
}

TEST(Simulate, GivesAnotherSceneForAnotherSeed)
{
    const Sandbox sandbox;
    ASSERT_EQ(sandbox.run(simulate("1.kov", {"--seed", "7"})).status, 0);
    ASSERT_EQ(sandbox.run(simulate("2.kov", {"--seed", "8"})).status, 0);

    EXPECT_NE(readFile(sandbox / "1.kov"), readFile(sandbox / "2.kov"));
}

TEST(Simulate, StoresPeaksWithIdentitiesWhenAsked)
{
    const Sandbox sandbox;
    const Arguments arguments{"simulate", "scene", "a.kov", "--frames", "5", "--sources", "1", "--peaks"};
    ASSERT_EQ(sandbox.run(arguments).status, 0);

    const json info = json::parse(sandbox.run({"info", "a.kov", "--json"}).out);

    EXPECT_EQ(info["peaks"]["stored"], 5);
    EXPECT_EQ(info["peaks"]["frames_with_peaks"], 5);
}

TEST(Simulate, StoresNoPeaksOtherwise)
{
    const Sandbox sandbox;
    ASSERT_EQ(sandbox.run(simulate("a.kov")).status, 0);

    EXPECT_EQ(json::parse(sandbox.run({"info", "a.kov", "--json"}).out)["peaks"]["stored"], 0);
}

TEST(Simulate, TellsTheTruthAboutEveryFrame)
{
    const Sandbox sandbox;
    ASSERT_EQ(sandbox.run(simulate("a.kov", {"--sources", "2", "--truth", "a.json"})).status, 0);

    const json truth = json::parse(readFile(sandbox / "a.json"));

    EXPECT_EQ(truth["microphones"], 208);
    ASSERT_EQ(truth["frames"].size(), 3U);
    EXPECT_EQ(truth["frames"][2]["frame"], 3);
    ASSERT_EQ(truth["frames"][2]["sources"].size(), 2U);
    const json source = truth["frames"][2]["sources"][1];
    EXPECT_EQ(source["name"], "B");
    EXPECT_NEAR((source["col"].get<double>() + 0.5) / 16, source["x"].get<double>() / 640, 1e-9);
    EXPECT_NEAR((source["row"].get<double>() + 0.5) / 12, source["y"].get<double>() / 480, 1e-9);
}

TEST(Simulate, DrawsACameraPictureOfTheSizeAskedFor)
{
    const Sandbox sandbox;
    ASSERT_EQ(sandbox.run(simulate("a.kov", {"--picture", "321x241", "--camera-picture", "a.png"})).status,
              0);

    const cv::Mat picture = readPicture(sandbox / "a.png");

    EXPECT_EQ(picture.size(), cv::Size(321, 241));
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(picture, mean, deviation);
    EXPECT_GT(deviation[1], 10.0);  // it shows something
}

TEST(Simulate, WritesToPathsOfAnyLetters)
{
    const Sandbox sandbox;
    std::filesystem::create_directory(sandbox / "Prüfstand 3");

    const Outcome outcome = sandbox.run(simulate("Prüfstand 3/утечка.kov"));

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(std::filesystem::exists(sandbox / "Prüfstand 3/утечка.kov"));
}

TEST(Simulate, CountsOneAsOne)
{
    const Sandbox sandbox;

    const std::string out =
        sandbox.run({"simulate", "scene", "a.kov", "--frames", "1", "--sources", "1"}).out;

    EXPECT_NE(out.find(": 1 frame, "), std::string::npos) << out;
    EXPECT_NE(out.find(" 1 source, "), std::string::npos) << out;
}

class RefusedBeforeTheLongWork : public testing::TestWithParam<std::string>
{
};

TEST_P(RefusedBeforeTheLongWork, IsWhatCannotBeWritten)
{
    const Sandbox sandbox;

    // Days of work; without the early refusal it is ended from outside, with another status.
    const Outcome outcome =
        sandbox.runScript("timeout 20 \"$0\" simulate scene a.kov --frames 1000000 " + GetParam());

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_TRUE(sandbox.contents().empty());
}

INSTANTIATE_TEST_SUITE_P(Outputs, RefusedBeforeTheLongWork,
                         testing::Values("--camera-picture missing/a.png", "--truth missing/a.json",
                                         "--log missing/log.txt"));

class SimulateNowhere : public testing::TestWithParam<Arguments>
{
};

TEST_P(SimulateNowhere, SaysSoAndLeavesNothing)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run(GetParam());

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_TRUE(sandbox.contents().empty());
}

INSTANTIATE_TEST_SUITE_P(Outputs, SimulateNowhere,
                         testing::Values(simulate("missing/a.kov"), simulate("."), simulate("/proc/a.kov"),
                                         simulate("a.kov", {"--camera-picture", "missing/a.png"}),
                                         simulate("a.kov", {"--truth", "missing/a.json"}),
                                         simulate("a.kov", {"--log", "missing/log.txt"})));

}  // namespace
