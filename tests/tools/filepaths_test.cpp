#include "tools/support/filepaths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/tools/program.h"
#include "tools/support/errors.h"

namespace {

using kovtools::FilesOfCommand;
using kovtools::isSameFile;
using kovtools::UsageError;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;

TEST(SameFile, IsFoundThroughLinksAndDetours)
{
    const Sandbox sandbox;
    writeFile(sandbox / "a", "");
    std::filesystem::create_directory(sandbox / "folder");
    std::filesystem::create_symlink("a", sandbox / "link");
    std::filesystem::create_hard_link(sandbox / "a", sandbox / "second-name");
    std::filesystem::create_symlink("folder", sandbox / "folder-link");

    EXPECT_TRUE(isSameFile(sandbox / "a", sandbox / "a"));
    EXPECT_TRUE(isSameFile(sandbox / "a", sandbox / "link"));
    EXPECT_TRUE(isSameFile(sandbox / "a", sandbox / "second-name"));
    EXPECT_TRUE(isSameFile(sandbox / "a", sandbox / "folder/../a"));
    EXPECT_FALSE(isSameFile(sandbox / "a", sandbox / "folder"));
}

TEST(SameFile, IsFoundBeforeItExists)
{
    const Sandbox sandbox;
    std::filesystem::create_directory(sandbox / "folder");
    std::filesystem::create_symlink("folder", sandbox / "folder-link");
    std::filesystem::create_symlink("folder/new", sandbox / "new-link");

    EXPECT_TRUE(isSameFile(sandbox / "new", sandbox / "new"));
    EXPECT_TRUE(isSameFile(sandbox / "folder/new", sandbox / "folder-link/new"));
    EXPECT_TRUE(isSameFile(sandbox / "folder/new", sandbox / "new-link"));
    EXPECT_FALSE(isSameFile(sandbox / "new", sandbox / "folder/new"));
}

TEST(FilesOfCommand, MayReadOneFileTwice)
{
    const Sandbox sandbox;
    FilesOfCommand files;
    files.addInput("FILE", sandbox / "a");
    files.addInput("--camera", sandbox / "a");

    EXPECT_NO_THROW(files.checkDistinct());
}

TEST(FilesOfCommand, MayLieInTheFolderOfPicturesUnderOtherNames)
{
    const Sandbox sandbox;
    std::filesystem::create_directory(sandbox / "frames");
    FilesOfCommand files;
    files.addPictureFolder("-o", sandbox / "frames");
    files.addInput("--camera", sandbox / "frames/camera.png");
    files.addOutput("--contact-sheet", sandbox / "frames/frame-all.png");

    EXPECT_NO_THROW(files.checkDistinct());
}

TEST(FilesOfCommand, MayNotBeReplacedByPicturesThatLinkToThem)
{
    const Sandbox sandbox;
    std::filesystem::create_directory(sandbox / "frames");
    writeFile(sandbox / "camera.png", "");
    std::filesystem::create_symlink("../camera.png", sandbox / "frames/frame-00002.png");
    FilesOfCommand files;
    files.addInput("--camera", sandbox / "camera.png");
    files.addPictureFolder("-o", sandbox / "frames");

    EXPECT_THROW(files.checkDistinct(), UsageError);
}

}  // namespace
