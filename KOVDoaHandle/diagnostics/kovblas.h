// Single-precision statistics and complex-array operations on plain arrays.
#ifndef KOVDOA_KOVBLAS_H
#define KOVDOA_KOVBLAS_H

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Stateless and re-entrant. Pointers are not checked. Sums are formed in single precision in index order, so
// a result is the same to the last bit on every machine. A division by a count of zero gives the IEEE result.
class KOVDOA_EXPORT KOVBlas
{
public:
    // Root mean square. removeMean false: sqrt(sum x^2 / n). removeMean true: the mean is taken off and the
    // squared deviation integrated by the trapezoid rule over the n - 1 intervals: sqrt(0.5 d / (n - 1)); NaN
    // for n = 1.
    static float Rms(float* x, int n, bool removeMean);

    // Population variance (divisor n) about `mean`; each square is formed in double precision.
    static float Var(float* x, int n, float mean);

    static float Mean(float* x, int n);

    // Largest / smallest value, and the index of its first occurrence. x[0] is read whatever n is.
    static float findMax(float* x, int n);
    static float findMax(float* x, int n, int& index);
    static float findMin(float* x, int n);
    static float findMin(float* x, int n, int& index);

    // Sums over the elements 1 ... n - 1. Element 0 (the DC bin of a spectrum) is left out on purpose.
    static float Sum(float* x, int n);
    static float SumQuad(float* x, int n);

    // Population skewness and excess kurtosis. The last argument is the variance, not the standard deviation.
    static float Skew(float* x, int n, float mean, float variance);
    static float Kurt(float* x, int n, float mean, float variance);

    // peak / RMS.
    static float CrestFactor(float* x, int n, float peak);
    // peak / (mean of sqrt|x|)^2.
    static float LatitudeFactor(float* x, int n, float peak);
    // rms / mean of |x|.
    static float ShapeFactor(float* x, int n, float rms);

    // Arrays of n (real, imaginary) pairs. out = a * b; out may be a or b.
    static void CplxMul(float a[][2], float b[][2], float out[][2], int n);
    // out = a * conj(b); out may be a or b.
    static void CplxConJMul(float a[][2], float b[][2], float out[][2], int n);
    // Divides each element by its magnitude, in place; 0 gives NaN. (The spelling is the boundary's.)
    static void CplxNomal(float a[][2], int n);
    // Phase in radians, -pi ... pi.
    static void CplxAngle(float a[][2], float* out, int n);

    // Median of rowCount * colCount values given as row pointers: the element at index count / 2 of their
    // ascending order, so for an even count the upper of the two middle ones. NaNs are ordered by their sign,
    // beyond the infinities. At least one value is needed. Timing: linear in the count; allocates above
    // 16,384 values.
    static float median2D(float** rows, int rowCount, int colCount);
};

#endif
