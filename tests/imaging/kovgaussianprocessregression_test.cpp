#include <KOVDoaHandle/imaging/kovgaussianprocessregression.h>

#include <gtest/gtest.h>

#include <limits>

#include "tests/imaging/referencerenderer.h"
#include "tests/support/bits.h"
#include "tests/support/maps.h"

using namespace testsupport;

namespace {

KOVGaussianProcessRegression regression;

::testing::AssertionResult sameGrid(const reference::Grid& expected, const mat2d_fp32& found)
{
    for (int row = 0; row < expected.rows; ++row) {
        for (int col = 0; col < expected.cols; ++col) {
            if (const auto same = sameBits(expected.at(row, col), found.data[row][col]); !same) {
                return ::testing::AssertionFailure() << "(" << row << ", " << col << "): " << same.message();
            }
        }
    }
    return ::testing::AssertionSuccess();
}

std::vector<fpoint2d> randomPoints(std::size_t count, int rows, int cols, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(-2.0F, 5.0F);
    std::vector<fpoint2d> points;
    for (std::size_t i = 0; i < count; ++i) {
        points.push_back({value(random), static_cast<int>(random() % static_cast<unsigned>(rows)),
                          static_cast<int>(random() % static_cast<unsigned>(cols))});
    }
    return points;
}

}  // namespace

TEST(GaussianProcessRegression, GivesThePointsOwnValueAtThePoint)
{
    const Map out = makeMap(11, 11);

    regression.predit({{2.0F, 5, 5}}, out.get(), 1.0F, 0.0F);

    EXPECT_EQ(out->data[5][5], 2.0F);
    EXPECT_NEAR(out->data[5][6], 1.2131F, 5e-5F);
}

TEST(GaussianProcessRegression, AddsTheNoiseToEveryWeightNearAndFar)
{
    const Map out = makeMap(64, 64);

    regression.predit({{2.0F, 0, 0}, {3.0F, 0, 1}}, out.get(), 1.0F, 0.1F);

    EXPECT_FLOAT_EQ(out->data[63][63], 0.1F * 5.0F);
    EXPECT_NEAR(out->data[0][0], 2.0F * 1.1F + 3.0F * (0.60653F + 0.1F), 1e-4F);
}

TEST(GaussianProcessRegression, GivesZeroEverywhereWithoutPoints)
{
    const Map out = makeMap(4, 4);
    fill(*out, [](int, int) { return 7.0F; });

    regression.predit({}, out.get(), 2.4F, 0.1F);

    EXPECT_TRUE(sameGrid(reference::Grid(4, 4), *out));
}

TEST(GaussianProcessRegression, GivesZeroWhenNoPointReachesTheThreshold)
{
    const Map out = makeMap(6, 6);
    fill(*out, [](int, int) { return 7.0F; });

    regression.predit({{1.0F, 2, 2}, {2.0F, 3, 3}}, out.get(), 2.4F, 0.1F, 2.5F, false);

    EXPECT_TRUE(sameGrid(reference::Grid(6, 6), *out));
}

TEST(GaussianProcessRegression, KeepsAPointAtTheThreshold)
{
    const Map out = makeMap(6, 6);

    regression.predit({{2.5F, 2, 2}}, out.get(), 2.4F, 0.0F, 2.5F, false);

    EXPECT_EQ(out->data[2][2], 2.5F);
}

TEST(GaussianProcessRegression, CountsEveryKeptPointAsOneInBinaryMode)
{
    const Map out = makeMap(9, 41);

    regression.predit({{5.0F, 4, 0}, {50.0F, 4, 40}, {1.0F, 4, 20}}, out.get(), 1.0F, 0.0F, 2.0F, true);

    EXPECT_EQ(out->data[4][0], 1.0F);
    EXPECT_EQ(out->data[4][40], 1.0F);
    EXPECT_LT(out->data[4][20], 1e-20F);
}

TEST(GaussianProcessRegression, UsesTheKernelsScaleAsItIs)
{
    EXPECT_EQ(regression.kernel({1, 3, 4}, {2, 3, 4}, 4.0F, 0.0F), 1.0F);
    EXPECT_TRUE(sameBits(static_cast<float>(std::exp(-0.5 * 4.0 / 4.0) + static_cast<double>(0.1F)),
                         regression.kernel({1, 3, 4}, {2, 5, 4}, 4.0F, 0.1F)));
}

TEST(GaussianProcessRegression, SquaresSigmaInThePredictionButNotInTheKernel)
{
    const Map out = makeMap(5, 5);

    regression.predit({{1.0F, 0, 0}}, out.get(), 2.0F, 0.0F);

    EXPECT_TRUE(sameBits(regression.kernel({1, 0, 0}, {1, 1, 2}, 4.0F, 0.0F), out->data[1][2]));
}

struct RegressionCase
{
    int rows, cols;
    std::size_t points;
    float sigma, noise;
};

class RegressionAgainstPlain : public ::testing::TestWithParam<RegressionCase>
{
};

TEST_P(RegressionAgainstPlain, GivesTheSameBitsInAMatrixAndInAnArray)
{
    const auto [rows, cols, count, sigma, noise] = GetParam();
    const std::vector<fpoint2d> points = randomPoints(count, rows, cols, 17);
    const reference::Grid expected = reference::regression(points, rows, cols, sigma, noise);
    const Map out = makeMap(rows, cols);
    reference::Grid array(rows, cols);

    regression.predit(points, out.get(), sigma, noise);
    regression.predit(points, array.values.data(), rows, cols, sigma, noise);

    EXPECT_TRUE(sameGrid(expected, *out));
    for (std::size_t i = 0; i < expected.values.size(); ++i) {
        ASSERT_TRUE(sameBits(expected.values[i], array.values[i])) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Grids, RegressionAgainstPlain,
                         ::testing::Values(RegressionCase{48, 64, 4, 2.4F, 3.1622778e-5F},
                                           RegressionCase{64, 48, 1, 2.4F, 3.1622778e-5F},
                                           RegressionCase{4, 4, 7, 0.5F, 0.0F},
                                           RegressionCase{1, 31, 3, 10.0F, 0.1F},
                                           RegressionCase{3, 400, 3, 30.0F, 0.0F},
                                           RegressionCase{37, 41, 20, 1e-3F, -0.2F}),
                         [](const auto& instance) {
                             return std::to_string(instance.param.rows) + "by" +
                                    std::to_string(instance.param.cols) + "with" +
                                    std::to_string(instance.param.points);
                         });

TEST(GaussianProcessRegression, AgreesWithThePlainSumForPointsFarOutsideTheGrid)
{
    const std::vector<fpoint2d> points{{1.0F, -5000, 3}, {2.0F, 2, 70000}, {3.0F, 1, 1}};
    const Map out = makeMap(4, 5);

    regression.predit(points, out.get(), 3000.0F, 0.01F);

    EXPECT_TRUE(sameGrid(reference::regression(points, 4, 5, 3000.0F, 0.01F), *out));
}

TEST(GaussianProcessRegression, SurvivesCoordinatesAtTheEndsOfTheIntegers)
{
    const int lowest = std::numeric_limits<int>::min();
    const int highest = std::numeric_limits<int>::max();
    const Map out = makeMap(4, 4);

    regression.predit({{1.0F, lowest, highest}, {2.0F, highest, lowest}}, out.get(), 2.4F, 0.5F);

    EXPECT_EQ(out->data[3][3], 1.5F);
}
