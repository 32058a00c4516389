// Bounds. Let B = 239, the last bin of the longer cycle.
//   reference  a position in a cycle, so an integer in 0 ... B, whatever the envelope holds: never NaN.
//   average    a mean of references and 0, so in 0 ... B up to the rounding of its last step.
//   displayed  starts at 0. The smooth approach never overshoots the reference. A jump downwards starts more
//              than farAway above the average and goes down a whole cycle, or more than nearBy above and half a
//              cycle; so the candidate lies above -(cycle - farAway) = -80 or -(cycle / 2 - nearBy) = -40, and
//              after a quarter of the way to the reference above -60. Upwards likewise: the candidate lies below
//              B + 80, the result below 0.75 (B + 80) + 0.25 B = 299. With 60 Hz the steps are smaller. Opposite
//              to the jump, displayed stays within what it was. So -60 <= displayed < 300 and finite, also when
//              the mains are switched.
//   offset     With t the whole part of displayed: t - phaseOffset below 1 gives t + cycle - phaseOffset, which
//              is at most cycle and at least -60 + 155; everything else is taken modulo the cycle. So the offset
//              lies in 0 ... cycle and the last bin that a page reads is cycle + 30 cycles - 1, which is inside
//              the envelope: see the assertions.
#include <KOVDoaHandle/diagnostics/phasetracker_p.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <KOVDoaHandle/diagnostics/kovblas.h>

namespace KOVPrivate {

static_assert(mains50.cycle + pageCount * cyclesPerPage * mains50.cycle <= mains50.bins());
static_assert(mains60.cycle + pageCount * cyclesPerPage * mains60.cycle <= mains60.bins());

namespace {

// Only the first four cycles of the span have a say in the reference.
constexpr int cyclesAsked = 4;
// Accepted patterns that keep a reference once it has been found.
constexpr int patternsHeld = 4;
// Strongest bins further apart than this, in bins at both mains frequencies, are not one discharge.
constexpr int widestCluster = 80;

using Positions = std::array<int, cyclesAsked>;

// Position of the strongest bin in each of the first cycles, ascending.
Positions strongestBins(float* envelope, int cycle)
{
    Positions positions{};
    for (int k = 0; k < cyclesAsked; ++k) {
        KOVBlas::findMax(envelope + k * cycle, cycle, positions[static_cast<unsigned>(k)]);
    }
    std::sort(positions.begin(), positions.end());
    return positions;
}

// The first of the positions that are nearest to `phase`; 0 when none is nearer than `bound`.
int nearestTo(const Positions& positions, float phase, float bound)
{
    int nearest = 0;
    for (const int position : positions) {
        const float distance = std::fabs(static_cast<float>(position) - phase);
        if (distance < bound) {
            bound = distance;
            nearest = position;
        }
    }
    return nearest;
}

}  // namespace

void PhaseTracker::follow(float* envelope, bool accepted, const MainsGeometry& mains)
{
    if (!accepted) {
        m_hold = 0;
    } else if (m_hold > 0) {
        --m_hold;
    } else {
        m_reference = findReference(envelope, mains);
        m_hold = patternsHeld;
    }
    moveDisplayed(mains);
    m_average =
        static_cast<float>(0.3 * static_cast<double>(m_reference) + 0.7 * static_cast<double>(m_average));
}

float PhaseTracker::findReference(float* envelope, const MainsGeometry& mains) const
{
    const Positions positions = strongestBins(envelope, mains.cycle);
    const bool scattered = positions.back() - positions.front() > widestCluster;
    const int chosen =
        scattered ? nearestTo(positions, m_reference, static_cast<float>(mains.cycle)) : positions.back();
    return static_cast<float>(chosen);
}

// Single precision; the quarter is exact, so it does not matter in which precision it is multiplied.
void PhaseTracker::moveDisplayed(const MainsGeometry& mains)
{
    const auto nearBy = static_cast<float>(mains.nearBy);
    if (std::fabs(m_displayed - m_reference) < nearBy) {
        m_displayed += static_cast<float>(static_cast<int>(m_reference - m_displayed) / 8);
        return;
    }
    const float astray = std::fabs(m_displayed - m_average);
    if (astray > nearBy) {
        const bool wholeCycle = astray > static_cast<float>(mains.farAway);
        const auto shift = static_cast<float>(wholeCycle ? mains.cycle : mains.halfCycle());
        const float candidate = m_displayed > m_average ? m_displayed - shift : m_displayed + shift;
        m_displayed = candidate + (m_reference - candidate) * 0.25F;
    }
}

int PhaseTracker::pageOffset(const MainsGeometry& mains) const
{
    const int phase = static_cast<int>(m_displayed);
    const int offset = phase - mains.phaseOffset;
    return offset < 1 ? offset + mains.cycle : offset % mains.cycle;
}

}  // namespace KOVPrivate
