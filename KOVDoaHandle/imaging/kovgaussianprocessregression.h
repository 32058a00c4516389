// Spreads point values over a grid with a squared-exponential kernel: a plain kernel sum, no matrix is inverted.
#ifndef KOVDOA_KOVGAUSSIANPROCESSREGRESSION_H
#define KOVDOA_KOVGAUSSIANPROCESSREGRESSION_H

#include <vector>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Stateless; any thread may call any member. ("predit" is spelled so at the boundary.)
//
// Every form writes every cell (r, c) of the grid: the sum over the points k, in vector order and in single
// precision, of value_k * w(d2), d2 = (r - row_k)^2 + (c - col_k)^2, where w = exp(-0.5 d2 / (sigma * sigma)) + noise
// is formed in double precision and rounded to float. Without points every cell is 0.
//   sigma  length scale, cells
//   noise  added to every weight, near a point or far from it
class KOVDOA_EXPORT KOVGaussianProcessRegression
{
public:
    // One weight: exp(-0.5 d2 / s) + noise. Here s is used as given, in the place of sigma squared.
    float kernel(fpoint2d a, fpoint2d b, float s, float noise);

    // Fills `out`; its rows and columns are the grid.
    void predit(std::vector<fpoint2d> points, mat2d_fp32* out, float sigma, float noise);

    // Fills a row-major array of rows * cols cells.
    void predit(std::vector<fpoint2d> points, float* out, int rows, int cols, float sigma, float noise);

    // Uses only the points with value >= threshold; with `binary` each of them counts as 1.
    void predit(std::vector<fpoint2d> points, mat2d_fp32* out, float sigma, float noise, float threshold,
                bool binary);
};

#endif
