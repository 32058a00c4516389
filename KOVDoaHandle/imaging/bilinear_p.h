// Bilinear resampling, row by row: where each destination row and column samples the source, and the two
// interpolated source rows between which a destination row lies.
#ifndef KOVDOA_BILINEAR_P_H
#define KOVDOA_BILINEAR_P_H

#include <vector>

namespace KOVPrivate {

// The sampling of one axis: destination index i lies between the source indices first[i] and first[i] + step,
// with the weights lower[i] = 1 - upper[i] and upper[i]. The weights leave 0 ... 1 outside the outermost
// source cells, where the map is continued in a straight line.
struct BilinearAxis
{
    BilinearAxis() = default;
    BilinearAxis(int sourceSize, int destinationSize);

    int sourceSize = 0;
    int destinationSize = 0;
    int step = 1;  // 0 for a source of a single row or column, which is its own neighbour
    std::vector<int> first;
    std::vector<float> lower;
    std::vector<float> upper;
};

// One destination row as a blend: upperRow[j] * upperWeight + lowerRow[j] * lowerWeight.
struct RowBlend
{
    const float* upperRow;  // the source row above, interpolated to the destination's width
    const float* lowerRow;  // the source row below
    float upperWeight;
    float lowerWeight;
};

// Walks down the destination rows of one map. Source rows are interpolated once, when they are first needed;
// a destination of the source's own size takes them as they are.
class BilinearRows
{
public:
    // `source` (row pointers) and both axes must outlive the object. `scratch` is grown to two destination
    // rows.
    BilinearRows(const float* const* source, const BilinearAxis& rows, const BilinearAxis& cols,
                 std::vector<float>& scratch);

    // The blend for destination row `row`; valid until the next call.
    RowBlend at(int row);

    // The blended row itself: the destination's columns.
    void blendInto(int row, float* destination);

private:
    RowBlend sourceRowItself(int row) const;
    void interpolate(int sourceRow, float* destination) const;

    const float* const* m_source;
    const BilinearAxis& m_rows;
    const BilinearAxis& m_cols;
    float* m_upper;
    float* m_lower;
    int m_upperSourceRow = -1;
    bool m_sameSize;
};

}  // namespace KOVPrivate

#endif
