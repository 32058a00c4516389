// Sound files that are damaged, missing or no sound files, and outputs that cannot be written.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>
#include <ostream>

#include "tests/tools/program.h"
#include "tests/tools/sounds.h"
#include "tools/audio/soundreader.h"
#include "tools/audio/soundwriter.h"
#include "tools/support/errors.h"

namespace {

using namespace kovtools::tests;
using kovtools::DataError;
using kovtools::SampleFormat;
using kovtools::SoundReader;
using kovtools::SoundWriter;

using Arguments = std::vector<std::string>;
using Names = std::vector<std::string>;

// Each command that reads a sound file and writes one.
class SoundCommands : public testing::TestWithParam<Arguments>
{
protected:
    // The command with its input and output.
    Outcome run(const std::string& input, const std::string& output) const
    {
        return sandbox.run(arguments(input, output));
    }

    static Arguments arguments(const std::string& input, const std::string& output)
    {
        Arguments arguments = GetParam();
        arguments.insert(arguments.end(), {input, "-o", output});
        return arguments;
    }

    static std::string soundBytes() { return floatWav(noise(5000, 0.1, 1), 1, 96000); }

    Sandbox sandbox;
};

INSTANTIATE_TEST_SUITE_P(Each, SoundCommands,
                         testing::Values(Arguments{"listen"}, Arguments{"resample", "--rate", "48000"},
                                         Arguments{"mix"}),
                         [](const testing::TestParamInfo<Arguments>& each) { return each.param.front(); });

TEST(SoundFiles, AreSpokenOfInTheSingularWhereThereIsOneSample)
{
    const Sandbox sandbox;
    writeFile(sandbox / "in.wav", floatWav({std::numeric_limits<float>::quiet_NaN()}, 1, 96000));

    const Outcome outcome = sandbox.run({"resample", "in.wav", "-o", "out.wav", "--rate", "96000"});

    EXPECT_NE(outcome.out.find("out.wav: 1 sample at "), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.err.find("holds 1 sample that is no usable number; it was taken as silence"),
              std::string::npos)
        << outcome.err;
}

TEST_P(SoundCommands, SayThatAFileIsMissing)
{
    const Outcome outcome = run("in.wav", "out.wav");

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("in.wav' does not exist"), std::string::npos) << outcome.err;
    EXPECT_TRUE(sandbox.contents().empty());
}

TEST_P(SoundCommands, SayThatAFileIsNoSoundFile)
{
    writeFile(sandbox / "text.wav", "this is no sound, only a few words about it that fill a header");
    writeFile(sandbox / "empty.wav", "");
    writeFile(sandbox / "silent.wav", floatWav({}, 1, 96000));
    std::string noChannels = soundBytes();
    noChannels[22] = 0;
    writeFile(sandbox / "none.wav", noChannels);

    for (const char* const name : {"text.wav", "empty.wav", "silent.wav", "none.wav"}) {
        const Outcome outcome = run(name, "out.wav");

        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_NE(outcome.err.find(name), std::string::npos) << outcome.err;
        EXPECT_FALSE(std::filesystem::exists(sandbox / "out.wav"));
    }
}

TEST_P(SoundCommands, UseACutOffFileAsFarAsItGoesAndSaySo)
{
    writeFile(sandbox / "in.wav", soundBytes().substr(0, 44 + 4 * 3000));
    Samples sound = noise(5000, 0.1, 1);
    sound.resize(3000);
    writeFile(sandbox / "whole.wav", floatWav(sound, 1, 96000));

    const Outcome outcome = run("in.wav", "out.wav");
    ASSERT_EQ(run("whole.wav", "expected.wav").status, 0);

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("ends 8000 bytes before its samples do; the 3000 that are there were used"),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(readFile(sandbox / "out.wav"), readFile(sandbox / "expected.wav"));
}

TEST_P(SoundCommands, RefuseToReplaceTheirInput)
{
    writeFile(sandbox / "in.wav", soundBytes());
    std::filesystem::create_symlink("in.wav", sandbox / "link.wav");

    for (const char* const name : {"in.wav", "link.wav"}) {
        const Outcome outcome = run("in.wav", name);

        EXPECT_EQ(outcome.status, 2);
        EXPECT_NE(outcome.err.find(" is both IN and -o"), std::string::npos) << outcome.err;
    }
    EXPECT_EQ(readFile(sandbox / "in.wav"), soundBytes());
}

TEST_P(SoundCommands, RefuseNamesOfOtherFormats)
{
    writeFile(sandbox / "in.wav", soundBytes());

    const Outcome outcome = run("in.wav", "out.mp3");

    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("must end in .wav"), std::string::npos) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"in.wav"});
}

TEST_P(SoundCommands, SayThatTheDiskIsFullAndLeaveNothing)
{
    // A limit on the size of files is a full disk on purpose: the write fails in the same way.
    writeFile(sandbox / "in.wav", floatWav(noise(60000, 0.1, 2), 1, 96000));
    std::string script = "ulimit -f 4; exec \"$0\"";
    for (const std::string& argument : arguments("in.wav", "out.wav")) {
        script += " " + argument;
    }

    const Outcome outcome = sandbox.runScript(script);

    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("cannot write"), std::string::npos) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"in.wav"});
}

TEST_P(SoundCommands, DoNotReadAPipe)
{
    ASSERT_EQ(mkfifo((sandbox / "pipe.wav").c_str(), 0600), 0);

    const Outcome outcome = run("pipe.wav", "out.wav");

    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("is not a regular file"), std::string::npos) << outcome.err;
}

TEST_P(SoundCommands, GiveTheSameBytesEachTime)
{
    writeFile(sandbox / "in.wav", soundBytes());

    ASSERT_EQ(run("in.wav", "a.wav").status, 0);
    ASSERT_EQ(run("in.wav", "b.wav").status, 0);

    EXPECT_EQ(readFile(sandbox / "a.wav"), readFile(sandbox / "b.wav"));
}

TEST_P(SoundCommands, TakeNamesWithAnyCharacters)
{
    writeFile(sandbox / "in\n\x1B[31m\xFF.wav", soundBytes());

    const Outcome outcome = run("in\n\x1B[31m\xFF.wav", "out\n\xFF.wav");

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("out\\n"), std::string::npos) << outcome.out;
    EXPECT_TRUE(std::filesystem::exists(sandbox / "out\n\xFF.wav"));
}

TEST(SoundReader, DoesNotMissBytesThatAStreamNeverAnnounced)
{
    // Whoever writes into a pipe cannot come back to the header; the size stays the largest one.
    const Sandbox sandbox;
    std::string bytes = floatWav(noise(1000, 0.1, 3), 1, 96000);
    bytes.replace(40, 4, "\xFF\xFF\xFF\xFF");
    writeFile(sandbox / "in.wav", bytes);
    SoundReader reader(sandbox / "in.wav");
    Samples block;

    reader.read(2000, block);

    EXPECT_EQ(block, noise(1000, 0.1, 3));
    EXPECT_EQ(reader.complaint(), "");
}

TEST(SoundReader, GivesAStreamInPiecesAsAWhole)
{
    const Sandbox sandbox;
    const Samples sound = noise(3000, 0.1, 4);
    writeFile(sandbox / "in.wav", floatWav(sound, 3, 96000));
    SoundReader reader(sandbox / "in.wav");
    Samples whole;
    Samples block;

    for (reader.read(7, block); !block.empty(); reader.read(7, block)) {
        whole.insert(whole.end(), block.begin(), block.end());
    }

    EXPECT_EQ(reader.channels(), 3);
    EXPECT_EQ(reader.samples(), 1000);
    EXPECT_EQ(whole, sound);
}

TEST(SoundWriter, RefusesMoreThanAWavFileHolds)
{
    const Sandbox sandbox;

    EXPECT_THROW(SoundWriter(sandbox / "out.wav", {2, 96000, SampleFormat::Float32}, 540000000), DataError);
    EXPECT_TRUE(sandbox.contents().empty());
}

TEST(SoundWriter, LeavesNothingUnlessItIsFinished)
{
    const Sandbox sandbox;
    {
        SoundWriter writer(sandbox / "out.wav", {1, 96000, SampleFormat::Float32}, 3);
        writer.write({0.1F, 0.2F, 0.3F});
    }

    EXPECT_TRUE(sandbox.contents().empty());
}

TEST(SoundWriter, RoundsToTheNearestInteger)
{
    const Sandbox sandbox;
    SoundWriter writer(sandbox / "out.wav", {1, 96000, SampleFormat::Integer16}, 4);

    writer.write({0.6F / 32768.0F, -0.6F / 32768.0F, 0.4F / 32768.0F, 1.0F});
    writer.finish();

    EXPECT_EQ(readWav(sandbox / "out.wav").integers, (std::vector<std::int32_t>{1, -1, 0, 32767}));
    EXPECT_EQ(writer.clipped(), 1);
}

}  // namespace
