// kovdoa info on a folder of array audio, as a child process.
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "tests/tools/arraysamples.h"
#include "tests/tools/program.h"
#include "tests/tools/sounds.h"

namespace {

using namespace kovtools::tests;
using nlohmann::json;

using Names = std::vector<std::string>;

std::vector<Samples> sixteen(int samples)
{
    std::vector<Samples> array;
    for (unsigned i = 0; i < 16; ++i) {
        array.push_back(tone(samples, 9375.0, 0.01 * (i + 1)));  // 100 periods in a block of 1024
    }
    array[3].assign(static_cast<std::size_t>(samples), 0.0F);
    return array;
}

TEST(ArrayInfo, TellsWhatTheReaderLoadsAndPublishes)
{
    const Sandbox sandbox;
    writeArray(sandbox / "array", sixteen(5000));

    const Outcome outcome = sandbox.run({"info", "array", "--channels", "16", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const json info = json::parse(outcome.out);
    EXPECT_EQ(info["channels"], 16);
    EXPECT_EQ(info["files"], 2);
    EXPECT_EQ(info["sample_rate_hz"], 96000);
    EXPECT_EQ(info["samples"], 5000);
    EXPECT_NEAR(info["duration_s"], 5000.0 / 96000.0, 1e-9);
    EXPECT_EQ(info["blocks"], 4);
    EXPECT_EQ(info["block_size"], 1024);
    ASSERT_EQ(info["first_block_levels_db"].size(), 16U);
    EXPECT_EQ(info["first_block_levels_db"][3], nullptr);
    EXPECT_NEAR(info["first_block_levels_db"][9], 20.0 * std::log10(0.1 / std::sqrt(2.0)), 0.01);
    EXPECT_EQ(sandbox.contents(), Names{"array"});
}

TEST(ArrayInfo, TellsPeopleInAFewLines)
{
    const Sandbox sandbox;
    writeArray(sandbox / "array", sixteen(5000), 192000);

    const Outcome outcome = sandbox.run({"info", "array", "--channels", "16"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("channels   16 in 2 files\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("rate       192000 Hz\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("blocks     2 whole ones of 2048 samples\n"), std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("from silence (microphone 3) to -18.9 dB (microphone 15)"), std::string::npos)
        << outcome.out;
}

TEST(ArrayInfo, TakesFoldersOfAnyName)
{
    const Sandbox sandbox;
    writeArray(sandbox / "a\n\x1B[31m\xFF", sixteen(2000));

    const Outcome outcome = sandbox.run({"info", "a\n\x1B[31m\xFF", "--channels", "16"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("a\\n\\x1B[31m"), std::string::npos) << outcome.out;
}

TEST(ArrayInfo, ReplacesNoFileOfTheFolderByItsLog)
{
    const Sandbox sandbox;
    writeArray(sandbox / "array", sixteen(2000));
    const std::string file = readFile(sandbox / "array/data-1.wav");

    const Outcome outcome = sandbox.run({"--log", "array/data-1.wav", "info", "array", "--channels", "16"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(readFile(sandbox / "array/data-1.wav"), file);
}

TEST(ArrayInfo, IsAboutTheShortestFile)
{
    const Sandbox sandbox;
    writeArray(sandbox / "array", sixteen(5000));
    Samples shorter(8 * 3000, 0.1F);
    writeFile(sandbox / "array/data-1.wav", floatWav(shorter, 8, 96000));

    const Outcome outcome = sandbox.run({"info", "array", "--channels", "16", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(json::parse(outcome.out)["samples"], 3000);
    EXPECT_EQ(json::parse(outcome.out)["blocks"], 2);
}

TEST(ArrayInfo, NamesTheFileThatIsMissing)
{
    const Sandbox sandbox;
    writeArray(sandbox / "array", sixteen(2000));

    const Outcome outcome = sandbox.run({"info", "array"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("data-2.wav' does not exist"), std::string::npos) << outcome.err;
}

TEST(ArrayInfo, SaysThatTheLibraryDoesNotReadOtherSamples)
{
    const Sandbox sandbox;
    writeArray(sandbox / "array", sixteen(2000));
    writeFile(sandbox / "array/data-1.wav", shortWav(std::vector<std::int16_t>(16000, 100), 8, 96000));

    const Outcome outcome = sandbox.run({"info", "array", "--channels", "16"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("32-bit floats"), std::string::npos) << outcome.err;
}

TEST(ArrayInfo, WantsWholeFiles)
{
    const Sandbox sandbox;
    writeArray(sandbox / "array", sixteen(2000));

    const Outcome outcome = sandbox.run({"info", "array", "--channels", "12"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("--channels 12 is not a multiple of 8"), std::string::npos) << outcome.err;
}

TEST(ArrayInfo, DescribesTheMeasuredArray)
{
    const std::string folder = std::string(KOVDOA_SHARED_DATA_DIR) + "/array-wav";
    if (!std::filesystem::exists(folder)) {
        GTEST_SKIP() << "shared/data is absent";
    }
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run({"info", folder, "--channels", "32", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(json::parse(outcome.out)["samples"], 28800);
    EXPECT_EQ(json::parse(outcome.out)["blocks"], 28);
}

}  // namespace
