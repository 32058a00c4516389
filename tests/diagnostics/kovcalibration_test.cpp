#include <KOVDoaHandle/diagnostics/kovcalibration.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

namespace {

using Points = unsigned int[16][2];

struct Mapping
{
    double at[3][2];
};

// A 4 x 4 grid of points, not quite regular, over a camera picture.
void spread(Points& points)
{
    for (unsigned int i = 0; i < 16; ++i) {
        points[i][0] = 40 + 180 * (i % 4) + 7 * (i / 4);
        points[i][1] = 30 + 110 * (i / 4) + 3 * (i % 4);
    }
}

Mapping fit(Points& source, Points& target)
{
    Mapping mapping;
    // What was there before must not count.
    std::fill_n(&mapping.at[0][0], 6, std::nan(""));
    KOVCalibration::GenConvMat(source, target, mapping.at);
    return mapping;
}

void expectNear(const Mapping& expected, const Mapping& found)
{
    for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 2; ++col) {
            // The normal matrix has a condition of about 1e6, so six of the sixteen digits are lost.
            EXPECT_NEAR(expected.at[row][col], found.at[row][col], 1e-8)
                << "row " << row << ", column " << col;
        }
    }
}

TEST(KOVCalibration, MapsPointsOntoThemselves)
{
    Points points;
    spread(points);

    const Mapping mapping = fit(points, points);

    expectNear({{{0, 0}, {0, 1}, {1, 0}}}, mapping);
}

TEST(KOVCalibration, FindsAShift)
{
    Points source;
    Points target;
    spread(source);
    for (int i = 0; i < 16; ++i) {
        target[i][0] = source[i][0] + 5;
        target[i][1] = source[i][1] + 3;
    }

    const Mapping mapping = fit(source, target);

    expectNear({{{5, 3}, {0, 1}, {1, 0}}}, mapping);
}

TEST(KOVCalibration, FindsAQuarterTurnWithAScale)
{
    Points source;
    Points target;
    spread(source);
    for (int i = 0; i < 16; ++i) {
        target[i][0] = 2 * source[i][1] + 11;
        target[i][1] = 2000 - 2 * source[i][0];
    }

    const Mapping mapping = fit(source, target);

    expectNear({{{11, 2000}, {2, 0}, {0, -2}}}, mapping);
}

// With an error on one point, the residuals of a least-squares fit are orthogonal to every column of the design.
TEST(KOVCalibration, LeavesResidualsThatNoOtherMappingWouldMakeSmaller)
{
    Points source;
    Points target;
    spread(source);
    spread(target);
    target[6][0] += 20;
    target[9][1] += 12;

    const Mapping mapping = fit(source, target);

    for (int col = 0; col < 2; ++col) {
        double sum = 0.0;
        double sumY = 0.0;
        double sumX = 0.0;
        for (int i = 0; i < 16; ++i) {
            const double residual = target[i][col] - (mapping.at[0][col] + mapping.at[1][col] * source[i][1] +
                                                      mapping.at[2][col] * source[i][0]);
            sum += residual;
            sumY += residual * source[i][1];
            sumX += residual * source[i][0];
        }
        EXPECT_NEAR(sum, 0.0, 1e-7);
        EXPECT_NEAR(sumY, 0.0, 1e-5);
        EXPECT_NEAR(sumX, 0.0, 1e-5);
    }
}

class CollinearPoints : public ::testing::TestWithParam<std::array<unsigned int, 4>>
{
};

TEST_P(CollinearPoints, GiveNothingFinite)
{
    const auto [x, y, stepX, stepY] = GetParam();
    Points source;
    Points target;
    for (unsigned int i = 0; i < 16; ++i) {
        source[i][0] = x + stepX * i;
        source[i][1] = y + stepY * i;
    }
    spread(target);

    const Mapping mapping = fit(source, target);

    for (const auto& row : mapping.at) {
        EXPECT_FALSE(std::isfinite(row[0]));
        EXPECT_FALSE(std::isfinite(row[1]));
    }
}

using Line = std::array<unsigned int, 4>;
INSTANTIATE_TEST_SUITE_P(KOVCalibration, CollinearPoints,
                         ::testing::Values(Line{10, 20, 30, 0}, Line{10, 20, 0, 30}, Line{10, 20, 30, 20},
                                           Line{300, 200, 0, 0}, Line{0, 0, 0, 0}));

TEST(KOVCalibration, InvertsASymmetricMatrix)
{
    double matrix[3][3] = {{4, 1, 2}, {1, 3, 0}, {2, 0, 5}};
    double inverse[3][3];

    KOVCalibration::MatInv3x3(matrix, inverse);

    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            double product = 0.0;
            for (int k = 0; k < 3; ++k) {
                product += matrix[i][k] * inverse[k][j];
            }
            EXPECT_NEAR(product, i == j ? 1.0 : 0.0, 1e-15);
        }
    }
}

TEST(KOVCalibration, GivesTheTransposeOfTheInverseOfAnyOtherMatrix)
{
    double matrix[3][3] = {{1, 2, 0}, {0, 1, 0}, {0, 0, 1}};
    double found[3][3];

    KOVCalibration::MatInv3x3(matrix, found);

    EXPECT_EQ(found[1][0], -2.0);
    EXPECT_EQ(found[0][1], 0.0);
}

TEST(KOVCalibration, InvertsAMatrixInItsOwnPlace)
{
    double matrix[3][3] = {{4, 1, 2}, {1, 3, 0}, {2, 0, 5}};
    double inverse[3][3];
    KOVCalibration::MatInv3x3(matrix, inverse);

    KOVCalibration::MatInv3x3(matrix, matrix);

    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            EXPECT_EQ(matrix[i][j], inverse[i][j]);
        }
    }
}

// The textbook form of the fit with every matrix written out, for comparison to the last bit.
Mapping plainFit(const Points& source, const Points& target)
{
    double a[16][3];
    for (int i = 0; i < 16; ++i) {
        a[i][0] = 1.0;
        a[i][1] = static_cast<double>(source[i][1]);
        a[i][2] = static_cast<double>(source[i][0]);
    }
    double n[3][3];
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            double sum = a[0][r] * a[0][c];
            for (int i = 1; i < 16; ++i) {
                sum = sum + a[i][r] * a[i][c];
            }
            n[r][c] = sum;
        }
    }
    const double cofactors[3][3] = {
        {n[1][1] * n[2][2] - n[1][2] * n[2][1], n[1][2] * n[2][0] - n[1][0] * n[2][2],
         n[1][0] * n[2][1] - n[1][1] * n[2][0]},
        {n[2][1] * n[0][2] - n[2][2] * n[0][1], n[2][2] * n[0][0] - n[2][0] * n[0][2],
         n[2][0] * n[0][1] - n[2][1] * n[0][0]},
        {n[0][1] * n[1][2] - n[0][2] * n[1][1], n[0][2] * n[1][0] - n[0][0] * n[1][2],
         n[0][0] * n[1][1] - n[0][1] * n[1][0]},
    };
    const double det = n[0][0] * cofactors[0][0] + n[0][1] * cofactors[0][1] + n[0][2] * cofactors[0][2];
    double p[3][16];
    for (int r = 0; r < 3; ++r) {
        for (int i = 0; i < 16; ++i) {
            p[r][i] = cofactors[r][0] / det * a[i][0] + cofactors[r][1] / det * a[i][1] +
                      cofactors[r][2] / det * a[i][2];
        }
    }
    Mapping mapping;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 2; ++c) {
            double sum = p[r][0] * target[0][c];
            for (int i = 1; i < 16; ++i) {
                sum = sum + p[r][i] * target[i][c];
            }
            mapping.at[r][c] = sum;
        }
    }
    return mapping;
}

TEST(KOVCalibration, AgreesWithThePlainFitToTheLastBit)
{
    std::mt19937 random(5);
    for (int run = 0; run < 500; ++run) {
        // From a few pixels, where fits are often singular, to the whole range of the type.
        const unsigned int largest = 0xFFFFFFFFU >> (random() % 32);
        std::uniform_int_distribution<unsigned int> pixel(0, largest);
        Points source;
        Points target;
        for (int i = 0; i < 16; ++i) {
            for (int axis = 0; axis < 2; ++axis) {
                source[i][axis] = pixel(random);
                target[i][axis] = pixel(random);
            }
        }

        const Mapping expected = plainFit(source, target);
        const Mapping found = fit(source, target);

        for (int row = 0; row < 3; ++row) {
            for (int col = 0; col < 2; ++col) {
                const double e = expected.at[row][col];
                const double f = found.at[row][col];
                // A sum that starts at 0 turns -0 into 0; and a NaN has no agreed sign.
                const bool same = std::isnan(e) ? std::isnan(f) : e == f;
                ASSERT_TRUE(same) << "run " << run << ": expected " << e << ", found " << f;
            }
        }
    }
}

}  // namespace
