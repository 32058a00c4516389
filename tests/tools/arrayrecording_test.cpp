#include "tools/arrayaudio/arrayrecording.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "tests/tools/arraysamples.h"
#include "tests/tools/program.h"
#include "tools/arrayaudio/arraywriter.h"
#include "tools/support/errors.h"

namespace {

using kovtools::ArrayRecording;
using kovtools::ArrayWriter;
using kovtools::DataError;
using kovtools::wavHeader;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeArray;
using kovtools::tests::writeFile;

using Rows = std::vector<std::vector<float>>;

// Every sample tells its channel and its place.
Rows numbered(int channels, int samples)
{
    Rows rows(static_cast<std::size_t>(channels));
    for (int c = 0; c < channels; ++c) {
        for (int i = 0; i < samples; ++i) {
            rows[static_cast<std::size_t>(c)].push_back(static_cast<float>(c * 100000 + i));
        }
    }
    return rows;
}

Rows readAll(ArrayRecording& recording, int first, int count)
{
    Rows rows(static_cast<std::size_t>(recording.channels()),
              std::vector<float>(static_cast<std::size_t>(count)));
    std::vector<float*> pointers;
    for (std::vector<float>& row : rows) {
        pointers.push_back(row.data());
    }
    recording.read(first, count, pointers.data());
    return rows;
}

std::string headerText(int channels, int rate, int samples)
{
    const auto header = wavHeader(channels, rate, samples);
    return {header.begin(), header.end()};
}

std::string complaintAbout(const std::filesystem::path& folder, int channels)
{
    try {
        ArrayRecording recording(folder, channels);
        readAll(recording, 0, static_cast<int>(recording.samples()));
    } catch (const DataError& error) {
        return error.what();
    }
    return "no complaint";
}

TEST(ArrayRecording, ReadsEveryChannelFromItsPlaceInTheSet)
{
    const Sandbox sandbox;
    writeArray(sandbox / "a", numbered(24, 10000));
    ArrayRecording recording(sandbox / "a", 24);

    const Rows rows = readAll(recording, 123, 9000);

    EXPECT_EQ(recording.sampleRate(), 96000);
    EXPECT_EQ(recording.samples(), 10000);
    for (int c = 0; c < 24; ++c) {
        EXPECT_EQ(rows[static_cast<std::size_t>(c)].front(), static_cast<float>(c * 100000 + 123));
        EXPECT_EQ(rows[static_cast<std::size_t>(c)].back(), static_cast<float>(c * 100000 + 9122));
        EXPECT_EQ(rows[static_cast<std::size_t>(c)][4096], static_cast<float>(c * 100000 + 123 + 4096));
    }
}

TEST(ArrayRecording, IgnoresTheChannelsOfTheLastFileThatNobodyAskedFor)
{
    const Sandbox sandbox;
    writeArray(sandbox / "a", numbered(11, 50));
    EXPECT_EQ(sandbox.contents(), std::vector<std::string>{"a"});
    ArrayRecording recording(sandbox / "a", 11);

    EXPECT_EQ(readAll(recording, 0, 50), numbered(11, 50));
}

TEST(ArrayRecording, IsAsLongAsItsShortestFile)
{
    const Sandbox sandbox;
    writeArray(sandbox / "a", numbered(16, 50));
    writeFile(sandbox / "a/data-1.wav", headerText(8, 96000, 20) + std::string(20 * 32, '\0'));

    EXPECT_EQ(ArrayRecording(sandbox / "a", 16).samples(), 20);
}

TEST(ArrayRecording, ReadsWhatIsThereOfAFileThatWasCutOff)
{
    const Sandbox sandbox;
    writeArray(sandbox / "a", numbered(8, 50));
    writeFile(sandbox / "a/data-0.wav", readFile(sandbox / "a/data-0.wav").substr(0, 44 + 30 * 32 + 5));
    ArrayRecording recording(sandbox / "a", 8);

    EXPECT_EQ(recording.samples(), 30);
    EXPECT_EQ(readAll(recording, 0, 30)[7].back(), 700029.0F);
}

TEST(ArrayRecording, NamesTheFileThatIsWrongAndHow)
{
    const Sandbox sandbox;
    const std::string file = (sandbox / "a/data-1.wav").string();
    EXPECT_NE(complaintAbout(sandbox / "a", 16).find("does not exist"), std::string::npos);
    writeFile(sandbox / "f", "x");
    EXPECT_NE(complaintAbout(sandbox / "f", 16).find("is not a folder"), std::string::npos);
    writeArray(sandbox / "a", numbered(8, 50));
    EXPECT_EQ(complaintAbout(sandbox / "a", 16), "'" + file + "' does not exist");
    std::filesystem::create_directory(file);
    EXPECT_EQ(complaintAbout(sandbox / "a", 16), "'" + file + "' is not a regular file");
    std::filesystem::remove(file);
    for (const std::string& bytes :
         {std::string(), std::string("no WAV file"), headerText(8, 96000, 9).substr(0, 30),
          headerText(0, 96000, 9) + std::string(99, 'x')}) {
        writeFile(file, bytes);
        EXPECT_EQ(complaintAbout(sandbox / "a", 16), "cannot read '" + file + "' as a WAV file");
    }
    writeFile(file, headerText(2, 96000, 50) + std::string(400, '\0'));
    EXPECT_EQ(complaintAbout(sandbox / "a", 16),
              "'" + file + "' has 2 channels where files of an array have 8");
    writeFile(file, headerText(8, 48000, 50) + std::string(1600, '\0'));
    EXPECT_EQ(complaintAbout(sandbox / "a", 16),
              "'" + file + "' has 48000 samples per second, the first file of the set has 96000");
    writeFile(file, headerText(8, 96000, 50) + std::string(1600, '\xFF'));
    EXPECT_EQ(complaintAbout(sandbox / "a", 16), "'" + file + "' holds samples that are no finite numbers");
}

TEST(ArrayRecording, ReadsTheMeasuredSet)
{
    const std::filesystem::path folder = std::filesystem::path(KOVDOA_SHARED_DATA_DIR) / "array-wav";
    if (!std::filesystem::exists(folder)) {
        GTEST_SKIP() << "the measured recordings are not here";
    }
    ArrayRecording recording(folder, 32);

    const Rows rows = readAll(recording, 0, 28800);

    EXPECT_EQ(recording.samples(), 28800);
    EXPECT_EQ(recording.sampleRate(), 96000);
    for (const std::vector<float>& row : rows) {
        double squares = 0.0;
        for (const float sample : row) {
            squares += static_cast<double>(sample) * static_cast<double>(sample);
        }
        EXPECT_GT(squares, 0.0);
        EXPECT_LT(squares, 28800.0);
    }
}

}  // namespace
