#include <KOVDoaHandle/imaging/kovmapcolor.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstring>

#include <KOVDoaHandle/imaging/bilinear_p.h>
#include <KOVDoaHandle/imaging/colourscale_p.h>
#include <KOVDoaHandle/imaging/pixelkernels_p.h>

namespace KOVPrivate {

namespace {

// Both interpolations: `rowAt(r)` gives the destination's row r.
template <typename Rows>
void interpolate(const mat2d_fp32& source, int rows, int cols, Rows rowAt)
{
    if (source.rows == rows && source.cols == cols) {
        for (int row = 0; row < rows; ++row) {
            std::copy_n(source.data[row], cols, rowAt(row));
        }
        return;
    }
    const BilinearAxis rowAxis(source.rows, rows);
    const BilinearAxis colAxis(source.cols, cols);
    std::vector<float> scratch;
    BilinearRows blends(source.data, rowAxis, colAxis, scratch);
    for (int row = 0; row < rows; ++row) {
        blends.blendInto(row, rowAt(row));
    }
}

// Calls `paint(indices, first, count)` for pieces of the map that fit into a small buffer.
template <typename Paint>
void forIndexedPieces(const mat1d_fp32& source, IndexRule rule, Paint paint)
{
    constexpr std::size_t pieceSize = 2048;
    std::array<std::int32_t, pieceSize> indices;
    const std::size_t total = static_cast<std::size_t>(source.rows) * static_cast<std::size_t>(source.cols);
    for (std::size_t first = 0; first < total; first += pieceSize) {
        const std::size_t count = std::min(pieceSize, total - first);
        pixelKernels().indexLevels(source.data + first, rule, indices.data(), static_cast<int>(count));
        paint(indices.data(), first, count);
    }
}

void clear(mat1d_uint8& image)
{
    std::fill_n(image.data, static_cast<std::size_t>(image.rows) * static_cast<std::size_t>(image.cols),
                std::uint8_t{0});
}

void scaleToBgr(const mat1d_fp32& source, float min, float max, const Palette& palette,
                mat1d_uint8& destination)
{
    clear(destination);
    const std::vector<std::uint32_t> table = makeColourTable(palette, 0);
    forIndexedPieces(source, makeIndexRule(palette, min, max),
                     [&](const std::int32_t* indices, std::size_t first, std::size_t count) {
                         pixelKernels().packPixels(indices, table.data(), destination.data + 3 * first,
                                                   static_cast<int>(count));
                     });
}

void scaleToBgra(const mat1d_fp32& source, float min, float max, std::uint8_t alpha, const Palette& palette,
                 mat1d_uint8& destination)
{
    clear(destination);
    const std::vector<std::uint32_t> table = makeColourTable(palette, alpha);
    forIndexedPieces(source, makeIndexRule(palette, min, max),
                     [&](const std::int32_t* indices, std::size_t first, std::size_t count) {
                         for (std::size_t i = 0; i < count; ++i) {
                             std::memcpy(destination.data + 4 * (first + i), &table[indices[i]], 4);
                         }
                     });
}

}  // namespace

void biLinearInterpol(mat2d_fp32* src, mat2d_fp32* dst)
{
    interpolate(*src, dst->rows, dst->cols, [dst](int row) { return dst->data[row]; });
}

void biLinearInterpolTrans(mat2d_fp32* src, mat1d_fp32* dst)
{
    const auto stride = static_cast<std::size_t>(dst->cols);
    interpolate(*src, dst->rows, dst->cols,
                [dst, stride](int row) { return dst->data + static_cast<std::size_t>(row) * stride; });
}

void scale_bgr_mat(mat1d_fp32* src, float min, float max, mat1d_uint8* dst)
{
    scaleToBgr(*src, min, max, rainbowPalette, *dst);
}

void scale_bgra_mat(mat1d_fp32* src, float min, float max, std::uint8_t alpha, mat1d_uint8* dst)
{
    scaleToBgra(*src, min, max, alpha, rainbowPalette, *dst);
}

void scale_bryw_mat(mat1d_fp32* src, float min, float max, mat1d_uint8* dst)
{
    scaleToBgr(*src, min, max, blackRedYellowPalette, *dst);
}

void scale_bryw_mat(mat1d_fp32* src, float min, float max, std::uint8_t alpha, mat1d_uint8* dst)
{
    scaleToBgra(*src, min, max, alpha, blackRedYellowPalette, *dst);
}

void scale_gray_mat(mat1d_fp32* src, float min, float max, mat1d_uint8* dst)
{
    scaleToBgr(*src, min, max, greyPalette, *dst);
}

void scale_gray_mat(mat1d_fp32* src, float min, float max, std::uint8_t alpha, mat1d_uint8* dst)
{
    scaleToBgra(*src, min, max, alpha, greyPalette, *dst);
}

void kovAddWeighted(cv::InputArray src1, float alpha, cv::InputArray src2, float beta, float gamma,
                    cv::OutputArray dst)
{
    cv::addWeighted(src1, static_cast<double>(alpha), src2, static_cast<double>(beta),
                    static_cast<double>(gamma), dst, -1);
}

void kovAddWeighted(cv::InputArray src1, cv::InputArray src2, cv::OutputArray dst)
{
    cv::addWeighted(src1, 1.0, src2, 1.0, 0.0, dst, -1);
}

void kovCvtColor(cv::InputArray src, cv::OutputArray dst, int code)
{
    cv::cvtColor(src, dst, code, 0);
}

}  // namespace KOVPrivate
