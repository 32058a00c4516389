// A kernel sum over a grid. Squared distances between grid cells are small integers, so each weight is
// computed once per distance that occurs rather than once per cell and point; the sums are formed exactly as
// if it were not.
#include <KOVDoaHandle/imaging/kovgaussianprocessregression.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

// Integer difference of two coordinates as single precision; 64 bits because recordings may hold any 32-bit
// ones.
float difference(int a, int b)
{
    return static_cast<float>(static_cast<std::int64_t>(a) - b);
}

float weight(float squaredDistance, float scale, float noise)
{
    return static_cast<float>(
        std::exp(-0.5 * static_cast<double>(squaredDistance) / static_cast<double>(scale)) +
        static_cast<double>(noise));
}

// Largest distance between `coordinate` and the indices 0 ... size - 1.
std::int64_t reach(int coordinate, int size)
{
    return std::max(std::abs(static_cast<std::int64_t>(coordinate)),
                    std::abs(static_cast<std::int64_t>(size) - 1 - coordinate));
}

// Weights by squared distance, for the distances that a grid of the given reach can have.
class WeightTable
{
public:
    // Above this the table would cost more than it saves, and single precision would round the squares.
    static constexpr std::int64_t largestSquaredDistance = 1 << 16;

    WeightTable(int rowReach, int colReach, float scale, float noise)
        : m_weights(static_cast<std::size_t>(rowReach * rowReach + colReach * colReach + 1))
    {
        std::vector<bool> known(m_weights.size());
        for (int down = 0; down <= rowReach; ++down) {
            for (int right = 0; right <= colReach; ++right) {
                const auto squaredDistance = static_cast<std::size_t>(down * down + right * right);
                if (!known[squaredDistance]) {
                    known[squaredDistance] = true;
                    m_weights[squaredDistance] = weight(static_cast<float>(squaredDistance), scale, noise);
                }
            }
        }
    }

    // The weights of all distances whose part along the rows' index is `down`.
    const float* atRowDistance(int down) const { return m_weights.data() + down * down; }

private:
    std::vector<float> m_weights;
};

void addPointToRow(const fpoint2d& point, const WeightTable& table, int row, float* sums, int cols)
{
    const float* weights = table.atRowDistance(row - point.row);
    for (int col = 0; col < cols; ++col) {
        const int right = col - point.col;
        sums[col] += point.value * weights[right * right];
    }
}

void addPointToRowDirectly(const fpoint2d& point, float scale, float noise, int row, float* sums, int cols)
{
    const float down = difference(row, point.row);
    for (int col = 0; col < cols; ++col) {
        const float right = difference(col, point.col);
        sums[col] += point.value * weight(down * down + right * right, scale, noise);
    }
}

// `rowAt(r)` gives the grid's row r. Points are added in their order to each cell.
template <typename Rows>
void predict(const std::vector<fpoint2d>& points, Rows rowAt, int rows, int cols, float sigma, float noise)
{
    const float scale = sigma * sigma;
    std::int64_t rowReach = 0;
    std::int64_t colReach = 0;
    for (const fpoint2d& point : points) {
        rowReach = std::max(rowReach, reach(point.row, rows));
        colReach = std::max(colReach, reach(point.col, cols));
    }
    const auto fill = [&](auto addPoint) {
        for (int row = 0; row < rows; ++row) {
            float* sums = rowAt(row);
            std::fill_n(sums, cols, 0.0F);
            for (const fpoint2d& point : points) {
                addPoint(point, row, sums);
            }
        }
    };
    constexpr std::int64_t longest = 1 << 15;  // keeps the squares below from overflowing
    if (rowReach < longest && colReach < longest &&
        rowReach * rowReach + colReach * colReach <= WeightTable::largestSquaredDistance) {
        const WeightTable table(static_cast<int>(rowReach), static_cast<int>(colReach), scale, noise);
        fill([&](const fpoint2d& point, int row, float* sums) {
            addPointToRow(point, table, row, sums, cols);
        });
    } else {
        fill([&](const fpoint2d& point, int row, float* sums) {
            addPointToRowDirectly(point, scale, noise, row, sums, cols);
        });
    }
}

}  // namespace

float KOVGaussianProcessRegression::kernel(fpoint2d a, fpoint2d b, float s, float noise)
{
    const float down = difference(a.row, b.row);
    const float right = difference(a.col, b.col);
    return weight(down * down + right * right, s, noise);
}

void KOVGaussianProcessRegression::predit(std::vector<fpoint2d> points, mat2d_fp32* out, float sigma,
                                          float noise)
{
    predict(
        points, [out](int row) { return out->data[row]; }, out->rows, out->cols, sigma, noise);
}

void KOVGaussianProcessRegression::predit(std::vector<fpoint2d> points, float* out, int rows, int cols,
                                          float sigma, float noise)
{
    const auto stride = static_cast<std::ptrdiff_t>(cols);
    predict(
        points, [out, stride](int row) { return out + row * stride; }, rows, cols, sigma, noise);
}

void KOVGaussianProcessRegression::predit(std::vector<fpoint2d> points, mat2d_fp32* out, float sigma,
                                          float noise, float threshold, bool binary)
{
    std::erase_if(points, [threshold](const fpoint2d& point) { return !(point.value >= threshold); });
    if (binary) {
        for (fpoint2d& point : points) {
            point.value = 1.0F;
        }
    }
    predit(std::move(points), out, sigma, noise);
}
