// The decisions of distance smoothing, without a clock: what is shown, and when the wait for a better reading starts.
#ifndef KOVDOA_DISTANCESTEADIER_P_H
#define KOVDOA_DISTANCESTEADIER_P_H

#include <vector>

namespace KOVPrivate {

enum class DistanceStatus : int { NoResult = 0, Measuring = 1, Stable = 2 };

class DistanceSteadier
{
public:
    // Takes one reading. True: measuring has begun anew, so the caller restarts the stopwatch.
    bool feed(float distance);

    // The status, `elapsedMs` after that stopwatch was last restarted; measuring ends here when it has taken too long.
    DistanceStatus statusAfter(float elapsedMs);

    DistanceStatus status() const { return m_status; }

    // The last stable distance; -1 before the first.
    float result() const { return m_result; }

private:
    std::vector<float> m_history;  // oldest first
    float m_result = -1.0F;
    DistanceStatus m_status = DistanceStatus::NoResult;
};

}  // namespace KOVPrivate

#endif
