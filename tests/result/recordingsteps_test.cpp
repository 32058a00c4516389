// The steps of a load, called one by one, and the containers in the cache.
#include <gtest/gtest.h>

#include "resulttesting.h"

namespace {

using ResultTesting::floatBytes;
using ResultTesting::Folder;
using ResultTesting::header;
using ResultTesting::Messages;

class RecordingSteps : public ::testing::Test
{
protected:
    Messages messages;
    Folder folder;
    KOVDoaResultSerialize recording{folder.cache()};
};

TEST_F(RecordingSteps, ReadLineAfterLine)
{
    QByteArray data = "one\r\ntwo\rhalf\nline\r\n\r\nlast\r\n";

    EXPECT_EQ(recording.getLine(data), "one");
    EXPECT_EQ(recording.getLine(data), "two\rhalf\nline");
    const QByteArray empty = recording.getLine(data);
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_FALSE(empty.isNull());
    EXPECT_EQ(recording.getLine(data), "last");
}

TEST_F(RecordingSteps, NeverStartOverAtTheEndOfTheData)
{
    QByteArray data = "one\r\nrest";

    EXPECT_EQ(recording.getLine(data), "one");
    EXPECT_EQ(recording.getLine(data), "rest");
    EXPECT_TRUE(recording.getLine(data).isNull());
    EXPECT_TRUE(recording.getLine(data).isNull());
    EXPECT_TRUE(recording.getLine(data, 2).isEmpty());
}

TEST_F(RecordingSteps, ReadRawBytesAndSkipTheLineEndBehindThem)
{
    QByteArray data = "\r\n\r\nab\r\nnext\r\n";

    EXPECT_EQ(recording.getLine(data, 6), "\r\n\r\nab");
    EXPECT_EQ(recording.getLine(data), "next");
}

TEST_F(RecordingSteps, SkipWhateverLiesBetweenRawBytesAndTheNextLineEnd)
{
    QByteArray data = "abcdef\r\nnext\r\n";

    EXPECT_EQ(recording.getLine(data, 2), "ab");
    EXPECT_EQ(recording.getLine(data), "next");
}

TEST_F(RecordingSteps, ReadAsManyRawBytesAsAreLeft)
{
    QByteArray data = "abc";

    EXPECT_EQ(recording.getLine(data, 100), "abc");
    EXPECT_TRUE(recording.getLine(data).isNull());
}

TEST_F(RecordingSteps, TakeNegativeLengthsAsNone)
{
    QByteArray data = "abc\r\nnext\r\n";

    EXPECT_EQ(recording.getLine(data, -5), "");
    EXPECT_EQ(recording.getLine(data), "next");
}

TEST_F(RecordingSteps, SurviveDataThatHasBecomeShorter)
{
    QByteArray data = "one\r\ntwo\r\nthree\r\n";
    recording.getLine(data);
    recording.getLine(data);
    QByteArray shorter = "x";

    EXPECT_TRUE(recording.getLine(shorter).isNull());
}

TEST_F(RecordingSteps, ReadAHeaderAndItsRecords)
{
    QByteArray data = header(1, 2, 0) + "--start--1\r\n**ResEngMap:1x2\r\n" + floatBytes({1.5F, 2.5F}) +
                      "\r\n--end--\r\n--start--2\r\n--end--\r\n";

    recording.unpackVersion(data);
    EXPECT_EQ(recording.getResCols(), 2);
    recording.unpackHeader(data);
    EXPECT_TRUE(recording.unpackResult(data));
    EXPECT_TRUE(recording.unpackResult(data));
    EXPECT_FALSE(recording.unpackResult(data));

    ASSERT_EQ(recording.getResultFrame(), 2);
    EXPECT_EQ(ResultTesting::mapValues(*recording.getResultFromIndex(0)), (std::vector<float>{1.5F, 2.5F}));
    EXPECT_EQ(ResultTesting::mapValues(*recording.getResultFromIndex(1)), (std::vector<float>{0.0F, 0.0F}));
}

TEST_F(RecordingSteps, ConsumeTheLineThatBeginsNoBlock)
{
    QByteArray data = "something\r\nFILE_INFO_START\r\nRESROW:3\r\nFILE_INFO_END\r\n";

    recording.unpackVersion(data);
    EXPECT_EQ(recording.getResRows(), 64);
    recording.unpackVersion(data);
    EXPECT_EQ(recording.getResRows(), 3);
}

TEST_F(RecordingSteps, CreateMatricesOfZerosWhoseRowsLieOneBehindTheOther)
{
    mat2d_fp32* const matrix = recording.my_create_mat2d_fp32(3, 4);

    ASSERT_NE(matrix, nullptr);
    EXPECT_EQ(matrix->rows, 3);
    EXPECT_EQ(matrix->cols, 4);
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(matrix->data[row], matrix->data[0] + row * 4);
        for (int col = 0; col < 4; ++col) {
            EXPECT_EQ(matrix->data[row][col], 0.0F);
        }
    }
    EXPECT_EQ(folder.cacheFiles(), 1);
    recording.my_destroy_mat2d_fp32(matrix);
    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingSteps, CreateVectorsOfZeros)
{
    vec_fp32* const vector = recording.my_create_vec_fp32(513);

    ASSERT_NE(vector, nullptr);
    EXPECT_EQ(vector->len, 513);
    EXPECT_EQ(std::vector<float>(vector->data, vector->data + 513), std::vector<float>(513));
    EXPECT_EQ(folder.cacheFiles(), 1);
    recording.my_destroy_vec_fp32(vector);
    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingSteps, GiveFreshZerosAfterOtherContainersWereUsedAndFreed)
{
    vec_fp32* const kept = recording.my_create_vec_fp32(1);
    mat2d_fp32* const used = recording.my_create_mat2d_fp32(10, 10);
    std::fill(used->data[0], used->data[0] + 100, 7.0F);
    recording.my_destroy_mat2d_fp32(used);

    mat2d_fp32* const fresh = recording.my_create_mat2d_fp32(10, 10);

    EXPECT_EQ(std::vector<float>(fresh->data[0], fresh->data[0] + 100), std::vector<float>(100));
    recording.my_destroy_mat2d_fp32(fresh);
    recording.my_destroy_vec_fp32(kept);
}

TEST_F(RecordingSteps, CreateContainersWithoutElementsForSizesThatAreNotPositive)
{
    for (const auto& [rows, cols] : {std::pair{0, 4}, std::pair{4, 0}, std::pair{-1, 4}, std::pair{-2, -3}}) {
        mat2d_fp32* const matrix = recording.my_create_mat2d_fp32(rows, cols);
        ASSERT_NE(matrix, nullptr);
        EXPECT_EQ(matrix->rows, rows);
        EXPECT_EQ(matrix->cols, cols);
        EXPECT_EQ(matrix->data, nullptr);
        recording.my_destroy_mat2d_fp32(matrix);
    }
    for (const int len : {0, -5}) {
        vec_fp32* const vector = recording.my_create_vec_fp32(len);
        ASSERT_NE(vector, nullptr);
        EXPECT_EQ(vector->len, len);
        EXPECT_EQ(vector->data, nullptr);
        recording.my_destroy_vec_fp32(vector);
    }
    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingSteps, CreateNothingAboveTheSizeOfABlock)
{
    EXPECT_EQ(recording.my_create_mat2d_fp32(4097, 1024), nullptr);
    EXPECT_EQ(recording.my_create_mat2d_fp32(2147483647, 2147483647), nullptr);
    EXPECT_EQ(recording.my_create_vec_fp32(4'194'305), nullptr);
    EXPECT_EQ(folder.cacheFiles(), 0);
}

TEST_F(RecordingSteps, CreateNothingWhenTheCacheFails)
{
    ResultTesting::writeFile(folder.path("file"), "no folder");
    KOVDoaResultSerialize without(folder.path("file/cache"));

    EXPECT_EQ(without.my_create_mat2d_fp32(1, 1), nullptr);
    EXPECT_EQ(without.my_create_vec_fp32(1), nullptr);
}

TEST_F(RecordingSteps, IgnoreNullWhenTheyDestroy)
{
    recording.my_destroy_mat2d_fp32(nullptr);
    recording.my_destroy_vec_fp32(nullptr);
    EXPECT_EQ(folder.cacheFiles(), 0);
}

}  // namespace
