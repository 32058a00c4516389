// The mains whose cycle discharges follow.
#ifndef KOVTOOLS_MAINS_H
#define KOVTOOLS_MAINS_H

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

namespace kovtools {

constexpr int dischargeRate = 96000;  // Hz, the only sample rate that the analyser knows

enum class Mains : int { Hz50 = 50, Hz60 = 60 };

constexpr int frequencyOf(Mains mains)
{
    return static_cast<int>(mains);
}

constexpr PddMode modeOf(Mains mains)
{
    return mains == Mains::Hz60 ? PDD_MODE_60HZ : PDD_MODE_50HZ;
}

}  // namespace kovtools

#endif
