// Mixing, held bit for bit to the formula written out.
#include <KOVDoaHandle/KOVAudio/kovmixsources.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <type_traits>
#include <vector>

#include "tests/support/bits.h"

namespace {

using testsupport::sameBits;

template <typename Sample>
using Rows = std::vector<std::vector<Sample>>;

struct Destroy
{
    void operator()(mat2d_fp32* matrix) const { destroy_mat2d_fp32(matrix); }
    void operator()(mat2d_short* matrix) const { destroy_mat2d_short(matrix); }
    void operator()(mat1d_fp32* matrix) const { destroy_mat1d_fp32(matrix); }
    void operator()(mat1d_short* matrix) const { destroy_mat1d_short(matrix); }
};

template <typename Sample>
auto makeInput(const Rows<Sample>& rows)
{
    const int rowCount = static_cast<int>(rows.size());
    const int columnCount = rows.empty() ? 0 : static_cast<int>(rows.front().size());
    auto* matrix = [&] {
        if constexpr (std::is_same_v<Sample, float>) {
            return create_mat2d_fp32(rowCount, columnCount);
        } else {
            return create_mat2d_short(rowCount, columnCount);
        }
    }();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        std::copy(rows[row].begin(), rows[row].end(), matrix->data[row]);
    }
    return std::unique_ptr<std::remove_pointer_t<decltype(matrix)>, Destroy>(matrix);
}

// Mixes into an output of `columns` elements that held `before`.
template <typename Out, typename In>
std::vector<Out> mixed(const Rows<In>& rows, int columns, Out before = Out{77})
{
    const auto input = makeInput(rows);
    auto* out = [&] {
        if constexpr (std::is_same_v<Out, float>) {
            return create_mat1d_fp32(1, columns);
        } else {
            return create_mat1d_short(1, columns);
        }
    }();
    const std::unique_ptr<std::remove_pointer_t<decltype(out)>, Destroy> output(out);
    std::fill_n(out->data, std::max(columns, 0), before);
    mixSources(input.get(), out);
    return {out->data, out->data + std::max(columns, 0)};
}

template <typename Out, typename In>
std::vector<Out> mixed(const Rows<In>& rows)
{
    return mixed<Out>(rows, static_cast<int>(rows.front().size()));
}

namespace reference {

constexpr float step = 3.051851e-5F;

float toFloat(float sample)
{
    return sample;
}

float toFloat(std::int16_t sample)
{
    const auto asFloat = static_cast<float>(sample);
    return asFloat * step;
}

// For equally many columns in and out, one statement a rounding.
template <typename In>
std::vector<float> normalisedSum(const Rows<In>& rows)
{
    std::vector<float> sum(rows.front().size(), 0.0F);
    for (const auto& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            const float sample = toFloat(row[column]);
            sum[column] = sum[column] + sample;
        }
    }
    float largest = sum[0];
    for (const float value : sum) {
        largest = value > largest ? value : largest;
    }
    if (largest > 1.0F) {
        for (float& value : sum) {
            value = value / largest;
        }
    }
    return sum;
}

// The bits are taken from 64-bit integers, which hold every value of these tests.
std::int16_t lowSixteenBits(float value)
{
    const float steps = value / step;
    const auto wide = static_cast<std::int64_t>(steps);
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(static_cast<std::uint64_t>(wide)));
}

}  // namespace reference

template <typename In>
Rows<In> randomRows(std::size_t rowCount, std::size_t columnCount, float level, unsigned seed)
{
    std::mt19937 random(seed);
    std::normal_distribution<float> normal(0.0F, level);
    Rows<In> rows(rowCount, std::vector<In>(columnCount));
    for (auto& row : rows) {
        for (auto& sample : row) {
            if constexpr (std::is_same_v<In, float>) {
                sample = normal(random);
            } else {
                sample = static_cast<In>(std::clamp(normal(random) * 32767.0F, -32768.0F, 32767.0F));
            }
        }
    }
    return rows;
}

template <typename In>
class Mixing : public ::testing::Test
{
};

using SampleTypes = ::testing::Types<float, std::int16_t>;
TYPED_TEST_SUITE(Mixing, SampleTypes);

// Around the 4096 columns that a 16-bit mix works on at a time, and quiet and loud.
TYPED_TEST(Mixing, IntoFloatsGivesTheBitsOfTheFormula)
{
    for (const std::size_t columns : {1U, 2U, 3U, 7U, 1024U, 4095U, 4096U, 4097U, 10000U}) {
        for (const float level : {0.02F, 0.9F}) {
            const auto rows = randomRows<TypeParam>(5, columns, level, 3);
            const auto expected = reference::normalisedSum(rows);

            const auto found = mixed<float>(rows);

            for (std::size_t i = 0; i < columns; ++i) {
                ASSERT_TRUE(sameBits(expected[i], found[i])) << i << " of " << columns << ", level " << level;
            }
        }
    }
}

TYPED_TEST(Mixing, IntoSixteenBitsGivesTheBitsOfTheFormula)
{
    for (const std::size_t columns : {1U, 2U, 3U, 7U, 1024U, 4095U, 4096U, 4097U, 8192U, 8193U, 10000U}) {
        for (const float level : {0.02F, 0.9F}) {
            const auto rows = randomRows<TypeParam>(5, columns, level, 4);
            const auto expected = reference::normalisedSum(rows);

            const auto found = mixed<std::int16_t>(rows);

            for (std::size_t i = 0; i < columns; ++i) {
                ASSERT_EQ(found[i], reference::lowSixteenBits(expected[i])) << i << " of " << columns;
            }
        }
    }
}

// The largest value decides for the whole output, wherever it stands.
TYPED_TEST(Mixing, IntoSixteenBitsFindsThePeakInEveryPartOfALongOutput)
{
    for (const std::size_t peak : {0U, 4095U, 4096U, 8191U, 8192U, 9999U}) {
        auto rows = randomRows<TypeParam>(3, 10000, 0.01F, 6);
        for (auto& row : rows) {
            row[peak] = std::is_same_v<TypeParam, float> ? TypeParam(1) : TypeParam(32767);
        }
        const auto expected = reference::normalisedSum(rows);

        const auto found = mixed<std::int16_t>(rows);

        for (std::size_t i = 0; i < found.size(); ++i) {
            ASSERT_EQ(found[i], reference::lowSixteenBits(expected[i])) << i << ", peak at " << peak;
        }
    }
}

TYPED_TEST(Mixing, NoRowsGiveSilence)
{
    const Rows<TypeParam> none;

    EXPECT_EQ(mixed<float>(none, 3), (std::vector<float>{0.0F, 0.0F, 0.0F}));
    EXPECT_EQ(mixed<std::int16_t>(none, 3), (std::vector<std::int16_t>{77, 77, 77}));
}

TYPED_TEST(Mixing, NegativeCountsOfTheInputGiveSilence)
{
    auto input = makeInput(Rows<TypeParam>{{TypeParam(1), TypeParam(1)}});
    const std::unique_ptr<mat1d_fp32, Destroy> output(create_mat1d_fp32(1, 2));

    for (const int count : {-1, std::numeric_limits<int>::min()}) {
        std::fill_n(output->data, 2, 9.0F);
        input->rows = count;
        mixSources(input.get(), output.get());
        EXPECT_EQ(output->data[1], 0.0F);
        input->rows = 1;
        output->data[1] = 9.0F;
        input->cols = count;
        mixSources(input.get(), output.get());
        EXPECT_EQ(output->data[1], 0.0F);
        input->cols = 2;
    }
}

TYPED_TEST(Mixing, AnOutputWithoutColumnsIsLeftAlone)
{
    const Rows<TypeParam> rows = {{TypeParam(1), TypeParam(1)}};

    EXPECT_TRUE(mixed<float>(rows, 0).empty());
    EXPECT_TRUE(mixed<std::int16_t>(rows, 0).empty());
    EXPECT_TRUE(mixed<float>(rows, -4).empty());
    EXPECT_TRUE(mixed<std::int16_t>(rows, -4).empty());
}

TYPED_TEST(Mixing, ColumnsBeyondTheOutputAreLeftOut)
{
    auto rows = randomRows<TypeParam>(2, 9, 0.1F, 8);
    const auto all = mixed<std::int16_t>(rows, 9);

    const auto shorter = mixed<std::int16_t>(rows, 5);

    EXPECT_EQ(shorter, std::vector<std::int16_t>(all.begin(), all.begin() + 5));
    EXPECT_EQ(mixed<float>(rows, 5).size(), 5U);
}

TYPED_TEST(Mixing, ColumnsBeyondTheInputBecomeZeroInFloatsAndAreLeftAloneInSixteenBits)
{
    const auto rows = randomRows<TypeParam>(2, 3, 0.1F, 9);

    const auto floats = mixed<float>(rows, 5);
    const auto integers = mixed<std::int16_t>(rows, 5000);

    EXPECT_EQ(floats[3], 0.0F);
    EXPECT_EQ(floats[4], 0.0F);
    EXPECT_NE(integers[2], 77);
    for (std::size_t i = 3; i < integers.size(); ++i) {
        ASSERT_EQ(integers[i], 77) << i;
    }
}

TEST(MixSources, SumsOfAtMostOneStayAsTheyAre)
{
    const auto found = mixed<float>(Rows<float>{{0.5F, 0.2F}, {0.4F, 0.1F}});

    EXPECT_TRUE(sameBits(0.5F + 0.4F, found[0]));
    EXPECT_TRUE(sameBits(0.2F + 0.1F, found[1]));
    EXPECT_NEAR(found[0], 0.9, 1e-6);
    EXPECT_NEAR(found[1], 0.3, 1e-6);
}

TEST(MixSources, APeakAboveOneNormalisesEverySum)
{
    const auto found = mixed<float>(Rows<float>{{0.8F, -0.9F}, {0.8F, -0.9F}});

    EXPECT_EQ(found[0], 1.0F);
    EXPECT_NEAR(found[1], -1.125, 1e-6);
}

TEST(MixSources, ADipBelowMinusOneNormalisesNothing)
{
    EXPECT_EQ(mixed<float>(Rows<float>{{-0.75F, 0.25F}, {-0.75F, 0.25F}}), (std::vector<float>{-1.5F, 0.5F}));
}

TEST(MixSources, TwoFullRowsOfSixteenBitsGiveFullScale)
{
    const auto found = mixed<std::int16_t>(Rows<std::int16_t>{{32767, 32767}, {32767, 32767}});

    EXPECT_NEAR(found[0], 32767, 1);
    EXPECT_EQ(found[0], found[1]);
}

TEST(MixSources, TwoMostNegativeRowsOfSixteenBitsWrapAround)
{
    const auto found = mixed<std::int16_t>(Rows<std::int16_t>{{-32767}, {-32767}});

    EXPECT_GE(found[0], 0);
    EXPECT_LE(found[0], 4);
}

TEST(MixSources, SixteenBitsAreThirtyTwoThousandSevenHundredSixtySevenths)
{
    const auto found = mixed<float>(Rows<std::int16_t>{{16384, -32768, 1}});

    EXPECT_NEAR(found[0], 16384.0 / 32767.0, 1e-6);
    EXPECT_NEAR(found[1], -32768.0 / 32767.0, 1e-6);
    EXPECT_TRUE(sameBits(3.051851e-5F, found[2]));
}

TEST(MixSources, SixteenBitOutputIsTruncatedTowardsZero)
{
    constexpr float step = 3.051851e-5F;

    const auto found =
        mixed<std::int16_t>(Rows<float>{{2.9F * step, -2.9F * step, 0.9F * step, -0.9F * step}});

    EXPECT_EQ(found, (std::vector<std::int16_t>{2, -2, 0, 0}));
}

TEST(MixSources, WhatNoIntegerHoldsBecomesZeroInSixteenBits)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const float notANumber = std::numeric_limits<float>::quiet_NaN();

    const auto found = mixed<std::int16_t>(Rows<float>{{0.5F, notANumber, -infinity, -1e9F, -65540.0F}});

    EXPECT_NE(found[0], 0);
    EXPECT_EQ(std::vector<std::int16_t>(found.begin() + 1, found.end()),
              (std::vector<std::int16_t>{0, 0, 0, 0}));
}

TEST(MixSources, TheOutputsOldContentDoesNotCount)
{
    EXPECT_EQ(mixed<float>(Rows<float>{{0.5F, 0.25F}}, 2, 1e30F), (std::vector<float>{0.5F, 0.25F}));
}

}  // namespace
