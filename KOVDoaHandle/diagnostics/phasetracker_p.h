// Follows the phase of the discharges in the mains cycle, so that the pattern stands still while the mains
// drift.
#ifndef KOVDOA_PHASETRACKER_P_H
#define KOVDOA_PHASETRACKER_P_H

#include <KOVDoaHandle/diagnostics/prpdgeometry_p.h>

namespace KOVPrivate {

// All phases are in bins of the envelope. The mains may be switched at any time; the phases are kept then.
class PhaseTracker
{
public:
    // One step per pattern.
    //   envelope  at least four mains cycles of bins
    //   accepted  whether the peak stood out of the floor. Then a new reference is looked for in every fifth
    //             pattern; a rejected pattern keeps the reference and lets the next accepted one look again at
    //             once.
    void follow(float* envelope, bool accepted, const MainsGeometry& mains);

    // Bin of the envelope that the first page starts at: 0 ... mains.cycle.
    int pageOffset(const MainsGeometry& mains) const;

    // Position of the strongest bin in the cycle: 0 ... 239.
    float reference() const { return m_reference; }
    // What the pages are drawn by: above -60 and below 299.
    float displayed() const { return m_displayed; }

private:
    float findReference(float* envelope, const MainsGeometry& mains) const;
    void moveDisplayed(const MainsGeometry& mains);

    float m_reference = 0.0F;
    float m_displayed = 0.0F;
    float m_average = 0.0F;  // slow average of the reference
    int m_hold = 0;          // accepted patterns that still keep the reference
};

}  // namespace KOVPrivate

#endif
