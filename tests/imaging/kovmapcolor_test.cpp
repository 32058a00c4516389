#include <KOVDoaHandle/imaging/kovmapcolor.h>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <limits>

#include <KOVDoaHandle/imaging/palettes_p.h>

#include "tests/imaging/referencerenderer.h"
#include "tests/support/bits.h"
#include "tests/support/maps.h"

using namespace testsupport;

namespace {

using Bgr = std::array<int, 3>;

Bgr pixel(const mat1d_uint8& image, int index, int channels = 3)
{
    const std::uint8_t* bytes = image.data + index * channels;
    return {bytes[0], bytes[1], bytes[2]};
}

Bgr entry(const KOVPrivate::Palette& palette, int index)
{
    const KOVPrivate::PaletteEntry& colour = palette.entries[index];
    return {colour.blue, colour.green, colour.red};
}

FlatMap makeFlat(std::initializer_list<float> values)
{
    return flatten(*makeMap({values}));
}

struct ColourFunction
{
    const char* name;
    int palette;
    const KOVPrivate::Palette& table;
    void (*bgr)(mat1d_fp32*, float, float, mat1d_uint8*);
    void (*bgra)(mat1d_fp32*, float, float, std::uint8_t, mat1d_uint8*);
};

class ScaleMat : public ::testing::TestWithParam<ColourFunction>
{
};

const std::array colourFunctions{
    ColourFunction{"Rainbow", 0, KOVPrivate::rainbowPalette, KOVPrivate::scale_bgr_mat,
                   KOVPrivate::scale_bgra_mat},
    ColourFunction{"BlackRedYellowWhite", 1, KOVPrivate::blackRedYellowPalette, KOVPrivate::scale_bryw_mat,
                   KOVPrivate::scale_bryw_mat},
    ColourFunction{"Grey", 2, KOVPrivate::greyPalette, KOVPrivate::scale_gray_mat,
                   KOVPrivate::scale_gray_mat},
};

}  // namespace

TEST(BiLinearInterpol, ContinuesTheMapInAStraightLineBeyondItsRim)
{
    const Map source = makeMap({{0, 1}, {2, 3}});
    const Map enlarged = makeMap(4, 4);

    KOVPrivate::biLinearInterpol(source.get(), enlarged.get());

    EXPECT_EQ(enlarged->data[0][0], -0.75F);
    EXPECT_EQ(enlarged->data[3][3], 3.75F);
    EXPECT_EQ(enlarged->data[1][1], 0.75F);
}

TEST(BiLinearInterpol, CopiesAMapOfTheSameSizeExactly)
{
    const float inf = std::numeric_limits<float>::infinity();
    const Map source = makeMap({{0.1F, inf, -0.0F}, {2, -inf, 4}, {5, 1e-45F, 7}});
    const Map copy = makeMap(3, 3);

    KOVPrivate::biLinearInterpol(source.get(), copy.get());

    for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 3; ++col) {
            EXPECT_TRUE(sameBits(source->data[row][col], copy->data[row][col]));
        }
    }
}

TEST(BiLinearInterpol, RepeatsAMapOfASingleCell)
{
    const Map source = makeMap({{4.0F}});
    const Map enlarged = makeMap(3, 5);

    KOVPrivate::biLinearInterpol(source.get(), enlarged.get());

    EXPECT_FLOAT_EQ(enlarged->data[0][0], 4.0F);
    EXPECT_FLOAT_EQ(enlarged->data[2][4], 4.0F);
}

struct ResizeCase
{
    int rows, cols, newRows, newCols;
};

class BiLinearInterpolSizes : public ::testing::TestWithParam<ResizeCase>
{
};

TEST_P(BiLinearInterpolSizes, AgreesWithThePlainFormulaToTheLastBit)
{
    const auto [rows, cols, newRows, newCols] = GetParam();
    const Map source = makeMap(rows, cols);
    fillWithSources(*source, 11U);
    const reference::Grid expected = reference::interpolate(reference::Grid(*source), newRows, newCols);
    const Map map = makeMap(newRows, newCols);
    const FlatMap flat(create_mat1d_fp32(newRows, newCols));

    KOVPrivate::biLinearInterpol(source.get(), map.get());
    KOVPrivate::biLinearInterpolTrans(source.get(), flat.get());

    for (int row = 0; row < newRows; ++row) {
        for (int col = 0; col < newCols; ++col) {
            ASSERT_TRUE(sameBits(expected.at(row, col), map->data[row][col])) << row << ", " << col;
            ASSERT_TRUE(sameBits(expected.at(row, col), flat->data[row * newCols + col]))
                << row << ", " << col;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, BiLinearInterpolSizes,
                         ::testing::Values(ResizeCase{2, 2, 4, 4}, ResizeCase{48, 64, 96, 128},
                                           ResizeCase{96, 128, 480, 640}, ResizeCase{8, 14, 101, 67},
                                           ResizeCase{61, 47, 13, 17}, ResizeCase{4, 4, 4, 9},
                                           ResizeCase{40, 30, 1, 1}, ResizeCase{5, 5, 5, 5}),
                         [](const auto& instance) {
                             const ResizeCase& size = instance.param;
                             return std::to_string(size.rows) + "by" + std::to_string(size.cols) + "to" +
                                    std::to_string(size.newRows) + "by" + std::to_string(size.newCols);
                         });

TEST(ScaleBgrMat, StretchesTheRainbowOverTheRange)
{
    const FlatMap levels = makeFlat({100.0F, 265.0F, 1000.0F, 0.0F, -5.0F, 0.4F, 0.5F});
    const Image image = makeImage(1, 7);

    KOVPrivate::scale_bgr_mat(levels.get(), 0.0F, 265.0F, image.get());

    EXPECT_EQ(pixel(*image, 0), entry(KOVPrivate::rainbowPalette, 100));
    EXPECT_EQ(pixel(*image, 1), (Bgr{47, 18, 62}));
    EXPECT_EQ(pixel(*image, 2), (Bgr{47, 18, 62}));
    EXPECT_EQ(pixel(*image, 3), (Bgr{0, 0, 0}));
    EXPECT_EQ(pixel(*image, 4), (Bgr{0, 0, 0}));
    EXPECT_EQ(pixel(*image, 5), entry(KOVPrivate::rainbowPalette, 0));
    EXPECT_EQ(pixel(*image, 6), entry(KOVPrivate::rainbowPalette, 1));
}

TEST_P(ScaleMat, AgreesWithThePlainRuleOnRandomMapsAndRanges)
{
    const Map map = makeMap(53, 61);
    std::mt19937 random(23);
    std::uniform_real_distribution<float> level(-10.0F, 10.0F);
    fill(*map, [&](int, int) { return level(random); });
    const FlatMap flat = flatten(*map);
    const Image image = makeImage(53, 61);
    for (int i = 0; i < 20; ++i) {
        const float min = level(random);
        const float max = min + std::abs(level(random));

        GetParam().bgr(flat.get(), min, max, image.get());

        ASSERT_TRUE(samePicture(reference::colour(reference::Grid(*map), min, max, GetParam().palette),
                                bytesOf(*image), 61))
            << min << " to " << max;
    }
}

TEST_P(ScaleMat, StaysInsideItsTableForEveryStrangeRange)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float tiny = std::numeric_limits<float>::denorm_min();
    const std::array ends{-inf, -1.0F, -tiny, 0.0F, tiny, 2 * tiny, 1.0F, 3e38F, inf, nan};
    const Map map =
        makeMap({{-inf, -3e38F, -1, -tiny, -0.0F, 0, tiny, 2 * tiny, 3 * tiny, 0.5F, 1, 2, 3e38F, inf, nan}});
    const FlatMap flat = flatten(*map);
    const Image image = makeImage(1, 15);
    for (const float min : ends) {
        for (const float max : ends) {
            GetParam().bgr(flat.get(), min, max, image.get());

            EXPECT_TRUE(samePicture(reference::colour(reference::Grid(*map), min, max, GetParam().palette),
                                    bytesOf(*image), 15))
                << min << " to " << max;
        }
    }
}

TEST_P(ScaleMat, ColoursOnlyWhatLiesAboveARangeOfNoWidth)
{
    const FlatMap levels = makeFlat({0.9F, 1.0F, 1.1F});
    const Image image = makeImage(1, 3);

    GetParam().bgr(levels.get(), 1.0F, 1.0F, image.get());

    EXPECT_EQ(pixel(*image, 0), (Bgr{0, 0, 0}));
    EXPECT_EQ(pixel(*image, 1), (Bgr{0, 0, 0}));
    EXPECT_EQ(pixel(*image, 2), entry(GetParam().table, GetParam().table.lastIndex()));
}

TEST_P(ScaleMat, GivesEveryPixelTheAlphaBlackOnesIncluded)
{
    const FlatMap levels = makeFlat({-1.0F, 0.25F, 0.5F, 2.0F});
    const Image opaque = makeImage(1, 4);
    const Image image = makeImage(1, 4, 4);

    GetParam().bgr(levels.get(), 0.0F, 1.0F, opaque.get());
    GetParam().bgra(levels.get(), 0.0F, 1.0F, 200, image.get());

    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(pixel(*image, i, 4), pixel(*opaque, i)) << i;
        EXPECT_EQ(image->data[4 * i + 3], 200) << i;
    }
    EXPECT_EQ(pixel(*image, 0, 4), (Bgr{0, 0, 0}));
}

TEST_P(ScaleMat, ClearsWhatTheImageHoldsBeyondTheMap)
{
    const FlatMap levels = makeFlat({1.0F});
    const Image image = makeImage(2, 3);
    std::memset(image->data, 0xAB, 18);

    GetParam().bgr(levels.get(), 0.0F, 1.0F, image.get());

    for (int i = 3; i < 18; ++i) {
        EXPECT_EQ(image->data[i], 0) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Palettes, ScaleMat, ::testing::ValuesIn(colourFunctions),
                         [](const auto& instance) { return instance.param.name; });

TEST(KovAddWeighted, AddsSaturatingWithoutWeights)
{
    const cv::Mat a(1, 1, CV_8UC3, cv::Scalar(200, 10, 0));
    const cv::Mat b(1, 1, CV_8UC3, cv::Scalar(100, 20, 0));
    cv::Mat sum;

    KOVPrivate::kovAddWeighted(a, b, sum);

    EXPECT_EQ(sum.at<cv::Vec3b>(0, 0), cv::Vec3b(255, 30, 0));
}

TEST(KovAddWeighted, WeighsBothPicturesAndAddsTheOffset)
{
    const cv::Mat a(1, 1, CV_8UC1, cv::Scalar(100));
    const cv::Mat b(1, 1, CV_8UC1, cv::Scalar(40));
    cv::Mat sum;

    KOVPrivate::kovAddWeighted(a, 0.5F, b, 0.25F, 3.0F, sum);

    EXPECT_EQ(sum.at<uchar>(0, 0), 63);
}

TEST(KovAddWeighted, HandsOnTheExceptionOnMismatchedSizes)
{
    cv::Mat sum;

    EXPECT_THROW(KOVPrivate::kovAddWeighted(cv::Mat(1, 1, CV_8UC1), cv::Mat(2, 2, CV_8UC1), sum),
                 cv::Exception);
}

TEST(KovCvtColor, ChoosesTheNumberOfChannelsByTheCode)
{
    const cv::Mat bgr(1, 1, CV_8UC3, cv::Scalar(1, 2, 3));
    cv::Mat rgba;

    KOVPrivate::kovCvtColor(bgr, rgba, cv::COLOR_BGR2RGBA);

    EXPECT_EQ(rgba.at<cv::Vec4b>(0, 0), cv::Vec4b(3, 2, 1, 255));
}
