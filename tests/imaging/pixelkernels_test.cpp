#include <KOVDoaHandle/imaging/bilinear_p.h>
#include <KOVDoaHandle/imaging/pixelkernels_p.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/bits.h"

using KOVPrivate::IndexRule;
using KOVPrivate::PixelKernels;
using testsupport::sameBits;

namespace {

constexpr std::array awkwardCounts{0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 33, 63, 64, 65, 639, 640, 1023};

// Ordinary levels with every special value mixed in.
std::vector<float> makeLevels(std::size_t count, unsigned seed)
{
    constexpr float inf = std::numeric_limits<float>::infinity();
    constexpr std::array special{0.0F,   -0.0F,   inf,    -inf,   std::numeric_limits<float>::quiet_NaN(),
                                 1e-45F, -1e-45F, 3e38F,  -3e38F, 0.49999997F,
                                 0.5F,   1.5F,    264.5F, 265.0F, 265.00003F,
                                 1e-38F, 443.0F,  2.5F,   1.0F,   std::numeric_limits<float>::denorm_min()};
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-100.0F, 500.0F);
    std::vector<float> levels(count);
    for (float& value : levels) {
        value = random() % 4 == 0 ? special[random() % special.size()] : level(random);
    }
    return levels;
}

// The rule in words: nothing at or below the floor, otherwise rounded halves away from zero, never above the
// top.
int plainIndex(float level, IndexRule rule)
{
    if (!(level > rule.floor)) {
        return 0;
    }
    const float position = (level - rule.floor) * rule.scale;
    return 1 + static_cast<int>(position < rule.top ? std::round(position) : rule.top);
}

class PixelKernelVariant : public ::testing::TestWithParam<PixelKernels>
{
protected:
    const PixelKernels& kernels = GetParam();
};

}  // namespace

TEST_P(PixelKernelVariant, IndexesLevelsLikeThePlainRule)
{
    const float inf = std::numeric_limits<float>::infinity();
    const std::array rules{IndexRule{0.0F, 1.0F, 265.0F},         IndexRule{-20.0F, 0.37F, 443.0F},
                           IndexRule{3.0F, inf, 245.0F},          IndexRule{-inf, 0.0F, 265.0F},
                           IndexRule{0.0F, 0.0F, 265.0F},         IndexRule{1e-45F, 1e38F, 265.0F},
                           IndexRule{std::nanf(""), 1.0F, 265.0F}};
    for (const int count : awkwardCounts) {
        const std::vector<float> levels = makeLevels(static_cast<std::size_t>(count), 3U);
        for (const IndexRule rule : rules) {
            std::vector<std::int32_t> indices(levels.size());
            kernels.indexLevels(levels.data(), rule, indices.data(), count);
            for (std::size_t i = 0; i < levels.size(); ++i) {
                ASSERT_EQ(indices[i], plainIndex(levels[i], rule)) << levels[i] << " above " << rule.floor;
            }
        }
    }
}

TEST_P(PixelKernelVariant, RoundsEveryHalfAwayFromZero)
{
    const IndexRule rule{0.0F, 1.0F, 443.0F};
    std::vector<float> levels;
    for (int whole = 0; whole < 443; ++whole) {
        const float half = static_cast<float>(whole) + 0.5F;
        levels.insert(levels.end(), {std::nextafter(half, 0.0F), half, std::nextafter(half, 1e9F)});
    }
    std::vector<std::int32_t> indices(levels.size());

    kernels.indexLevels(levels.data(), rule, indices.data(), static_cast<int>(levels.size()));

    for (std::size_t i = 0; i < levels.size(); ++i) {
        ASSERT_EQ(indices[i], 1 + static_cast<int>(std::round(levels[i]))) << std::hexfloat << levels[i];
    }
}

TEST_P(PixelKernelVariant, RoundsEveryThousandthFloatBelowTheTopLikeTheStandardLibrary)
{
    const IndexRule rule{0.0F, 1.0F, 443.0F};
    std::vector<float> levels;
    for (std::uint32_t bits = 1; bits <= std::bit_cast<std::uint32_t>(443.0F); bits += 997) {
        levels.push_back(std::bit_cast<float>(bits));
    }
    std::vector<std::int32_t> indices(levels.size());

    kernels.indexLevels(levels.data(), rule, indices.data(), static_cast<int>(levels.size()));

    for (std::size_t i = 0; i < levels.size(); ++i) {
        ASSERT_EQ(indices[i], 1 + static_cast<int>(std::round(levels[i]))) << std::hexfloat << levels[i];
    }
}

TEST_P(PixelKernelVariant, BlendsRowsWithoutFusing)
{
    for (const int count : awkwardCounts) {
        const std::vector<float> upper = makeLevels(static_cast<std::size_t>(count), 5U);
        const std::vector<float> lower = makeLevels(static_cast<std::size_t>(count), 6U);
        std::vector<float> blended(upper.size());
        std::vector<std::int32_t> indices(upper.size());
        const float upperWeight = 0.7F;
        const float lowerWeight = 0.3F;
        const IndexRule rule{1.0F, 0.9F, 265.0F};

        kernels.blendRows(upper.data(), lower.data(), upperWeight, lowerWeight, blended.data(), count);
        kernels.indexBlendedRows(upper.data(), lower.data(), upperWeight, lowerWeight, rule, indices.data(),
                                 count);

        for (std::size_t i = 0; i < upper.size(); ++i) {
            const volatile float above =
                upper[i] * upperWeight;  // volatile: two roundings, whatever the flags
            const volatile float below = lower[i] * lowerWeight;
            const float expected = above + below;
            if (!std::isnan(expected)) {
                ASSERT_TRUE(sameBits(expected, blended[i]));
            }
            ASSERT_EQ(std::isnan(expected), std::isnan(blended[i]));
            ASSERT_EQ(indices[i], plainIndex(expected, rule));
        }
    }
}

TEST_P(PixelKernelVariant, InterpolatesARowWithoutFusing)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> value(-3.0F, 3.0F);
    std::vector<float> source(50);
    for (float& v : source) {
        v = value(random);
    }
    for (const int step : {0, 1}) {
        for (const int count : awkwardCounts) {
            const auto size = static_cast<std::size_t>(count);
            std::vector<int> first(size);
            std::vector<float> lower(size), upper(size), found(size);
            for (std::size_t i = 0; i < size; ++i) {
                first[i] = static_cast<int>(random() % 49);
                lower[i] = value(random);
                upper[i] = value(random);
            }

            kernels.interpolateRow(source.data(), first.data(), step, lower.data(), upper.data(),
                                   found.data(), count);

            for (std::size_t i = 0; i < size; ++i) {
                const auto at = static_cast<std::size_t>(first[i]);
                const volatile float left = source[at] * lower[i];
                const volatile float right = source[at + static_cast<std::size_t>(step)] * upper[i];
                ASSERT_TRUE(sameBits(left + right, found[i]));
            }
        }
    }
}

// As the imager asks: ascending, to either side of what a vector of cells can serve, up to the source's last cell.
TEST_P(PixelKernelVariant, InterpolatesARowOfAnySizeToAnyOther)
{
    std::mt19937 random(8);
    std::uniform_real_distribution<float> value(-3.0F, 3.0F);
    for (const int from : {1, 2, 7, 8, 9, 10, 16, 64, 333}) {
        std::vector<float> source(static_cast<std::size_t>(from));
        for (float& v : source) {
            v = value(random);
        }
        for (const int to : {1, 5, 8, 9, 31, 64, 65, 320, 1283}) {
            const KOVPrivate::BilinearAxis axis(from, to);
            std::vector<float> found(static_cast<std::size_t>(to));

            kernels.interpolateRow(source.data(), axis.first.data(), axis.step, axis.lower.data(),
                                   axis.upper.data(), found.data(), to);

            for (std::size_t i = 0; i < found.size(); ++i) {
                const auto at = static_cast<std::size_t>(axis.first[i]);
                const volatile float left = source[at] * axis.lower[i];
                const volatile float right = source[at + static_cast<std::size_t>(axis.step)] * axis.upper[i];
                ASSERT_TRUE(sameBits(left + right, found[i])) << from << " to " << to << " at " << i;
            }
        }
    }
}

TEST_P(PixelKernelVariant, PacksPixelsAndTouchesNoByteBehindThem)
{
    std::vector<std::uint32_t> table;
    for (std::uint8_t i = 0; i < 200; ++i) {
        const std::uint8_t bytes[4] = {i, static_cast<std::uint8_t>(i + 50),
                                       static_cast<std::uint8_t>(255 - i), 77};
        std::memcpy(&table.emplace_back(), bytes, 4);
    }
    for (const int count : awkwardCounts) {
        std::vector<std::int32_t> indices(static_cast<std::size_t>(count));
        std::mt19937 random(9);
        for (auto& index : indices) {
            index = static_cast<std::int32_t>(random() % 200);
        }
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(count) * 3 + 8, 0xEE);

        kernels.packPixels(indices.data(), table.data(), pixels.data(), count);

        for (std::size_t i = 0; i < indices.size(); ++i) {
            ASSERT_EQ(pixels[3 * i], indices[i]);
            ASSERT_EQ(pixels[3 * i + 1], indices[i] + 50);
            ASSERT_EQ(pixels[3 * i + 2], 255 - indices[i]);
        }
        for (std::size_t i = static_cast<std::size_t>(count) * 3; i < pixels.size(); ++i) {
            ASSERT_EQ(pixels[i], 0xEE);
        }
    }
}

TEST_P(PixelKernelVariant, AddsEveryPairOfBytesSaturating)
{
    std::vector<std::uint8_t> sums, addends, expected;
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            sums.push_back(static_cast<std::uint8_t>(a));
            addends.push_back(static_cast<std::uint8_t>(b));
            expected.push_back(static_cast<std::uint8_t>(std::min(a + b, 255)));
        }
    }

    kernels.addSaturating(sums.data(), addends.data(), sums.size());

    EXPECT_EQ(sums, expected);
}

INSTANTIATE_TEST_SUITE_P(Variants, PixelKernelVariant, ::testing::ValuesIn(KOVPrivate::pixelKernelVariants()),
                         [](const auto& instance) { return instance.param.name; });

TEST(PixelKernels, UseTheFastestVariantThatTheProcessorRuns)
{
    EXPECT_STREQ(KOVPrivate::pixelKernels().name, KOVPrivate::pixelKernelVariants().back().name);
}
