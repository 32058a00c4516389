// kovdoa simulate pd, as a child process.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/tools/program.h"
#include "tests/tools/sounds.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::readWav;
using kovtools::tests::Sandbox;
using kovtools::tests::Wav;

using Arguments = std::vector<std::string>;

TEST(SimulatePd, WritesMonoFloatsAt96Kilohertz)
{
    const Sandbox sandbox;

    const Outcome outcome =
        sandbox.run({"simulate", "pd", "a.wav", "--type", "corona", "--mains", "60", "--seconds", "0.5"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("a.wav: 48000 samples at 96000 Hz"), std::string::npos) << outcome.out;
    EXPECT_EQ(sandbox.contents(), Arguments{"a.wav"});
    const Wav wav = readWav(sandbox / "a.wav");
    EXPECT_EQ(wav.channels, 1);
    EXPECT_EQ(wav.sampleRate, 96000);
    EXPECT_TRUE(wav.isFloat);
    ASSERT_EQ(wav.values.size(), 48000U);
    EXPECT_GT(*std::max_element(wav.values.begin(), wav.values.end()), 0.05F);
}

TEST(SimulatePd, GivesTheSameBytesForTheSameSeedOnly)
{
    const Sandbox sandbox;
    for (const char* const name : {"1.wav", "2.wav", "3.wav"}) {
        const std::string seed = name[0] == '3' ? "8" : "7";
        ASSERT_EQ(
            sandbox.run({"simulate", "pd", name, "--type", "surface", "--seconds", "0.2", "--seed", seed})
                .status,
            0);
    }

    EXPECT_EQ(readFile(sandbox / "1.wav"), readFile(sandbox / "2.wav"));
    EXPECT_NE(readFile(sandbox / "1.wav"), readFile(sandbox / "3.wav"));
}

class BadSimulatePd : public testing::TestWithParam<Arguments>
{
};

TEST_P(BadSimulatePd, IsBadUsageAndLeavesNothing)
{
    const Sandbox sandbox;
    Arguments arguments{"simulate", "pd"};
    arguments.insert(arguments.end(), GetParam().begin(), GetParam().end());

    const Outcome outcome = sandbox.run(arguments);

    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Arguments{});
}

INSTANTIATE_TEST_SUITE_P(Arguments, BadSimulatePd,
                         testing::Values(Arguments{"a.wav"}, Arguments{"a.wav", "--type", "spark"},
                                         Arguments{"a.txt", "--type", "corona"},
                                         Arguments{"a.wav", "--type", "corona", "--mains", "55"},
                                         Arguments{"a.wav", "--type", "corona", "--seconds", "0"},
                                         Arguments{"a.wav", "--type", "corona", "--level", "2"},
                                         Arguments{"--type", "corona"}));

}  // namespace
