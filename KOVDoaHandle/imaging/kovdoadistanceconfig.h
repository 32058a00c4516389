// Turns a stream of distance readings into a steady value to display.
#ifndef KOVDOA_KOVDOADISTANCECONFIG_H
#define KOVDOA_KOVDOADISTANCECONFIG_H

#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

class KOVDOA_EXPORT KOVDoaDistanceConfig
{
public:
    KOVDoaDistanceConfig();
    ~KOVDoaDistanceConfig();
    KOVDoaDistanceConfig(const KOVDoaDistanceConfig&) = delete;
    KOVDoaDistanceConfig& operator=(const KOVDoaDistanceConfig&) = delete;

    void feedDis(float distance);
    float getDistanceResult();
    int getDistanceProcessStatus();

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
