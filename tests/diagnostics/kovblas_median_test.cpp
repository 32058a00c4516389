// The median of a map, held to sorting a copy.
#include <KOVDoaHandle/diagnostics/kovblas.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/bits.h"

namespace {

using testsupport::sameBits;

using Values = std::vector<float>;

// Hands `values` over as rows of `cols` cells that lie apart, in descending order of address: only the row
// pointers say where a row is.
float medianOf(const Values& values, int rows, int cols)
{
    const auto width = static_cast<std::size_t>(cols);
    std::vector<Values> storage;
    for (int row = 0; row < rows; ++row) {
        const auto first = values.begin() + static_cast<std::ptrdiff_t>(row) * cols;
        storage.emplace(storage.begin(), first, first + static_cast<std::ptrdiff_t>(width));
    }
    std::vector<float*> pointers;
    for (auto row = storage.rbegin(); row != storage.rend(); ++row) {
        pointers.push_back(row->data());
    }
    return KOVBlas::median2D(pointers.data(), rows, cols);
}

float medianBySorting(Values values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Content
{
    std::string name;
    std::function<float(std::size_t, std::mt19937&)> value;
};

void PrintTo(const Content& content, std::ostream* out)
{
    *out << content.name;
}

float uniform(std::mt19937& random)
{
    return std::uniform_real_distribution<float>(0.0F, 1.0F)(random);
}

const Content contents[] = {
    {"Noise", [](std::size_t, std::mt19937& random) { return uniform(random); }},
    {"NoiseOfBothSigns", [](std::size_t, std::mt19937& random) { return uniform(random) - 0.5F; }},
    {"AllEqual", [](std::size_t, std::mt19937&) { return 0.25F; }},
    {"AllButOneEqual", [](std::size_t i, std::mt19937&) { return i == 5 ? 1e30F : 0.25F; }},
    {"Ascending", [](std::size_t i, std::mt19937&) { return static_cast<float>(i); }},
    {"Descending", [](std::size_t i, std::mt19937&) { return -static_cast<float>(i); }},
    {"SawTooth", [](std::size_t i, std::mt19937&) { return static_cast<float>(i % 16); }},
    {"TwoValues", [](std::size_t i, std::mt19937&) { return i % 2 == 0 ? -1.0F : 1.0F; }},
    {"Infinities",
     [](std::size_t i, std::mt19937& random) {
         const float infinity = std::numeric_limits<float>::infinity();
         return i % 3 == 0 ? infinity : i % 3 == 1 ? -infinity : uniform(random);
     }},
    {"Denormals",
     [](std::size_t i, std::mt19937&) {
         return static_cast<float>(i) * std::numeric_limits<float>::denorm_min() - 5e-43F;
     }},
    {"ClusteredInOneBucket",
     [](std::size_t i, std::mt19937& random) {
         return i == 0 ? -3e38F : i == 1 ? 3e38F : 1.0F + 1e-6F * uniform(random);
     }},
    {"AllMagnitudes",
     [](std::size_t i, std::mt19937& random) {
         const float magnitude = std::exp(180.0F * (uniform(random) - 0.5F));
         return i % 2 == 0 ? magnitude : -magnitude;
     }},
    {"NeighbouringFloats",
     [](std::size_t i, std::mt19937&) {
         return 1.0F + static_cast<float>(i % 700) * std::numeric_limits<float>::epsilon();
     }},
};

struct Size
{
    int rows;
    int cols;
};

const Size sizes[] = {{1, 1},   {1, 2},   {2, 1},     {3, 3},     {1, 96},    {1, 97},   {7, 31},
                      {48, 64}, {64, 48}, {127, 129}, {128, 128}, {128, 129}, {300, 301}};

class MedianOfMap : public ::testing::TestWithParam<Content>
{
};

TEST_P(MedianOfMap, IsTheValueThatSortingWouldGive)
{
    for (const Size& size : sizes) {
        std::mt19937 random(41);
        Values values(static_cast<std::size_t>(size.rows) * static_cast<std::size_t>(size.cols));
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = GetParam().value(i, random);
        }
        ASSERT_TRUE(sameBits(medianBySorting(values), medianOf(values, size.rows, size.cols)))
            << size.rows << " x " << size.cols;
    }
}

INSTANTIATE_TEST_SUITE_P(Contents, MedianOfMap, ::testing::ValuesIn(contents),
                         [](const auto& test) { return test.param.name; });

TEST(KOVBlasMedian, OfAnEvenCountIsTheUpperOfTheTwoMiddleValues)
{
    EXPECT_EQ(medianOf({4.0F, 1.0F, 3.0F, 2.0F}, 2, 2), 3.0F);
}

TEST(KOVBlasMedian, OfAnOddCountIsTheMiddleValue)
{
    EXPECT_EQ(medianOf({9.0F, 1.0F, 5.0F}, 1, 3), 5.0F);
}

TEST(KOVBlasMedian, OfAnySmallCountIsTheValueThatSortingWouldGive)
{
    std::mt19937 random(7);
    for (int count = 1; count <= 200; ++count) {
        Values values(static_cast<std::size_t>(count));
        std::generate(values.begin(), values.end(), [&] { return uniform(random); });
        ASSERT_TRUE(sameBits(medianBySorting(values), medianOf(values, 1, count))) << count;
    }
}

TEST(KOVBlasMedian, OfZerosOfBothSignsIsAZero)
{
    Values values(101);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = i % 2 == 0 ? -0.0F : 0.0F;
    }

    EXPECT_EQ(medianOf(values, 1, 101), 0.0F);
}

TEST(KOVBlasMedian, OrdersNaNsBehindEverythingElse)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();

    EXPECT_EQ(medianOf({nan, 1.0F, nan, 2.0F, 3.0F}, 1, 5), 3.0F);
    EXPECT_EQ(medianOf({-nan, 1.0F, -nan, 2.0F, 3.0F}, 1, 5), 1.0F);
}

TEST(KOVBlasMedian, OfNothingButNaNsIsNaN)
{
    const Values values(3072, std::numeric_limits<float>::quiet_NaN());

    EXPECT_TRUE(std::isnan(medianOf(values, 48, 64)));
}

TEST(KOVBlasMedian, OfNoValuesIsNaN)
{
    EXPECT_TRUE(std::isnan(KOVBlas::median2D(nullptr, 0, 64)));
    EXPECT_TRUE(std::isnan(KOVBlas::median2D(nullptr, 48, 0)));
    EXPECT_TRUE(std::isnan(KOVBlas::median2D(nullptr, -1, -1)));
}

TEST(KOVBlasMedian, LeavesTheMapAsItIs)
{
    Values values(3072);
    std::iota(values.rbegin(), values.rend(), 0.0F);
    const Values before = values;
    std::vector<float*> rows;
    for (std::size_t row = 0; row < 48; ++row) {
        rows.push_back(values.data() + row * 64);
    }

    KOVBlas::median2D(rows.data(), 48, 64);

    EXPECT_EQ(values, before);
}

}  // namespace
