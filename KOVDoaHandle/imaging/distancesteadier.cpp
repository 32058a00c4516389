#include <KOVDoaHandle/imaging/distancesteadier_p.h>

#include <cmath>

#include <KOVDoaHandle/diagnostics/kovblas.h>

namespace KOVPrivate {

namespace {

constexpr std::size_t historyLength = 10;
constexpr double outlierDistance = 0.2;
// Between the two variances a stable result survives, and an unstable one does not become stable.
constexpr double stableBelow = 0.1;
constexpr double unstableAbove = 0.2;
constexpr float patienceMs = 1000.0F;

// The mean of the readings near `mean`; `mean` itself when all are far from it, as with two equal clusters.
float robustAverage(const std::vector<float>& readings, float mean)
{
    float sum = 0.0F;
    int count = 0;
    for (const float reading : readings) {
        if (static_cast<double>(std::fabs(reading - mean)) < outlierDistance) {
            sum += reading;
            ++count;
        }
    }
    return count > 0 ? sum / static_cast<float>(count) : mean;
}

// Truncated, not rounded, to one decimal. As a float, so that readings beyond the integers do no harm.
float withOneDecimal(float distance)
{
    return std::trunc(distance * 10.0F) / 10.0F;
}

}  // namespace

bool DistanceSteadier::feed(float distance)
{
    if (!(distance > 0.0F)) {  // a NaN as well
        return false;
    }
    m_history.push_back(distance);
    if (m_history.size() <= historyLength) {
        return false;
    }
    m_history.erase(m_history.begin());

    const float mean = KOVBlas::Mean(m_history.data(), historyLength);
    const float variance = KOVBlas::Var(m_history.data(), historyLength, mean);
    const auto spread = static_cast<double>(variance);
    // The two upper bands differ on purpose: the middle one restarts the stopwatch of a measurement again and again,
    // the outer one only ends a stable result. A spread that is no number falls in neither.
    if (spread < stableBelow) {
        m_status = DistanceStatus::Stable;
        m_result = withOneDecimal(robustAverage(m_history, mean));
        return false;
    }
    const bool isModerate = spread <= unstableAbove && m_status != DistanceStatus::Stable;
    const bool isLost = spread > unstableAbove && m_status == DistanceStatus::Stable;
    if (isModerate || isLost) {
        m_status = DistanceStatus::Measuring;
        return true;
    }
    return false;
}

DistanceStatus DistanceSteadier::statusAfter(float elapsedMs)
{
    if (m_status == DistanceStatus::Measuring && elapsedMs > patienceMs) {
        m_status = DistanceStatus::NoResult;
    }
    return m_status;
}

}  // namespace KOVPrivate
