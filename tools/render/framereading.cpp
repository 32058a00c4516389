#include "tools/render/framereading.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kovtools {

namespace {

float dbOf(float level)
{
    return 20.0F * std::log10(level);
}

bool isRegressed(const RenderOptions& options)
{
    return options.severalCursors && options.cursors > 0;
}

// The imager shows one cursor only while a region hides the rest of the map.
int allowedCursors(const EngMapResult& frame, const RenderOptions& options)
{
    int count = options.cursors;
    if (options.severalCursors && count > 0 && frame.firstPointInRadius) {
        ++count;
    }
    if (options.radius > 0 && count >= 1 && !options.outside) {
        count = 1;
    }
    return count;
}

bool isOnMap(const EngMapResult& frame, int row, int col)
{
    return row >= 0 && row < frame.ResEngMap->rows && col >= 0 && col < frame.ResEngMap->cols;
}

}  // namespace

bool ColourRange::isUsable() const
{
    return std::isfinite(low) && std::isfinite(high) && low > 0.0F && high > low && frameMaximum > 0.0F;
}

double ColourRange::highDb() const
{
    return 20.0 * std::log10(static_cast<double>(high) / frameMaximum);
}

double ColourRange::lowDb() const
{
    return 20.0 * std::log10(static_cast<double>(low) / frameMaximum);
}

ColourRange colourRange(const EngMapResult& frame, const RenderOptions& options)
{
    const auto dynamic = static_cast<float>(options.dynamicRange);
    const float maximum = frame.maxSpl.value;
    ColourRange range;
    range.frameMaximum = maximum;
    range.high = maximum;
    range.low = static_cast<float>(maximum * std::pow(10.0, -0.05F * dynamic));
    // The minimum level is given for the map as recorded, the range lies on the map without its median: the
    // imager shifts the one to the other by the level difference of the strongest place.
    float offset = 0.0F;
    if (!frame.peaks.empty() && !isRegressed(options)) {
        offset = dbOf(maximum) - dbOf(frame.peaks.front().value);
    }
    const auto minimum =
        static_cast<float>(static_cast<float>(options.minimumLevel) * std::pow(10.0, 0.05F * offset));
    if (minimum > range.high || minimum > range.low) {
        range.low = minimum;
        range.high = static_cast<float>(minimum * std::pow(10.0, 0.05F * dynamic));
    }
    return range;
}

std::vector<CursorMark> cursorMarks(const EngMapResult& frame, const RenderOptions& options,
                                    const RegionEllipse& region)
{
    std::vector<CursorMark> marks;
    const int count = allowedCursors(frame, options);
    const bool isWholeMapShown = !region.active || options.outside;
    const auto isShown = [&](int row, int col) {
        return isOnMap(frame, row, col) &&
               (isWholeMapShown || region.contains(row, col, frame.ResEngMap->rows, frame.ResEngMap->cols));
    };
    for (std::size_t i = 0; i < frame.peaks.size() && i < static_cast<std::size_t>(std::max(count, 0)); ++i) {
        const TargetPoint& peak = frame.peaks[i];
        if (peak.value >= static_cast<float>(options.minimumLevel) && isShown(peak.row, peak.col)) {
            marks.push_back({peak.row, peak.col, peak.value});
        }
    }
    if (marks.empty() && count > 0 && isShown(frame.maxSpl.row, frame.maxSpl.col)) {
        const float level = frame.ResEngMap->data[frame.maxSpl.row][frame.maxSpl.col];
        if (std::isfinite(level) && level >= static_cast<float>(options.minimumLevel)) {
            marks.push_back({frame.maxSpl.row, frame.maxSpl.col, level});
        }
    }
    return marks;
}

}  // namespace kovtools
