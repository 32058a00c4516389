#include "tools/tracking/peakfollower.h"

#include <KOVDoaHandle/imaging/kovmapsearch.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace kovtools {

namespace {

float levelOf(const fpoint2d& peak)
{
    return std::isnan(peak.value) ? std::numeric_limits<float>::lowest() : peak.value;
}

// Keeps the order, because it decides which of two near peaks a track follows.
void keepStrongest(std::vector<fpoint2d>& peaks, std::size_t count)
{
    std::vector<float> levels;
    for (const fpoint2d& peak : peaks) {
        levels.push_back(levelOf(peak));
    }
    const auto last = levels.begin() + static_cast<std::ptrdiff_t>(count) - 1;
    std::nth_element(levels.begin(), last, levels.end(), std::greater<>());
    const float weakest = *last;
    std::vector<fpoint2d> kept;
    auto above = std::count_if(peaks.begin(), peaks.end(),
                               [weakest](const fpoint2d& peak) { return levelOf(peak) > weakest; });
    // Of those that are just as strong as the weakest one, the first ones.
    auto equal = static_cast<std::ptrdiff_t>(count) - above;
    for (const fpoint2d& peak : peaks) {
        if (levelOf(peak) > weakest || (levelOf(peak) == weakest && equal-- > 0)) {
            kept.push_back(peak);
        }
    }
    peaks = std::move(kept);
}

}  // namespace

std::vector<fpoint2d> peaksOf(const EngMapResult& frame, const FollowOptions& options)
{
    std::vector<fpoint2d> peaks;
    for (const TargetPoint& peak : frame.peaks) {
        peaks.push_back({peak.value, peak.row, peak.col});
    }
    if (peaks.empty()) {
        KOVPrivate::findpeaks(frame.ResEngMap, frame.ResEngMap->rows, frame.ResEngMap->cols,
                              static_cast<float>(options.minimumLevel), peaks);
    }
    const auto most = static_cast<std::size_t>(std::max(options.strongest, 0));
    if (most > 0 && peaks.size() > most) {
        keepStrongest(peaks, most);
    }
    return peaks;
}

std::vector<TargetPoint> PeakFollower::follow(const EngMapResult& frame)
{
    m_tracker.FeedData(peaksOf(frame, m_options));
    return m_tracker.getTargetPoints();
}

}  // namespace kovtools
