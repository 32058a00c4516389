// Recordings whose disk runs full or whose folder disappears, and what they hold when it is over.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include "diskroom.h"
#include "resulttesting.h"

namespace {

using ResultTesting::FileSizeLimit;
using ResultTesting::Folder;
using ResultTesting::Loaded;
using ResultTesting::mapValues;
using ResultTesting::Messages;
using ResultTesting::readFile;
using ResultTesting::Result;
using ResultTesting::SmallDisk;

constexpr int rows = 8;
constexpr int cols = 6;
constexpr int fftLen = 16;

class RecordingWithoutRoom : public ::testing::Test
{
protected:
    static void start(KOVDoaResultSerialize& recorder, const QString& file)
    {
        recorder.startSave(file, rows, cols, 480, 640, fftLen);
    }

    static Result frame(int seed) { return ResultTesting::makeResult(rows, cols, fftLen, seed); }

    Messages messages;
    Folder folder;
    KOVDoaResultSerialize recording{folder.cache()};
};

TEST_F(RecordingWithoutRoom, LosesOnlyTheFrameInWhichTheDiskIsFullAtWhicheverByte)
{
    // What the file looks like with room for all three frames.
    QList<int> ends;
    start(recording, folder.file());
    ends << readFile(folder.file()).size();
    for (int i = 0; i < 3; ++i) {
        recording.Save(frame(i).get());
        ends << readFile(folder.file()).size();
    }
    const QByteArray all = readFile(folder.file());
    const QByteArray withoutTheSecond = all.left(ends[1]) + all.mid(ends[2]);

    for (int size = ends[1]; size < ends[2]; ++size) {
        KOVDoaResultSerialize another(folder.cache());
        start(another, folder.file());
        another.Save(frame(0).get());
        {
            const FileSizeLimit limit(static_cast<std::size_t>(size));
            ASSERT_TRUE(limit.isSet());
            another.Save(frame(1).get());
        }
        another.Save(frame(2).get());

        ASSERT_EQ(readFile(folder.file()), withoutTheSecond) << "full at byte " << size;
    }
}

TEST_F(RecordingWithoutRoom, BeginsProperlyOnceThereIsRoomForTheHeader)
{
    const int headerBytes = ResultTesting::header(rows, cols, fftLen).size();
    for (int size = 0; size < headerBytes; ++size) {
        KOVDoaResultSerialize another(folder.cache());
        {
            const FileSizeLimit limit(static_cast<std::size_t>(size));
            ASSERT_TRUE(limit.isSet());
            start(another, folder.file());
            another.Save(frame(0).get());
            ASSERT_EQ(readFile(folder.file()), QByteArray()) << "full at byte " << size;
        }
        another.Save(frame(1).get());
        another.Save(frame(2).get());

        Loaded loaded(folder.file(), folder.cache());
        ASSERT_EQ(loaded.frames(), 2) << "full at byte " << size;
        ASSERT_EQ(mapValues(loaded.frame(1)), mapValues(*frame(2)));
    }
}

TEST_F(RecordingWithoutRoom, GoesOnWhenAFullDiskHasRoomAgain)
{
    const SmallDisk disk(256 * 1024);
    if (!disk.isMounted()) {
        GTEST_SKIP() << "no disk can be mounted here";
    }
    const QString file = disk.path("recording.kov");
    QList<int> saved;  // numbers of the frames for which there was room
    int number = 0;
    const auto saveOne = [&] {
        const qint64 before = QFileInfo(file).size();
        recording.Save(frame(number).get());
        if (QFileInfo(file).size() > before) {
            saved << number;
        }
        ++number;
        return QFileInfo(file).size() > before;
    };
    ResultTesting::writeFile(disk.path("ballast"), QByteArray(100 * 1024, 'b'));
    start(recording, file);

    while (saveOne()) {
        ASSERT_LT(number, 1000) << "the disk is never full";
    }
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(saveOne());
    }
    ASSERT_TRUE(QFile::remove(disk.path("ballast")));
    for (int i = 0; i < 50; ++i) {
        EXPECT_TRUE(saveOne());
    }

    Loaded loaded(file, folder.cache());
    ASSERT_EQ(loaded.frames(), saved.size());
    for (int i = 0; i < saved.size(); ++i) {
        EXPECT_EQ(mapValues(loaded.frame(i)), mapValues(*frame(saved[i])));
        EXPECT_EQ(loaded.frame(i).median, frame(saved[i])->median);
    }
}

TEST_F(RecordingWithoutRoom, GoesOnInItsFileWhenTheFolderWasAwayForAWhile)
{
    const QString place = folder.path("card");
    ASSERT_TRUE(QDir().mkpath(place));
    start(recording, place + "/a.kov");
    recording.Save(frame(0).get());

    ASSERT_TRUE(QDir().rename(place, folder.path("elsewhere")));
    recording.Save(frame(1).get());
    EXPECT_FALSE(QDir(place).exists());
    ASSERT_TRUE(QDir().rename(folder.path("elsewhere"), place));
    recording.Save(frame(2).get());

    Loaded loaded(place + "/a.kov", folder.cache());
    ASSERT_EQ(loaded.frames(), 2);
    EXPECT_EQ(mapValues(loaded.frame(0)), mapValues(*frame(0)));
    EXPECT_EQ(mapValues(loaded.frame(1)), mapValues(*frame(2)));
    EXPECT_TRUE(readFile(place + "/a.kov").contains("--start--3\r\n"));
}

TEST_F(RecordingWithoutRoom, IsWholeAgainWithTheNextFileWhenTheFolderWasDeleted)
{
    const QString place = folder.path("card");
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(QDir().mkpath(place));
        start(recording, place + "/a.kov");
        recording.Save(frame(round).get());
        Loaded loaded(place + "/a.kov", folder.cache());
        ASSERT_EQ(loaded.frames(), 1);
        EXPECT_EQ(mapValues(loaded.frame(0)), mapValues(*frame(round)));

        ASSERT_TRUE(QDir(place).removeRecursively());
        recording.Save(frame(round).get());
        EXPECT_FALSE(QDir(place).exists());
    }
}

}  // namespace
