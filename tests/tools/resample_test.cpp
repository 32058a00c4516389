// kovdoa resample, as a child process, and how it cuts a stream.
#include <KOVDoaHandle/KOVAudio/kovaudioresample.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <ostream>

#include "tests/tools/program.h"
#include "tests/tools/sounds.h"
#include "tools/audio/resampling.h"

namespace {

using namespace kovtools::tests;

using Names = std::vector<std::string>;

// The sample at or before the instant of each output, in whole numbers.
Samples picked(const Samples& samples, long long inputRate, long long outputRate)
{
    Samples result;
    for (long long k = 0; k * inputRate / outputRate < static_cast<long long>(samples.size()); ++k) {
        result.push_back(samples[static_cast<std::size_t>(k * inputRate / outputRate)]);
    }
    return result;
}

void write(const std::filesystem::path& file, const Samples& samples, int channels = 1,
           int sampleRate = 96000)
{
    writeFile(file, floatWav(samples, channels, sampleRate));
}

struct Rates
{
    int input;
    int output;
};

void PrintTo(const Rates& rates, std::ostream* out)
{
    *out << rates.input << "to" << rates.output;
}

class ResampleRates : public testing::TestWithParam<Rates>
{
};

TEST_P(ResampleRates, PicksTheSampleAtOrBeforeEachInstant)
{
    const Sandbox sandbox;
    const Samples sound = noise(20011, 0.5, 1);
    write(sandbox / "in.wav", sound, 1, GetParam().input);

    const Outcome outcome =
        sandbox.run({"resample", "in.wav", "-o", "out.wav", "--rate", std::to_string(GetParam().output)});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Wav wav = readWav(sandbox / "out.wav");
    EXPECT_EQ(wav.sampleRate, GetParam().output);
    EXPECT_TRUE(wav.isFloat);
    EXPECT_EQ(wav.values, picked(sound, GetParam().input, GetParam().output));
}

INSTANTIATE_TEST_SUITE_P(Usual, ResampleRates,
                         testing::Values(Rates{96000, 48000}, Rates{96000, 44100}, Rates{96000, 96000},
                                         Rates{44100, 48000}, Rates{48000, 96000}, Rates{192000, 44100},
                                         Rates{96000, 1000}, Rates{8000, 768000}, Rates{96000, 36000},
                                         Rates{96000, 95999}));

TEST(Resample, EqualsTheLibrarysResamplerWithFiltersAndGain)
{
    const Sandbox sandbox;
    const std::vector<Samples> channels{noise(30001, 0.3, 2), noise(30001, 0.3, 3)};
    write(sandbox / "in.wav", interleaved(channels), 2);

    const Outcome outcome = sandbox.run({"resample", "in.wav", "-o", "out.wav", "--rate", "24000", "--gain",
                                         "-6", "--remove-aliasing", "--remove-dc"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    std::vector<Samples> expected;
    for (Samples channel : channels) {
        KOVAudioReSample whole(96000, 24000, -6.0F, true, true);
        Samples& out = expected.emplace_back(7501);
        whole.doReSample(channel.data(), 30001, out.data(), 7501);
    }
    EXPECT_EQ(readWav(sandbox / "out.wav").values, interleaved(expected));
}

struct Flag
{
    std::string option;
    double constantKept;     // of a constant after a second
    double toneKeptAtLeast;  // of a tone at 30 kHz
    double toneKeptAtMost;
};

void PrintTo(const Flag& flag, std::ostream* out)
{
    *out << flag.option;
}

class ResampleFlags : public testing::TestWithParam<Flag>
{
};

TEST_P(ResampleFlags, SwitchWhatTheHelpSays)
{
    const Sandbox sandbox;
    write(sandbox / "constant.wav", Samples(96000, 0.5F));
    write(sandbox / "tone.wav", tone(96000, 30000.0, 0.5));

    ASSERT_EQ(
        sandbox.run({"resample", "constant.wav", "-o", "a.wav", "--rate", "6000", GetParam().option}).status,
        0);
    ASSERT_EQ(
        sandbox.run({"resample", "tone.wav", "-o", "b.wav", "--rate", "6000", GetParam().option}).status, 0);

    const Samples constant = readWav(sandbox / "a.wav").values;
    const Samples tone =
        readWav(sandbox / "b.wav").values;  // folded to 0 Hz, as 30 kHz is five times the rate
    EXPECT_NEAR(constant.back() / 0.5, GetParam().constantKept, 0.001);
    const double kept = std::abs(tone[5000]) / 0.5;
    EXPECT_GE(kept, GetParam().toneKeptAtLeast);
    EXPECT_LE(kept, GetParam().toneKeptAtMost);
}

INSTANTIATE_TEST_SUITE_P(Both, ResampleFlags,
                         testing::Values(Flag{"--remove-aliasing", 0.0, 0.9, 1.1},
                                         Flag{"--remove-dc", 1.0, 0.0, 0.05}));

TEST(Resample, KeepsTheSixteenBitsOfTheInput)
{
    const Sandbox sandbox;
    const std::vector<std::int16_t> sound{-32768, 5, 32767, -7, 16385, 9, -16387, 1};
    writeFile(sandbox / "in.wav", shortWav(sound, 1, 96000));

    ASSERT_EQ(sandbox.run({"resample", "in.wav", "-o", "out.wav", "--rate", "48000"}).status, 0);

    const Wav wav = readWav(sandbox / "out.wav");
    EXPECT_EQ(wav.bits, 16);
    EXPECT_EQ(wav.integers, (std::vector<std::int32_t>{-32768, 32767, 16385, -16387}));
}

TEST(Resample, WritesTheFormatThatIsAskedFor)
{
    const Sandbox sandbox;
    const std::vector<std::int16_t> sound{-32768, 0, 32767, 3};
    writeFile(sandbox / "in.wav", shortWav(sound, 1, 96000));

    ASSERT_EQ(sandbox.run({"resample", "in.wav", "-o", "24.wav", "--rate", "96000", "--format", "24"}).status,
              0);
    ASSERT_EQ(
        sandbox.run({"resample", "in.wav", "-o", "f.wav", "--rate", "96000", "--format", "float"}).status, 0);
    ASSERT_EQ(sandbox.run({"resample", "f.wav", "-o", "16.wav", "--rate", "96000", "--format", "16"}).status,
              0);

    EXPECT_EQ(readWav(sandbox / "24.wav").bits, 24);
    EXPECT_EQ(readWav(sandbox / "24.wav").integers,
              (std::vector<std::int32_t>{-32768 * 256, 0, 32767 * 256, 3 * 256}));
    EXPECT_EQ(readWav(sandbox / "f.wav").values,
              (Samples{-1.0F, 0.0F, 32767.0F / 32768.0F, 3.0F / 32768.0F}));
    EXPECT_EQ(readWav(sandbox / "16.wav").integers, (std::vector<std::int32_t>(sound.begin(), sound.end())));
}

TEST(Resample, ClipsAndCountsWhatIntegersCannotHold)
{
    const Sandbox sandbox;
    const std::vector<std::int16_t> sound{30000, -30000, 100, 2};
    writeFile(sandbox / "in.wav", shortWav(sound, 1, 96000));

    const Outcome outcome =
        sandbox.run({"resample", "in.wav", "-o", "out.wav", "--rate", "96000", "--gain", "20"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("2 samples clipped"), std::string::npos) << outcome.out;
    EXPECT_EQ(readWav(sandbox / "out.wav").integers, (std::vector<std::int32_t>{32767, -32768, 1000, 20}));
}

TEST(Resample, RefusesFiltersAtARateThatTheyAreNotMadeFor)
{
    const Sandbox sandbox;
    write(sandbox / "in.wav", noise(100, 0.1, 4), 1, 44100);

    for (const char* const option : {"--remove-aliasing", "--remove-dc"}) {
        const Outcome outcome =
            sandbox.run({"resample", "in.wav", "-o", "out.wav", "--rate", "22050", option});

        EXPECT_EQ(outcome.status, 2);
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_NE(outcome.err.find(option), std::string::npos) << outcome.err;
        EXPECT_NE(outcome.err.find("has 44100 samples per second"), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(sandbox.contents(), Names{"in.wav"});
}

TEST(Resample, RefusesRatesThatHaveTooLittleInCommon)
{
    const Sandbox sandbox;
    write(sandbox / "in.wav", noise(100, 0.1, 5), 1, 500009);  // a prime number

    const Outcome outcome = sandbox.run({"resample", "in.wav", "-o", "out.wav", "--rate", "48000"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("too little in common"), std::string::npos) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"in.wav"});
}

TEST(ResamplingBlock, HoldsWholeCyclesOfBothRates)
{
    for (const Rates rates :
         {Rates{96000, 44100}, Rates{96000, 48000}, Rates{192000, 96000}, Rates{22050, 96000}}) {
        const auto block = kovtools::resamplingBlock(rates.input, rates.output);

        ASSERT_TRUE(block.has_value());
        EXPECT_EQ(static_cast<long long>(block->input) * rates.output,
                  static_cast<long long>(block->output) * rates.input);
        EXPECT_LE(block->input, 409600);
    }
}

}  // namespace
