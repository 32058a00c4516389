// What a mapping asks of a POSIX system beyond what the tests for every system see.
#include <KOVDoaHandle/result/filemapping_p.h>

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

#include <sys/stat.h>

#include <cstddef>
#include <filesystem>

namespace {

TEST(FileMappingPosixTest, ReservesTheDiskSpaceAtOnce)
{
    constexpr std::size_t size = std::size_t{3} * 1024 * 1024;
    const QTemporaryDir folder;
    const std::filesystem::path file = std::filesystem::path(folder.path().toStdString()) / "block";

    const FileMapping mapping(file, size);

    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_GE(static_cast<std::size_t>(status.st_blocks) * 512, size);
}

}  // namespace
