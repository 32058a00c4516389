// What comes back from sound files, and what the loader says meanwhile.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QRegularExpression>

#include <bit>
#include <cstdint>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::header;
using ResultTesting::loadBytes;
using ResultTesting::Loaded;
using ResultTesting::makeResult;
using ResultTesting::mapValues;
using ResultTesting::Messages;
using ResultTesting::Result;
using ResultTesting::spectrumValues;

class RecordingReader : public ::testing::Test
{
protected:
    Messages messages;
    Folder folder;

    void record(const std::vector<EngMapResult*>& results, int rows, int cols, int fftLen)
    {
        KOVDoaResultSerialize writer(folder.cache());
        writer.startSave(folder.file(), rows, cols, 480, 640, fftLen);
        for (EngMapResult* result : results) {
            writer.Save(result);
        }
    }

    // A file with one record of a 1 x 1 map that holds these lines.
    Loaded loadRecord(const QByteArray& lines)
    {
        return loadBytes(folder, header(1, 1, 0) + "--start--1\r\n" + lines + "--end--\r\n");
    }
};

TEST_F(RecordingReader, GivesBackEveryFieldOfASavedResult)
{
    const Result saved = makeResult(5, 7, 16);
    record({saved.get()}, 5, 7, 16);

    Loaded loaded(folder.file(), folder.cache());

    ASSERT_EQ(loaded.frames(), 1);
    const EngMapResult& frame = loaded.frame(0);
    EXPECT_EQ(frame.PowerBandsFFTSpec, saved->PowerBandsFFTSpec);
    EXPECT_EQ(frame.maxSpl, saved->maxSpl);
    EXPECT_EQ(frame.minSpl, saved->minSpl);
    EXPECT_EQ(frame.maxSplView, saved->maxSplView);
    EXPECT_EQ(frame.minSplView, saved->minSplView);
    EXPECT_EQ(frame.maxSplExternView, saved->maxSplExternView);
    EXPECT_EQ(frame.minSplExternView, saved->minSplExternView);
    EXPECT_EQ(frame.firstPointInRadius, saved->firstPointInRadius);
    EXPECT_EQ(frame.median, saved->median);
    EXPECT_EQ(frame.distance, saved->distance);
    EXPECT_EQ(frame.peaks, saved->peaks);
    EXPECT_EQ(spectrumValues(frame), spectrumValues(*saved));
    EXPECT_EQ(mapValues(frame), mapValues(*saved));
}

TEST_F(RecordingReader, OverwritesTheExternValuesByTheirViewValues)
{
    const Result saved = makeResult(2, 2, 2);
    record({saved.get()}, 2, 2, 2);

    Loaded loaded(folder.file(), folder.cache());

    EXPECT_EQ(loaded.frame(0).maxSplExtern, saved->maxSplExternView);
    EXPECT_EQ(loaded.frame(0).minSplExtern, saved->minSplExternView);
}

TEST_F(RecordingReader, GivesBackAllFramesInTheirOrder)
{
    std::vector<Result> saved;
    std::vector<EngMapResult*> results;
    for (int i = 0; i < 20; ++i) {
        saved.push_back(makeResult(3, 4, 8, i));
        results.push_back(saved.back().get());
    }
    record(results, 3, 4, 8);

    Loaded loaded(folder.file(), folder.cache());

    ASSERT_EQ(loaded.frames(), 20);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(loaded.frame(i).median, results[static_cast<std::size_t>(i)]->median);
        EXPECT_EQ(mapValues(loaded.frame(i)), mapValues(*results[static_cast<std::size_t>(i)]));
        EXPECT_EQ(loaded.frame(i).firstPointInRadius, i % 2 == 0);
    }
}

TEST_F(RecordingReader, ReportsWhatTheHeaderSays)
{
    Loaded loaded = loadBytes(folder, header("32", "24", "2048", "720", "1280"));

    EXPECT_EQ(loaded->getFileVersion(), "0015");
    EXPECT_EQ(loaded->getResRows(), 32);
    EXPECT_EQ(loaded->getResCols(), 24);
    EXPECT_EQ(loaded->getImgRows(), 720);
    EXPECT_EQ(loaded->getImgCols(), 1280);
    EXPECT_EQ(loaded->getFFTLen(), 2048);
    EXPECT_EQ(loaded.frames(), 0);
}

TEST_F(RecordingReader, HasNoFrameOutsideTheirNumber)
{
    const Result saved = makeResult(1, 1, 2);
    record({saved.get(), saved.get()}, 1, 1, 2);

    Loaded loaded(folder.file(), folder.cache());

    EXPECT_EQ(loaded->getResultFromIndex(-1), nullptr);
    EXPECT_NE(loaded->getResultFromIndex(1), nullptr);
    EXPECT_EQ(loaded->getResultFromIndex(2), nullptr);
}

TEST_F(RecordingReader, ReadsBlocksThatContainLineEndsAndMarks)
{
    const auto lineEnds = std::bit_cast<float>(std::uint32_t{0x0A0D0A0D});
    const auto mark = std::bit_cast<float>(std::uint32_t{0x2A2A0A0D});  // CR LF "**"
    const Result saved = makeResult(3, 2, 4);
    saved->PowerSpec->data[0] = lineEnds;
    saved->PowerSpec->data[2] = mark;
    saved->ResEngMap->data[0][0] = mark;
    saved->ResEngMap->data[1][1] = lineEnds;
    saved->ResEngMap->data[2][1] = lineEnds;
    record({saved.get(), saved.get()}, 3, 2, 4);

    Loaded loaded(folder.file(), folder.cache());

    ASSERT_EQ(loaded.frames(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(spectrumValues(loaded.frame(i)), spectrumValues(*saved));
        EXPECT_EQ(mapValues(loaded.frame(i)), mapValues(*saved));
    }
}

TEST_F(RecordingReader, GivesBackMapsThatAreFarLargerThanTheUsualOnes)
{
    for (const auto& [rows, cols] : {std::pair{301, 299}, std::pair{1, 400'003}, std::pair{70'001, 3}}) {
        SCOPED_TRACE(::testing::Message() << rows << " x " << cols);
        const Result first = makeResult(rows, cols, 200'000, 1);
        const Result second = makeResult(rows, cols, 200'000, 2);
        record({first.get(), second.get()}, rows, cols, 200'000);

        Loaded loaded(folder.file(), folder.cache());

        ASSERT_EQ(loaded.frames(), 2);
        EXPECT_TRUE(mapValues(loaded.frame(0)) == mapValues(*first));
        EXPECT_TRUE(spectrumValues(loaded.frame(0)) == spectrumValues(*first));
        EXPECT_TRUE(mapValues(loaded.frame(1)) == mapValues(*second));
        EXPECT_TRUE(spectrumValues(loaded.frame(1)) == spectrumValues(*second));
        EXPECT_EQ(loaded.frame(1).median, second->median);
    }
}

TEST_F(RecordingReader, SkipsLongStretchesThatNameNoField)
{
    for (const int length : {100, 131'071, 131'072, 131'073, 1'048'575, 1'048'576, 1'048'577, 5'000'000}) {
        SCOPED_TRACE(length);
        Loaded loaded = loadRecord(QByteArray(length, 'x') + "\r\n**median:2.5\r\n");

        ASSERT_EQ(loaded.frames(), 1);
        EXPECT_EQ(loaded.frame(0).median, 2.5F);
    }
}

TEST_F(RecordingReader, AddsNoPeakForACountOfZero)
{
    Loaded loaded = loadRecord("**peaks:0\r\n1 2 3 4 5 1\r\n");

    EXPECT_TRUE(loaded.frame(0).peaks.empty());
}

TEST_F(RecordingReader, AppendsThePeaksOfASecondList)
{
    Loaded loaded =
        loadRecord("**peaks:1\r\n1 2 3 4 5 1\r\n**peaks:2\r\n6 7 8 9 10 0\r\n11 12 13 14 15 -7\r\n");

    EXPECT_EQ(loaded.frame(0).peaks,
              (std::vector<TargetPoint>{
                  {1.0F, 2, 3, 4, 5, true}, {6.0F, 7, 8, 9, 10, false}, {11.0F, 12, 13, 14, 15, true}}));
}

TEST_F(RecordingReader, TakesMissingPartsOfALineAsZero)
{
    Loaded loaded =
        loadRecord("**maxSpl:1.5\r\n**minSpl:\r\n**maxSplView:2.5 7\r\n**peaks:2\r\n3.5 1\r\n\r\n");

    const EngMapResult& frame = loaded.frame(0);
    EXPECT_EQ(frame.maxSpl, (fpoint2d{1.5F, 0, 0}));
    EXPECT_EQ(frame.minSpl, (fpoint2d{0.0F, 0, 0}));
    EXPECT_EQ(frame.maxSplView, (fpoint2d{2.5F, 7, 0}));
    EXPECT_EQ(frame.peaks, (std::vector<TargetPoint>{{3.5F, 1, 0, 0, 0, false}, {0.0F, 0, 0, 0, 0, false}}));
}

TEST_F(RecordingReader, SkipsSeveralBlanksBetweenParts)
{
    Loaded loaded = loadRecord("**maxSpl:  1.5   2  3  \r\n");

    EXPECT_EQ(loaded.frame(0).maxSpl, (fpoint2d{1.5F, 2, 3}));
}

TEST_F(RecordingReader, IgnoresLinesThatNameNoField)
{
    Loaded loaded = loadRecord(
        "median:9\r\n*\r\n**\r\n\r\n** :1\r\n**unknown:3\r\n**median\r\n**maxSpl\r\n**distance:2\r\n");

    EXPECT_EQ(loaded.frame(0).median, 0.0F);
    EXPECT_EQ(loaded.frame(0).distance, 2.0F);
}

TEST_F(RecordingReader, RecognisesFieldsByWhatTheirKeyContains)
{
    Loaded loaded =
        loadRecord("**my median and distance:2.5\r\n**maxSplX:1 2 3\r\n**a minSplExtern b:4 5 6\r\n");

    const EngMapResult& frame = loaded.frame(0);
    EXPECT_EQ(frame.median, 2.5F);
    EXPECT_EQ(frame.distance, 2.5F);
    EXPECT_EQ(frame.maxSpl, (fpoint2d{0.0F, 0, 0}));
    EXPECT_EQ(frame.minSplExtern, (fpoint2d{4.0F, 5, 6}));
}

TEST_F(RecordingReader, SplitsALineAtItsFirstColon)
{
    Loaded loaded = loadRecord("**median:2.5:3.5\r\n**x:distance:4\r\n**firstPointInRadius:a:true\r\n");

    EXPECT_EQ(loaded.frame(0).median, 0.0F);  // "2.5:3.5" is no number
    EXPECT_EQ(loaded.frame(0).distance, 0.0F);
    EXPECT_TRUE(loaded.frame(0).firstPointInRadius);
}

TEST_F(RecordingReader, DoesNotReadTheCountsInFrontOfBlocks)
{
    const QByteArray floats = ResultTesting::floatBytes({1.5F});
    Loaded loaded = loadRecord("**PowerSpec:99999\r\n" + floats + "\r\n**ResEngMap:nonsense\r\n" + floats +
                               "\r\n**median:3\r\n");

    EXPECT_EQ(spectrumValues(loaded.frame(0)), std::vector<float>{1.5F});
    EXPECT_EQ(mapValues(loaded.frame(0)), std::vector<float>{1.5F});
    EXPECT_EQ(loaded.frame(0).median, 3.0F);
}

TEST_F(RecordingReader, StopsAtTheFirstLineThatStartsNoRecord)
{
    Loaded loaded =
        loadBytes(folder, header(1, 1, 0) + "--start--1\r\n--end--\r\n\r\n--start--2\r\n--end--\r\n");

    EXPECT_EQ(loaded.frames(), 1);
}

TEST_F(RecordingReader, ReadsTheHeaderByWhatItsKeysContain)
{
    Loaded loaded = loadBytes(
        folder,
        "x FILE_INFO_START y\r\nresrow:1\r\nMY_RESROWS:7\r\nFFTLEN\r\nVERSION:00:16 %1\r\nRESCOL:abc\r\n"
        "FILE_INFO_END\r\nSTRUCT_INFO_START\r\nanything\r\nSTRUCT_INFO_END\r\n");

    EXPECT_EQ(loaded->getResRows(), 7);
    EXPECT_EQ(loaded->getFFTLen(), 1024);
    EXPECT_EQ(loaded->getFileVersion(), "00:16 %1");
    EXPECT_EQ(loaded->getResCols(), 0);
}

TEST_F(RecordingReader, ReadsEveryVersionAlike)
{
    QByteArray bytes = header(1, 1, 0) + "--start--1\r\n**median:3\r\n--end--\r\n";
    bytes.replace("0015", "9999-future");

    Loaded loaded = loadBytes(folder, bytes);

    EXPECT_EQ(loaded->getFileVersion(), "9999-future");
    EXPECT_EQ(loaded.frame(0).median, 3.0F);
}

TEST_F(RecordingReader, AddsTheFramesOfASecondLoad)
{
    const Result saved = makeResult(1, 1, 2);
    record({saved.get(), saved.get()}, 1, 1, 2);
    Loaded loaded(folder.file(), folder.cache());
    EngMapResult* const first = loaded->getResultFromIndex(0);

    loaded->openResultFile(folder.file());
    ResultTesting::waitUntilComplete(*loaded.operator->());

    EXPECT_EQ(loaded.frames(), 4);
    EXPECT_EQ(loaded->getResultFromIndex(0), first);
}

TEST_F(RecordingReader, KeepsTheFramesInTheCacheAndRemovesItsFilesAtTheEnd)
{
    const Result saved = makeResult(64, 48, 1024);
    record({saved.get()}, 64, 48, 1024);
    {
        Loaded loaded(folder.file(), folder.cache());
        EXPECT_EQ(folder.cacheFiles(), 1);
    }

    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingReader, CachesInTheCurrentFolderUnlessToldOtherwise)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path("")));

    const KOVDoaResultSerialize recording{QString()};

    EXPECT_TRUE(QDir(folder.path("cache")).exists());
    EXPECT_EQ(messages.texts(), QStringList("KOVMemoryMap: creat path \"./cache/\""));
    QDir::setCurrent(before);
}

TEST_F(RecordingReader, SaysWhatItReads)
{
    const Result saved = makeResult(1, 1, 2);
    record({saved.get(), saved.get()}, 1, 1, 2);
    const qint64 size = ResultTesting::readFile(folder.file()).size();
    const int before = messages.texts().size();

    {
        const Loaded loaded(folder.file(), folder.cache());
    }

    QStringList texts = messages.texts().mid(before);
    texts.replaceInStrings(QRegularExpression("[-0-9.e+]+ ms$"), "T ms");
    texts.replaceInStrings(QRegularExpression("/[0-9a-f]{32}"), "/UUID");
    const QStringList expected{
        QStringLiteral("file size = %1 , time = T ms").arg(size),
        "\"VERSION\" \"0015\"",
        "\"RESROW\" \"1\"",
        "\"RESCOL\" \"1\"",
        "\"IMGROW\" \"480\"",
        "\"IMGCOL\" \"640\"",
        "\"FFTLEN\" \"2\"",
        "\"ResEngMap:ON\"",
        "\"ResAngleEng:OFF\"",
        "\"ResAngleEngBGR:OFF\"",
        "\"PowerSpec:ON\"",
        "\"PowerBandsFFTSpec:ON\"",
        "\"maxSpl:ON\"",
        "\"minSpl:ON\"",
        "\"maxSplExtern:ON\"",
        "\"minSplExtern:ON\"",
        "\"maxSplView:ON\"",
        "\"minSplView:ON\"",
        "\"maxSplExternView:ON\"",
        "\"minSplExternView:ON\"",
        "\"peaks:ON\"",
        "\"firstPointInRadius:ON\"",
        "\"median:ON\"",
        "\"distance:ON\"",
        "\"==STRUCT_INFO_END==\"",
        "----------",
        "KOVMemoryMap::MapMalloc: \"" + folder.cache() + "/UUID\"",
        "data Index = 1",
        "----------",
        "read data result ok, use time = T ms",
        "data Index = 2",
        "----------",
        "read data result ok, use time = T ms",
        "load data success, use memory = 34 KB",
        "use all time = T ms",
    };
    EXPECT_EQ(texts.join('\n'), expected.join('\n'));
}

TEST_F(RecordingReader, WritesItsMessagesUnderItsSourceNameInTheDefaultCategory)
{
    const Result saved = makeResult(1, 1, 2);
    record({saved.get()}, 1, 1, 2);
    {
        const Loaded loaded(folder.file(), folder.cache());
    }

    int checked = 0;
    for (const ResultTesting::Message& message : messages.all()) {
        EXPECT_EQ(message.type, QtDebugMsg);
        EXPECT_EQ(message.category, "default");
        if (message.file == "kovdoaresultserialize") {
            EXPECT_TRUE(message.function.contains("KOVDoaResultSerialize::")) << message.function.constData();
            ++checked;
        }
    }
    EXPECT_GT(checked, 20);
}

TEST_F(RecordingReader, KeepsPercentSignsInItsMessages)
{
    loadBytes(folder, "==FILE_INFO_START==\r\nVERSION:%1 %s %n\r\n==FILE_INFO_END==\r\n");

    EXPECT_EQ(messages.count("\"VERSION\" \"%1 %s %n\""), 1);
}

}  // namespace
