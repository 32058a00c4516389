// What startSave() and Save() put into a file, byte for byte.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/resource.h>

#include <algorithm>
#include <bit>
#include <csignal>
#include <cstdint>
#include <limits>

#include "resulttesting.h"

namespace {

using ResultTesting::floatBytes;
using ResultTesting::Folder;
using ResultTesting::header;
using ResultTesting::makeResult;
using ResultTesting::Messages;
using ResultTesting::readFile;
using ResultTesting::Result;

class RecordingWriter : public ::testing::Test
{
protected:
    Messages messages;
    Folder folder;
    KOVDoaResultSerialize recording{folder.cache()};

    // The bytes of the only record that `result` makes.
    QByteArray recordOf(EngMapResult* result)
    {
        recording.startSave(folder.file(), 1, 1, 1, 1, 1);
        recording.Save(result);
        const QByteArray bytes = readFile(folder.file());
        return bytes.mid(bytes.indexOf("--start--"));
    }

    // The text behind "**distance:" when `distance` is saved.
    QByteArray savedText(float distance)
    {
        const Result result = makeResult(1, 1, 0);
        result->distance = distance;
        QByteArray record = recordOf(result.get());
        record.remove(0, record.indexOf("**distance:") + 11);
        return record.left(record.indexOf("\r\n"));
    }
};

TEST_F(RecordingWriter, ReportsTheUsualSizesBeforeAnythingIsWritten)
{
    EXPECT_EQ(recording.getResRows(), 64);
    EXPECT_EQ(recording.getResCols(), 48);
    EXPECT_EQ(recording.getImgRows(), 480);
    EXPECT_EQ(recording.getImgCols(), 640);
    EXPECT_EQ(recording.getFFTLen(), 1024);
    EXPECT_EQ(recording.getFileVersion(), "");
    EXPECT_EQ(recording.getResultFrame(), 0);
    EXPECT_FALSE(recording.IsOpenFileComplete());
}

TEST_F(RecordingWriter, WritesTheHeader)
{
    recording.startSave(folder.file(), 32, 24, 720, 1280, 2048);

    EXPECT_EQ(readFile(folder.file()), header("32", "24", "2048", "720", "1280"));
}

TEST_F(RecordingWriter, ReportsTheSizesGivenToIt)
{
    recording.startSave(folder.file(), 32, 24, 720, 1280, 2048);

    EXPECT_EQ(recording.getResRows(), 32);
    EXPECT_EQ(recording.getResCols(), 24);
    EXPECT_EQ(recording.getImgRows(), 720);
    EXPECT_EQ(recording.getImgCols(), 1280);
    EXPECT_EQ(recording.getFFTLen(), 2048);
}

TEST_F(RecordingWriter, EmptiesAnExistingFile)
{
    ResultTesting::writeFile(folder.file(), QByteArray(100'000, 'x'));

    recording.startSave(folder.file(), 64, 48, 480, 640, 1024);

    EXPECT_EQ(readFile(folder.file()), header(64, 48, 1024));
}

TEST_F(RecordingWriter, WritesARecordByteForByte)
{
    const Result result(createResultHandle(2, 3, 480, 640, 4));
    result->PowerBandsFFTSpec = 71.25F;
    result->maxSpl = {0.5F, 1, 2};
    result->minSpl = {0.25F, -3, 4};
    result->maxSplExtern = {0.125F, 5, 6};
    result->minSplExtern = {1e-5F, 7, 8};
    result->maxSplView = {100000000.0F, 9, 10};
    result->minSplView = {-0.000123456789F, 11, 12};
    result->maxSplExternView = {0.0F, 13, 14};
    result->minSplExternView = {3.0F, 15, 2147483647};
    result->firstPointInRadius = true;
    result->median = 0.0456789F;
    result->distance = 5.5F;
    result->peaks = {{0.75F, 1, 2, 3, 4, true}, {0.5F, 5, 6, 7, 8, false}};
    const std::vector<float> spectrum{1.0F, 2.0F, 3.0F};
    std::copy(spectrum.begin(), spectrum.end(), result->PowerSpec->data);
    const std::vector<float> rows[] = {{1.5F, 2.5F, 3.5F}, {4.5F, 5.5F, 6.5F}};
    for (int r = 0; r < 2; ++r) {
        std::copy(rows[r].begin(), rows[r].end(), result->ResEngMap->data[r]);
    }

    const QByteArray expected = QByteArray(
                                    "--start--1\r\n"
                                    "**PowerBandsFFTSpec:71.25\r\n"
                                    "**maxSpl:0.5 1 2\r\n"
                                    "**minSpl:0.25 -3 4\r\n"
                                    "**maxSplExtern:0.125 5 6\r\n"
                                    "**minSplExtern:1e-05 7 8\r\n"
                                    "**maxSplView:1e+08 9 10\r\n"
                                    "**minSplView:-0.000123457 11 12\r\n"
                                    "**maxSplExternView:0 13 14\r\n"
                                    "**minSplExternView:3 15 2147483647\r\n"
                                    "**firstPointInRadius:true\r\n"
                                    "**median:0.0456789\r\n"
                                    "**distance:5.5\r\n"
                                    "**peaks:2\r\n"
                                    "0.75 1 2 3 4 1\r\n"
                                    "0.5 5 6 7 8 0\r\n"
                                    "**PowerSpec:3\r\n") +
                                floatBytes(spectrum) + "\r\n**ResEngMap:2x3\r\n" + floatBytes(rows[0]) +
                                "\r\n" + floatBytes(rows[1]) + "\r\n--end--\r\n";
    EXPECT_EQ(recordOf(result.get()), expected);
}

TEST_F(RecordingWriter, WritesAFreshResultWithoutPeakLines)
{
    const Result result(createResultHandle(1, 1, 480, 640, 0));

    EXPECT_EQ(recordOf(result.get()),
              QByteArray("--start--1\r\n**PowerBandsFFTSpec:0\r\n**maxSpl:0 0 0\r\n**minSpl:0 0 0\r\n"
                         "**maxSplExtern:0 0 0\r\n**minSplExtern:0 0 0\r\n**maxSplView:0 0 0\r\n"
                         "**minSplView:0 0 0\r\n**maxSplExternView:0 0 0\r\n**minSplExternView:0 0 0\r\n"
                         "**firstPointInRadius:false\r\n**median:0\r\n**distance:0\r\n**peaks:0\r\n"
                         "**PowerSpec:1\r\n") +
                  QByteArray(4, '\0') + "\r\n**ResEngMap:1x1\r\n" + QByteArray(4, '\0') + "\r\n--end--\r\n");
}

TEST_F(RecordingWriter, WritesAnEmptySpectrumAndAnEmptyMap)
{
    const Result result(createResultHandle(0, 48, 480, 640, -2));
    ASSERT_EQ(result->PowerSpec->len, 0);

    EXPECT_TRUE(recordOf(result.get()).endsWith("**PowerSpec:0\r\n\r\n**ResEngMap:0x48\r\n--end--\r\n"));
}

TEST_F(RecordingWriter, WritesOneLineEndARowForAMapWithoutColumns)
{
    const Result result(createResultHandle(3, 0, 480, 640, -2));

    EXPECT_TRUE(recordOf(result.get()).endsWith("**ResEngMap:3x0\r\n\r\n\r\n\r\n--end--\r\n"));
}

TEST_F(RecordingWriter, TakesTheMapsOwnSizeRatherThanTheHeaders)
{
    const Result result = makeResult(3, 5, 8);

    const QByteArray record = recordOf(result.get());

    EXPECT_TRUE(record.contains("**PowerSpec:5\r\n"));
    EXPECT_TRUE(record.contains("**ResEngMap:3x5\r\n"));
}

TEST_F(RecordingWriter, LeavesLineEndsInsideBinaryBlocksAlone)
{
    const auto lineEnds = std::bit_cast<float>(std::uint32_t{0x0A0D0A0D});
    const Result result = makeResult(2, 2, 2);
    result->PowerSpec->data[0] = lineEnds;
    result->ResEngMap->data[1][1] = lineEnds;

    const QByteArray record = recordOf(result.get());

    const QByteArray bytes = "\r\n\r\n";
    EXPECT_EQ(record.mid(record.indexOf("**PowerSpec:2\r\n") + 15, 4), bytes);
    EXPECT_TRUE(record.endsWith(bytes + "\r\n--end--\r\n"));
    EXPECT_EQ(record.mid(record.indexOf("**ResEngMap:2x2\r\n") + 17).size(), 4 * 4 + 2 * 2 + 9);
}

TEST_F(RecordingWriter, WritesLevelsWithSixDigits)
{
    EXPECT_EQ(savedText(65.5F), "65.5");
    EXPECT_EQ(savedText(100000000.0F), "1e+08");
    EXPECT_EQ(savedText(0.000123456789F), "0.000123457");
    EXPECT_EQ(savedText(43915.25F), "43915.3");
    EXPECT_EQ(savedText(-0.0F), "0");
    EXPECT_EQ(savedText(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(savedText(-std::numeric_limits<float>::infinity()), "-inf");
    EXPECT_EQ(savedText(-std::numeric_limits<float>::quiet_NaN()), "nan");
}

TEST_F(RecordingWriter, NumbersTheRecordsFromOne)
{
    const Result result = makeResult(1, 1, 2);
    recording.startSave(folder.file(), 1, 1, 480, 640, 2);

    for (int i = 0; i < 12; ++i) {
        recording.Save(result.get());
    }

    const QByteArray bytes = readFile(folder.file());
    int from = 0;
    for (int number = 1; number <= 12; ++number) {
        from = bytes.indexOf("--start--" + QByteArray::number(number) + "\r\n", from);
        ASSERT_GE(from, 0) << number;
    }
    EXPECT_EQ(bytes.count("--start--"), 12);
}

TEST_F(RecordingWriter, ContinuesTheNumbersInASecondFile)
{
    const Result result = makeResult(1, 1, 2);
    recording.startSave(folder.file(), 1, 1, 480, 640, 2);
    recording.Save(result.get());
    recording.Save(result.get());

    recording.startSave(folder.path("second.kov"), 1, 1, 480, 640, 2);
    recording.Save(result.get());

    const QByteArray bytes = readFile(folder.path("second.kov"));
    EXPECT_EQ(bytes.count("--start--"), 1);
    EXPECT_TRUE(bytes.contains("--start--3\r\n"));
}

TEST_F(RecordingWriter, StartsAgainFromOneInAnotherObject)
{
    const Result result = makeResult(1, 1, 2);
    recording.startSave(folder.file(), 1, 1, 480, 640, 2);
    recording.Save(result.get());

    KOVDoaResultSerialize second(folder.cache());
    second.startSave(folder.file(), 1, 1, 480, 640, 2);
    second.Save(result.get());

    EXPECT_EQ(readFile(folder.file()).count("--start--1\r\n"), 1);
}

TEST_F(RecordingWriter, HoldsTheFileOnlyDuringACall)
{
    const Result result = makeResult(1, 1, 2);
    recording.startSave(folder.file(), 1, 1, 480, 640, 2);
    recording.Save(result.get());

    ASSERT_TRUE(QFile::rename(folder.file(), folder.path("moved.kov")));
    recording.Save(result.get());

    // Appending creates a file of its own again, without a header.
    EXPECT_TRUE(readFile(folder.file()).startsWith("--start--2\r\n"));
    EXPECT_EQ(readFile(folder.path("moved.kov")).count("--start--"), 1);
}

TEST_F(RecordingWriter, DoesNothingAndSaysNothingBeforeAFileIsStarted)
{
    const Result result = makeResult(1, 1, 2);
    const int before = messages.texts().size();

    recording.Save(result.get());

    EXPECT_EQ(messages.texts().size(), before);
}

struct BadPath
{
    const char* name;
    QString (*path)(const Folder& folder);
};

class UnusableFile : public RecordingWriter, public ::testing::WithParamInterface<BadPath>
{
};

TEST_P(UnusableFile, IsNotReportedButItsRecordsCount)
{
    const Result result = makeResult(1, 1, 2);
    const int before = messages.texts().size();

    recording.startSave(GetParam().path(folder), 3, 1, 480, 640, 2);
    recording.Save(result.get());
    recording.Save(result.get());
    EXPECT_EQ(recording.getResRows(), 3);
    EXPECT_EQ(messages.texts().size(), before) << qPrintable(messages.texts().join('\n'));
    recording.startSave(folder.file(), 1, 1, 480, 640, 2);
    recording.Save(result.get());

    EXPECT_TRUE(readFile(folder.file()).contains("--start--3\r\n"));
}

const BadPath badPaths[] = {
    {"WithoutAName", [](const Folder&) { return QString(); }},
    {"WithANul", [](const Folder& folder) -> QString { return folder.path("a") + QChar(0) + "b"; }},
    {"InAMissingFolder", [](const Folder& folder) { return folder.path("missing/a.kov"); }},
    {"ThatIsAFolder", [](const Folder& folder) { return folder.cache(); }},
};

INSTANTIATE_TEST_SUITE_P(Path, UnusableFile, ::testing::ValuesIn(badPaths),
                         [](const auto& bad) { return std::string(bad.param.name); });

TEST_F(RecordingWriter, AcceptsPercentSignsAndBlanksInThePath)
{
    const QString path = folder.path("leak %1 %2.kov");

    recording.startSave(path, 64, 48, 480, 640, 1024);

    EXPECT_EQ(readFile(path), header(64, 48, 1024));
}

TEST_F(RecordingWriter, LeavesNoHalfRecordWhenTheDiskIsFull)
{
    // A limit on the size of files stands in for the full disk.
    const auto signalBefore = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const Result result = makeResult(64, 48, 1024);
    recording.startSave(folder.file(), 64, 48, 480, 640, 1024);
    recording.Save(result.get());
    const QByteArray oneRecord = readFile(folder.file());

    const rlimit full = {static_cast<rlim_t>(oneRecord.size()) + 5000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    recording.Save(result.get());
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, signalBefore);

    EXPECT_EQ(readFile(folder.file()), oneRecord);
    recording.Save(result.get());
    EXPECT_TRUE(readFile(folder.file()).mid(oneRecord.size()).startsWith("--start--3\r\n"));
}

}  // namespace
