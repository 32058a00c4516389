#include "tools/support/partialfile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "tests/tools/program.h"
#include "tools/support/errors.h"

namespace {

using kovtools::DataError;
using kovtools::PartialFile;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;

using Names = std::vector<std::string>;

TEST(PartialFile, AppearsOnlyWhenItIsCommitted)
{
    const Sandbox sandbox;
    PartialFile file(sandbox / "a.mp4");
    writeFile(file.path(), "content");
    EXPECT_FALSE(std::filesystem::exists(sandbox / "a.mp4"));

    file.commit();

    EXPECT_EQ(readFile(sandbox / "a.mp4"), "content");
    EXPECT_EQ(sandbox.contents(), Names{"a.mp4"});
}

TEST(PartialFile, GoesWithoutATraceWhenItIsNotCommitted)
{
    const Sandbox sandbox;
    writeFile(sandbox / "a.mp4", "before");
    {
        const PartialFile file(sandbox / "a.mp4");
        writeFile(file.path(), "half of the con");
    }

    EXPECT_EQ(readFile(sandbox / "a.mp4"), "before");
    EXPECT_EQ(sandbox.contents(), Names{"a.mp4"});
}

TEST(PartialFile, KeepsTheExtension)
{
    const Sandbox sandbox;

    EXPECT_EQ(PartialFile(sandbox / "a.mp4").path().extension(), ".mp4");
}

TEST(PartialFile, IsRefusedInAFolderThatIsMissingAndInPlaceOfAFolder)
{
    const Sandbox sandbox;

    EXPECT_THROW(PartialFile(sandbox / "missing" / "a.mp4"), DataError);
    EXPECT_THROW(PartialFile{sandbox.path()}, DataError);
    EXPECT_TRUE(sandbox.contents().empty());
}

TEST(PartialFile, GoesIntoAPipeWhenItIsCommitted)
{
    const Sandbox sandbox;
    ASSERT_EQ(mkfifo((sandbox / "pipe").c_str(), 0600), 0);
    // Much more than a pipe holds.
    const std::string content(1 << 20, 'x');
    PartialFile file(sandbox / "pipe");
    file.write(content);
    std::string read;
    std::thread reader([&] { read = readFile(sandbox / "pipe"); });

    file.commit();
    reader.join();

    EXPECT_TRUE(read == content);
    EXPECT_TRUE(std::filesystem::is_fifo(sandbox / "pipe"));
    EXPECT_EQ(sandbox.contents(), Names{"pipe"});
}

TEST(PartialFile, SaysThatTheReaderOfItsPipeWentAway)
{
    const Sandbox sandbox;
    ASSERT_EQ(mkfifo((sandbox / "pipe").c_str(), 0600), 0);
    std::signal(SIGPIPE, SIG_IGN);  // as the program has it
    PartialFile file(sandbox / "pipe");
    file.write(std::string(1 << 20, 'x'));
    std::thread reader([&] { std::ifstream(sandbox / "pipe", std::ios::binary).get(); });

    EXPECT_THROW(file.commit(), DataError);
    reader.join();
}

TEST(PartialFile, MayBeMeantForADevice)
{
    PartialFile file("/dev/null");
    file.write("content");

    EXPECT_NO_THROW(file.commit());
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(PartialFile, LeavesNoTraceOfWhatWasMeantForADevice)
{
    std::filesystem::path partial;
    {
        PartialFile file("/dev/null");
        partial = file.path();
        EXPECT_TRUE(std::filesystem::exists(partial));
        file.commit();
    }

    EXPECT_FALSE(std::filesystem::exists(partial));
}

TEST(PartialFile, IsWrittenWhereALinkLeads)
{
    const Sandbox sandbox;
    std::filesystem::create_directory(sandbox / "elsewhere");
    writeFile(sandbox / "elsewhere/old.avi", "before");
    std::filesystem::create_symlink("elsewhere/old.avi", sandbox / "old-link.avi");
    std::filesystem::create_symlink("elsewhere/new.avi", sandbox / "new-link.avi");
    for (const std::string name : {"old", "new"}) {
        PartialFile file(sandbox / (name + "-link.avi"));
        writeFile(file.path(), "content");

        file.commit();

        EXPECT_TRUE(std::filesystem::is_symlink(sandbox / (name + "-link.avi")));
        EXPECT_EQ(readFile(sandbox / ("elsewhere/" + name + ".avi")), "content");
    }
}

TEST(PartialFile, IsRefusedInPlaceOfARingOfLinks)
{
    const Sandbox sandbox;
    std::filesystem::create_symlink("b", sandbox / "a");
    std::filesystem::create_symlink("a", sandbox / "b");

    EXPECT_THROW(PartialFile(sandbox / "a"), DataError);
    EXPECT_EQ(sandbox.contents(), (Names{"a", "b"}));
}

TEST(PartialFile, MayHaveTheLongestNameThatThereIs)
{
    const Sandbox sandbox;
    for (const std::string& name : {std::string(251, 'n') + ".avi", "n." + std::string(253, 'x')}) {
        PartialFile file(sandbox / name);
        file.commit();

        EXPECT_TRUE(std::filesystem::exists(sandbox / name)) << name;
    }
}

}  // namespace
