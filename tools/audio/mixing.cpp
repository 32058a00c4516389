#include "tools/audio/mixing.h"

#include <KOVDoaHandle/KOVAudio/kovmixsources.h>

#include <algorithm>
#include <cmath>

namespace kovtools {

namespace {

// What is converted to 16 bits at a time: the library keeps the sum on its stack meanwhile.
constexpr std::size_t conversionBlock = 4096;  // samples

mat2d_fp32 matrixOf(std::vector<float*>& rows, std::size_t columns)
{
    mat2d_fp32 matrix{};
    matrix.rows = static_cast<int>(rows.size());
    matrix.cols = static_cast<int>(columns);
    matrix.data = rows.data();
    return matrix;
}

// The largest sample of the plain sum, to say by how much it was brought down.
double largestOfSum(const std::vector<std::vector<float>>& sounds, std::size_t length)
{
    std::vector<float> sum(length, 0.0F);
    for (const std::vector<float>& sound : sounds) {
        for (std::size_t i = 0; i < length; ++i) {
            sum[i] += sound[i];
        }
    }
    return *std::max_element(sum.begin(), sum.end());
}

double inDecibels(double ratio)
{
    return 20.0 * std::log10(ratio);
}

}  // namespace

Mixture mix(std::vector<std::vector<float>>& sounds)
{
    std::size_t length = 0;
    for (const std::vector<float>& sound : sounds) {
        length = std::max(length, sound.size());
    }
    std::vector<float*> rows;
    for (std::vector<float>& sound : sounds) {
        sound.resize(length, 0.0F);
        rows.push_back(sound.data());
    }
    Mixture mixture;
    mixture.samples.resize(length);
    mat2d_fp32 in = matrixOf(rows, length);
    mat1d_fp32 out{};
    out.rows = 1;
    out.cols = static_cast<int>(length);
    out.data = mixture.samples.data();
    mixSources(&in, &out);
    mixture.reduction = std::max(0.0, inDecibels(std::max(largestOfSum(sounds, length), 1.0)));
    mixture.lowest = *std::min_element(mixture.samples.begin(), mixture.samples.end());
    return mixture;
}

std::vector<std::int16_t> inSixteenBits(Mixture& mixture)
{
    if (mixture.lowest < -1.0) {
        const auto divisor = static_cast<float>(-mixture.lowest);
        for (float& sample : mixture.samples) {
            sample /= divisor;
        }
        mixture.reduction += inDecibels(-mixture.lowest);
        mixture.lowest = -1.0;
    }
    std::vector<std::int16_t> result(mixture.samples.size());
    for (std::size_t at = 0; at < result.size(); at += conversionBlock) {
        const std::size_t count = std::min(conversionBlock, result.size() - at);
        std::vector<float*> row{mixture.samples.data() + at};
        mat2d_fp32 in = matrixOf(row, count);
        mat1d_short out{};
        out.rows = 1;
        out.cols = static_cast<int>(count);
        out.data = result.data() + at;
        mixSources(&in, &out);
    }
    return result;
}

}  // namespace kovtools
