// Extremum and peak searches: one scan for all five extremum searches, one block rule for both peak searches.
#include <KOVDoaHandle/imaging/kovmapsearch.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace KOVPrivate {

namespace {

// Seeds both outputs with the value of one cell, without its position.
void seed(const mat2d_fp32& map, int row, int col, fpoint2d& max, fpoint2d& min)
{
    max = {map.data[row][col], 0, 0};
    min = max;
}

// Scans the cells for which `searched(row, col)` holds, starting from the seeded outputs.
template <typename Predicate>
void scan(const mat2d_fp32& map, fpoint2d& max, fpoint2d& min, Predicate searched)
{
    for (int row = 0; row < map.rows; ++row) {
        const float* values = map.data[row];
        for (int col = 0; col < map.cols; ++col) {
            if (!searched(row, col)) {
                continue;
            }
            const float value = values[col];
            if (value > max.value) {
                max = {value, row, col};
            }
            if (value < min.value) {
                min = {value, row, col};
            }
        }
    }
}

// A disc around the integer centre of a map.
struct Disc
{
    Disc(const mat2d_fp32& map, int radius)
        : centreRow(map.rows / 2), centreCol(map.cols / 2), squaredRadius(square(radius))
    {
    }

    // 64 bits: a radius "larger than any map" must not overflow.
    static long long square(int value) { return static_cast<long long>(value) * value; }

    bool contains(int row, int col) const
    {
        return square(row - centreRow) + square(col - centreCol) <= squaredRadius;
    }

    int centreRow;
    int centreCol;
    long long squaredRadius;
};

// An ellipse around the geometric centre of a map.
struct Ellipse
{
    Ellipse(const mat2d_fp32& map, float a, float b)
        : centreRow(static_cast<float>(map.rows - 1) * 0.5F),
          centreCol(static_cast<float>(map.cols - 1) * 0.5F),
          squaredA(a * a),
          squaredB(b * b)
    {
    }

    // 1 on the ellipse, less inside.
    float normalisedSquaredDistance(int row, int col) const
    {
        const float down = static_cast<float>(row) - centreRow;
        const float right = static_cast<float>(col) - centreCol;
        return down * down / squaredA + right * right / squaredB;
    }

    float centreRow;
    float centreCol;
    float squaredA;
    float squaredB;
};

constexpr int blockReach = 2;
constexpr int blockSide = 2 * blockReach + 1;
constexpr int blockSize = blockSide * blockSide;
using Block = std::array<float, blockSize>;

// The inclusive range of offsets, around one index, that the peak search looks at.
struct Reach
{
    int first;
    int last;
};

// Two rows are hidden from row rows - 3, although they exist.
Reach rowReach(int row, int rows)
{
    const int first = row == 1 ? -1 : -blockReach;
    if (row == rows - 3) {
        return {first, 0};
    }
    return {first, row == rows - 2 ? 1 : blockReach};
}

// One column is hidden from column cols - 3 and one from column cols - 2, although they exist.
Reach colReach(int col, int cols)
{
    const int first = col == 1 ? -1 : -blockReach;
    if (col == cols - 3) {
        return {first, 1};
    }
    return {first, col == cols - 2 ? 0 : blockReach};
}

// The 5 x 5 surroundings of a cell; what is absent or hidden stays 0.
template <typename Rows>
Block blockAround(Rows rowAt, int row, int col, Reach rowsSeen, Reach colsSeen)
{
    Block block{};
    for (int down = rowsSeen.first; down <= rowsSeen.last; ++down) {
        const float* values = rowAt(row + down);
        for (int right = colsSeen.first; right <= colsSeen.last; ++right) {
            block[static_cast<std::size_t>((down + blockReach) * blockSide + right + blockReach)] =
                values[col + right];
        }
    }
    return block;
}

// Strongest first. Values that are no numbers come last: they can only stem from the caller's own list, and
// an order that is none would send the sort out of bounds.
bool isStronger(const fpoint2d& a, const fpoint2d& b)
{
    return a.value > b.value || (std::isnan(b.value) && !std::isnan(a.value));
}

// `rowAt(r)` gives the values of row r.
template <typename Rows>
void appendPeaks(Rows rowAt, int rows, int cols, float threshold, std::vector<fpoint2d>& peaks)
{
    for (int row = 1; row <= rows - 2; ++row) {
        const float* above = rowAt(row - 1);
        const float* values = rowAt(row);
        const Reach rowsSeen = rowReach(row, rows);
        int col = 1;
        while (col < cols - 1) {
            const float value = values[col];
            // The two neighbours that are never hidden settle most cells before a block is built.
            const bool candidate = value > threshold && !(values[col - 1] > value) && !(above[col] > value);
            if (candidate) {
                Block block = blockAround(rowAt, row, col, rowsSeen, colReach(col, cols));
                if (isPeak(block.data(), value)) {
                    peaks.push_back({value, row, col});
                    col += 3;
                    continue;
                }
            }
            ++col;
        }
    }
    std::sort(peaks.begin(), peaks.end(), isStronger);
}

}  // namespace

void findMaxMin(mat2d_fp32* map, fpoint2d& max, fpoint2d& min)
{
    seed(*map, 0, 0, max, min);
    scan(*map, max, min, [](int, int) { return true; });
}

void findMaxMinWithRadius(mat2d_fp32* map, int radius, fpoint2d& max, fpoint2d& min)
{
    const Disc disc(*map, radius);
    seed(*map, disc.centreRow, disc.centreCol, max, min);
    scan(*map, max, min, [&](int row, int col) { return disc.contains(row, col); });
}

void findMaxMinWithOutRadius(mat2d_fp32* map, int radius, fpoint2d& max, fpoint2d& min)
{
    const Disc disc(*map, radius);
    seed(*map, 0, 0, max, min);
    scan(*map, max, min, [&](int row, int col) { return !disc.contains(row, col); });
}

void findMaxMinWithEllipse(mat2d_fp32* map, float a, float b, fpoint2d& max, fpoint2d& min)
{
    const Ellipse ellipse(*map, a, b);
    // The cell behind the centre rather than the centre: it only shows when no cell qualifies, but then hosts
    // know this one. A map of a single row or column has no such cell, so the seed is held inside.
    seed(*map, std::min(static_cast<int>(ellipse.centreRow + 1.0F), map->rows - 1),
         std::min(static_cast<int>(ellipse.centreCol + 1.0F), map->cols - 1), max, min);
    scan(*map, max, min,
         [&](int row, int col) { return ellipse.normalisedSquaredDistance(row, col) <= 1.0F; });
}

void findMaxMinWithOutEllipse(mat2d_fp32* map, float a, float b, fpoint2d& max, fpoint2d& min)
{
    const Ellipse ellipse(*map, a, b);
    seed(*map, 0, 0, max, min);
    scan(*map, max, min,
         [&](int row, int col) { return ellipse.normalisedSquaredDistance(row, col) > 1.0F; });
}

bool isPeak(float* window, float value)
{
    return std::none_of(window, window + blockSize, [value](float other) { return other > value; });
}

void findpeaks(mat2d_fp32* map, int rows, int cols, float threshold, std::vector<fpoint2d>& peaks)
{
    appendPeaks([map](int row) { return map->data[row]; }, rows, cols, threshold, peaks);
}

void findpeaks(mat1d_fp32* map, int rows, int cols, float threshold, std::vector<fpoint2d>& peaks)
{
    const auto stride = static_cast<std::size_t>(map->cols);
    appendPeaks([map, stride](int row) { return map->data + static_cast<std::size_t>(row) * stride; }, rows,
                cols, threshold, peaks);
}

}  // namespace KOVPrivate
