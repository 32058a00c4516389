#include "tools/recording/recordingscan.h"

#include <gtest/gtest.h>
#include <QtCore/QTemporaryDir>

#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::RecordingScan;

RecordingScan scanned(const std::string& bytes)
{
    std::istringstream stream(bytes);
    return kovtools::scanRecording(stream);
}

// Two frames of 4 x 5 cells.
std::string twoFrames()
{
    const QTemporaryDir folder;
    const std::string file = (folder.path() + "/two.kov").toStdString();
    kovtools::tests::writeRecording(
        file, 2, 4, 5, [](int frame, int row, int col) { return static_cast<float>(1 + frame + row + col); });
    return kovtools::tests::readFile(file);
}

std::string replaced(std::string text, const std::string& from, const std::string& to)
{
    text.replace(text.find(from), from.size(), to);
    return text;
}

TEST(RecordingScan, FindsAWholeRecordingWhole)
{
    const RecordingScan scan = scanned(twoFrames());

    EXPECT_TRUE(scan.isWhole());
    EXPECT_EQ(scan.completeRecords, 2);
    EXPECT_EQ(scan.version, "0015");
    EXPECT_EQ(scan.resRows, 4);
    EXPECT_EQ(scan.resCols, 5);
    EXPECT_EQ(scan.imgRows, 240);
    EXPECT_EQ(scan.imgCols, 320);
    EXPECT_EQ(scan.fftLen, 64);
}

TEST(RecordingScan, CountsTheCompleteRecordsHoweverManyBytesAreMissing)
{
    const std::string whole = twoFrames();
    const std::size_t second = whole.find("--start--2");
    const std::size_t header = whole.find("--start--1");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const RecordingScan scan = scanned(whole.substr(0, length));

        const bool endsBetweenRecords = length == header || length == second;
        EXPECT_EQ(scan.isWhole(), endsBetweenRecords) << length;
        EXPECT_EQ(scan.completeRecords, length >= second ? 1 : 0) << length;
    }
}

TEST(RecordingScan, DoesNotTakeLineEndsInBinaryDataForLines)
{
    const QTemporaryDir folder;
    const std::string file = (folder.path() + "/crlf.kov").toStdString();
    // 0x0A0D0A0D as bytes in a file is CR LF CR LF.
    const std::uint32_t bits = 0x0A0D0A0DU;
    float lineEnds = 0.0F;
    static_assert(sizeof bits == sizeof lineEnds);
    std::memcpy(&lineEnds, &bits, sizeof bits);
    kovtools::tests::writeRecording(file, 3, 4, 4, [&](int, int, int) { return lineEnds; });

    const RecordingScan scan = scanned(kovtools::tests::readFile(file));

    EXPECT_TRUE(scan.isWhole());
    EXPECT_EQ(scan.completeRecords, 3);
}

struct Damage
{
    std::string name;
    std::string from;
    std::string to;
};

class DamagedRecording : public testing::TestWithParam<Damage>
{
};

TEST_P(DamagedRecording, IsNotWhole)
{
    const RecordingScan scan = scanned(replaced(twoFrames(), GetParam().from, GetParam().to));

    EXPECT_FALSE(scan.isWhole());
    EXPECT_NE(scan.damage, "");
    EXPECT_LT(scan.completeRecords, 2);
}

INSTANTIATE_TEST_SUITE_P(Scan, DamagedRecording,
                         testing::Values(Damage{"Start", "==FILE_INFO_START", "==FILE_INFO"},
                                         Damage{"Rows", "RESROW:4", "RESROW:5"},
                                         Damage{"NegativeRows", "RESROW:4", "RESROW:-4"},
                                         Damage{"NoNumber", "RESCOL:5", "RESCOL:x"},
                                         Damage{"HugeMap", "RESROW:4", "RESROW:2000000000"},
                                         Damage{"HugeSpectrum", "FFTLEN:64", "FFTLEN:2000000000"},
                                         Damage{"NoEndOfHeader", "==FILE_INFO_END==", "=="},
                                         Damage{"NoFields", "==STRUCT_INFO_START", "=="},
                                         Damage{"SecondStart", "--start--2", "--begin--2"},
                                         Damage{"MapSize", "ResEngMap:4x5", "ResEngMap:4x4"},
                                         Damage{"SpectrumLength", "PowerSpec:33", "PowerSpec:34"},
                                         Damage{"Peaks", "**peaks:0", "**peaks:2000000000"},
                                         Damage{"NegativePeaks", "**peaks:0", "**peaks:-1"},
                                         Damage{"NoMap", "**ResEngMap:4x5", "**XesEngMap:4x5"},
                                         Damage{"NoEnd", "--end--", "--eod--"}),
                         [](const testing::TestParamInfo<Damage>& chosen) { return chosen.param.name; });

TEST(RecordingScan, FindsLineEndsAndBlocksWhereverItsPiecesOfTheFileEnd)
{
    // A line of growing length before the records moves everything behind it over the ends of the pieces.
    const std::string whole = twoFrames();
    const std::size_t place = whole.find("==STRUCT_INFO_END");
    for (std::size_t length = 256 * 1024 - 1200; length < 256 * 1024 + 10; ++length) {
        std::string longer = whole;
        longer.insert(place, std::string(length, '.') + "\r\n");

        const RecordingScan scan = scanned(longer);

        ASSERT_TRUE(scan.isWhole()) << length << ": " << scan.damage;
        ASSERT_EQ(scan.completeRecords, 2) << length;
        ASSERT_EQ(scan.bytes, longer.size());
    }
}

TEST(RecordingScan, GivesUpALineWithoutAnEnd)
{
    const std::string whole = twoFrames();
    const std::string header = whole.substr(0, whole.find("--start--1"));

    const RecordingScan scan = scanned(header + std::string(20 * 1024 * 1024, '.'));

    EXPECT_NE(scan.damage.find("damaged in record 1"), std::string::npos) << scan.damage;
    EXPECT_NE(scan.damage.find("a line has no end"), std::string::npos) << scan.damage;
}

TEST(RecordingScan, FindsNothingInOtherFiles)
{
    for (const std::string& other : {std::string(), std::string("hello\r\n"), std::string(1000, '\0')}) {
        EXPECT_FALSE(scanned(other).isRecording);
    }
}

}  // namespace
