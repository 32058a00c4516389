// Every accessor of the containers: creates through the plain exports, then compares with the record behind the handle.
#include <KOVDoaHandle/api/containers.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

constexpr int rows = 5;
constexpr int cols = 7;

// Row by row, counting from 1.
template <typename Element>
Element numbered(int row, int col)
{
    return static_cast<Element>(row * cols + col + 1);
}

TEST(VecFp32Accessors, ReportTheLengthGivenAtCreation)
{
    for (const int length : {0, 1, 513}) {
        vec_fp32* vector = createVecFp32(length);

        EXPECT_EQ(getVecFp32Len(vector), length);

        destroyVecFp32(vector);
    }
}

TEST(VecFp32Accessors, SetAndGetEachElementOfTheBuffer)
{
    vec_fp32* vector = createVecFp32(9);

    for (int i = 0; i < 9; ++i) {
        setVecFp32Value(vector, i, static_cast<float>(i) + 0.5F);
    }

    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(getVecFp32Value(vector, i), static_cast<float>(i) + 0.5F);
        EXPECT_EQ(getVecFp32Data(vector)[i], static_cast<float>(i) + 0.5F);
    }
    EXPECT_EQ(getVecFp32Data(vector), vector->data);
    destroyVecFp32(vector);
}

// The accessors of one kind of two-dimensional record.
template <typename RecordType, typename ElementType, RecordType* (*createFunction)(int, int),
          void (*destroyFunction)(RecordType*), int (*rowsFunction)(RecordType*),
          int (*colsFunction)(RecordType*), auto dataFunction,
          ElementType (*getFunction)(RecordType*, int, int),
          void (*setFunction)(RecordType*, int, int, ElementType)>
struct Family
{
    using Element = ElementType;
    static RecordType* create() { return createFunction(rows, cols); }
    static void destroy(RecordType* record) { destroyFunction(record); }
    static int rowCount(RecordType* record) { return rowsFunction(record); }
    static int colCount(RecordType* record) { return colsFunction(record); }
    static ElementType* data(RecordType* record) { return dataFunction(record); }
    static ElementType* data(RecordType* record, int row) { return dataFunction(record, row); }
    static ElementType get(RecordType* record, int row, int col) { return getFunction(record, row, col); }
    static void set(RecordType* record, int row, int col, ElementType value)
    {
        setFunction(record, row, col, value);
    }
};

using Mat2dFp32 = Family<mat2d_fp32, float, createMat2dFp32, destroyMat2dFp32, getMat2dFp32Rows,
                         getMat2dFp32Cols, getMat2dFp32Data, getMat2dFp32Value, setMat2dFp32Value>;
using Mat2dInt32 = Family<mat2d_int32, std::int32_t, createMat2dInt32, destroyMat2dInt32, getMat2dInt32Rows,
                          getMat2dInt32Cols, getMat2dInt32Data, getMat2dInt32Value, setMat2dInt32Value>;
using Mat2dInt16 = Family<mat2d_short, std::int16_t, createMat2dInt16, destroyMat2dInt16, getMat2dInt16Rows,
                          getMat2dInt16Cols, getMat2dInt16Data, getMat2dInt16Value, setMat2dInt16Value>;
using Mat1dFp32 = Family<mat1d_fp32, float, createMat1dFp32, destroyMat1dFp32, getMat1dFp32Rows,
                         getMat1dFp32Cols, getMat1dFp32Data, getMat1dFp32Value, setMat1dFp32Value>;
using Mat1dUint8 = Family<mat1d_uint8, std::uint8_t, createMat1dUint8, destroyMat1dUint8, getMat1dUint8Rows,
                          getMat1dUint8Cols, getMat1dUint8Data, getMat1dUint8Value, setMat1dUint8Value>;
using Mat1dInt16 = Family<mat1d_short, std::int16_t, createMat1dInt16, destroyMat1dInt16, getMat1dInt16Rows,
                          getMat1dInt16Cols, getMat1dInt16Data, getMat1dInt16Value, setMat1dInt16Value>;

template <typename AnyFamily>
class MatrixAccessors : public ::testing::Test
{
};
using MatrixAccessorsFamilies =
    ::testing::Types<Mat2dFp32, Mat2dInt32, Mat2dInt16, Mat1dFp32, Mat1dUint8, Mat1dInt16>;
TYPED_TEST_SUITE(MatrixAccessors, MatrixAccessorsFamilies);

TYPED_TEST(MatrixAccessors, ReportTheCountsGivenAtCreation)
{
    auto* record = TypeParam::create();

    EXPECT_EQ(TypeParam::rowCount(record), rows);
    EXPECT_EQ(TypeParam::colCount(record), cols);

    TypeParam::destroy(record);
}

TYPED_TEST(MatrixAccessors, GetEachElementThatWasSet)
{
    auto* record = TypeParam::create();

    for (int i = 0; i < rows * cols; ++i) {
        TypeParam::set(record, i / cols, i % cols, numbered<typename TypeParam::Element>(i / cols, i % cols));
    }

    for (int i = 0; i < rows * cols; ++i) {
        EXPECT_EQ(TypeParam::get(record, i / cols, i % cols),
                  numbered<typename TypeParam::Element>(i / cols, i % cols));
    }
    TypeParam::destroy(record);
}

template <typename AnyFamily>
class RowPointerAccessors : public ::testing::Test
{
};
using RowPointerAccessorsFamilies = ::testing::Types<Mat2dFp32, Mat2dInt32, Mat2dInt16>;
TYPED_TEST_SUITE(RowPointerAccessors, RowPointerAccessorsFamilies);

TYPED_TEST(RowPointerAccessors, ReturnOneRowAndWritingItChangesExactlyThatRow)
{
    auto* record = TypeParam::create();

    std::fill_n(TypeParam::data(record, 2), cols, typename TypeParam::Element{9});

    EXPECT_EQ(TypeParam::data(record, 2), record->data[2]);
    for (int i = 0; i < rows * cols; ++i) {
        EXPECT_EQ(TypeParam::get(record, i / cols, i % cols), i / cols == 2 ? 9 : 0) << i;
    }
    TypeParam::destroy(record);
}

TYPED_TEST(RowPointerAccessors, ReachRowsThroughTheRowPointersOnly)
{
    auto* record = TypeParam::create();
    TypeParam::set(record, 1, 3, 7);

    std::swap(record->data[1], record->data[4]);

    EXPECT_EQ(TypeParam::get(record, 4, 3), 7);
    EXPECT_EQ(TypeParam::get(record, 1, 3), 0);
    TypeParam::destroy(record);
}

template <typename AnyFamily>
class BufferAccessors : public ::testing::Test
{
};
using BufferAccessorsFamilies = ::testing::Types<Mat1dFp32, Mat1dUint8, Mat1dInt16>;
TYPED_TEST_SUITE(BufferAccessors, BufferAccessorsFamilies);

TYPED_TEST(BufferAccessors, ReturnTheWholeBufferRowAfterRow)
{
    auto* record = TypeParam::create();

    for (int i = 0; i < rows * cols; ++i) {
        TypeParam::data(record)[i] = numbered<typename TypeParam::Element>(i / cols, i % cols);
    }

    EXPECT_EQ(TypeParam::data(record), record->data);
    for (int i = 0; i < rows * cols; ++i) {
        EXPECT_EQ(TypeParam::get(record, i / cols, i % cols),
                  numbered<typename TypeParam::Element>(i / cols, i % cols));
    }
    TypeParam::destroy(record);
}

TEST(Mat1dUint8Accessors, ReadTheChannelsOfAnInterleavedPicture)
{
    const int height = 4;
    const int width = 6;
    mat1d_uint8* image = createMat1dUint8(height, width * 4);
    const int x = 5;
    const int y = 2;
    for (int channel = 0; channel < 4; ++channel) {
        getMat1dUint8Data(image)[(y * width + x) * 4 + channel] = static_cast<std::uint8_t>(200 + channel);
    }

    for (int channel = 0; channel < 4; ++channel) {
        EXPECT_EQ(getMat1dUint8Value(image, y, x * 4 + channel), 200 + channel);
    }
    destroyMat1dUint8(image);
}

TEST(MatrixValues, KeepTheirSignAndRange)
{
    mat1d_short* shorts = createMat1dInt16(1, 1);
    mat2d_int32* integers = createMat2dInt32(1, 1);
    mat1d_uint8* bytes = createMat1dUint8(1, 1);

    setMat1dInt16Value(shorts, 0, 0, INT16_MIN);
    setMat2dInt32Value(integers, 0, 0, INT32_MIN);
    setMat1dUint8Value(bytes, 0, 0, UINT8_MAX);

    EXPECT_EQ(getMat1dInt16Value(shorts, 0, 0), INT16_MIN);
    EXPECT_EQ(getMat2dInt32Value(integers, 0, 0), INT32_MIN);
    EXPECT_EQ(getMat1dUint8Value(bytes, 0, 0), UINT8_MAX);
    destroyMat1dInt16(shorts);
    destroyMat2dInt32(integers);
    destroyMat1dUint8(bytes);
}

}  // namespace
