// Files that no instrument wrote: loading fails and says so, and what is published afterwards is silence. Run under
// AddressSanitizer this is also the proof that nothing outside the file is touched.
#include <gtest/gtest.h>

#include <QtCore/QDir>

#include <sys/stat.h>

#include <limits>
#include <string>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

#include "playback.h"
#include "streamtesting.h"
#include "wavsets.h"

namespace {

using StreamTesting::bytesOf;
using StreamTesting::headerOf;
using StreamTesting::Listener;
using StreamTesting::publishOne;
using StreamTesting::sampleOf;
using StreamTesting::WavFile;
using StreamTesting::WavFolder;

struct Broken
{
    const char* name;
    QByteArray bytes;
};

std::vector<Broken> brokenFiles()
{
    return {
        {"Empty", {}},
        {"OneByte", QByteArray(1, 'R')},
        {"OneByteShortOfAHeader", headerOf({}).left(43)},
        {"HeaderOnlyThatPromisesData", headerOf({})},
        {"NoChannels", bytesOf({.channels = 0}, 0)},
        {"NoBits", bytesOf({.bits = 0, .dataBytes = 0}, 0)},
        {"SevenBits", bytesOf({.bits = 7, .dataBytes = 0}, 0)},
        {"OneByteMoreThanThereIs", bytesOf({.frames = 64, .dataBytes = 64 * 32 + 1}, 0)},
        {"LargestSignedSize", bytesOf({.dataBytes = 0x7fffffff}, 0)},
        {"SmallestSignedSize", bytesOf({.dataBytes = 0x80000000}, 0)},
        {"MinusOneByte", bytesOf({.dataBytes = 0xffffffff}, 0)},
        {"MinusOneEverywhere", QByteArray(5000, '\xff')},
        {"ZerosEverywhere", QByteArray(5000, '\0')},
    };
}

class BrokenWavSets : public ::testing::TestWithParam<Broken>
{
};

TEST_P(BrokenWavSets, FailToLoadAndPublishSilence)
{
    const WavFolder folder;
    folder.writeBytes(0, GetParam().bytes);
    KOVHwMultAudio reader(8);

    EXPECT_FALSE(reader.init(folder.path()));
    EXPECT_EQ(reader.getTotalDataFrame(), 0);

    Listener listener(reader);
    reader.start();
    KOVAudioBuffer block = publishOne(reader, listener, 0);
    reader.close();
    ASSERT_EQ(block.samples(), 1024);
    for (int channel = 0; channel < 8; ++channel) {
        for (int i = 0; i < 1024; ++i) {
            ASSERT_EQ(block.data(channel)[i], 0.0F);
        }
    }
}

TEST_P(BrokenWavSets, DoNotKeepTheOtherFilesFromLoading)
{
    const WavFolder folder;
    folder.writeSet(3, {.frames = 3 * 1024});
    folder.writeBytes(1, GetParam().bytes);
    KOVHwMultAudio reader(24);

    EXPECT_FALSE(reader.init(folder.path()));
    EXPECT_EQ(reader.getTotalDataFrame(), 3);

    Listener listener(reader);
    reader.start();
    KOVAudioBuffer block = publishOne(reader, listener, 0);
    reader.close();
    EXPECT_EQ(block.data(7)[1023], sampleOf(7, 1023));
    EXPECT_EQ(block.data(8)[0], 0.0F);
    EXPECT_EQ(block.data(15)[1023], 0.0F);
    EXPECT_EQ(block.data(16)[0], sampleOf(16, 0));
}

INSTANTIATE_TEST_SUITE_P(Table, BrokenWavSets, ::testing::ValuesIn(brokenFiles()),
                         [](const auto& of) { return std::string(of.param.name); });

TEST(UnusualWavSets, FailWhereAFileIsMissing)
{
    const WavFolder folder;
    folder.writeSet(3);
    QFile::remove(folder.file(1));

    EXPECT_FALSE(KOVHwMultAudio(24).init(folder.path()));
    EXPECT_TRUE(KOVHwMultAudio(8).init(folder.path()));
}

TEST(UnusualWavSets, FailWhereTheFolderIsMissingOrHasNoName)
{
    const WavFolder folder;

    EXPECT_FALSE(KOVHwMultAudio(8).init(folder.path() + "/nowhere"));
    EXPECT_FALSE(KOVHwMultAudio(8).init(""));
    EXPECT_FALSE(KOVHwMultAudio(8).init(nullptr));
}

TEST(UnusualWavSets, FailWhereAFolderBearsTheNameOfAFile)
{
    const WavFolder folder;
    QDir().mkdir(folder.file(0));

    EXPECT_FALSE(KOVHwMultAudio(8).init(folder.path()));
}

TEST(UnusualWavSets, FailWithoutWaitingWhereAPipeBearsTheNameOfAFile)
{
    const WavFolder folder;
    ASSERT_EQ(::mkfifo(folder.file(0).toLocal8Bit().constData(), 0600), 0);

    EXPECT_FALSE(KOVHwMultAudio(8).init(folder.path()));
}

TEST(UnusualWavSets, LoadWithNoDataAtAll)
{
    const WavFolder folder;
    folder.writeSet(1, {.frames = 0});
    KOVHwMultAudio reader(8);

    EXPECT_TRUE(reader.init(folder.path()));
    EXPECT_EQ(reader.getTotalDataFrame(), 0);
}

TEST(UnusualWavSets, LoadWithLessThanOneFrameOfData)
{
    const WavFolder folder;
    folder.writeSet(1, {.frames = 1, .dataBytes = 31});

    EXPECT_TRUE(KOVHwMultAudio(8).init(folder.path()));
}

TEST(UnusualWavSets, LoadWithLargestChannelCountAndBitDepth)
{
    const WavFolder folder;
    folder.writeBytes(0,
                      QByteArray(bytesOf({}, 0)).replace(22, 2, "\xff\xff", 2).replace(34, 2, "\xff\xff", 2));
    KOVHwMultAudio reader(8);

    EXPECT_TRUE(reader.init(folder.path()));
    EXPECT_EQ(reader.getTotalDataFrame(), 0);
}

TEST(UnusualWavSets, MayNameNoSampleRate)
{
    const WavFolder folder;
    folder.writeSet(1, {.rate = 0});
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    KOVAudioBuffer block = publishOne(reader, listener, 1);
    reader.close();

    EXPECT_EQ(block.timeStamp(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(block.data(0)[0], sampleOf(0, 0));
}

TEST(UnusualWavSets, LeaveNothingOfAnEarlierRecordingWhenTheyFail)
{
    KOVHwMultAudio reader(8);
    const WavFolder folder;
    folder.writeSet(1);
    ASSERT_TRUE(reader.init(folder.path()));

    EXPECT_FALSE(reader.init((folder.path() + "/nowhere").constData()));

    EXPECT_EQ(reader.getTotalDataFrame(), 0);
}

}  // namespace
