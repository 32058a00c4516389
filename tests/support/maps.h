// Energy maps, pictures and frames for tests: owned, filled from a formula or at random.
#ifndef KOVDOA_TESTS_SUPPORT_MAPS_H
#define KOVDOA_TESTS_SUPPORT_MAPS_H

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <random>
#include <vector>

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/imaging/engmapresult.h>

namespace testsupport {

struct Destroy
{
    void operator()(mat2d_fp32* map) const { destroy_mat2d_fp32(map); }
    void operator()(mat1d_fp32* map) const { destroy_mat1d_fp32(map); }
    void operator()(mat1d_uint8* image) const { destroy_mat1d_uint8(image); }
    void operator()(EngMapResult* frame) const { releaseResultHandle(frame); }
};

using Map = std::unique_ptr<mat2d_fp32, Destroy>;
using FlatMap = std::unique_ptr<mat1d_fp32, Destroy>;
using Image = std::unique_ptr<mat1d_uint8, Destroy>;
using Frame = std::unique_ptr<EngMapResult, Destroy>;

inline Map makeMap(int rows, int cols)
{
    return Map(create_mat2d_fp32(rows, cols));
}

inline Map makeMap(std::initializer_list<std::initializer_list<float>> rows)
{
    Map map = makeMap(static_cast<int>(rows.size()), static_cast<int>(rows.begin()->size()));
    int row = 0;
    for (const auto& values : rows) {
        std::copy(values.begin(), values.end(), map->data[row++]);
    }
    return map;
}

// Fills a map from `level(row, col)`.
template <typename Level>
void fill(mat2d_fp32& map, Level level)
{
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            map.data[row][col] = level(row, col);
        }
    }
}

inline FlatMap flatten(const mat2d_fp32& map)
{
    FlatMap flat(create_mat1d_fp32(map.rows, map.cols));
    for (int row = 0; row < map.rows; ++row) {
        std::copy_n(map.data[row], map.cols, flat->data + row * map.cols);
    }
    return flat;
}

inline Image makeImage(int height, int width, int channels = 3)
{
    return Image(create_mat1d_uint8(height, width * channels));
}

inline std::vector<unsigned char> bytesOf(const mat1d_uint8& image)
{
    return {image.data, image.data + static_cast<std::ptrdiff_t>(image.rows) * image.cols};
}

inline Frame makeFrame(int rows, int cols)
{
    return Frame(createResultHandle(rows, cols, 0, 0, 1024));
}

// A few smooth sources over a noisy floor: what a beamformer delivers.
inline void fillWithSources(mat2d_fp32& map, unsigned seed, int sources = 3)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> unit(0.0F, 1.0F);
    struct Source
    {
        float row, col, level, width;
    };
    std::vector<Source> list;
    for (int i = 0; i < sources; ++i) {
        list.push_back({unit(random) * static_cast<float>(map.rows),
                        unit(random) * static_cast<float>(map.cols), 0.2F + unit(random),
                        1.5F + 3.0F * unit(random)});
    }
    fill(map, [&](int row, int col) {
        float level = 0.05F + 0.02F * unit(random);
        for (const Source& source : list) {
            const float down = static_cast<float>(row) - source.row;
            const float right = static_cast<float>(col) - source.col;
            level += source.level *
                     std::exp(-(down * down + right * right) / (2.0F * source.width * source.width));
        }
        return level;
    });
}

}  // namespace testsupport

#endif
