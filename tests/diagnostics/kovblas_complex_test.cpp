// The operations on arrays of (real, imaginary) pairs.
#include <KOVDoaHandle/diagnostics/kovblas.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "tests/support/bits.h"

namespace {

using testsupport::sameBits;

constexpr int pairs = 257;

struct ComplexPair
{
    float a[pairs][2];
    float b[pairs][2];
};

ComplexPair randomPair()
{
    ComplexPair operands{};
    std::mt19937 random(29);
    std::uniform_real_distribution<float> uniform(-3.0F, 3.0F);
    for (int i = 0; i < pairs; ++i) {
        for (int part = 0; part < 2; ++part) {
            operands.a[i][part] = uniform(random);
            operands.b[i][part] = uniform(random);
        }
    }
    return operands;
}

TEST(KOVBlasComplex, MultipliesElementByElement)
{
    ComplexPair operands = randomPair();
    float out[pairs][2];

    KOVBlas::CplxMul(operands.a, operands.b, out, pairs);

    for (int i = 0; i < pairs; ++i) {
        const float* a = operands.a[i];
        const float* b = operands.b[i];
        ASSERT_TRUE(sameBits(a[0] * b[0] - a[1] * b[1], out[i][0])) << i;
        ASSERT_TRUE(sameBits(a[1] * b[0] + a[0] * b[1], out[i][1])) << i;
    }
}

TEST(KOVBlasComplex, MultipliesWithTheConjugateOfTheSecondOperand)
{
    ComplexPair operands = randomPair();
    float out[pairs][2];

    KOVBlas::CplxConJMul(operands.a, operands.b, out, pairs);

    for (int i = 0; i < pairs; ++i) {
        const float* a = operands.a[i];
        const float* b = operands.b[i];
        ASSERT_TRUE(sameBits(a[0] * b[0] + a[1] * b[1], out[i][0])) << i;
        ASSERT_TRUE(sameBits(a[1] * b[0] - a[0] * b[1], out[i][1])) << i;
    }
}

TEST(KOVBlasComplex, ProductOfAnElementWithItsOwnConjugateIsItsSquaredMagnitude)
{
    float a[1][2] = {{3.0F, -4.0F}};
    float out[1][2];

    KOVBlas::CplxConJMul(a, a, out, 1);

    EXPECT_EQ(out[0][0], 25.0F);
    EXPECT_EQ(out[0][1], 0.0F);
}

TEST(KOVBlasComplex, ProductsMayReplaceEitherOperand)
{
    ComplexPair inFirst = randomPair();
    ComplexPair inSecond = randomPair();
    ComplexPair apart = randomPair();
    float product[pairs][2];
    float conjugated[pairs][2];
    KOVBlas::CplxMul(apart.a, apart.b, product, pairs);
    KOVBlas::CplxConJMul(apart.a, apart.b, conjugated, pairs);

    KOVBlas::CplxMul(inFirst.a, inFirst.b, inFirst.a, pairs);
    KOVBlas::CplxConJMul(inSecond.a, inSecond.b, inSecond.b, pairs);

    for (int i = 0; i < pairs; ++i) {
        for (int part = 0; part < 2; ++part) {
            ASSERT_TRUE(sameBits(product[i][part], inFirst.a[i][part])) << i;
            ASSERT_TRUE(sameBits(conjugated[i][part], inSecond.b[i][part])) << i;
        }
    }
}

TEST(KOVBlasComplex, NormalisesEachElementInPlace)
{
    ComplexPair operands = randomPair();
    const ComplexPair before = operands;

    KOVBlas::CplxNomal(operands.a, pairs);

    for (int i = 0; i < pairs; ++i) {
        const float* a = before.a[i];
        const float magnitude = std::sqrt(a[0] * a[0] + a[1] * a[1]);
        ASSERT_TRUE(sameBits(a[0] / magnitude, operands.a[i][0])) << i;
        ASSERT_TRUE(sameBits(a[1] / magnitude, operands.a[i][1])) << i;
    }
}

TEST(KOVBlasComplex, NormalisingZeroGivesNoNumber)
{
    float a[1][2] = {{0.0F, 0.0F}};

    KOVBlas::CplxNomal(a, 1);

    EXPECT_TRUE(std::isnan(a[0][0]));
    EXPECT_TRUE(std::isnan(a[0][1]));
}

TEST(KOVBlasComplex, PhaseOfTheNegativeRealAxisIsPlusPi)
{
    float a[1][2] = {{-1.0F, 0.0F}};
    float phase[1];

    KOVBlas::CplxAngle(a, phase, 1);

    EXPECT_EQ(phase[0], std::numbers::pi_v<float>);
}

TEST(KOVBlasComplex, PhaseOfTheNegativeImaginaryAxisIsMinusHalfPi)
{
    float a[1][2] = {{0.0F, -1.0F}};
    float phase[1];

    KOVBlas::CplxAngle(a, phase, 1);

    EXPECT_EQ(phase[0], -std::numbers::pi_v<float> / 2.0F);
}

TEST(KOVBlasComplex, PhasesAreThoseOfTheSinglePrecisionArcTangent)
{
    ComplexPair operands = randomPair();
    float phase[pairs];

    KOVBlas::CplxAngle(operands.a, phase, pairs);

    for (int i = 0; i < pairs; ++i) {
        ASSERT_TRUE(sameBits(std::atan2(operands.a[i][1], operands.a[i][0]), phase[i])) << i;
    }
}

TEST(KOVBlasComplex, ACountOfZeroTouchesNothing)
{
    float a[1][2] = {{3.0F, 4.0F}};
    float out[1][2] = {{7.0F, 8.0F}};
    float phase[1] = {9.0F};

    KOVBlas::CplxMul(a, a, out, 0);
    KOVBlas::CplxConJMul(a, a, out, -1);
    KOVBlas::CplxNomal(a, 0);
    KOVBlas::CplxAngle(a, phase, 0);

    EXPECT_EQ(out[0][0], 7.0F);
    EXPECT_EQ(out[0][1], 8.0F);
    EXPECT_EQ(a[0][0], 3.0F);
    EXPECT_EQ(phase[0], 9.0F);
}

}  // namespace
