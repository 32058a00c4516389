// The plain exports over recordings.
#include <KOVDoaHandle/api/resultfile.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>

#include <chrono>
#include <cstring>
#include <thread>

#include "../result/resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::Messages;

class ResultFileExports : public ::testing::Test
{
protected:
    ~ResultFileExports() override { destoryResultSerializeHandle(handle); }

    void open(const QByteArray& bytes)
    {
        ResultTesting::writeFile(folder.file(), bytes);
        openPath(folder.file().toLatin1().constData());
    }

    void openPath(const char* path)
    {
        destoryResultSerializeHandle(handle);
        handle = createResultSerializeHandle(path, folder.cache().toLatin1().constData());
        waitUntilComplete();
    }

    void waitUntilComplete() { ResultTesting::waitUntilComplete(*handle); }

    Messages messages;
    Folder folder;
    KOVDoaResultSerialize* handle = nullptr;
};

TEST_F(ResultFileExports, LoadARecording)
{
    const ResultTesting::Result result = ResultTesting::makeResult(3, 4, 8);
    KOVDoaResultSerialize writer(folder.cache());
    writer.startSave(folder.file(), 3, 4, 720, 1280, 8);
    writer.Save(result.get());
    writer.Save(result.get());

    openPath(folder.file().toLatin1().constData());

    EXPECT_TRUE(getIsOpenFileComplete(handle));
    EXPECT_EQ(getResultFrame(handle), 2);
    EXPECT_EQ(getResRows(handle), 3);
    EXPECT_EQ(getResCols(handle), 4);
    EXPECT_EQ(getImgRows(handle), 720);
    EXPECT_EQ(getImgCols(handle), 1280);
    EXPECT_EQ(getFFTLen(handle), 8);
    EXPECT_STREQ(getResultFileVersion(handle), "0015");
    EXPECT_EQ(ResultTesting::mapValues(*getResultHandleFromIndex(handle, 1)),
              ResultTesting::mapValues(*result));
}

TEST_F(ResultFileExports, HaveNoFrameOutsideTheirNumber)
{
    open(ResultTesting::header(1, 1, 0) + "--start--1\r\n--end--\r\n");

    EXPECT_NE(getResultHandleFromIndex(handle, 0), nullptr);
    EXPECT_EQ(getResultHandleFromIndex(handle, getResultFrame(handle)), nullptr);
    EXPECT_EQ(getResultHandleFromIndex(handle, -1), nullptr);
}

TEST_F(ResultFileExports, ReportTheUsualSizesForAMissingFile)
{
    openPath(folder.path("missing.kov").toLatin1().constData());

    EXPECT_EQ(getResultFrame(handle), 0);
    EXPECT_EQ(getResRows(handle), 64);
    EXPECT_EQ(getResCols(handle), 48);
    EXPECT_EQ(getImgRows(handle), 480);
    EXPECT_EQ(getImgCols(handle), 640);
    EXPECT_EQ(getFFTLen(handle), 1024);
    EXPECT_STREQ(getResultFileVersion(handle), "");
}

TEST_F(ResultFileExports, TakeANullPathAsAnEmptyOne)
{
    openPath(nullptr);

    EXPECT_TRUE(getIsOpenFileComplete(handle));
    EXPECT_EQ(getResultFrame(handle), 0);
}

TEST_F(ResultFileExports, CacheInTheCurrentFolderWhenTheFolderIsNull)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.path("")));

    handle = createResultSerializeHandle("missing.kov", nullptr);
    waitUntilComplete();

    EXPECT_TRUE(QDir(folder.path("cache")).exists());
    QDir::setCurrent(before);
}

TEST_F(ResultFileExports, ReadTheirPathsAsLatin1)
{
    const QString cache = folder.path(QString::fromUtf8("caf\xc3\xa9"));

    handle = createResultSerializeHandle(nullptr, cache.toLatin1().constData());
    waitUntilComplete();

    EXPECT_EQ(messages.count("creat path \"" + cache), 1);
}

TEST_F(ResultFileExports, CutTheVersionAfterThirtyOneBytes)
{
    open("==FILE_INFO_START==\r\nVERSION:0123456789012345678901234567890123456789\r\n==FILE_INFO_END==\r\n");

    EXPECT_STREQ(getResultFileVersion(handle), "0123456789012345678901234567890");
}

TEST_F(ResultFileExports, ReuseAndClearOneBufferForTheVersion)
{
    open("==FILE_INFO_START==\r\nVERSION:a-long-version-text\r\n==FILE_INFO_END==\r\n");
    const char* const first = getResultFileVersion(handle);
    open("==FILE_INFO_START==\r\nVERSION:1\r\n==FILE_INFO_END==\r\n");
    const char* const second = getResultFileVersion(handle);

    EXPECT_EQ(first, second);
    const char expected[32] = "1";
    EXPECT_EQ(std::memcmp(second, expected, 32), 0);
}

TEST_F(ResultFileExports, IgnoreANullHandleWhenTheyDestroy)
{
    destoryResultSerializeHandle(nullptr);
}

}  // namespace
