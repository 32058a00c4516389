#include "tools/support/partialfile.h"

#include <gtest/gtest.h>

#include <filesystem>

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

}  // namespace
