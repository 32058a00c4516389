/* Gas leaks. C99 and C++. */
#ifndef KOVDOA_API_GASLEAK_H
#define KOVDOA_API_GASLEAK_H

#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

KOVDOA_EXPORT KOVGasleakProcess* CreateGasLeakHandle(const char* tableFile);
KOVDOA_EXPORT void ReleaseGasLeakHandle(KOVGasleakProcess* gasLeak);
KOVDOA_EXPORT void GasLeakFeedData(KOVGasleakProcess* gasLeak, float distance, float reserved, float spl);
KOVDOA_EXPORT float GasLeakGetLRQ(KOVGasleakProcess* gasLeak);
KOVDOA_EXPORT float GasLeakGetGetLeak(KOVGasleakProcess* gasLeak);
KOVDOA_EXPORT int GasLeakGetGasLeakMode(KOVGasleakProcess* gasLeak);
KOVDOA_EXPORT void GasLeakSetGasLeakMode(KOVGasleakProcess* gasLeak, int mode);

#ifdef __cplusplus
}
#endif

#endif
