// The window functions: their values, their symmetry and what they do to a spectrum.
#include <KOVDoaHandle/foundation/engine/kovfftwindow.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <numbers>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/bits.h"

namespace {

using testsupport::sameBits;

using Coefficients = std::vector<float>;

Coefficients window(int n, FFTWindowType type, float a = 0.0F)
{
    KOVFFTWindow made(n, type, a, 0.0F, 0.0F);
    const vec_fp32* data = made.data();
    return {data->data, data->data + data->len};
}

struct Shape
{
    const char* name;
    FFTWindowType type;
    float a;
    double firstValue;
    double sidelobe;  // highest side lobe relative to the main lobe, dB
};

void PrintTo(const Shape& shape, std::ostream* out)
{
    *out << shape.name;
}

class WindowShapes : public ::testing::TestWithParam<Shape>
{
protected:
    static Coefficients shape(int n) { return window(n, GetParam().type, GetParam().a); }
};

// Level of the window's spectrum at `bins` bins from a tone, relative to the tone's own bin, in dB.
double levelBeside(const Coefficients& coefficients, double bins)
{
    std::complex<double> sum;
    double middle = 0.0;
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        const double angle = -2.0 * std::numbers::pi * bins * static_cast<double>(i) /
                             static_cast<double>(coefficients.size());
        sum += double{coefficients[i]} * std::polar(1.0, angle);
        middle += double{coefficients[i]};
    }
    return 20.0 * std::log10(std::abs(sum) / middle);
}

TEST_P(WindowShapes, AreSymmetricToTheLastBit)
{
    for (const int n : {2, 3, 4, 7, 64, 1023, 1024, 96000}) {
        const auto coefficients = shape(n);
        ASSERT_EQ(coefficients.size(), static_cast<std::size_t>(n));
        for (std::size_t i = 0; i < coefficients.size(); ++i) {
            ASSERT_TRUE(sameBits(coefficients[i], coefficients[coefficients.size() - 1 - i]))
                << i << " of " << n;
        }
    }
}

TEST_P(WindowShapes, ReachOneInTheMiddleAndNoMore)
{
    const auto coefficients = shape(1023);

    EXPECT_NEAR(coefficients[511], 1.0, 1e-6);
    EXPECT_LE(*std::max_element(coefficients.begin(), coefficients.end()), 1.0F + 1e-6F);
}

TEST_P(WindowShapes, StartWithTheirKnownValue)
{
    EXPECT_NEAR(shape(1024).front(), GetParam().firstValue, 1e-6);
}

TEST_P(WindowShapes, KeepTheirSideLobesDown)
{
    const auto coefficients = shape(2048);
    // Past the first null the main lobe is over; the search begins where the level first rises again.
    double bins = 0.5;
    while (levelBeside(coefficients, bins + 0.05) < levelBeside(coefficients, bins)) {
        bins += 0.05;
    }
    double highest = -400.0;
    for (; bins < 40.0; bins += 0.05) {
        highest = std::max(highest, levelBeside(coefficients, bins));
    }

    // The published figures were read off plots of short windows.
    EXPECT_NEAR(highest, GetParam().sidelobe, 1.5);
}

TEST_P(WindowShapes, OfOneCoefficientAreOne)
{
    EXPECT_EQ(shape(1), Coefficients{1.0F});
}

TEST_P(WindowShapes, OfNoCoefficientsAreEmpty)
{
    for (const int n : {0, -1, -100, std::numeric_limits<int>::min()}) {
        KOVFFTWindow made(n, GetParam().type, GetParam().a, 0.0F, 0.0F);
        EXPECT_EQ(made.data()->len, 0);
        EXPECT_EQ(made.data()->data, nullptr);
    }
}

// Side lobes: Harris, tables I; Nuttall, figure 10; Kaiser with beta = 3 pi.
INSTANTIATE_TEST_SUITE_P(All, WindowShapes,
                         ::testing::Values(Shape{"Rectangular", FFT_WINDOW_RECTANGULAR, 0.0F, 1.0, -13.3},
                                           Shape{"Bartlett", FFT_WINDOW_BARTLETT, 0.0F, 0.0, -26.5},
                                           Shape{"Hamming", FFT_WINDOW_HAMMING, 0.0F, 0.08, -42.7},
                                           Shape{"Blackman", FFT_WINDOW_BLACKMAN, 0.0F, 0.0, -58.1},
                                           Shape{"BlackmanHarris", FFT_WINDOW_BLACKMAN_HARRIS, 0.0F, 0.00006,
                                                 -92.0},
                                           Shape{"Nuttall", FFT_WINDOW_NUTTALL, 0.0F, 0.0003628, -98.2},
                                           Shape{"FlatTop", FFT_WINDOW_FLAT_TOP, 0.0F, -0.000421053, -93.0},
                                           Shape{"Kaiser", FFT_WINDOW_KAISER, 9.4247780F, 0.00061234, -69.4},
                                           Shape{"Tukey", FFT_WINDOW_TUKEY, 0.5F, 0.0, -15.1},
                                           Shape{"Gaussian", FFT_WINDOW_GAUSSIAN, 0.4F, 0.0439369, -42.0},
                                           Shape{"Hann", FFT_WINDOW_HANN, 0.0F, 0.0, -31.5}),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(KOVFFTWindow, NumberTenIsTheHannWindowWithZerosAtBothEnds)
{
    const auto coefficients = window(5, static_cast<FFTWindowType>(10));

    ASSERT_EQ(coefficients.size(), 5U);
    EXPECT_TRUE(sameBits(coefficients[0], 0.0F));
    EXPECT_NEAR(coefficients[1], 0.5F, 1e-7F);
    EXPECT_TRUE(sameBits(coefficients[2], 1.0F));
    EXPECT_NEAR(coefficients[3], 0.5F, 1e-7F);
    EXPECT_TRUE(sameBits(coefficients[4], 0.0F));
}

TEST(KOVFFTWindow, HannIsOneRoundedSineSquaredAtEveryLength)
{
    for (const int n : {2, 3, 16, 1000, 96000}) {
        const auto coefficients = window(n, FFT_WINDOW_HANN);
        for (int i = 0; i < n; ++i) {
            const double sine = std::sin(std::numbers::pi * i / (n - 1));
            ASSERT_NEAR(coefficients[static_cast<std::size_t>(i)], sine * sine, 6e-8) << i << " of " << n;
        }
    }
}

TEST(KOVFFTWindow, TheFlatTopReadsAToneBetweenTwoBinsToAHundredthOfADecibel)
{
    EXPECT_NEAR(levelBeside(window(4096, FFT_WINDOW_FLAT_TOP), 0.5), 0.0, 0.01);
}

TEST(KOVFFTWindow, ATukeyWindowOfOneIsTheHannWindow)
{
    const auto tukey = window(257, FFT_WINDOW_TUKEY, 1.0F);
    const auto hann = window(257, FFT_WINDOW_HANN);

    for (std::size_t i = 0; i < hann.size(); ++i) {
        EXPECT_NEAR(tukey[i], hann[i], 1e-7F);
    }
}

TEST(KOVFFTWindow, UnknownShapesAndUselessParametersGiveTheRectangularWindow)
{
    const Coefficients rectangle(33, 1.0F);
    const float notANumber = std::numeric_limits<float>::quiet_NaN();

    for (const int type : {-1, 11, 1000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(window(33, static_cast<FFTWindowType>(type)), rectangle) << type;
    }
    for (const auto type : {FFT_WINDOW_KAISER, FFT_WINDOW_TUKEY, FFT_WINDOW_GAUSSIAN}) {
        for (const float parameter : {0.0F, -1.0F, notANumber}) {
            EXPECT_EQ(window(33, type, parameter), rectangle) << type << ' ' << parameter;
        }
    }
}

TEST(KOVFFTWindow, TheLargestParametersGiveFiniteCoefficients)
{
    for (const auto type : {FFT_WINDOW_KAISER, FFT_WINDOW_TUKEY, FFT_WINDOW_GAUSSIAN}) {
        for (const float parameter : {1e4F, 1e30F, std::numeric_limits<float>::infinity(), 1e-40F}) {
            for (const float value : window(33, type, parameter)) {
                EXPECT_TRUE(std::isfinite(value)) << type << ' ' << parameter;
            }
        }
    }
}

}  // namespace
