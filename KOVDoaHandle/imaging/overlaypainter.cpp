#include <KOVDoaHandle/imaging/overlaypainter_p.h>

#include <cstring>

#include <KOVDoaHandle/imaging/colourscale_p.h>
#include <KOVDoaHandle/imaging/pixelkernels_p.h>

namespace KOVPrivate {

namespace {

void fitAxis(BilinearAxis& axis, int sourceSize, int destinationSize)
{
    if (axis.sourceSize != sourceSize || axis.destinationSize != destinationSize) {
        axis = BilinearAxis(sourceSize, destinationSize);
    }
}

constexpr std::size_t bytesPerPixel = 3;

}  // namespace

void OverlayPainter::setPictureSize(int width, int height)
{
    m_width = width;
    m_height = height;
    m_indices.resize(static_cast<std::size_t>(width));
    m_rowPixels.resize(static_cast<std::size_t>(width) * bytesPerPixel);
}

void OverlayPainter::setPalette(const Palette& palette)
{
    if (m_palette != &palette) {
        m_palette = &palette;
        m_table = makeColourTable(palette, 0);
    }
}

void OverlayPainter::setMap(mat2d_fp32& map)
{
    if (m_doubled == nullptr || m_doubled->rows != 2 * map.rows || m_doubled->cols != 2 * map.cols) {
        m_doubled.reset(create_mat2d_fp32(2 * map.rows, 2 * map.cols));
    }
    fitAxis(m_doubledRows, map.rows, m_doubled->rows);
    fitAxis(m_doubledCols, map.cols, m_doubled->cols);
    BilinearRows rows(map.data, m_doubledRows, m_doubledCols, m_scratch);
    for (int row = 0; row < m_doubled->rows; ++row) {
        rows.blendInto(row, m_doubled->data[row]);
    }
    fitAxis(m_pictureRows, m_doubled->rows, m_height);
    fitAxis(m_pictureCols, m_doubled->cols, m_width);
}

void OverlayPainter::paint(LevelRange range, std::uint8_t* picture)
{
    const IndexRule rule = makeIndexRule(*m_palette, range.low, range.high);
    BilinearRows rows = enlargedRows();
    for (int y = 0; y < m_height; ++y) {
        colourRun(rows.at(y), rule, {0, m_width}, rowOf(picture, y));
    }
}

void OverlayPainter::paintInside(LevelRange range, const Region& region, std::uint8_t* picture)
{
    const IndexRule rule = makeIndexRule(*m_palette, range.low, range.high);
    BilinearRows rows = enlargedRows();
    for (int y = 0; y < m_height; ++y) {
        std::uint8_t* pixels = rowOf(picture, y);
        std::memset(pixels, 0, static_cast<std::size_t>(m_width) * bytesPerPixel);
        for (const PixelRun run : region.row(y)) {
            colourRun(rows.at(y), rule, run, pixels);
        }
    }
}

void OverlayPainter::paintInsideAndOutside(LevelRange inside, LevelRange outside, const Region& region,
                                           std::uint8_t* picture)
{
    const IndexRule insideRule = makeIndexRule(*m_palette, inside.low, inside.high);
    const IndexRule outsideRule = makeIndexRule(*m_palette, outside.low, outside.high);
    BilinearRows rows = enlargedRows();
    for (int y = 0; y < m_height; ++y) {
        std::uint8_t* pixels = rowOf(picture, y);
        const RowBlend blend = rows.at(y);
        colourRun(blend, outsideRule, {0, m_width}, pixels);
        for (const PixelRun run : region.row(y)) {
            colourRun(blend, insideRule, run, m_rowPixels.data());
            const std::size_t first = static_cast<std::size_t>(run.begin) * bytesPerPixel;
            const std::size_t count = static_cast<std::size_t>(run.end - run.begin) * bytesPerPixel;
            pixelKernels().addSaturating(pixels + first, m_rowPixels.data() + first, count);
        }
    }
}

BilinearRows OverlayPainter::enlargedRows()
{
    return {m_doubled->data, m_pictureRows, m_pictureCols, m_scratch};
}

// Colours the run's pixels of one row; `pixels` is the row's first pixel.
void OverlayPainter::colourRun(const RowBlend& blend, const IndexRule& rule, PixelRun run,
                               std::uint8_t* pixels)
{
    const PixelKernels& kernels = pixelKernels();
    const int count = run.end - run.begin;
    kernels.indexBlendedRows(blend.upperRow + run.begin, blend.lowerRow + run.begin, blend.upperWeight,
                             blend.lowerWeight, rule, m_indices.data(), count);
    kernels.packPixels(m_indices.data(), m_table.data(),
                       pixels + static_cast<std::size_t>(run.begin) * bytesPerPixel, count);
}

std::uint8_t* OverlayPainter::rowOf(std::uint8_t* picture, int y) const
{
    return picture + static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) * bytesPerPixel;
}

}  // namespace KOVPrivate
