// The cache's blocks at their edge, freed in every order, and in folders that cannot be used.
#include <KOVDoaHandle/result/kovmemorymap.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <numeric>
#include <ostream>
#include <set>
#include <vector>

#include "diskroom.h"
#include "resulttesting.h"

namespace {

using ResultTesting::FileSizeLimit;
using ResultTesting::Folder;
using ResultTesting::Messages;
using ResultTesting::SmallDisk;

constexpr std::size_t blockBytes = 16'777'216;

class CacheBlocks : public ::testing::Test
{
protected:
    Messages messages;
    Folder folder;
    KOVMemoryMap map{folder.cache()};

    char* allocate(std::size_t size) { return static_cast<char*>(map.MapMalloc(size)); }
};

// ---- The edge ----

struct Pair
{
    std::size_t first;
    std::size_t second;
    int files;
};

void PrintTo(const Pair& pair, std::ostream* out)
{
    *out << pair.first << " and " << pair.second;
}

class BlockEdge : public CacheBlocks, public ::testing::WithParamInterface<Pair>
{
};

TEST_P(BlockEdge, IsTheSixteenthMebibyteToTheByte)
{
    const auto [firstSize, secondSize, files] = GetParam();

    char* const first = allocate(firstSize);
    char* const second = allocate(secondSize);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(folder.cacheFiles(), files);
    std::memset(first, 1, firstSize);
    std::memset(second, 2, secondSize);
    EXPECT_EQ(first[firstSize - 1], 1);
    EXPECT_EQ(second - first == static_cast<std::ptrdiff_t>(firstSize), files == 1);

    map.MapFree(first);
    EXPECT_EQ(folder.cacheFiles(), 1);
    map.MapFree(second);
    EXPECT_EQ(folder.cacheFiles(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, BlockEdge,
    ::testing::Values(Pair{blockBytes - 2, 1, 1}, Pair{blockBytes - 2, 2, 1}, Pair{blockBytes - 2, 3, 2},
                      Pair{blockBytes - 1, 1, 1}, Pair{blockBytes - 1, 2, 2}, Pair{blockBytes, 1, 2},
                      Pair{1, blockBytes - 1, 1}, Pair{1, blockBytes, 2},
                      Pair{blockBytes / 2, blockBytes / 2, 1}, Pair{blockBytes / 2, blockBytes / 2 + 1, 2}),
    [](const auto& test) {
        return std::to_string(test.param.first) + "And" + std::to_string(test.param.second);
    });

// ---- Every order ----

// Five allocations in three blocks: two, two and one.
constexpr std::array<std::size_t, 5> sizes{100, blockBytes - 100, 200, blockBytes - 300, 500};
constexpr std::array<int, 5> blockOf{0, 0, 1, 1, 2};

TEST_F(CacheBlocks, GoWithTheLastOfTheirAllocationsInEveryOrder)
{
    std::array<std::size_t, sizes.size()> order{};
    std::iota(order.begin(), order.end(), std::size_t{0});
    int orders = 0;
    do {
        KOVMemoryMap fresh(folder.cache());
        std::array<char*, sizes.size()> pieces{};
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            pieces[i] = static_cast<char*>(fresh.MapMalloc(sizes[i]));
            ASSERT_NE(pieces[i], nullptr);
            pieces[i][sizes[i] - 1] = static_cast<char>('a' + i);
        }
        std::multiset<int> live(blockOf.begin(), blockOf.end());
        for (std::size_t freed = 0; freed < order.size(); ++freed) {
            fresh.MapFree(pieces[order[freed]]);
            live.erase(live.find(blockOf[order[freed]]));
            ASSERT_EQ(folder.cacheFiles(), static_cast<int>(std::set<int>(live.begin(), live.end()).size()));
            for (std::size_t left = freed + 1; left < order.size(); ++left) {
                const std::size_t i = order[left];
                ASSERT_EQ(pieces[i][sizes[i] - 1], static_cast<char>('a' + i));
            }
        }
        ++orders;
    } while (std::next_permutation(order.begin(), order.end()));

    EXPECT_EQ(orders, 120);
}

TEST_F(CacheBlocks, ServeOnWhateverWasFreedBefore)
{
    // The current block goes, or stays, in every order; what comes then never overlaps what is left.
    std::array<int, 4> order{0, 1, 2, 3};
    do {
        KOVMemoryMap fresh(folder.cache());
        std::vector<char*> pieces;
        for (int i = 0; i < 4; ++i) {
            pieces.push_back(static_cast<char*>(fresh.MapMalloc(1000)));
        }
        std::map<int, char*> later;
        for (const int i : order) {
            fresh.MapFree(pieces[static_cast<std::size_t>(i)]);
            later[i] = static_cast<char*>(fresh.MapMalloc(1000));
            ASSERT_NE(later[i], nullptr);
            std::memset(later[i], i + 1, 1000);
        }
        for (const auto& [i, piece] : later) {
            ASSERT_EQ(std::count(piece, piece + 1000, static_cast<char>(i + 1)), 1000);
            fresh.MapFree(piece);
        }
        ASSERT_EQ(folder.cacheFiles(), 0);
    } while (std::next_permutation(order.begin(), order.end()));
}

// ---- Folders that cannot be used ----

TEST_F(CacheBlocks, AreRefusedWhileAFileLiesInTheFoldersPlace)
{
    ASSERT_TRUE(QDir(folder.cache()).removeRecursively());
    ResultTesting::writeFile(folder.cache(), "in the way");
    EXPECT_EQ(allocate(100), nullptr);
    EXPECT_EQ(ResultTesting::readFile(folder.cache()), "in the way");

    ASSERT_TRUE(QFile::remove(folder.cache()));
    EXPECT_EQ(allocate(100), nullptr);
    ASSERT_TRUE(QDir().mkpath(folder.cache()));
    EXPECT_NE(allocate(100), nullptr);
}

TEST_F(CacheBlocks, AreRefusedInAFolderThatMayOnlyBeRead)
{
    ASSERT_EQ(chmod(QFile::encodeName(folder.path("")).constData(), 0755), 0);
    ASSERT_EQ(chmod(QFile::encodeName(folder.cache()).constData(), 0555), 0);
    // In a process without privileges, since nothing is read-only for root.
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0)) {
            _exit(2);
        }
        _exit(access(QFile::encodeName(folder.cache()).constData(), R_OK | X_OK) != 0 ? 3
              : allocate(100) == nullptr && allocate(100) == nullptr                  ? 0
                                                                                      : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);

    ASSERT_EQ(chmod(QFile::encodeName(folder.cache()).constData(), 0755), 0);
    EXPECT_EQ(folder.cacheFiles(), 0);
    EXPECT_NE(allocate(100), nullptr);
}

TEST_F(CacheBlocks, AreRefusedWithoutATraceWhileFilesMayNotGrowSoLarge)
{
    for (const std::size_t limit : {std::size_t{0}, std::size_t{4096}, blockBytes - 1}) {
        const FileSizeLimit full(limit);
        ASSERT_TRUE(full.isSet());
        EXPECT_EQ(allocate(100), nullptr);
        EXPECT_EQ(folder.cacheFiles(), 0);
    }

    char* const p = allocate(100);
    ASSERT_NE(p, nullptr);
    p[99] = 1;
}

TEST_F(CacheBlocks, AreAsManyAsTheDiskHasRoomFor)
{
    const SmallDisk disk(40 * 1024 * 1024);
    if (!disk.isMounted()) {
        GTEST_SKIP() << "no disk can be mounted here";
    }
    KOVMemoryMap onDisk(disk.path("cache"));
    std::vector<char*> pieces;
    for (int i = 0; i < 2; ++i) {
        pieces.push_back(static_cast<char*>(onDisk.MapMalloc(blockBytes)));
        ASSERT_NE(pieces.back(), nullptr);
    }

    EXPECT_EQ(onDisk.MapMalloc(blockBytes), nullptr);
    EXPECT_EQ(disk.files("cache"), 2);
    // All that was promised can be written.
    for (char* const piece : pieces) {
        std::memset(piece, 1, blockBytes);
    }
    onDisk.MapFree(pieces[0]);
    EXPECT_EQ(disk.files("cache"), 1);
    auto* const again = static_cast<char*>(onDisk.MapMalloc(blockBytes));
    ASSERT_NE(again, nullptr);
    std::memset(again, 2, blockBytes);
    EXPECT_EQ(pieces[1][blockBytes - 1], 1);
    onDisk.MapFree(again);
    onDisk.MapFree(pieces[1]);
    EXPECT_EQ(disk.files("cache"), 0);
}

TEST_F(CacheBlocks, StayUsableWhenTheirFilesAreDeletedUnderThem)
{
    char* const p = allocate(1000);
    std::memset(p, 1, 1000);
    ASSERT_TRUE(QDir(folder.cache()).removeRecursively());

    char* const q = allocate(1000);
    ASSERT_NE(q, nullptr);
    std::memset(q, 2, 1000);
    EXPECT_EQ(p[999], 1);
    map.MapFree(p);
    map.MapFree(q);

    EXPECT_EQ(allocate(100), nullptr);
    ASSERT_TRUE(QDir().mkpath(folder.cache()));
    EXPECT_NE(allocate(100), nullptr);
}

}  // namespace
