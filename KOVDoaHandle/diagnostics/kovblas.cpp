#include <KOVDoaHandle/diagnostics/kovblas.h>

#include <KOVDoaHandle/diagnostics/keyselect_p.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

// Results are agreed down to the rounding: every sum is a float that grows in index order, and a double
// appears only where a comment says so. Nothing here may be reordered, fused or summed in lanes.

namespace {

// Sum of x[first ... n-1].
float sumFrom(const float* x, int first, int n)
{
    float sum = 0.0F;
    for (int i = first; i < n; ++i) {
        sum += x[i];
    }
    return sum;
}

float sumOfSquaresFrom(const float* x, int first, int n)
{
    float sum = 0.0F;
    for (int i = first; i < n; ++i) {
        sum += x[i] * x[i];
    }
    return sum;
}

// Sum of the deviations from `mean` to the given power; the power and the addition are double, the sum is
// rounded to float after each element.
float sumOfPowers(const float* x, int n, float mean, double exponent)
{
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        sum = static_cast<float>(static_cast<double>(sum) +
                                 std::pow(static_cast<double>(x[i] - mean), exponent));
    }
    return sum;
}

// The `exponent`-th central moment over that power of the standard deviation, in double.
double standardisedMoment(const float* x, int n, float mean, float variance, double exponent)
{
    const double deviation = std::pow(static_cast<double>(variance), 0.5);
    return static_cast<double>(sumOfPowers(x, n, mean, exponent)) / (n * std::pow(deviation, exponent));
}

// Square formed in double and rounded to float.
float doubleSquare(float x)
{
    return static_cast<float>(static_cast<double>(x) * static_cast<double>(x));
}

// Keys that fit here are kept on the stack: a map of 128 x 128 cells.
constexpr std::size_t stackKeys = 16384;

float medianOfRows(float** rows, std::size_t rowCount, std::size_t colCount, std::int32_t* keys)
{
    for (std::size_t row = 0; row < rowCount; ++row) {
        KOVPrivate::orderedKeys(rows[row], colCount, keys + row * colCount);
    }
    const std::size_t count = rowCount * colCount;
    return KOVPrivate::valueOfKey(KOVPrivate::selectKey(keys, count, count / 2));
}

// Kept apart so that the large frame exists only while it is needed.
float medianOnStack(float** rows, std::size_t rowCount, std::size_t colCount)
{
    std::int32_t keys[stackKeys];
    return medianOfRows(rows, rowCount, colCount, keys);
}

}  // namespace

float KOVBlas::Rms(float* x, int n, bool removeMean)
{
    if (!removeMean) {
        return std::sqrt(sumOfSquaresFrom(x, 0, n) / static_cast<float>(n));
    }
    const float mean = Mean(x, n);
    float doubledArea = 0.0F;
    for (int i = 0; i + 1 < n; ++i) {
        const float left = x[i] - mean;
        const float right = x[i + 1] - mean;
        doubledArea += left * left + right * right;
    }
    return std::sqrt(0.5F * doubledArea / static_cast<float>(n - 1));
}

float KOVBlas::Var(float* x, int n, float mean)
{
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        sum += doubleSquare(x[i] - mean);
    }
    return sum / static_cast<float>(n);
}

float KOVBlas::Mean(float* x, int n)
{
    return sumFrom(x, 0, n) / static_cast<float>(n);
}

float KOVBlas::findMax(float* x, int n)
{
    float largest = x[0];
    for (int i = 1; i < n; ++i) {
        largest = std::max(largest, x[i]);
    }
    return largest;
}

float KOVBlas::findMax(float* x, int n, int& index)
{
    index = 0;
    float largest = x[0];
    for (int i = 1; i < n; ++i) {
        if (x[i] > largest) {
            largest = x[i];
            index = i;
        }
    }
    return largest;
}

float KOVBlas::findMin(float* x, int n)
{
    float smallest = x[0];
    for (int i = 1; i < n; ++i) {
        smallest = std::min(smallest, x[i]);
    }
    return smallest;
}

float KOVBlas::findMin(float* x, int n, int& index)
{
    index = 0;
    float smallest = x[0];
    for (int i = 1; i < n; ++i) {
        if (x[i] < smallest) {
            smallest = x[i];
            index = i;
        }
    }
    return smallest;
}

float KOVBlas::Sum(float* x, int n)
{
    return sumFrom(x, 1, n);
}

float KOVBlas::SumQuad(float* x, int n)
{
    return sumOfSquaresFrom(x, 1, n);
}

float KOVBlas::Skew(float* x, int n, float mean, float variance)
{
    return static_cast<float>(standardisedMoment(x, n, mean, variance, 3.0));
}

float KOVBlas::Kurt(float* x, int n, float mean, float variance)
{
    return static_cast<float>(standardisedMoment(x, n, mean, variance, 4.0) - 3.0);
}

float KOVBlas::CrestFactor(float* x, int n, float peak)
{
    return peak / Rms(x, n, false);
}

float KOVBlas::LatitudeFactor(float* x, int n, float peak)
{
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        sum += std::pow(std::fabs(x[i]), 0.5F);
    }
    return peak / doubleSquare(sum / static_cast<float>(n));
}

float KOVBlas::ShapeFactor(float* x, int n, float rms)
{
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        sum += std::fabs(x[i]);
    }
    return rms / (sum / static_cast<float>(n));
}

void KOVBlas::CplxMul(float a[][2], float b[][2], float out[][2], int n)
{
    for (int i = 0; i < n; ++i) {
        const float re = a[i][0] * b[i][0] - a[i][1] * b[i][1];
        const float im = a[i][1] * b[i][0] + a[i][0] * b[i][1];
        out[i][0] = re;
        out[i][1] = im;
    }
}

void KOVBlas::CplxConJMul(float a[][2], float b[][2], float out[][2], int n)
{
    for (int i = 0; i < n; ++i) {
        const float re = a[i][0] * b[i][0] + a[i][1] * b[i][1];
        const float im = a[i][1] * b[i][0] - a[i][0] * b[i][1];
        out[i][0] = re;
        out[i][1] = im;
    }
}

void KOVBlas::CplxNomal(float a[][2], int n)
{
    for (int i = 0; i < n; ++i) {
        const float magnitude = std::sqrt(a[i][0] * a[i][0] + a[i][1] * a[i][1]);
        a[i][0] /= magnitude;
        a[i][1] /= magnitude;
    }
}

void KOVBlas::CplxAngle(float a[][2], float* out, int n)
{
    for (int i = 0; i < n; ++i) {
        out[i] = std::atan2(a[i][1], a[i][0]);
    }
}

float KOVBlas::median2D(float** rows, int rowCount, int colCount)
{
    if (rowCount <= 0 || colCount <= 0) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    const auto height = static_cast<std::size_t>(rowCount);
    const auto width = static_cast<std::size_t>(colCount);
    if (height * width <= stackKeys) {
        return medianOnStack(rows, height, width);
    }
    const auto keys = std::make_unique_for_overwrite<std::int32_t[]>(height * width);
    return medianOfRows(rows, height, width, keys.get());
}
