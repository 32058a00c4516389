/* The opaque handles of the plain exports, declared once: C99 does not allow a typedef twice. C99 and C++. */
#ifndef KOVDOA_API_HANDLES_H
#define KOVDOA_API_HANDLES_H

#ifdef __cplusplus
struct EngMapResult;
class KOVOFFLineDoaObject;
class KOVDoaResultSerialize;
class KOVAudioReSample;
class KOVPrpdProcess;
class KOVGasleakProcess;
struct PRPDResult;
#else
typedef struct EngMapResult EngMapResult;
typedef struct KOVOFFLineDoaObject KOVOFFLineDoaObject;
typedef struct KOVDoaResultSerialize KOVDoaResultSerialize;
typedef struct KOVAudioReSample KOVAudioReSample;
typedef struct KOVPrpdProcess KOVPrpdProcess;
typedef struct KOVGasleakProcess KOVGasleakProcess;
typedef struct PRPDResult PRPDResult;
#endif

#endif
