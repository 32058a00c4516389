/* Partial discharge. C99 and C++. */
#ifndef KOVDOA_API_PRPD_H
#define KOVDOA_API_PRPD_H

#include <stdbool.h>

#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

KOVDOA_EXPORT KOVPrpdProcess* CreatePRPDHandle(const char* dir);
KOVDOA_EXPORT void ReleasePRPDHandle(KOVPrpdProcess* prpd);
KOVDOA_EXPORT void PRPDSetPddMode(KOVPrpdProcess* prpd, int mode);
KOVDOA_EXPORT int PRPDGetPddMode(KOVPrpdProcess* prpd);
KOVDOA_EXPORT void PRPDFeedAudio(KOVPrpdProcess* prpd, float* samples, int n);
KOVDOA_EXPORT bool PRPDUpdatePdd(KOVPrpdProcess* prpd);
KOVDOA_EXPORT void PRPDReset(KOVPrpdProcess* prpd);
KOVDOA_EXPORT int PRPDPageLength(KOVPrpdProcess* prpd);
KOVDOA_EXPORT int PRPDPageNumber(void);
KOVDOA_EXPORT PRPDResult* PRPDFrameData(KOVPrpdProcess* prpd, float* out, int capacity);

KOVDOA_EXPORT float PRPDResultGetF1(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetF2(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetRMS(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetPeak(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetCoronaPercent(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetAlongSurfacePercent(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetSuspensionPercent(PRPDResult* result);

#ifdef __cplusplus
}
#endif

#endif
