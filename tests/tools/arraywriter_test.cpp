#include "tools/arrayaudio/arraywriter.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/KOVAudio/playback.h"
#include "tests/tools/arraysamples.h"
#include "tests/tools/program.h"
#include "tools/support/errors.h"

namespace {

using kovtools::ArrayWriter;
using kovtools::DataError;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeArray;
using kovtools::tests::writeFile;

using Rows = std::vector<std::vector<float>>;

Rows constantRows(int channels, int samples, float value)
{
    return Rows(static_cast<std::size_t>(channels),
                std::vector<float>(static_cast<std::size_t>(samples), value));
}

TEST(ArrayWriter, WritesTheCanonicalHeader)
{
    const std::array<unsigned char, 44> expected{
        'R',  'I',  'F',  'F',  0x64, 0x00, 0x00, 0x00,  // bytes behind this field: 36 + 64
        'W',  'A',  'V',  'E',  'f',  'm',  't',  ' ',
        16,   0,    0,    0,                             //
        3,    0,    8,    0,                             // 32-bit float, 8 channels
        0x00, 0x77, 0x01, 0x00, 0x00, 0xE0, 0x2E, 0x00,  // 96000 samples, 3072000 bytes per second
        32,   0,    32,   0,    'd',  'a',  't',  'a',
        0x40, 0x00, 0x00, 0x00  // bytes of 8 samples, bits, 64 bytes of data
    };

    EXPECT_EQ(kovtools::wavHeader(8, 96000, 2), expected);
}

TEST(ArrayWriter, InterleavesEightChannelsPerFileAndFillsUpWithSilence)
{
    const Sandbox sandbox;
    Rows rows = constantRows(9, 2, 0.0F);
    rows[8] = {1.0F, -2.0F};

    writeArray(sandbox / "a", rows);

    const std::string bytes = readFile(sandbox / "a/data-1.wav");
    ASSERT_EQ(bytes.size(), 44U + 64U);
    const std::string silence(28, '\0');
    EXPECT_EQ(bytes.substr(44),
              std::string("\0\0\x80\x3F", 4) + silence + std::string("\0\0\0\xC0", 4) + silence);
}

TEST(ArrayWriter, KeepsTheOldSetUntilTheNewOneIsComplete)
{
    const Sandbox sandbox;
    writeArray(sandbox / "a", constantRows(16, 5, 1.0F));
    const std::string old = readFile(sandbox / "a/data-1.wav");
    {
        const Rows rows = constantRows(16, 5, 2.0F);
        std::vector<const float*> pointers;
        for (const std::vector<float>& row : rows) {
            pointers.push_back(row.data());
        }
        ArrayWriter writer(sandbox / "a", 16, 96000, 10);
        writer.append(pointers.data(), 5);

        EXPECT_EQ(readFile(sandbox / "a/data-1.wav"), old);
    }
    EXPECT_EQ(readFile(sandbox / "a/data-1.wav"), old);
    EXPECT_EQ(kovtools::tests::countFiles(sandbox / "a", ".wav"), 2);
}

TEST(ArrayWriter, LeavesNoFolderBehindThatItMadeInVain)
{
    const Sandbox sandbox;
    {
        const ArrayWriter writer(sandbox / "a", 16, 96000, 10);
        EXPECT_TRUE(std::filesystem::exists(sandbox / "a"));
    }
    EXPECT_EQ(sandbox.contents(), std::vector<std::string>{});
}

TEST(ArrayWriter, RefusesAFolderWithFilesOfALargerSet)
{
    const Sandbox sandbox;
    std::filesystem::create_directory(sandbox / "a");
    writeFile(sandbox / "a/data-2.wav", "");

    EXPECT_THROW(ArrayWriter(sandbox / "a", 16, 96000, 10), DataError);
    EXPECT_NO_THROW(ArrayWriter(sandbox / "a", 24, 96000, 10));
    EXPECT_THROW(ArrayWriter(sandbox / "b/c", 24, 96000, 10), DataError);
}

TEST(ArrayWriter, WritesWhatTheLibrarysReaderLoads)
{
    const Sandbox sandbox;
    Rows rows(16);
    for (std::size_t channel = 0; channel < rows.size(); ++channel) {
        for (int i = 0; i < 1024; ++i) {
            rows[channel].push_back(static_cast<float>(channel) + 0.0005F * static_cast<float>(i));
        }
    }
    writeArray(sandbox / "a", rows);
    KOVHwMultAudio reader(16);

    ASSERT_TRUE(reader.init((sandbox / "a").c_str()));

    EXPECT_EQ(reader.getTotalDataSize(), 1024);
    StreamTesting::Listener listener(reader);
    reader.start();
    KOVAudioBuffer block = StreamTesting::publishOne(reader, listener, 0);
    for (int channel = 0; channel < 16; ++channel) {
        const float* const samples = block.data(channel);
        EXPECT_EQ(std::vector<float>(samples, samples + 1024), rows[static_cast<std::size_t>(channel)]);
    }
    reader.close();
}

}  // namespace
