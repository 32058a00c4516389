// Joins the decisions with a stopwatch.
#include <KOVDoaHandle/imaging/kovdoadistanceconfig.h>

#include <KOVDoaHandle/imaging/distancesteadier_p.h>
#include <KOVDoaHandle/runtime/kovrttimer.h>

using KOVPrivate::DistanceStatus;
using KOVPrivate::DistanceSteadier;

namespace {

constexpr unsigned long oneSecondUs = 1'000'000;
constexpr float nothingToShow = -1.0F;

}  // namespace

class KOVDoaDistanceConfig::Private
{
public:
    DistanceSteadier steadier;
    KOVRtTimer timer{oneSecondUs};  // since measuring last began
};

KOVDoaDistanceConfig::KOVDoaDistanceConfig() : d(std::make_unique<Private>()) {}

KOVDoaDistanceConfig::~KOVDoaDistanceConfig() = default;

void KOVDoaDistanceConfig::feedDis(float distance)
{
    if (d->steadier.feed(distance)) {
        d->timer.reset();
    }
}

float KOVDoaDistanceConfig::getDistanceResult()
{
    return d->steadier.status() == DistanceStatus::Stable ? d->steadier.result() : nothingToShow;
}

int KOVDoaDistanceConfig::getDistanceProcessStatus()
{
    return static_cast<int>(d->steadier.statusAfter(d->timer.timeMs()));
}
