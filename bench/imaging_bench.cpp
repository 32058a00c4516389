// Rendering and its parts, each beside what a host would write instead. Names: Imaging/<operation>/<size>
// and, for the peer, the same with /peer behind it.
#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <KOVDoaHandle/imaging/kovdoaobject.h>
#include <KOVDoaHandle/imaging/kovgaussianprocessregression.h>

#include "bench/copying.h"
#include "bench/movingsource.h"

namespace {

using bench::frameCount;
using bench::mapCols;
using bench::mapRows;

constexpr float dynamicDb = 6.0F;

// What a host would write with OpenCV: extremes, median by selection, two bilinear enlargements, conversion
// to bytes, colour look-up.
class OpenCvRenderer
{
public:
    OpenCvRenderer(int width, int height) : m_width(width), m_height(height), m_palette(1, 256, CV_8UC3)
    {
        for (int i = 0; i < 256; ++i) {
            m_palette.at<cv::Vec3b>(0, i) = {static_cast<uchar>(255 - i), static_cast<uchar>(i / 2),
                                             static_cast<uchar>(i)};
        }
        m_palette.at<cv::Vec3b>(0, 0) = {0, 0, 0};
        m_mask = cv::Mat::zeros(height, width, CV_8UC1);
        cv::ellipse(m_mask, {width / 2, height / 2}, {height / 3, height / 3}, 0, 0, 360, cv::Scalar(255),
                    -1);
        m_outsideMask = cv::Mat::ones(height, width, CV_8UC1);
    }

    void render(const mat2d_fp32& map, cv::Mat& image)
    {
        const float high = prepare(map);
        colour(high, image);
    }

    void renderInsideAndOutside(const mat2d_fp32& map, cv::Mat& image)
    {
        const float high = prepare(map);
        colour(high, m_first);
        colour(0.5F * high, m_second);
        m_inside.create(m_height, m_width, CV_8UC3);
        m_inside.setTo(0);
        m_first.copyTo(m_inside, m_mask);
        m_outside.create(m_height, m_width, CV_8UC3);
        m_outside.setTo(0);
        m_second.copyTo(m_outside, m_outsideMask);
        cv::add(m_inside, m_outside, image);
    }

private:
    float prepare(const mat2d_fp32& map)
    {
        m_map.create(map.rows, map.cols, CV_32FC1);
        for (int row = 0; row < map.rows; ++row) {
            std::copy_n(map.data[row], map.cols, m_map.ptr<float>(row));
        }
        double low = 0.0;
        double high = 0.0;
        cv::Point lowAt, highAt;
        cv::minMaxLoc(m_map, &low, &high, &lowAt, &highAt);
        m_sorted.assign(m_map.begin<float>(), m_map.end<float>());
        const auto middle = m_sorted.begin() + static_cast<std::ptrdiff_t>(m_sorted.size() / 2);
        std::nth_element(m_sorted.begin(), middle, m_sorted.end());
        m_map -= *middle;
        cv::resize(m_map, m_doubled, {2 * map.cols, 2 * map.rows}, 0, 0, cv::INTER_LINEAR);
        cv::resize(m_doubled, m_enlarged, {m_width, m_height}, 0, 0, cv::INTER_LINEAR);
        return static_cast<float>(high) - *middle;
    }

    void colour(float high, cv::Mat& image)
    {
        const double low = high * std::pow(10.0, -0.05 * dynamicDb);
        const double scale = 255.0 / (high - low);
        m_enlarged.convertTo(m_levels, CV_8U, scale, -low * scale);
        cv::cvtColor(m_levels, m_threeLevels, cv::COLOR_GRAY2BGR);
        cv::LUT(m_threeLevels, m_palette, image);
    }

    int m_width;
    int m_height;
    cv::Mat m_palette, m_mask, m_outsideMask;
    cv::Mat m_map, m_doubled, m_enlarged, m_levels, m_threeLevels, m_first, m_second, m_inside, m_outside;
    std::vector<float> m_sorted;
};

// The least that any renderer does: it stores the picture.
void storePicture(benchmark::State& state)
{
    bench::copyBytes(state, static_cast<std::size_t>(state.range(0) * state.range(1) * 3));
}

void setCounters(benchmark::State& state, int width, int height)
{
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["ns/pixel"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * width * height * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void render(benchmark::State& state, bool region)
{
    const int width = static_cast<int>(state.range(0));
    const int height = static_cast<int>(state.range(1));
    KOVOFFLineDoaObject imager;
    bench::initInOwnFolder(imager, width, height);
    imager.setDynamic(dynamicDb);
    if (region) {
        imager.setRadius(static_cast<float>(height / 3), width, height);
        imager.setIsImagerOutSideRadiusShow(true);
    }
    const std::vector<bench::Frame> frames = bench::makeFrames();
    const bench::Picture image(create_mat1d_uint8(height, width * 3));
    std::size_t next = 0;
    for (auto _ : state) {
        imager.updateImagerRGB(frames[next++ % frameCount].get(), image.get());
        benchmark::DoNotOptimize(image->data);
        benchmark::ClobberMemory();
    }
    setCounters(state, width, height);
}

void renderPeer(benchmark::State& state, bool region)
{
    cv::setNumThreads(1);
    const int width = static_cast<int>(state.range(0));
    const int height = static_cast<int>(state.range(1));
    OpenCvRenderer renderer(width, height);
    const std::vector<bench::Frame> frames = bench::makeFrames();
    cv::Mat image;
    std::size_t next = 0;
    for (auto _ : state) {
        const mat2d_fp32& map = *frames[next++ % frameCount]->ResEngMap;
        if (region) {
            renderer.renderInsideAndOutside(map, image);
        } else {
            renderer.render(map, image);
        }
        benchmark::DoNotOptimize(image.data);
        benchmark::ClobberMemory();
    }
    setCounters(state, width, height);
}

constexpr float sigma = 2.4F;
constexpr float noise = 3.1622778e-5F;
const std::vector<fpoint2d> cursors{{1.0F, 20, 30}, {0.8F, 5, 60}, {0.7F, 40, 3}, {0.6F, 30, 50}};

void regress(benchmark::State& state)
{
    mat2d_fp32* map = create_mat2d_fp32(mapRows, mapCols);
    KOVGaussianProcessRegression regression;
    for (auto _ : state) {
        regression.predit(cursors, map, sigma, noise);
        benchmark::DoNotOptimize(map->data[0]);
        benchmark::ClobberMemory();
    }
    destroy_mat2d_fp32(map);
}

void regressPeer(benchmark::State& state)
{
    mat2d_fp32* map = create_mat2d_fp32(mapRows, mapCols);
    for (auto _ : state) {
        for (int row = 0; row < mapRows; ++row) {
            for (int col = 0; col < mapCols; ++col) {
                float sum = 0.0F;
                for (const fpoint2d& point : cursors) {
                    const auto down = static_cast<float>(row - point.row);
                    const auto right = static_cast<float>(col - point.col);
                    const float squared = down * down + right * right;
                    sum +=
                        point.value * static_cast<float>(std::exp(-0.5 * squared / (sigma * sigma)) + noise);
                }
                map->data[row][col] = sum;
            }
        }
        benchmark::DoNotOptimize(map->data[0]);
        benchmark::ClobberMemory();
    }
    destroy_mat2d_fp32(map);
}

void pictureSizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Args({640, 480})->Args({1920, 1080})->Args({3840, 2160})->Unit(benchmark::kMicrosecond);
}

}  // namespace

BENCHMARK_CAPTURE(render, full, false)->Name("Imaging/Render")->Apply(pictureSizes);
BENCHMARK_CAPTURE(renderPeer, full, false)->Name("Imaging/Render/peer")->Apply(pictureSizes);
BENCHMARK(storePicture)->Name("Imaging/Render/bound")->Apply(pictureSizes);
BENCHMARK_CAPTURE(render, region, true)->Name("Imaging/RenderInsideAndOutside")->Apply(pictureSizes);
BENCHMARK_CAPTURE(renderPeer, region, true)->Name("Imaging/RenderInsideAndOutside/peer")->Apply(pictureSizes);
BENCHMARK(storePicture)->Name("Imaging/RenderInsideAndOutside/bound")->Apply(pictureSizes);
BENCHMARK(regress)->Name("Imaging/Regression/4cursors/48x64");
BENCHMARK(regressPeer)->Name("Imaging/Regression/4cursors/48x64/peer");
