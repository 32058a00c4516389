#include <KOVDoaHandle/result/kovmemorymap.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cstring>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::Messages;

constexpr std::size_t blockBytes = 16'777'216;

class KOVMemoryMapTest : public ::testing::Test
{
protected:
    Messages messages;
    Folder folder;
    KOVMemoryMap map{folder.cache()};

    char* allocate(std::size_t size) { return static_cast<char*>(map.MapMalloc(size)); }
};

TEST_F(KOVMemoryMapTest, CreatesAMissingFolderWithItsParentsAndSaysSo)
{
    const QString path = folder.path("a/b %1/c");

    const KOVMemoryMap other(path);

    EXPECT_TRUE(QDir(path).exists());
    EXPECT_EQ(messages.texts().last(), "KOVMemoryMap: creat path \"" + path + "\"");
}

TEST_F(KOVMemoryMapTest, CreatesARelativeFolderOnceAndNotNested)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path("")));

    const KOVMemoryMap other("x/y");

    EXPECT_TRUE(QDir("x/y").exists());
    EXPECT_FALSE(QDir("x/y/x").exists());
    QDir::setCurrent(before);
}

TEST_F(KOVMemoryMapTest, SaysNothingAboutAFolderThatIsThere)
{
    const int before = messages.texts().size();

    const KOVMemoryMap other(folder.cache());

    EXPECT_EQ(messages.texts().size(), before);
}

TEST_F(KOVMemoryMapTest, MakesNoFileBeforeTheFirstAllocation)
{
    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(KOVMemoryMapTest, PlacesAllocationsOneBehindTheOther)
{
    char* const first = allocate(100);
    char* const second = allocate(100);
    char* const third = allocate(3);
    char* const fourth = allocate(1);

    ASSERT_NE(first, nullptr);
    EXPECT_EQ(second - first, 100);
    EXPECT_EQ(third - second, 100);
    EXPECT_EQ(fourth - third, 3);
    EXPECT_EQ(folder.cacheFiles(), 1);
}

TEST_F(KOVMemoryMapTest, BacksABlockByOneFileOfSixteenMebibytesNamedByAUuid)
{
    allocate(1);

    const QFileInfoList files = QDir(folder.cache()).entryInfoList(QDir::Files);
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(files[0].size(), static_cast<qint64>(blockBytes));
    EXPECT_TRUE(QRegularExpression("^[0-9a-f]{32}$").match(files[0].fileName()).hasMatch());
    EXPECT_EQ(messages.texts().last(),
              "KOVMemoryMap::MapMalloc: \"" + folder.cache() + "/" + files[0].fileName() + "\"");
}

TEST_F(KOVMemoryMapTest, StartsANewBlockWhenARequestDoesNotFit)
{
    char* const first = allocate(blockBytes - 100);
    char* const second = allocate(101);
    char* const third = allocate(1);

    ASSERT_NE(second, nullptr);
    EXPECT_EQ(folder.cacheFiles(), 2);
    EXPECT_EQ(third - second, 101);
    first[blockBytes - 101] = 1;
    second[100] = 2;
}

TEST_F(KOVMemoryMapTest, FillsABlockToItsLastByte)
{
    char* const first = allocate(blockBytes - 100);
    char* const second = allocate(100);

    EXPECT_EQ(second - first, static_cast<std::ptrdiff_t>(blockBytes - 100));
    EXPECT_EQ(folder.cacheFiles(), 1);
    second[99] = 1;
}

TEST_F(KOVMemoryMapTest, StartsANewBlockAfterOneThatIsFull)
{
    allocate(blockBytes);
    char* const second = allocate(1);

    ASSERT_NE(second, nullptr);
    EXPECT_EQ(folder.cacheFiles(), 2);
}

TEST_F(KOVMemoryMapTest, StartsANewBlockAfterARequestAboveTheBlockSize)
{
    char* const oversized = allocate(blockBytes + 1000);
    char* const next = allocate(100);

    ASSERT_NE(oversized, nullptr);
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(folder.cacheFiles(), 2);
    oversized[blockBytes - 1] = 1;
    std::memset(next, 1, 100);
}

TEST_F(KOVMemoryMapTest, GivesFreshMemoryThatIsZero)
{
    for (int i = 0; i < 3; ++i) {
        char* const p = allocate(7'000'000);
        ASSERT_NE(p, nullptr);
        EXPECT_TRUE(std::all_of(p, p + 7'000'000, [](char c) { return c == 0; }));
        std::memset(p, 0x55, 7'000'000);
    }
}

TEST_F(KOVMemoryMapTest, DoesNotReuseFreedSpaceOfALivingBlock)
{
    char* const first = allocate(100);
    char* const second = allocate(100);
    std::memset(first, 0x55, 100);

    map.MapFree(first);
    char* const third = allocate(100);

    EXPECT_EQ(third - second, 100);
    EXPECT_TRUE(std::all_of(third, third + 100, [](char c) { return c == 0; }));
}

TEST_F(KOVMemoryMapTest, DeletesTheFileOfAnOlderBlockWithItsLastAllocation)
{
    char* const first = allocate(100);
    char* const second = allocate(200);
    char* const newer = allocate(blockBytes);
    ASSERT_EQ(folder.cacheFiles(), 2);

    map.MapFree(second);
    EXPECT_EQ(folder.cacheFiles(), 2);
    map.MapFree(first);

    EXPECT_EQ(folder.cacheFiles(), 1);
    newer[0] = 1;
}

TEST_F(KOVMemoryMapTest, StartsAfreshAfterTheCurrentBlockHasGone)
{
    map.MapFree(allocate(100));
    EXPECT_EQ(folder.cacheFiles(), 0);

    char* const p = allocate(100);

    ASSERT_NE(p, nullptr);
    EXPECT_EQ(folder.cacheFiles(), 1);
    std::memset(p, 1, 100);
}

TEST_F(KOVMemoryMapTest, IgnoresAnAddressItNeverHandedOut)
{
    char* const p = allocate(100);
    int local = 0;

    map.MapFree(&local);
    map.MapFree(nullptr);
    map.MapFree(p + 1);

    EXPECT_EQ(folder.cacheFiles(), 1);
    p[99] = 1;
}

TEST_F(KOVMemoryMapTest, IgnoresAnAddressThatWasFreedBefore)
{
    char* const first = allocate(100);
    char* const second = allocate(100);

    map.MapFree(first);
    map.MapFree(first);

    EXPECT_EQ(folder.cacheFiles(), 1);
    second[99] = 1;
}

TEST_F(KOVMemoryMapTest, SurvivesEmptyRequests)
{
    char* const empty = allocate(0);
    char* const p = allocate(10);
    allocate(blockBytes - 10);
    char* const behindTheEnd = allocate(0);

    EXPECT_EQ(p, empty);
    // Not just behind the full block: another block might begin there.
    EXPECT_NE(behindTheEnd, p + blockBytes);
    map.MapFree(behindTheEnd);
    map.MapFree(p);
    p[9] = 1;
}

TEST_F(KOVMemoryMapTest, LeavesLivingBlocksWithTheirFilesWhenItIsDestroyed)
{
    char* p = nullptr;
    {
        KOVMemoryMap other(folder.cache());
        p = static_cast<char*>(other.MapMalloc(100));
        other.MapFree(other.MapMalloc(blockBytes));
    }

    p[99] = 1;

    EXPECT_EQ(p[99], 1);
    EXPECT_EQ(folder.cacheFiles(), 1);
}

TEST_F(KOVMemoryMapTest, ReturnsNullWhenTheFolderCannotBeUsed)
{
    ResultTesting::writeFile(folder.path("file"), "no folder");
    KOVMemoryMap other(folder.path("file/cache"));

    EXPECT_EQ(other.MapMalloc(100), nullptr);
    EXPECT_EQ(other.MapMalloc(100), nullptr);
}

TEST_F(KOVMemoryMapTest, KeepsServingFromTheCurrentBlockWhenANewOneCannotBeMade)
{
    char* const first = allocate(100);
    ASSERT_TRUE(QDir(folder.cache()).removeRecursively());

    EXPECT_EQ(allocate(blockBytes), nullptr);
    char* const second = allocate(100);

    EXPECT_EQ(second - first, 100);
}

TEST_F(KOVMemoryMapTest, WritesItsMessagesUnderItsSourceNameInTheDefaultCategory)
{
    allocate(1);

    for (const ResultTesting::Message& message : messages.all()) {
        EXPECT_EQ(message.type, QtDebugMsg);
        EXPECT_EQ(message.file, "kovmemorymap");
        EXPECT_EQ(message.category, "default");
        EXPECT_TRUE(message.function.contains("KOVMemoryMap")) << message.function.constData();
    }
}

}  // namespace
