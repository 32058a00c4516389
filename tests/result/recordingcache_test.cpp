// Loading while the cache folder cannot be used, runs full, or goes away.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <memory>

#include "diskroom.h"
#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::makeResult;
using ResultTesting::mapValues;
using ResultTesting::Messages;
using ResultTesting::SmallDisk;
using ResultTesting::waitUntilComplete;

constexpr int fftLen = 16;

class RecordingCache : public ::testing::Test
{
protected:
    // Maps of 1 MiB, so that a few frames fill a block.
    static constexpr int rows = 512;
    static constexpr int cols = 512;

    void record(int frames) const
    {
        KOVDoaResultSerialize writer(folder.cache());
        writer.startSave(folder.file(), rows, cols, 480, 640, fftLen);
        for (int i = 0; i < frames; ++i) {
            writer.Save(makeResult(rows, cols, fftLen, i).get());
        }
    }

    void load(KOVDoaResultSerialize& reader) const
    {
        reader.openResultFile(folder.file());
        waitUntilComplete(reader);
    }

    // Frame `first` + i is the file's frame i.
    static void expectFrames(KOVDoaResultSerialize& reader, int first, int count)
    {
        ASSERT_GE(reader.getResultFrame(), first + count);
        for (int i = 0; i < count; ++i) {
            const EngMapResult& frame = *reader.getResultFromIndex(first + i);
            const auto saved = makeResult(rows, cols, fftLen, i);
            ASSERT_EQ(mapValues(frame), mapValues(*saved)) << i;
            ASSERT_EQ(frame.median, saved->median);
        }
    }

    Messages messages;
    Folder folder;
};

TEST_F(RecordingCache, KeepsTheFramesThatFoundRoomOnItsDiskAndGivesThatBack)
{
    constexpr int frames = 40;
    const SmallDisk disk(24 * 1024 * 1024);
    if (!disk.isMounted()) {
        GTEST_SKIP() << "no disk can be mounted here";
    }
    record(frames);
    {
        KOVDoaResultSerialize reader(disk.path("cache"));
        load(reader);
        // One block fits: 15 maps with their spectra, since the 16th has no room beside those.
        EXPECT_EQ(reader.getResultFrame(), 15);
        expectFrames(reader, 0, 15);
        EXPECT_EQ(messages.count("no room in the cache, stop reading"), 1);

        ASSERT_TRUE(disk.resize(96 * 1024 * 1024));
        load(reader);
        EXPECT_EQ(reader.getResultFrame(), 15 + frames);
        expectFrames(reader, 15, frames);
    }
    EXPECT_EQ(disk.files("cache"), 0);
}

TEST_F(RecordingCache, LoadsNothingWhileAFileLiesInItsPlaceAndAllThen)
{
    record(2);
    ASSERT_TRUE(QDir(folder.cache()).removeRecursively());
    ResultTesting::writeFile(folder.cache(), "in the way");
    KOVDoaResultSerialize reader(folder.cache());
    load(reader);
    EXPECT_EQ(reader.getResultFrame(), 0);

    ASSERT_TRUE(QFile::remove(folder.cache()) && QDir().mkpath(folder.cache()));
    load(reader);

    expectFrames(reader, 0, 2);
}

TEST_F(RecordingCache, KeepsLoadedFramesWhenItsFolderIsRemoved)
{
    constexpr int frames = 20;
    record(frames);
    auto reader = std::make_unique<KOVDoaResultSerialize>(folder.cache());
    load(*reader);
    ASSERT_EQ(reader->getResultFrame(), frames);

    ASSERT_TRUE(QDir(folder.cache()).removeRecursively());
    expectFrames(*reader, 0, frames);
    load(*reader);
    const int withRoomLeft = reader->getResultFrame();
    EXPECT_LT(withRoomLeft, 2 * frames);
    expectFrames(*reader, 0, frames);
    expectFrames(*reader, frames, withRoomLeft - frames);

    ASSERT_TRUE(QDir().mkpath(folder.cache()));
    load(*reader);
    EXPECT_EQ(reader->getResultFrame(), withRoomLeft + frames);
    expectFrames(*reader, withRoomLeft, frames);
    reader.reset();
    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingCache, MayBeRemovedInTheMiddleOfALoad)
{
    constexpr int frames = 40;
    record(frames);
    for (int round = 0; round < 20; ++round) {
        KOVDoaResultSerialize reader(folder.cache());
        reader.openResultFile(folder.file());
        while (reader.getResultFrame() < round && !reader.IsOpenFileComplete()) {
        }
        QDir(folder.cache()).removeRecursively();
        waitUntilComplete(reader);

        const int loaded = reader.getResultFrame();
        ASSERT_LE(loaded, frames);
        ASSERT_GE(loaded, round);
        if (loaded > 0) {
            ASSERT_EQ(mapValues(*reader.getResultFromIndex(loaded - 1)),
                      mapValues(*makeResult(rows, cols, fftLen, loaded - 1)));
        }
    }
}

}  // namespace
