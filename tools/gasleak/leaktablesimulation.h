// A plausible calibration table, for trying the gas-leak mode out without having measured one.
#ifndef KOVTOOLS_LEAKTABLESIMULATION_H
#define KOVTOOLS_LEAKTABLESIMULATION_H

#include <string>

namespace kovtools {

struct LeakTableOptions
{
    double lowestLevel = 40.0;      // sound power level, dB re 1 pW
    double highestLevel = 110.0;    // dB, included
    double nearest = 0.5;           // m
    double farthest = 10.0;         // m, included
    double levelOfOneLitre = 80.7;  // sound power level of a leak of 1 l/min, dB; see leakRate()
    double absorption = 1.0;        // of the air, dB/m
};

// Leak rate in l/min of free air that belongs to the sound power level that an instrument `distance` m away finds.
//
// Gas leaves through a small hole at the speed of sound c, as it does from about 2 bar on, and carries the power
// rho Q c^2 / 2 with it, where Q is the volume flow of free air of density rho. A sonic jet turns about 1e-4 of that
// into noise (M. J. Lighthill, On sound generated aerodynamically, Proceedings of the Royal Society A 211, 1952; the
// share is the acoustic efficiency at Mach 1). For 1 l/min that is 0.12 mW, or 80.7 dB, and the level grows by 10 dB
// with each decade of the leak rate. The instrument takes the spreading of the sound back, but not what the air absorbs
// on the way, about 1 dB/m at 30 kHz; so it finds the lower a level, the farther it stands away:
//     Lw = levelOfOneLitre + 10 log10(Q) - absorption * distance
double leakRate(const LeakTableOptions& options, double powerLevel, double distance);

// Lines of "level distance rate", every tenth of a metre and of a decibel. The same options give the same bytes.
std::string simulateLeakTable(const LeakTableOptions& options);

// How many lines that has.
int pointsOfLeakTable(const LeakTableOptions& options);

}  // namespace kovtools

#endif
