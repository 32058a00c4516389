// Progress bars, Ctrl-C and streams that are closed.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::Sandbox;

using Arguments = std::vector<std::string>;
using Names = std::vector<std::string>;

const Arguments simulation{"simulate", "scene", "a.kov", "--frames", "3", "--map", "8x8"};

TEST(ProgressBar, IsDrawnOnATerminal)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.runOnTerminal(simulation);

    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("Simulating ["), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("3/3"), std::string::npos) << outcome.err;
}

TEST(ProgressBar, CanBeSwitchedOff)
{
    const Sandbox sandbox;
    Arguments arguments = simulation;
    arguments.emplace_back("--no-progress");

    const Outcome outcome = sandbox.runOnTerminal(arguments);

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
}

TEST(ProgressBar, IsNotWrittenIntoAFile)
{
    const Sandbox sandbox;

    EXPECT_EQ(sandbox.run(simulation).err, "");
}

class Interruption : public testing::TestWithParam<int>
{
};

TEST_P(Interruption, LeavesNothingUnfinishedBehind)
{
    const Sandbox sandbox;
    const auto hasBegun = [&] { return !sandbox.contents().empty(); };

    const Outcome outcome =
        sandbox.runAndSignal({"simulate", "scene", "a.kov", "--frames", "1000000"}, GetParam(), hasBegun);

    EXPECT_EQ(outcome.status, 130);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_TRUE(sandbox.contents().empty());
}

INSTANTIATE_TEST_SUITE_P(Signals, Interruption, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST(Interruption, DoesNotComeFromATerminalThatWasLeftOnPurpose)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.runScript(
        "trap '' HUP\n"
        "\"$0\" simulate scene a.kov --frames 3000 --map 4x4 --sources 0 &\n"
        "until ls -A | grep -q partial; do sleep 0.01; done; kill -HUP $!; wait $!");

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"a.kov"});
}

TEST(FileSizeLimit, IsAnErrorOfWritingAndLeavesNothing)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.runScript("ulimit -f 8; \"$0\" simulate scene a.kov --frames 3");

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_TRUE(sandbox.contents().empty());
}

TEST(ClosedPipe, LeavesNoTemporaryFiles)
{
    const Sandbox sandbox;
    kovtools::tests::writeRecording(sandbox / "a.kov", 2, 12, 16, [](int, int, int) { return 1.0F; });
    std::filesystem::create_directory(sandbox / "tmp");

    // The reader is gone before the program starts: it opens the pipe for reading, and closes it.
    const Outcome outcome = sandbox.runScript(
        "export TMPDIR=\"$PWD/tmp\"\n"
        "mkfifo pipe; exec 3<>pipe 4>pipe 3>&-\n"
        "\"$0\" info a.kov >&4");

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_TRUE(std::filesystem::is_empty(sandbox / "tmp"));
}

class ClosedStreams : public testing::TestWithParam<std::string>
{
};

TEST_P(ClosedStreams, DoNotSpoilAVideo)
{
    const Sandbox sandbox;
    kovtools::tests::writeRecording(sandbox / "a.kov", 2, 12, 16, [](int, int row, int col) {
        return kovtools::tests::hill(6, 4, row, col);
    });

    const Outcome outcome = sandbox.runScript("\"$0\" render a.kov -o a.mp4 " + GetParam());

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(sandbox.contents(), (Names{"a.kov", "a.mp4"}));
}

INSTANTIATE_TEST_SUITE_P(ErrorAndInput, ClosedStreams, testing::Values("2>&-", "<&- 2>&-"));

TEST(ClosedOutput, IsNoticed)
{
    const Sandbox sandbox;
    for (const std::string command : {"simulate scene a.kov --frames 1", "info a.kov", "--help"}) {
        const Outcome outcome = sandbox.runScript("\"$0\" " + command + " >&-");

        EXPECT_EQ(outcome.status, 1) << command;
        EXPECT_NE(outcome.err.find("standard output"), std::string::npos) << outcome.err;
    }
}

}  // namespace
