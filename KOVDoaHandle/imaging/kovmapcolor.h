// Enlarging an energy map and colouring it, and the two OpenCV operations that go with it. No state.
//
// Rounding is part of the contract: all arithmetic on map values is single precision, in the order written here,
// without fused multiply-add, so that the same map gives the same bytes on every machine.
#ifndef KOVDOA_KOVMAPCOLOR_H
#define KOVDOA_KOVMAPCOLOR_H

#include <cstdint>

#include <opencv2/core/mat.hpp>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

namespace KOVPrivate {

// Bilinear resampling of `src` to the size of `dst` (every cell of dst is written; both keep their owners).
//
// Destination row i samples source row f = (i + 0.5) * srcRows / dstRows - 0.5 between y0 = floor(f), held in
// 0 ... srcRows - 2, and y0 + 1, with weight w = f - y0; columns likewise. The weights are not clamped: outside the
// outermost cell centres the map is continued in a straight line, which shapes the rim of the overlay. Maps of the
// same size are copied. Cells: (s00 (1 - wx) + s01 wx) (1 - wy) + (s10 (1 - wx) + s11 wx) wy.
// Timing: allocates tables of dst's rows and columns.
KOVDOA_EXPORT void biLinearInterpol(mat2d_fp32* src, mat2d_fp32* dst);
KOVDOA_EXPORT void biLinearInterpolTrans(mat2d_fp32* src, mat1d_fp32* dst);

// Colours each value v of `src` into one pixel of `dst`, in row-major order:
//   v > max        the palette's last entry
//   min < v <= max entry round((v - min) * (F / (max - min))), halves away from zero, F the last entry's index
//   otherwise      black; so where v or max is not a number. With min not a number only v > max is coloured.
// The whole of dst is zeroed first; it must hold src's rows * cols pixels of 3 bytes (blue, green, red) or, for the
// forms with alpha, 4 bytes (every pixel's fourth byte becomes alpha, black ones included). With max not above min
// no value lies between them: values above max get the last entry, the others black.
KOVDOA_EXPORT void scale_bgr_mat(mat1d_fp32* src, float min, float max, mat1d_uint8* dst);
KOVDOA_EXPORT void scale_bgra_mat(mat1d_fp32* src, float min, float max, std::uint8_t alpha,
                                  mat1d_uint8* dst);
KOVDOA_EXPORT void scale_bryw_mat(mat1d_fp32* src, float min, float max, mat1d_uint8* dst);
KOVDOA_EXPORT void scale_bryw_mat(mat1d_fp32* src, float min, float max, std::uint8_t alpha,
                                  mat1d_uint8* dst);
KOVDOA_EXPORT void scale_gray_mat(mat1d_fp32* src, float min, float max, mat1d_uint8* dst);
KOVDOA_EXPORT void scale_gray_mat(mat1d_fp32* src, float min, float max, std::uint8_t alpha,
                                  mat1d_uint8* dst);

// cv::addWeighted with the depth of the inputs. Throws cv::Exception on mismatched sizes or types.
KOVDOA_EXPORT void kovAddWeighted(cv::InputArray src1, float alpha, cv::InputArray src2, float beta,
                                  float gamma, cv::OutputArray dst);
// The saturating sum of two pictures: weights 1 and 1, no offset.
KOVDOA_EXPORT void kovAddWeighted(cv::InputArray src1, cv::InputArray src2, cv::OutputArray dst);
// cv::cvtColor with the number of channels that `code` implies.
KOVDOA_EXPORT void kovCvtColor(cv::InputArray src, cv::OutputArray dst, int code);

}  // namespace KOVPrivate

#endif
