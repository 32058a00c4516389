// Compiled for Windows as well, where there is no Qt: these tests use the standard library alone.
#include <KOVDoaHandle/result/filemapping_p.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <system_error>
#include <utility>

namespace {

constexpr std::size_t mebibyte = std::size_t{1024} * 1024;

class FileMappingTest : public ::testing::Test
{
protected:
    FileMappingTest() { std::filesystem::create_directory(m_folder); }
    ~FileMappingTest() override
    {
        std::error_code ignored;  // Windows keeps a file that is still mapped
        std::filesystem::remove_all(m_folder, ignored);
    }

    std::filesystem::path file(const char* name = "block") const { return m_folder / name; }

private:
    std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("kovdoa-mapping-" + std::to_string(std::random_device()()));
};

bool isZero(const void* data, std::size_t size)
{
    const char* const bytes = static_cast<const char*>(data);
    return std::all_of(bytes, bytes + size, [](char c) { return c == 0; });
}

TEST_F(FileMappingTest, MapsAFileOfTheGivenSizeFullOfZeros)
{
    const FileMapping mapping(file(), 3 * mebibyte);

    ASSERT_NE(mapping.data(), nullptr);
    EXPECT_EQ(std::filesystem::file_size(file()), 3 * mebibyte);
    EXPECT_TRUE(isZero(mapping.data(), 3 * mebibyte));
}

TEST_F(FileMappingTest, ShowsInTheFileWhatIsStoredInTheView)
{
    const FileMapping mapping(file(), mebibyte);

    std::memcpy(mapping.data(), "sound", 5);

    char text[5] = {};
    std::ifstream(file(), std::ios::binary).read(text, 5);
    EXPECT_EQ(std::string(text, 5), "sound");
}

TEST_F(FileMappingTest, KeepsWhatIsStoredWhilePreparingTheRest)
{
    FileMapping mapping(file(), 3 * mebibyte);
    char* const bytes = static_cast<char*>(mapping.data());

    mapping.prepare(100);
    std::memset(bytes, 'x', 100);
    mapping.prepare(mebibyte + 1);
    std::memset(bytes + mebibyte, 'y', 1);
    mapping.prepare(3 * mebibyte);

    EXPECT_EQ(std::count(bytes, bytes + 100, 'x'), 100);
    EXPECT_EQ(bytes[mebibyte], 'y');
    EXPECT_TRUE(isZero(bytes + 100, mebibyte - 100));
    EXPECT_TRUE(isZero(bytes + mebibyte + 1, 2 * mebibyte - 1));
    EXPECT_EQ(std::filesystem::file_size(file()), 3 * mebibyte);
}

TEST_F(FileMappingTest, EmptiesAFileThatIsThereAlready)
{
    std::ofstream(file()) << "old";

    const FileMapping mapping(file(), mebibyte);

    ASSERT_NE(mapping.data(), nullptr);
    EXPECT_TRUE(isZero(mapping.data(), mebibyte));
}

TEST_F(FileMappingTest, DeletesTheFileWhenItGoes)
{
    {
        const FileMapping mapping(file(), mebibyte);
        ASSERT_TRUE(std::filesystem::exists(file()));
    }

    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(FileMappingTest, DeletesTheFileWhenItIsClosed)
{
    FileMapping mapping(file(), mebibyte);

    mapping.close();
    mapping.close();

    EXPECT_EQ(mapping.data(), nullptr);
    EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(FileMappingTest, LeavesViewAndFileWhenItIsReleased)
{
    char* bytes = nullptr;
    {
        FileMapping mapping(file(), mebibyte);
        bytes = static_cast<char*>(mapping.data());
        mapping.release();
        EXPECT_EQ(mapping.data(), nullptr);
    }

    bytes[mebibyte - 1] = 'z';

    EXPECT_EQ(bytes[mebibyte - 1], 'z');
    EXPECT_EQ(std::filesystem::file_size(file()), mebibyte);
}

TEST_F(FileMappingTest, HandsViewAndFileOverWhenItIsMoved)
{
    FileMapping first(file("first"), mebibyte);
    FileMapping second(file("second"), mebibyte);
    void* const view = first.data();

    second = std::move(first);
    const FileMapping third(std::move(second));

    EXPECT_EQ(third.data(), view);
    EXPECT_TRUE(std::filesystem::exists(file("first")));
    EXPECT_FALSE(std::filesystem::exists(file("second")));
}

TEST_F(FileMappingTest, MapsNothingInAMissingFolder)
{
    const FileMapping mapping(file("missing") / "block", mebibyte);

    EXPECT_EQ(mapping.data(), nullptr);
}

TEST_F(FileMappingTest, LeavesNoFileBehindWhenThereIsNoRoom)
{
    const FileMapping mapping(file(), std::size_t{1} << 60);

    EXPECT_EQ(mapping.data(), nullptr);
    EXPECT_FALSE(std::filesystem::exists(file()));
}

}  // namespace
