// kovdoa mix, as a child process.
#include <KOVDoaHandle/KOVAudio/kovmixsources.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/tools/program.h"
#include "tests/tools/sounds.h"

namespace {

using namespace kovtools::tests;

using Integers = std::vector<std::int32_t>;
using Names = std::vector<std::string>;

void write(const std::filesystem::path& file, const Samples& samples, int channels = 1,
           int sampleRate = 96000)
{
    writeFile(file, floatWav(samples, channels, sampleRate));
}

mat2d_fp32 matrixOf(std::vector<float*>& rows, std::size_t columns)
{
    return {static_cast<std::int32_t>(rows.size()), static_cast<std::int32_t>(columns), rows.data()};
}

// What the library makes of the sounds, in one call.
Samples mixedFloats(std::vector<Samples> sounds)
{
    std::vector<float*> rows;
    for (Samples& sound : sounds) {
        rows.push_back(sound.data());
    }
    mat2d_fp32 in = matrixOf(rows, sounds.front().size());
    Samples result(sounds.front().size());
    mat1d_fp32 out{1, in.cols, result.data()};
    mixSources(&in, &out);
    return result;
}

Integers mixedIntegers(std::vector<Samples> sounds)
{
    std::vector<float*> rows;
    for (Samples& sound : sounds) {
        rows.push_back(sound.data());
    }
    mat2d_fp32 in = matrixOf(rows, sounds.front().size());
    std::vector<std::int16_t> result(sounds.front().size());
    mat1d_short out{1, in.cols, result.data()};
    mixSources(&in, &out);
    return {result.begin(), result.end()};
}

TEST(Mix, WritesWhatTheLibraryMakesOfTheFiles)
{
    const Sandbox sandbox;
    const std::vector<Samples> sounds{noise(9001, 0.3, 1), noise(9001, 0.3, 2), noise(9001, 0.3, 3)};
    write(sandbox / "a.wav", sounds[0]);
    write(sandbox / "b.wav", sounds[1]);
    write(sandbox / "c.wav", sounds[2]);

    const Outcome outcome = sandbox.run({"mix", "a.wav", "b.wav", "c.wav", "-o", "out.wav"});
    ASSERT_EQ(sandbox.run({"mix", "a.wav", "b.wav", "c.wav", "-o", "f.wav", "--float"}).status, 0);

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("9001 samples at 96000 Hz"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("3 channels of 3 files mixed\n"), std::string::npos) << outcome.out;
    EXPECT_EQ(readWav(sandbox / "out.wav").integers, mixedIntegers(sounds));
    EXPECT_EQ(readWav(sandbox / "f.wav").values, mixedFloats(sounds));
}

TEST(Mix, MixesTheChannelsOfOneFile)
{
    const Sandbox sandbox;
    const std::vector<Samples> channels{noise(100, 0.2, 4), noise(100, 0.2, 5), noise(100, 0.2, 6)};
    write(sandbox / "in.wav", interleaved(channels), 3);

    ASSERT_EQ(sandbox.run({"mix", "in.wav", "-o", "out.wav"}).status, 0);

    EXPECT_EQ(readWav(sandbox / "out.wav").channels, 1);
    EXPECT_EQ(readWav(sandbox / "out.wav").integers, mixedIntegers(channels));
}

TEST(Mix, FollowsShorterFilesBySilence)
{
    const Sandbox sandbox;
    const Samples longer = noise(100, 0.4, 7);
    Samples shorter = noise(60, 0.4, 8);
    write(sandbox / "short.wav", shorter);
    write(sandbox / "long.wav", longer);

    ASSERT_EQ(sandbox.run({"mix", "short.wav", "long.wav", "-o", "out.wav"}).status, 0);

    shorter.resize(100, 0.0F);
    EXPECT_EQ(readWav(sandbox / "out.wav").integers, mixedIntegers({shorter, longer}));
}

TEST(Mix, SaysThatALargeSumWasBroughtDown)
{
    const Sandbox sandbox;
    const Samples sound{0.8F, -0.5F, 0.4F};
    write(sandbox / "a.wav", sound);
    write(sandbox / "b.wav", sound);

    const Outcome outcome = sandbox.run({"mix", "a.wav", "b.wav", "-o", "out.wav", "--float"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("brought down by 4.1 dB"), std::string::npos) << outcome.out;
    EXPECT_EQ(readWav(sandbox / "out.wav").values, mixedFloats({sound, sound}));
}

TEST(Mix, BringsDownASumThatFallsTooLowRatherThanLetItWrapAround)
{
    const Sandbox sandbox;
    write(sandbox / "a.wav", {-0.8F, 0.2F, 0.0F, -0.4F});
    write(sandbox / "b.wav", {-1.2F, 0.2F, 0.0F, -0.6F});

    const Outcome outcome = sandbox.run({"mix", "a.wav", "b.wav", "-o", "out.wav"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("brought down by 6.0 dB"), std::string::npos) << outcome.out;
    const Integers samples = readWav(sandbox / "out.wav").integers;
    ASSERT_EQ(samples.size(), 4U);
    EXPECT_NEAR(samples[0], -32767, 1);
    EXPECT_NEAR(samples[1], 6553, 1);
    EXPECT_EQ(samples[2], 0);
    EXPECT_NEAR(samples[3], -16383, 1);
}

TEST(Mix, LeavesALowSumInFloatsAndSaysSo)
{
    const Sandbox sandbox;
    const Samples sound{-0.8F, 0.2F};
    write(sandbox / "a.wav", sound);
    write(sandbox / "b.wav", sound);

    const Outcome outcome = sandbox.run({"mix", "a.wav", "b.wav", "-o", "out.wav", "--float"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("it falls to -1.6"), std::string::npos) << outcome.out;
    EXPECT_EQ(readWav(sandbox / "out.wav").values, (Samples{-1.6F, 0.4F}));
}

TEST(Mix, TakesLongSounds)
{
    // More than a stack of 8 MiB holds.
    const Sandbox sandbox;
    write(sandbox / "in.wav", noise(3000001, 0.5, 9));

    const Outcome outcome = sandbox.run({"mix", "in.wav", "-o", "out.wav"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(std::filesystem::file_size(sandbox / "out.wav"), 44U + 2U * 3000001U);
}

TEST(Mix, NamesTheFilesWhoseRatesDiffer)
{
    const Sandbox sandbox;
    write(sandbox / "a.wav", noise(100, 0.2, 10));
    write(sandbox / "b.wav", noise(100, 0.2, 11), 1, 44100);

    const Outcome outcome = sandbox.run({"mix", "a.wav", "b.wav", "-o", "out.wav"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    for (const char* const part : {"a.wav", "b.wav", "96000", "44100", "kovdoa resample"}) {
        EXPECT_NE(outcome.err.find(part), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(sandbox.contents(), (Names{"a.wav", "b.wav"}));
}

}  // namespace
