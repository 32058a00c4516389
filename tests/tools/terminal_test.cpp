// Progress bars and Ctrl-C.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

#include "tests/tools/program.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::Sandbox;

using Arguments = std::vector<std::string>;

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

INSTANTIATE_TEST_SUITE_P(Signals, Interruption, testing::Values(SIGINT, SIGTERM));

}  // namespace
