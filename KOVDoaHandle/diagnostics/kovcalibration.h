// Fits the mapping between two pictures of the same scene, for example the map and the camera picture.
#ifndef KOVDOA_KOVCALIBRATION_H
#define KOVDOA_KOVCALIBRATION_H

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Stateless; any thread may call. Double precision on the caller's arrays; nothing is allocated. Every sum is formed
// in index order, so a result is the same to the last bit on every machine.
class KOVDOA_EXPORT KOVCalibration
{
public:
    // The cofactors of `in` divided by its determinant: the TRANSPOSE of the inverse, and so the inverse of a
    // symmetric matrix, which is what the fit has. A singular matrix gives infinities and NaNs. `out` may be `in`.
    static void MatInv3x3(double in[3][3], double out[3][3]);

    // Least-squares affine mapping of the 16 points of `src` onto those of `dst` through the normal equations.
    //   src, dst  whole pixels, (x, y) each; point i of one corresponds to point i of the other
    //   out       row 0 the constant terms, row 1 the factors of the source's y, row 2 those of its x; column 0
    //             gives the mapped x, column 1 the mapped y:
    //                 x' = out[0][0] + out[1][0] y + out[2][0] x
    //                 y' = out[0][1] + out[1][1] y + out[2][1] x
    // Nothing is checked: source points on one line, or all in one place, have no such mapping and give infinities
    // and NaNs (with coordinates of many thousand pixels, where rounding hides the singularity, arbitrary numbers).
    static void GenConvMat(unsigned int src[16][2], unsigned int dst[16][2], double out[3][2]);
};

#endif
