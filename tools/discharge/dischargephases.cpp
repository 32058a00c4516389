#include "tools/discharge/dischargephases.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kovtools {

namespace {

constexpr double halfCycle = 180.0;     // degrees
constexpr double furthestSpread = 2.5;  // standard deviations; beyond, the voltage is too low to discharge

double normal(Random& random)
{
    return std::numbers::sqrt2 * random.complexNormal().real();
}

double cutNormal(Random& random)
{
    return std::clamp(normal(random), -furthestSpread, furthestSpread);
}

// Poisson's distribution, by counting how many exponential waits fit in. For small means.
int poisson(double mean, Random& random)
{
    int count = 0;
    for (double wait = -std::log1p(-random.uniform()); wait < mean; wait -= std::log1p(-random.uniform())) {
        ++count;
    }
    return count;
}

}  // namespace

const char* dischargeName(DischargeKind kind)
{
    switch (kind) {
        case DischargeKind::Corona:
            return "corona";
        case DischargeKind::Surface:
            return "surface";
        case DischargeKind::Suspension:
            return "suspension";
        case DischargeKind::Noise:
            break;
    }
    return "noise";
}

DischargePhases::DischargePhases(DischargeKind kind, Random& random)
{
    switch (kind) {
        case DischargeKind::Corona: {
            const double middle = random.uniform(264.0, 276.0);
            const double spread = random.uniform(10.0, 16.0);
            m_clusters = {{middle, spread, random.uniform(6.0, 14.0), 1.0, 0.12, 0.0}};
            break;
        }
        case DischargeKind::Surface: {
            const double middle = random.uniform(40.0, 60.0);
            const double spread = random.uniform(16.0, 24.0);
            const double strikes = random.uniform(8.0, 16.0);
            // The half cycle in which the stressed electrode is the cathode has more strikes and smaller
            // ones.
            const double fewer = random.uniform(0.5, 0.8);
            const double stronger = random.uniform(1.1, 1.5);
            const bool positiveIsStronger = random.uniform() < 0.5;
            const Cluster small{0.0, spread, strikes, 1.0, 0.5, 0.0};
            const Cluster large{0.0, spread * random.uniform(0.75, 0.95), strikes * fewer, stronger, 0.5,
                                0.0};
            m_clusters = {positiveIsStronger ? large : small, positiveIsStronger ? small : large};
            m_clusters[0].phase = middle;
            m_clusters[1].phase = middle + halfCycle;
            break;
        }
        case DischargeKind::Suspension: {
            const double middle = random.uniform(35.0, 75.0);
            const Cluster cluster{middle, random.uniform(1.5, 3.5), random.uniform(2.0, 4.0), 1.0,
                                  0.05,   random.uniform(2.0, 4.0)};
            m_clusters = {cluster, cluster};
            m_clusters[1].phase += halfCycle;
            break;
        }
        case DischargeKind::Noise:
            m_clicks = random.uniform(1.0, 6.0);
            break;
    }
}

void DischargePhases::strike(const Cluster& cluster, Random& random, std::vector<Strike>& strikes)
{
    if (cluster.distance > 0.0) {
        // One series: as many each time, but for the last, which sometimes comes and sometimes not.
        const auto count = static_cast<int>(std::floor(cluster.strikes + random.uniform()));
        const double first = cluster.phase + cluster.spread * cutNormal(random);
        for (int i = 0; i < count; ++i) {
            strikes.push_back({first + cluster.distance * i,
                               cluster.amplitude * std::exp(cluster.amplitudeSpread * normal(random))});
        }
        return;
    }
    const int count = poisson(cluster.strikes, random);
    for (int i = 0; i < count; ++i) {
        const double phase = cluster.phase + cluster.spread * cutNormal(random);
        strikes.push_back({phase, cluster.amplitude * std::exp(cluster.amplitudeSpread * normal(random))});
    }
}

std::vector<Strike> DischargePhases::nextCycle(Random& random) const
{
    std::vector<Strike> strikes;
    for (const Cluster& cluster : m_clusters) {
        strike(cluster, random, strikes);
    }
    const int clicks = poisson(m_clicks, random);
    for (int i = 0; i < clicks; ++i) {
        strikes.push_back({2.0 * halfCycle * random.uniform(), std::exp(0.5 * normal(random))});
    }
    return strikes;
}

}  // namespace kovtools
