// Files that nobody's writer has made: the reader must end, stay inside the data and keep to sane amounts of memory.
#include <gtest/gtest.h>

#include <QtCore/QDir>

#include <sys/stat.h>

#include <cmath>
#include <numeric>
#include <random>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::header;
using ResultTesting::loadBytes;
using ResultTesting::Loaded;
using ResultTesting::makeResult;
using ResultTesting::Messages;

constexpr qint64 mebibyte = 1024 * 1024;

class DamagedRecording : public ::testing::Test
{
protected:
    Messages messages;
    Folder folder;

    // Lines in the log that say that and why the reader has given up.
    int complaints() const { return messages.count("stop reading"); }
};

TEST_F(DamagedRecording, HasNoFramesWhenTheFileIsEmpty)
{
    Loaded loaded = loadBytes(folder, "");

    EXPECT_EQ(loaded.frames(), 0);
    EXPECT_EQ(loaded->getFileVersion(), "");
    EXPECT_EQ(loaded->getResRows(), 64);
    EXPECT_EQ(loaded->getResCols(), 48);
    EXPECT_EQ(loaded->getImgRows(), 480);
    EXPECT_EQ(loaded->getImgCols(), 640);
    EXPECT_EQ(loaded->getFFTLen(), 1024);
}

struct MissingFile
{
    const char* name;
    QString (*path)(const Folder& folder);
};

class UnreadableFile : public DamagedRecording, public ::testing::WithParamInterface<MissingFile>
{
};

TEST_P(UnreadableFile, HasNoFramesAndIsCompleteAllTheSame)
{
    const int before = messages.texts().size();

    Loaded loaded(GetParam().path(folder), folder.cache());

    EXPECT_EQ(loaded.frames(), 0);
    EXPECT_TRUE(loaded->IsOpenFileComplete());
    EXPECT_EQ(messages.count("file size = 0"), 1);
    for (const ResultTesting::Message& message : messages.all()) {
        EXPECT_EQ(message.type, QtDebugMsg) << qPrintable(message.text);
    }
    EXPECT_GT(messages.texts().size(), before);
}

const MissingFile missingFiles[] = {
    {"ThatIsMissing", [](const Folder& folder) { return folder.path("missing.kov"); }},
    {"WithoutAName", [](const Folder&) { return QString(); }},
    {"WithANul", [](const Folder& folder) -> QString { return folder.path("a") + QChar(0) + "b"; }},
};

INSTANTIATE_TEST_SUITE_P(Path, UnreadableFile, ::testing::ValuesIn(missingFiles),
                         [](const auto& file) { return std::string(file.param.name); });

TEST_F(DamagedRecording, HasNoFramesWhenThePathIsAFolder)
{
    Loaded loaded(folder.path(""), folder.cache());

    EXPECT_EQ(loaded.frames(), 0);
}

TEST_F(DamagedRecording, IsNotWaitedForWhenThePathIsAPipe)
{
    ASSERT_EQ(mkfifo(folder.file().toLocal8Bit().constData(), 0600), 0);

    Loaded loaded(folder.file(), folder.cache());

    EXPECT_EQ(loaded.frames(), 0);
}

TEST_F(DamagedRecording, IsNotReadWhenThePathIsAnEndlessDevice)
{
    Loaded loaded("/dev/zero", folder.cache());

    EXPECT_EQ(loaded.frames(), 0);
}

TEST_F(DamagedRecording, HasNoFramesWhenItIsSomethingElse)
{
    std::mt19937 random(5);
    QByteArray noise(200'000, '\0');
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random()); });

    EXPECT_EQ(loadBytes(folder, noise).frames(), 0);
    EXPECT_EQ(loadBytes(folder, QByteArray(200'000, '\r')).frames(), 0);
    EXPECT_EQ(loadBytes(folder, "--end--\r\n").frames(), 0);
}

TEST_F(DamagedRecording, EndsInAHeaderThatNeverEnds)
{
    QByteArray bytes = "==FILE_INFO_START==\r\nRESROW:12\r\n";
    for (int i = 0; i < 50'000; ++i) {
        bytes += "a:b\r\n";
    }

    Loaded loaded = loadBytes(folder, bytes);

    EXPECT_EQ(loaded.frames(), 0);
    EXPECT_EQ(loaded->getResRows(), 12);
    // A log file is opened for every line, so a log of them all would take minutes.
    EXPECT_LT(messages.count("\"a\" \"b\""), 200);
}

TEST_F(DamagedRecording, LogsOnlyTheBeginningOfALineWithoutEnd)
{
    loadBytes(folder, "==FILE_INFO_START==\r\nVERSION:" + QByteArray(1'000'000, 'x'));

    for (const QString& text : messages.texts()) {
        EXPECT_LT(text.size(), 2000);
    }
}

TEST_F(DamagedRecording, EndsInPeaksThatNeverEnd)
{
    Loaded loaded =
        loadBytes(folder, header(1, 1, 0) + "--start--1\r\n**peaks:2147483647\r\n1 2 3 4 5 1\r\n6 7\r\n");

    ASSERT_EQ(loaded.frames(), 1);
    EXPECT_EQ(loaded.frame(0).peaks,
              (std::vector<TargetPoint>{{1.0F, 2, 3, 4, 5, true}, {6.0F, 7, 0, 0, 0, false}}));
}

TEST_F(DamagedRecording, TakesNegativePeakCountsAsNone)
{
    Loaded loaded =
        loadBytes(folder, header(1, 1, 0) + "--start--1\r\n**peaks:-5\r\n**median:2\r\n--end--\r\n");

    ASSERT_EQ(loaded.frames(), 1);
    EXPECT_TRUE(loaded.frame(0).peaks.empty());
    EXPECT_EQ(loaded.frame(0).median, 2.0F);
}

TEST_F(DamagedRecording, StopsWhenEmptyPeakLinesWouldTakeFarMoreMemoryThanTheFile)
{
    QByteArray bytes = header(1, 1, 0) + "--start--1\r\n--end--\r\n--start--2\r\n**peaks:2147483647\r\n";
    constexpr int lines = 6'000'000;  // 12 MB, which would be 144 MB of peaks
    bytes.reserve(bytes.size() + 2 * lines);
    for (int i = 0; i < lines; ++i) {
        bytes += "\r\n";
    }

    Loaded loaded = loadBytes(folder, bytes);

    ASSERT_EQ(loaded.frames(), 2);
    EXPECT_LE(static_cast<qint64>(loaded.frame(1).peaks.size() * sizeof(TargetPoint)),
              bytes.size() + 64 * mebibyte);
    EXPECT_EQ(complaints(), 1);
}

struct Sizes
{
    const char* name;
    const char* rows;
    const char* cols;
    const char* fftLen;
    int frames;  // of the two records in the file
};

std::ostream& operator<<(std::ostream& stream, const Sizes& sizes)
{
    return stream << sizes.rows << " x " << sizes.cols << ", " << sizes.fftLen;
}

class HeaderSizes : public DamagedRecording, public ::testing::WithParamInterface<Sizes>
{
};

TEST_P(HeaderSizes, NeverTakeMoreMemoryThanABlockForAContainer)
{
    const Sizes& sizes = GetParam();
    const QByteArray record =
        "--start--1\r\n**median:2\r\n**PowerSpec:3\r\nabcdefgh\r\n**ResEngMap:1x1\r\nabcd\r\n--end--\r\n";

    Loaded loaded = loadBytes(folder, header(sizes.rows, sizes.cols, sizes.fftLen) + record + record);

    EXPECT_LE(loaded.frames(), 2);
    EXPECT_GE(loaded.frames(), std::min(sizes.frames, 1));
    EXPECT_EQ(complaints(), sizes.frames == 0 ? 1 : 0);
    EXPECT_LE(folder.cacheBytes(), 4 * 16 * mebibyte);
    for (int i = 0; i < loaded.frames(); ++i) {
        EXPECT_EQ(loaded.frame(i).median, 2.0F);
        const std::vector<float> map = ResultTesting::mapValues(loaded.frame(i));
        const std::vector<float> spectrum = ResultTesting::spectrumValues(loaded.frame(i));
        EXPECT_LE(map.size() * sizeof(float), 16U * 1024 * 1024);
        EXPECT_LE(spectrum.size() * sizeof(float), 16U * 1024 * 1024);
    }
}

const Sizes headerSizes[] = {
    {"Zero", "0", "0", "0", 2},
    {"NoRows", "0", "48", "1024", 2},
    {"NoColumns", "64", "0", "1024", 2},
    {"NegativeRows", "-1", "48", "1024", 2},
    {"NegativeColumns", "64", "-48", "1024", 2},
    {"BothNegative", "-64", "-48", "-1024", 2},
    {"ManyRowsWithoutColumns", "2147483647", "0", "0", 2},
    {"ManyRowsWithNegativeColumns", "2147483647", "-2147483648", "0", 2},
    {"LowestNumbers", "-2147483648", "-2147483648", "-2147483648", 2},
    {"AFullBlock", "4096", "1024", "0", 2},
    {"AFullBlockOfSpectrum", "1", "1", "8388606", 2},
    {"OneRowTooMany", "4097", "1024", "0", 0},
    {"OneBinTooMany", "1", "1", "8388608", 0},
    {"HugeRows", "2147483647", "1", "0", 0},
    {"HugeColumns", "1", "2147483647", "0", 0},
    {"HugeBoth", "2147483647", "2147483647", "2147483647", 0},
    {"HugeSpectrum", "1", "1", "2147483647", 0},
    {"ProductJustOverThirtyTwoBits", "65536", "65537", "0", 0},
    {"ProductThatWrapsToZero", "65536", "65536", "0", 0},
    {"ProductThatWrapsWithTheFloats", "32768", "32768", "0", 0},
    {"ProductThatWrapsToASmallNumber", "46341", "46341", "0", 0},
    {"NumbersBeyondThirtyTwoBits", "4294967297", "99999999999999999999", "4294967296", 2},
    {"NoNumbers", "x", "", "1e3", 2},
};

INSTANTIATE_TEST_SUITE_P(Claim, HeaderSizes, ::testing::ValuesIn(headerSizes),
                         [](const auto& sizes) { return std::string(sizes.param.name); });

TEST_F(DamagedRecording, StopsWhenTinyRecordsWouldFillTheDiskWithEmptyMaps)
{
    // 4 MiB a frame under 64 MiB on top of the file: room for 15 whole frames.
    QByteArray bytes = header(1024, 1024, 0);
    for (int i = 0; i < 1000; ++i) {
        bytes += "--start--1\r\n--end--\r\n";
    }

    Loaded loaded = loadBytes(folder, bytes);

    EXPECT_EQ(loaded.frames(), 15);
    EXPECT_EQ(complaints(), 1);
    EXPECT_LE(folder.cacheBytes(), 80 * mebibyte);
}

TEST_F(DamagedRecording, CountsTheRowPointersOfEmptyMapsToo)
{
    // 4 Mi rows of one cell: 16 MiB of cells, but 32 MiB of pointers.
    QByteArray bytes = header(4'194'304, 1, 0);
    for (int i = 0; i < 100; ++i) {
        bytes += "--start--1\r\n--end--\r\n";
    }

    Loaded loaded = loadBytes(folder, bytes);

    EXPECT_EQ(loaded.frames(), 1);
    EXPECT_EQ(complaints(), 1);
}

TEST_F(DamagedRecording, KeepsNoFrameThatTheCacheCannotHold)
{
    ResultTesting::writeFile(folder.path("file"), "no folder");
    ResultTesting::writeFile(folder.file(), header(1, 1, 0) + "--start--1\r\n--end--\r\n");

    Loaded loaded(folder.file(), folder.path("file/cache"));

    EXPECT_EQ(loaded.frames(), 0);
    EXPECT_EQ(complaints(), 1);
}

TEST_F(DamagedRecording, ReadsRecordsThatNeedNoCacheWithoutOne)
{
    ResultTesting::writeFile(folder.path("file"), "no folder");
    ResultTesting::writeFile(folder.file(), header(0, 0, -2) + "--start--1\r\n**median:2\r\n--end--\r\n");

    Loaded loaded(folder.file(), folder.path("file/cache"));

    ASSERT_EQ(loaded.frames(), 1);
    EXPECT_EQ(loaded.frame(0).median, 2.0F);
}

struct MalformedNumber
{
    const char* name;
    const char* text;
    float asLevel;
    int asInteger;
};

class NumbersInRecords : public DamagedRecording, public ::testing::WithParamInterface<MalformedNumber>
{
};

TEST_P(NumbersInRecords, AreZeroWhereTheyAreNoNumbers)
{
    const MalformedNumber& number = GetParam();
    const QByteArray text = number.text;

    Loaded loaded =
        loadBytes(folder, header(1, 1, 0) + "--start--1\r\n**median:" + text + "\r\n**maxSpl:7 " + text +
                              " 9\r\n**peaks:1\r\n" + text + " 1 " + text + " 3 4 1\r\n--end--\r\n");

    ASSERT_EQ(loaded.frames(), 1);
    const EngMapResult& frame = loaded.frame(0);
    EXPECT_EQ(frame.median, number.asLevel);
    EXPECT_EQ(frame.maxSpl, (fpoint2d{7.0F, number.asInteger, 9}));
    EXPECT_EQ(frame.peaks, (std::vector<TargetPoint>{{number.asLevel, 1, number.asInteger, 3, 4, true}}));
}

const MalformedNumber malformedNumbers[] = {
    {"Word", "abc", 0.0F, 0},
    {"NumberWithUnit", "12dB", 0.0F, 0},
    {"Fraction", "1.5", 1.5F, 0},
    {"Comma", "1,5", 0.0F, 0},
    {"Hexadecimal", "0x10", 0.0F, 0},
    {"Plus", "+3", 3.0F, 3},
    {"LeadingZero", "010", 10.0F, 10},
    {"Exponent", "1e3", 1000.0F, 0},
    {"BeyondInt", "4294967297", 4294967296.0F, 0},
    {"BeyondLong", "99999999999999999999", 1e20F, 0},
    {"BeyondFloat", "1e39", HUGE_VALF, 0},
    {"BelowFloat", "1e-60", 0.0F, 0},
    {"Infinity", "inf", HUGE_VALF, 0},
    {"TwoSigns", "--1", 0.0F, 0},
    {"HighBytes", "\xff\xfe", 0.0F, 0},
};

INSTANTIATE_TEST_SUITE_P(Text, NumbersInRecords, ::testing::ValuesIn(malformedNumbers),
                         [](const auto& number) { return std::string(number.param.name); });

// A small recording, changed at random in ways that real damage and hostile hands change files.
QByteArray mutated(QByteArray bytes, std::mt19937& random)
{
    const auto below = [&](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(std::max(limit, 1)));
    };
    const QByteArray words[] = {"\r\n",
                                "**",
                                "--start--",
                                "--end--",
                                "**peaks:999999999\r\n",
                                "**ResEngMap:",
                                "**PowerSpec:",
                                ":",
                                "RESROW:2147483647\r\n",
                                "RESCOL:-1\r\n",
                                "FFTLEN:7777777\r\n",
                                "FILE_INFO_END",
                                "9",
                                "-"};
    for (int change = 1 + below(4); change > 0; --change) {
        const int at = below(bytes.size());
        switch (below(6)) {
            case 0:
                bytes[at] = static_cast<char>(random());
                break;
            case 1:
                bytes.remove(at, 1 + below(60));
                break;
            case 2:
                bytes.insert(at, words[below(static_cast<int>(std::size(words)))]);
                break;
            case 3:
                bytes.insert(at, bytes.mid(below(bytes.size()), below(200)));
                break;
            case 4:
                bytes.truncate(at);
                break;
            default:
                bytes.replace(at, 1, QByteArray::number(below(1000)));
                break;
        }
    }
    return bytes;
}

class MutatedRecording : public DamagedRecording, public ::testing::WithParamInterface<unsigned>
{
};

TEST_P(MutatedRecording, EndsWithSoundFramesWithinItsBounds)
{
    const ResultTesting::Result result = makeResult(3, 4, 8);
    KOVDoaResultSerialize writer(folder.cache());
    writer.startSave(folder.file(), 3, 4, 480, 640, 8);
    writer.Save(result.get());
    writer.Save(result.get());
    const QByteArray sound = ResultTesting::readFile(folder.file());
    std::mt19937 random(GetParam());

    for (int i = 0; i < 150; ++i) {
        QByteArray bytes = mutated(sound, random);
        KOVDoaResultSerialize reader(folder.cache());
        reader.unpackVersion(bytes);
        reader.unpackHeader(bytes);
        while (reader.unpackResult(bytes)) {
        }

        // Every record begins with its mark, so there cannot be more frames than marks.
        ASSERT_LE(reader.getResultFrame(), bytes.count("--start--"));
        double sum = 0.0;
        for (int frame = 0; frame < reader.getResultFrame(); ++frame) {
            EngMapResult& loaded = *reader.getResultFromIndex(frame);
            for (const auto& values :
                 {ResultTesting::mapValues(loaded), ResultTesting::spectrumValues(loaded)}) {
                ASSERT_LE(values.size() * sizeof(float), 16U * 1024 * 1024);
                sum = std::accumulate(values.begin(), values.end(), sum);
            }
            ASSERT_LE(static_cast<int>(loaded.peaks.size()), bytes.size());
        }
        ASSERT_LE(folder.cacheBytes(), 128 * mebibyte) << sum;
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, MutatedRecording, ::testing::Range(1U, 9U));

}  // namespace
