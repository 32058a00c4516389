// The numeric records: sizes, storage and ownership.
#include <KOVDoaHandle/foundation/engine/containers.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

// What one kind of record needs to be tested like the others.
template <typename RecordType, typename ElementType, RecordType* (*createFunction)(int, int),
          void (*destroyFunction)(RecordType*)>
struct Kind
{
    using Record = RecordType;
    using Element = ElementType;
    static Record* create(int rows, int cols) { return createFunction(rows, cols); }
    static void destroy(Record* record) { destroyFunction(record); }
};

using Mat1dFp32 = Kind<mat1d_fp32, float, create_mat1d_fp32, destroy_mat1d_fp32>;
using Mat1dUint8 = Kind<mat1d_uint8, std::uint8_t, create_mat1d_uint8, destroy_mat1d_uint8>;
using Mat1dShort = Kind<mat1d_short, std::int16_t, create_mat1d_short, destroy_mat1d_short>;
using Mat2dFp32 = Kind<mat2d_fp32, float, create_mat2d_fp32, destroy_mat2d_fp32>;
using Mat2dShort = Kind<mat2d_short, std::int16_t, create_mat2d_short, destroy_mat2d_short>;
using Mat2dInt32 = Kind<mat2d_int32, std::int32_t, create_mat2d_int32, destroy_mat2d_int32>;

template <typename KindOfMatrix>
class Matrices : public ::testing::Test
{
protected:
    using Record = typename KindOfMatrix::Record;
    using Element = typename KindOfMatrix::Element;

    static constexpr bool behindRowPointers =
        std::is_pointer_v<std::remove_pointer_t<decltype(Record::data)>>;

    static Element* row(const Record* record, int index)
    {
        if constexpr (behindRowPointers) {
            return record->data[index];
        } else {
            return record->data + static_cast<std::ptrdiff_t>(index) * record->cols;
        }
    }
};

using MatrixKinds = ::testing::Types<Mat1dFp32, Mat1dUint8, Mat1dShort, Mat2dFp32, Mat2dShort, Mat2dInt32>;
TYPED_TEST_SUITE(Matrices, MatrixKinds);

TYPED_TEST(Matrices, KeepTheCountsTheyWereCreatedWith)
{
    auto* record = TypeParam::create(7, 31);

    EXPECT_EQ(record->rows, 7);
    EXPECT_EQ(record->cols, 31);

    TypeParam::destroy(record);
}

TYPED_TEST(Matrices, StartWithZerosOnly)
{
    auto* record = TypeParam::create(127, 33);

    for (int row = 0; row < 127; ++row) {
        const auto* elements = this->row(record, row);
        ASSERT_TRUE(std::all_of(elements, elements + 33, [](auto value) { return value == 0; })) << row;
    }

    TypeParam::destroy(record);
}

TYPED_TEST(Matrices, HoldEveryElementApart)
{
    auto* record = TypeParam::create(9, 13);

    for (int i = 0; i < 9 * 13; ++i) {
        this->row(record, i / 13)[i % 13] = static_cast<typename TypeParam::Element>(i + 1);
    }

    for (int i = 0; i < 9 * 13; ++i) {
        ASSERT_EQ(this->row(record, i / 13)[i % 13], static_cast<typename TypeParam::Element>(i + 1)) << i;
    }
    TypeParam::destroy(record);
}

TYPED_TEST(Matrices, StartOnACacheLine)
{
    auto* record = TypeParam::create(3, 5);

    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(this->row(record, 0)) % 64, 0U);

    TypeParam::destroy(record);
}

TYPED_TEST(Matrices, OfASizeThatIsNotPositiveHaveNoElements)
{
    for (const auto& [rows, cols] : std::vector<std::pair<int, int>>{{0, 0}, {0, 5}, {-1, 5}, {-2, -3}}) {
        auto* record = TypeParam::create(rows, cols);

        EXPECT_EQ(record->rows, rows);
        EXPECT_EQ(record->cols, cols);
        EXPECT_EQ(record->data, nullptr);

        TypeParam::destroy(record);
    }
}

TYPED_TEST(Matrices, WithRowsButNoColumnsCanBeDestroyed)
{
    for (const int cols : {0, -1}) {
        auto* record = TypeParam::create(4, cols);

        EXPECT_EQ(record->rows, 4);
        EXPECT_EQ(record->cols, cols);

        TypeParam::destroy(record);
    }
}

TYPED_TEST(Matrices, IgnoreTheDestructionOfANullPointer)
{
    TypeParam::destroy(nullptr);
}

TEST(VecFp32, KeepsTheLengthItWasCreatedWithAndStartsWithZeros)
{
    vec_fp32* vector = create_vec_fp32(513);

    EXPECT_EQ(vector->len, 513);
    EXPECT_TRUE(std::all_of(vector->data, vector->data + 513, [](float value) { return value == 0.0F; }));

    destroy_vec_fp32(vector);
}

TEST(VecFp32, OfALengthThatIsNotPositiveHasNoElements)
{
    for (const int length : {0, -1}) {
        vec_fp32* vector = create_vec_fp32(length);

        EXPECT_EQ(vector->len, length);
        EXPECT_EQ(vector->data, nullptr);

        destroy_vec_fp32(vector);
    }
}

TEST(VecFp32, IgnoresTheDestructionOfANullPointer)
{
    destroy_vec_fp32(nullptr);
}

TEST(Mat1dUint8, HoldsAnInterleavedPictureInWidthTimesChannelsColumns)
{
    const int height = 3;
    const int width = 5;
    mat1d_uint8* image = create_mat1d_uint8(height, width * 4);

    image->data[(2 * width + 1) * 4 + 3] = 200;

    EXPECT_EQ(image->data[2 * image->cols + 1 * 4 + 3], 200);
    destroy_mat1d_uint8(image);
}

// The layouts are read by callers that were compiled elsewhere.
TEST(Records, BeginWithTheirCountsAndEndWithTheirPointer)
{
    EXPECT_EQ(offsetof(vec_fp32, len), 0U);
    EXPECT_EQ(offsetof(vec_fp32, data), 8U);
    EXPECT_EQ(offsetof(mat1d_uint8, rows), 0U);
    EXPECT_EQ(offsetof(mat1d_uint8, cols), 4U);
    EXPECT_EQ(offsetof(mat1d_uint8, data), 8U);
    EXPECT_EQ(offsetof(mat2d_fp32, rows), 0U);
    EXPECT_EQ(offsetof(mat2d_fp32, cols), 4U);
    EXPECT_EQ(offsetof(mat2d_fp32, data), 8U);
    EXPECT_EQ(sizeof(mat2d_fp32), 16U);
    EXPECT_EQ(sizeof(fpoint2d), 12U);
    EXPECT_EQ(offsetof(fpoint2d, row), 4U);
    EXPECT_EQ(offsetof(fpoint2d, col), 8U);
}

}  // namespace
