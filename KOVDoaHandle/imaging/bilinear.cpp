#include <KOVDoaHandle/imaging/bilinear_p.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <KOVDoaHandle/imaging/pixelkernels_p.h>

namespace KOVPrivate {

BilinearAxis::BilinearAxis(int source, int destination)
    : sourceSize(source), destinationSize(destination), step(source > 1 ? 1 : 0)
{
    const auto count = static_cast<std::size_t>(std::max(destination, 0));
    first.resize(count);
    lower.resize(count);
    upper.resize(count);
    const float scale = static_cast<float>(source) / static_cast<float>(destination);
    const float lastFirst = static_cast<float>(std::max(source - 2, 0));
    for (std::size_t i = 0; i < count; ++i) {
        // Cell centres coincide: the position is formed in double precision and kept in single.
        const auto position =
            static_cast<float>((static_cast<double>(i) + 0.5) * static_cast<double>(scale) - 0.5);
        const float cell = std::clamp(std::floor(position), 0.0F, lastFirst);
        first[i] = static_cast<int>(cell);
        upper[i] = position - cell;
        lower[i] = 1.0F - upper[i];
    }
}

BilinearRows::BilinearRows(const float* const* source, const BilinearAxis& rows, const BilinearAxis& cols,
                           std::vector<float>& scratch)
    : m_source(source),
      m_rows(rows),
      m_cols(cols),
      m_sameSize(rows.sourceSize == rows.destinationSize && cols.sourceSize == cols.destinationSize)
{
    const auto width = static_cast<std::size_t>(std::max(cols.destinationSize, 0));
    scratch.resize(std::max(scratch.size(), 2 * width));
    m_upper = scratch.data();
    m_lower = scratch.data() + width;
    if (m_sameSize) {
        std::fill_n(m_lower, width, 0.0F);
    }
}

RowBlend BilinearRows::at(int row)
{
    if (m_sameSize) {
        return sourceRowItself(row);
    }
    const auto index = static_cast<std::size_t>(row);
    const int sourceRow = m_rows.first[index];
    if (sourceRow != m_upperSourceRow) {
        if (m_upperSourceRow >= 0 && sourceRow == m_upperSourceRow + m_rows.step) {
            std::swap(m_upper, m_lower);
        } else {
            interpolate(sourceRow, m_upper);
        }
        interpolate(sourceRow + m_rows.step, m_lower);
        m_upperSourceRow = sourceRow;
    }
    return {m_upper, m_lower, m_rows.lower[index], m_rows.upper[index]};
}

void BilinearRows::blendInto(int row, float* destination)
{
    const RowBlend blend = at(row);
    pixelKernels().blendRows(blend.upperRow, blend.lowerRow, blend.upperWeight, blend.lowerWeight,
                             destination, m_cols.destinationSize);
}

// The weights would give the same, but for neighbours that are infinite: 0 * infinity is not a number.
RowBlend BilinearRows::sourceRowItself(int row) const
{
    return {m_source[row], m_lower, 1.0F, 0.0F};
}

void BilinearRows::interpolate(int sourceRow, float* destination) const
{
    pixelKernels().interpolateRow(m_source[sourceRow], m_cols.first.data(), m_cols.step, m_cols.lower.data(),
                                  m_cols.upper.data(), destination, m_cols.destinationSize);
}

}  // namespace KOVPrivate
