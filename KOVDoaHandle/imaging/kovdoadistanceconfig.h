// Turns a stream of distance readings into a steady value to display.
#ifndef KOVDOA_KOVDOADISTANCECONFIG_H
#define KOVDOA_KOVDOADISTANCECONFIG_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// Looks at the last ten readings. While their variance is below 0.1 there is a stable result: the mean of the readings
// less than 0.2 from their mean (of all, when none is), truncated to one decimal. It survives a variance up to 0.2;
// beyond that, measuring begins anew. Measuring ends without a result one second after it last began; between 0.1 and
// 0.2 it begins anew with every reading. The numbers suit readings in metres.
//
// Threads: one feeds and asks. Timing: a few dozen operations a reading.
class KOVDOA_EXPORT KOVDoaDistanceConfig
{
public:
    KOVDoaDistanceConfig();
    ~KOVDoaDistanceConfig();
    KOVDoaDistanceConfig(const KOVDoaDistanceConfig&) = delete;
    KOVDoaDistanceConfig& operator=(const KOVDoaDistanceConfig&) = delete;

    // Adds a reading, one a frame, in the host's unit. What is not above 0 (a NaN too) is no reading and is dropped.
    // Nothing is decided before the eleventh. An infinite one decides nothing either until it has left the ten.
    void feedDis(float distance);

    // The distance to show: the stable result, in the unit of the readings; -1 while there is none.
    float getDistanceResult();

    // 0 no result, 1 measuring, 2 stable result. The second after which measuring ends is noticed by this call only.
    int getDistanceProcessStatus();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
