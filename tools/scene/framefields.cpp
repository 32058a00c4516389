#include "tools/scene/framefields.h"

#include <algorithm>
#include <cmath>

#include <KOVDoaHandle/imaging/kovmapsearch.h>

namespace kovtools {

namespace {

constexpr std::size_t storedPeaks = 8;  // at most, in a frame
constexpr float weakestPeak = 0.35F;    // of the frame's strongest: 9 dB below it, above the side lobes
constexpr double farthestMatch = 4.0;   // cells that a peak may move from frame to frame

// The standard region of interest: an ellipse with half the map's height and width.
bool isInRegion(int row, int col, int rows, int cols)
{
    const double y = (row - 0.5 * (rows - 1)) / (0.25 * rows);
    const double x = (col - 0.5 * (cols - 1)) / (0.25 * cols);
    return y * y + x * x <= 1.0;
}

struct Extremes
{
    fpoint2d max{};
    fpoint2d min{};
    bool any = false;

    void take(float value, int row, int col)
    {
        if (!any || value > max.value) {
            max = {value, row, col};
        }
        if (!any || value < min.value) {
            min = {value, row, col};
        }
        any = true;
    }
};

// The upper of the two middle values when their number is even, as the library has it.
float medianOf(std::vector<float> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

fpoint2d lowered(fpoint2d point, float median)
{
    point.value -= median;
    return point;
}

float bandLevel(const FrameContext& context, const std::vector<float>& spectrum)
{
    double sum = 0.0;
    for (int bin = context.firstBandBin; bin <= context.lastBandBin; ++bin) {
        sum += spectrum[static_cast<std::size_t>(bin)];
    }
    constexpr double microPascals = 120.0;  // dB from 1 Pa to 1 uPa
    return static_cast<float>(10.0 * std::log10(std::max(sum, 1e-30)) + microPascals);
}

const TargetPoint* nearest(const std::vector<TargetPoint>& points, const TargetPoint& to)
{
    const TargetPoint* best = nullptr;
    double bestDistance = farthestMatch;
    for (const TargetPoint& point : points) {
        const double distance = std::hypot(point.row - to.row, point.col - to.col);
        if (distance <= bestDistance) {
            bestDistance = distance;
            best = &point;
        }
    }
    return best;
}

}  // namespace

void fillFrameFields(const FrameContext& context, const std::vector<float>& map,
                     const std::vector<float>& spectrum, EngMapResult& record)
{
    const int rows = record.ResEngMap->rows;
    const int cols = record.ResEngMap->cols;
    // Not the library's searches: those report the position (0, 0) when the cell they start from is the
    // extreme one.
    Extremes inside;
    Extremes outside;
    const float* value = map.data();
    for (int row = 0; row < rows; ++row) {
        std::copy_n(value, cols, record.ResEngMap->data[row]);
        for (int col = 0; col < cols; ++col) {
            (isInRegion(row, col, rows, cols) ? inside : outside).take(*value++, row, col);
        }
    }
    std::copy(spectrum.begin(), spectrum.end(), record.PowerSpec->data);

    record.median = medianOf(map);
    record.PowerBandsFFTSpec = bandLevel(context, spectrum);
    record.distance = context.distance;
    record.maxSpl = inside.max;
    record.minSpl = inside.min;
    record.maxSplExtern = outside.max;
    record.minSplExtern = outside.min;
    record.maxSplView = lowered(inside.max, record.median);
    record.minSplView = lowered(inside.min, record.median);
    record.maxSplExternView = lowered(outside.max, record.median);
    record.minSplExternView = lowered(outside.min, record.median);
    record.firstPointInRadius = inside.any && inside.max.value >= outside.max.value;
    record.peaks.clear();
}

void PeakMarker::mark(EngMapResult& record)
{
    std::vector<fpoint2d> found;
    const float strongest = std::max(record.maxSpl.value, record.maxSplExtern.value);
    KOVPrivate::findpeaks(record.ResEngMap, record.ResEngMap->rows, record.ResEngMap->cols,
                          weakestPeak * strongest, found);
    record.peaks.clear();
    for (std::size_t i = 0; i < std::min(found.size(), storedPeaks); ++i) {
        TargetPoint point{found[i].value, found[i].row, found[i].col, 0, 1, false};
        if (const TargetPoint* const before = nearest(m_before, point)) {
            point.id = before->id;
            point.life = before->life + 1;
            point.matched = true;
        } else {
            point.id = ++m_identities;
        }
        record.peaks.push_back(point);
    }
    m_before = record.peaks;
}

}  // namespace kovtools
