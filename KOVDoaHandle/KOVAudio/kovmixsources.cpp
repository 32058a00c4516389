#include <KOVDoaHandle/KOVAudio/kovmixsources.h>
#include <KOVDoaHandle/diagnostics/kovblas.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace {

constexpr float sixteenBitStep = 3.051851e-5F;

// Columns that a 16-bit mix has on the stack at a time.
constexpr int tileColumns = 4096;

inline float toFloat(float sample)
{
    return sample;
}

inline float toFloat(std::int16_t sample)
{
    return static_cast<float>(sample) * sixteenBitStep;
}

std::int16_t toSixteenBits(float value)
{
    const float steps = value / sixteenBitStep;
    // The conversion is defined between these; the upper one is 2^31 itself.
    if (!(steps >= -2147483648.0F && steps < 2147483648.0F)) {
        return 0;
    }
    return static_cast<std::int16_t>(static_cast<std::int32_t>(steps));
}

// sum[c - first] = the sum of all rows at column c, for `count` columns from `first`; 0 past the input's columns.
template <typename Matrix>
void sumColumns(const Matrix& in, int first, int count, float* sum)
{
    std::fill_n(sum, count, 0.0F);
    const int present = std::min(count, std::max(in.cols, 0) - first);
    for (int row = 0; row < in.rows; ++row) {
        const auto* samples = in.data[row];
        for (int column = 0; column < present; ++column) {
            sum[column] += toFloat(samples[first + column]);
        }
    }
}

template <typename Matrix>
void mixToFloat(const Matrix& in, const mat1d_fp32& out)
{
    if (out.cols <= 0) {
        return;
    }
    sumColumns(in, 0, out.cols, out.data);
    const float largest = KOVBlas::findMax(out.data, out.cols);
    if (largest > 1.0F) {
        const int mixed = std::min(in.cols, out.cols);
        for (int column = 0; column < mixed; ++column) {
            out.data[column] /= largest;
        }
    }
}

// The sums of one tile after the other, with the largest of those before kept in front of them: so a search goes
// on where the one before ended.
class Tile
{
public:
    template <typename Matrix>
    void fill(const Matrix& in, int first, int columns)
    {
        m_count = columns;
        sumColumns(in, first, columns, m_values.data() + 1);
    }

    float largest() { return KOVBlas::findMax(m_values.data() + 1, m_count); }

    float largestWith(float before)
    {
        m_values[0] = before;
        return KOVBlas::findMax(m_values.data(), m_count + 1);
    }

    float sum(int column) const { return m_values[static_cast<std::size_t>(column) + 1]; }

private:
    std::array<float, tileColumns + 1> m_values;
    int m_count = 0;
};

template <typename Matrix>
void mixToSixteenBits(const Matrix& in, const mat1d_short& out)
{
    if (out.cols <= 0) {
        return;
    }
    Tile tile;
    tile.fill(in, 0, std::min(tileColumns, out.cols));
    float largest = tile.largest();
    // The columns that are left, counted down: up, the last step could leave the range of int.
    for (int left = out.cols - tileColumns; left > 0; left -= tileColumns) {
        tile.fill(in, out.cols - left, std::min(tileColumns, left));
        largest = tile.largestWith(largest);
    }

    // Only a peak above full scale calls for a division; one by 1 changes nothing.
    const float divisor = largest > 1.0F ? largest : 1.0F;
    const int mixed = std::min(in.cols, out.cols);
    for (int left = mixed; left > 0; left -= tileColumns) {
        const int first = mixed - left;
        const int columns = std::min(tileColumns, left);
        if (out.cols > tileColumns) {
            tile.fill(in, first, columns);
        }
        for (int column = 0; column < columns; ++column) {
            out.data[first + column] = toSixteenBits(tile.sum(column) / divisor);
        }
    }
}

}  // namespace

void mixSources(mat2d_fp32* in, mat1d_fp32* out)
{
    mixToFloat(*in, *out);
}

void mixSources(mat2d_short* in, mat1d_fp32* out)
{
    mixToFloat(*in, *out);
}

void mixSources(mat2d_short* in, mat1d_short* out)
{
    mixToSixteenBits(*in, *out);
}

void mixSources(mat2d_fp32* in, mat1d_short* out)
{
    mixToSixteenBits(*in, *out);
}
