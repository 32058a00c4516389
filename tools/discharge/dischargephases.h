// At which phases of the mains cycle the kinds of partial discharge strike, and how hard.
#ifndef KOVTOOLS_DISCHARGEPHASES_H
#define KOVTOOLS_DISCHARGEPHASES_H

#include <array>
#include <vector>

#include "tools/scene/random.h"

namespace kovtools {

enum class DischargeKind { Corona, Surface, Suspension, Noise };

inline constexpr std::array allDischargeKinds{DischargeKind::Corona, DischargeKind::Surface,
                                              DischargeKind::Suspension, DischargeKind::Noise};

// "corona", "surface", "suspension", "noise".
const char* dischargeName(DischargeKind kind);

struct Strike
{
    double phase;      // degrees of the cycle; 0 is where the voltage rises through zero
    double amplitude;  // 1 is typical
};

// The statistics are those by which patterns are told apart in the literature (docs/partial-discharge.md
// names it):
//   corona      at one polarity only, around the crest of the negative half cycle; many strikes of nearly
//               one size
//   surface     in both half cycles where the voltage rises and before its crests, widely spread in phase
//               and size, and unlike in the two half cycles
//   suspension  in both half cycles, few strikes at regular distances, hardly spread in phase and of nearly
//               one size
//   noise       clicks at any time, without regard to the mains
// What differs from one piece of equipment to the next is drawn once, at the start.
class DischargePhases
{
public:
    DischargePhases(DischargeKind kind, Random& random);

    // The strikes of one cycle, in no order. Phases may lie a little outside the cycle.
    std::vector<Strike> nextCycle(Random& random) const;

private:
    // Strikes of one half cycle.
    struct Cluster
    {
        double phase;            // degrees, of its middle
        double spread;           // degrees, standard deviation
        double strikes;          // in a cycle, on average
        double amplitude;        // average
        double amplitudeSpread;  // standard deviation of its natural logarithm
        double distance;         // degrees between strikes that follow regularly; 0: each on its own
    };

    static void strike(const Cluster& cluster, Random& random, std::vector<Strike>& strikes);

    std::vector<Cluster> m_clusters;
    double m_clicks = 0.0;  // in a cycle on average, at any phase
};

}  // namespace kovtools

#endif
