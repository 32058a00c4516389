// The normal equations of the affine fit: out = (A^T A)^-1 A^T dst.
#include <KOVDoaHandle/diagnostics/kovcalibration.h>

#include <algorithm>

namespace {

constexpr int pointCount = 16;
constexpr int termCount = 3;  // of the mapping: 1, y, x

}  // namespace

void KOVCalibration::MatInv3x3(double in[3][3], double out[3][3])
{
    double cofactor[3][3];
    for (int i = 0; i < 3; ++i) {
        const int below = (i + 1) % 3;
        const int above = (i + 2) % 3;
        for (int j = 0; j < 3; ++j) {
            const int right = (j + 1) % 3;
            const int left = (j + 2) % 3;
            cofactor[i][j] = in[below][right] * in[above][left] - in[below][left] * in[above][right];
        }
    }
    double determinant = 0.0;
    for (int j = 0; j < 3; ++j) {
        determinant += in[0][j] * cofactor[0][j];
    }
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            out[i][j] = cofactor[i][j] / determinant;
        }
    }
}

void KOVCalibration::GenConvMat(unsigned int src[16][2], unsigned int dst[16][2], double out[3][2])
{
    double design[pointCount][termCount];
    for (int i = 0; i < pointCount; ++i) {
        design[i][0] = 1.0;
        design[i][1] = src[i][1];
        design[i][2] = src[i][0];
    }

    double normal[termCount][termCount] = {};
    for (int r = 0; r < termCount; ++r) {
        for (int c = 0; c < termCount; ++c) {
            for (int i = 0; i < pointCount; ++i) {
                normal[r][c] += design[i][r] * design[i][c];
            }
        }
    }
    double inverse[termCount][termCount];
    MatInv3x3(normal, inverse);

    for (int r = 0; r < termCount; ++r) {
        std::fill_n(out[r], 2, 0.0);
        for (int i = 0; i < pointCount; ++i) {
            // How much point i counts in coefficient r.
            double weight = 0.0;
            for (int k = 0; k < termCount; ++k) {
                weight += inverse[r][k] * design[i][k];
            }
            out[r][0] += weight * dst[i][0];
            out[r][1] += weight * dst[i][1];
        }
    }
}
