#include "tests/imaging/referencerenderer.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include <KOVDoaHandle/imaging/palettes_p.h>

namespace reference {

namespace {

Extremes search(const Grid& map, int seedRow, int seedCol, const std::function<bool(int, int)>& searched)
{
    const float seed = map.at(seedRow, seedCol);
    Extremes found{{seed, 0, 0}, {seed, 0, 0}};
    for (int r = 0; r < map.rows; ++r) {
        for (int c = 0; c < map.cols; ++c) {
            if (searched(r, c)) {
                if (map.at(r, c) > found.max.value) {
                    found.max = {map.at(r, c), r, c};
                }
                if (map.at(r, c) < found.min.value) {
                    found.min = {map.at(r, c), r, c};
                }
            }
        }
    }
    return found;
}

bool insideRadius(const Grid& map, int radius, int r, int c)
{
    const int down = r - map.rows / 2;
    const int right = c - map.cols / 2;
    return down * down + right * right <= radius * radius;
}

float ellipseSum(const Grid& map, float a, float b, int r, int c)
{
    const float down = static_cast<float>(r) - static_cast<float>(map.rows - 1) * 0.5F;
    const float right = static_cast<float>(c) - static_cast<float>(map.cols - 1) * 0.5F;
    return down * down / (a * a) + right * right / (b * b);
}

// The 25 values around a cell, with the rules of the lower and the right edge.
std::array<float, 25> block(const Grid& map, int r, int c)
{
    std::array<float, 25> values{};
    for (int down = -2; down <= 2; ++down) {
        for (int right = -2; right <= 2; ++right) {
            const bool rowHidden = (r == 1 && down == -2) || (r == map.rows - 3 && down >= 1) ||
                                   (r == map.rows - 2 && down == 2);
            const bool colHidden = (c == 1 && right == -2) || (c == map.cols - 3 && right == 2) ||
                                   (c == map.cols - 2 && right >= 1);
            if (!rowHidden && !colHidden) {
                values[static_cast<std::size_t>((down + 2) * 5 + right + 2)] = map.at(r + down, c + right);
            }
        }
    }
    return values;
}

const KOVPrivate::Palette& tableOf(int palette)
{
    return palette == 1   ? KOVPrivate::blackRedYellowPalette
           : palette == 2 ? KOVPrivate::greyPalette
                          : KOVPrivate::rainbowPalette;
}

float decibels(float value)
{
    return 20.0F * std::log10(value);
}

}  // namespace

Grid::Grid(const mat2d_fp32& map) : Grid(map.rows, map.cols)
{
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            at(r, c) = map.data[r][c];
        }
    }
}

Extremes findMaxMin(const Grid& map)
{
    return search(map, 0, 0, [](int, int) { return true; });
}

Extremes findMaxMinWithRadius(const Grid& map, int radius)
{
    return search(map, map.rows / 2, map.cols / 2,
                  [&](int r, int c) { return insideRadius(map, radius, r, c); });
}

Extremes findMaxMinWithOutRadius(const Grid& map, int radius)
{
    return search(map, 0, 0, [&](int r, int c) { return !insideRadius(map, radius, r, c); });
}

Extremes findMaxMinWithEllipse(const Grid& map, float a, float b)
{
    const float cy = static_cast<float>(map.rows - 1) * 0.5F;
    const float cx = static_cast<float>(map.cols - 1) * 0.5F;
    return search(map, static_cast<int>(std::trunc(cy + 1.0)), static_cast<int>(std::trunc(cx + 1.0)),
                  [&](int r, int c) { return ellipseSum(map, a, b, r, c) <= 1.0F; });
}

Extremes findMaxMinWithOutEllipse(const Grid& map, float a, float b)
{
    return search(map, 0, 0, [&](int r, int c) { return ellipseSum(map, a, b, r, c) > 1.0F; });
}

std::vector<fpoint2d> findPeaks(const Grid& map, float threshold)
{
    std::vector<fpoint2d> peaks;
    for (int r = 1; r <= map.rows - 2; ++r) {
        int c = 1;
        while (c < map.cols - 1) {
            const float value = map.at(r, c);
            const std::array<float, 25> around = block(map, r, c);
            const bool isPeak = value > threshold && std::none_of(around.begin(), around.end(),
                                                                  [&](float v) { return v > value; });
            if (isPeak) {
                peaks.push_back({value, r, c});
            }
            c += isPeak ? 3 : 1;
        }
    }
    std::sort(peaks.begin(), peaks.end(),
              [](const fpoint2d& a, const fpoint2d& b) { return a.value > b.value; });
    return peaks;
}

float median(const Grid& map)
{
    std::vector<float> sorted = map.values;
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() / 2];
}

Grid regression(const std::vector<fpoint2d>& points, int rows, int cols, float sigma, float noise)
{
    Grid out(rows, cols);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            float sum = 0.0F;
            for (const fpoint2d& point : points) {
                const auto down = static_cast<float>(r - point.row);
                const auto right = static_cast<float>(c - point.col);
                const float squaredDistance = down * down + right * right;
                const auto w = static_cast<float>(std::exp(-0.5 * squaredDistance / (sigma * sigma)) + noise);
                sum += point.value * w;
            }
            out.at(r, c) = sum;
        }
    }
    return out;
}

Grid interpolate(const Grid& map, int rows, int cols)
{
    if (map.rows == rows && map.cols == cols) {
        return map;
    }
    Grid out(rows, cols);
    const float sy = static_cast<float>(map.rows) / static_cast<float>(rows);
    const float sx = static_cast<float>(map.cols) / static_cast<float>(cols);
    for (int i = 0; i < rows; ++i) {
        const auto fy = static_cast<float>((i + 0.5) * sy - 0.5);
        const int y0 = std::clamp(static_cast<int>(std::floor(fy)), 0, map.rows - 2);
        const float wy = fy - static_cast<float>(y0);
        for (int j = 0; j < cols; ++j) {
            const auto fx = static_cast<float>((j + 0.5) * sx - 0.5);
            const int x0 = std::clamp(static_cast<int>(std::floor(fx)), 0, map.cols - 2);
            const float wx = fx - static_cast<float>(x0);
            const float above = map.at(y0, x0) * (1.0F - wx) + map.at(y0, x0 + 1) * wx;
            const float below = map.at(y0 + 1, x0) * (1.0F - wx) + map.at(y0 + 1, x0 + 1) * wx;
            out.at(i, j) = above * (1.0F - wy) + below * wy;
        }
    }
    return out;
}

std::vector<std::uint8_t> colour(const Grid& map, float min, float max, int palette)
{
    const KOVPrivate::Palette& table = tableOf(palette);
    const auto top = static_cast<float>(table.lastIndex());
    const float k = top / (max - min);
    std::vector<std::uint8_t> pixels(map.values.size() * 3, 0);
    for (std::size_t p = 0; p < map.values.size(); ++p) {
        const float v = map.values[p];
        int index = -1;
        if (v > max) {
            index = table.lastIndex();
        } else if (v > min && v <= max) {
            const float position = std::round((v - min) * k);
            index = position <= top ? static_cast<int>(position) : table.lastIndex();
        }
        if (index >= 0) {
            pixels[3 * p] = table.entries[index].blue;
            pixels[3 * p + 1] = table.entries[index].green;
            pixels[3 * p + 2] = table.entries[index].red;
        }
    }
    return pixels;
}

void Imager::init(int scaleA, int scaleB, int pictureWidth, int pictureHeight)
{
    m_scaleA = scaleA;
    m_scaleB = scaleB;
    m_width = pictureWidth;
    m_height = pictureHeight;
    m_insideMask = cv::Mat::zeros(m_height, m_width, CV_8UC1);
    m_outsideMask = cv::Mat::ones(m_height, m_width, CV_8UC1);
}

void Imager::setRadius(float newRadius, int p, int q)
{
    if (newRadius <= 0.0F) {
        m_radius = -1.0F;
        return;
    }
    m_radius = newRadius;
    const float s = imageScale;
    const float k = s >= 4.0F ? (s - 4.0F) * 0.25F + 1.0F : s >= 2.0F ? (s - 2.0F) * 0.5F + 1.0F : s;
    const auto width = static_cast<float>(m_width);
    const auto height = static_cast<float>(m_height);
    const float x = (width * m_radius) / (static_cast<float>(p) * k);
    const float y = (m_radius * height) / (k * static_cast<float>(q));
    m_semiAxisA = (static_cast<float>(m_scaleA) * x) / width;
    m_semiAxisB = (y * static_cast<float>(m_scaleB)) / height;
    m_insideMask = cv::Mat::zeros(m_height, m_width, CV_8UC1);
    m_outsideMask = cv::Mat::ones(m_height, m_width, CV_8UC1);
    for (cv::Mat* mask : {&m_insideMask, &m_outsideMask}) {
        cv::ellipse(*mask, cv::Point(static_cast<int>(m_width * 0.5), static_cast<int>(m_height * 0.5)),
                    cv::Size(static_cast<int>(x - 2.0), static_cast<int>(y - 2.0)), 0, 0, 360,
                    cv::Scalar(255), -1, 8, 0);
    }
}

std::vector<std::uint8_t> Imager::colourPicture(const Grid& map, float highest, float offset) const
{
    float hi = highest;
    auto lo = static_cast<float>(hi * std::pow(10.0, static_cast<double>(-0.05F * dynamic)));
    const auto m = static_cast<float>(minPreSdLever * std::pow(10.0, static_cast<double>(0.05F * offset)));
    if (m > hi || m > lo) {
        lo = m;
        hi = static_cast<float>(m * std::pow(10.0, static_cast<double>(0.05F * dynamic)));
    }
    return colour(map, lo, hi, palette);
}

std::vector<std::uint8_t> Imager::render(EngMapResult& frame) const
{
    int n = cursorNum;
    if (!multCursorEnable) {
        if (m_radius > 0.0F && n >= 1) {
            n = outsideShown ? n : 1;
        }
    } else if (n > 0) {
        n = frame.firstPointInRadius ? cursorNum + 1 : cursorNum;
        if (m_radius > 0.0F) {
            n = outsideShown ? n : 1;
        }
    }

    std::vector<fpoint2d> peaks;
    if (!frame.peaks.empty()) {
        for (const TargetPoint& peak : frame.peaks) {
            peaks.push_back({peak.value, peak.row, peak.col});
        }
    } else {
        peaks = findPeaks(Grid(*frame.ResEngMap), minPreSdLever);
        for (const fpoint2d& peak : peaks) {
            frame.peaks.push_back({peak.value, peak.row, peak.col, 0, 0, false});
        }
    }
    std::vector<fpoint2d> cursors;
    for (int i = 0; i < static_cast<int>(peaks.size()); ++i) {
        if (i < n && peaks[static_cast<std::size_t>(i)].value >= minPreSdLever) {
            cursors.push_back(peaks[static_cast<std::size_t>(i)]);
        }
    }

    Grid map(*frame.ResEngMap);
    const bool regressed = multCursorEnable && cursorNum > 0;
    if (regressed) {
        map = regression(cursors, map.rows, map.cols, 2.4F, 3.1622778e-5F);
    }

    const bool region = m_radius > 0.0F;
    const Extremes inside = region ? findMaxMinWithEllipse(map, m_semiAxisA, m_semiAxisB) : findMaxMin(map);
    frame.maxSpl = inside.max;
    frame.minSpl = inside.min;
    if (region) {
        const Extremes outside = findMaxMinWithOutEllipse(map, m_semiAxisA, m_semiAxisB);
        frame.maxSplExtern = outside.max;
        frame.minSplExtern = outside.min;
    }
    const float med = median(map);
    if (med != 0.0F) {
        for (float& value : map.values) {
            value -= med;
        }
        frame.maxSpl.value -= med;
        frame.minSpl.value -= med;
        if (region) {
            frame.maxSplExtern.value -= med;
            frame.minSplExtern.value -= med;
        }
    }
    float offsetInside = 0.0F;
    float offsetOutside = 0.0F;
    if (!peaks.empty() && !regressed) {
        offsetInside = decibels(frame.maxSpl.value) - decibels(peaks.front().value);
        offsetOutside = decibels(frame.maxSplExtern.value) - decibels(peaks.front().value);
    }

    const Grid doubled = interpolate(map, 2 * map.rows, 2 * map.cols);
    const Grid enlarged = interpolate(doubled, m_height, m_width);

    std::vector<std::uint8_t> first = colourPicture(enlarged, frame.maxSpl.value, offsetInside);
    if (!region) {
        return first;
    }
    cv::Mat composed = cv::Mat::zeros(m_height, m_width, CV_8UC3);
    cv::Mat(m_height, m_width, CV_8UC3, first.data()).copyTo(composed, m_insideMask);
    if (outsideShown) {
        std::vector<std::uint8_t> second = colourPicture(enlarged, frame.maxSplExtern.value, offsetOutside);
        cv::Mat outside = cv::Mat::zeros(m_height, m_width, CV_8UC3);
        cv::Mat(m_height, m_width, CV_8UC3, second.data()).copyTo(outside, m_outsideMask);
        cv::Mat sum;
        cv::addWeighted(composed, 1.0, outside, 1.0, 0.0, sum, -1);
        composed = sum;
    }
    return {composed.data, composed.data + composed.total() * 3};
}

}  // namespace reference
