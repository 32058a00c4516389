/* The opaque handles of the plain exports, declared once: C99 does not allow a typedef twice. C99 and C++. */
#ifndef KOVDOA_API_HANDLES_H
#define KOVDOA_API_HANDLES_H

#ifdef __cplusplus
struct EngMapResult;
class KOVOFFLineDoaObject;
class KOVDoaResultSerialize;
class KOVAudioReSample;
#else
typedef struct EngMapResult EngMapResult;
typedef struct KOVOFFLineDoaObject KOVOFFLineDoaObject;
typedef struct KOVDoaResultSerialize KOVDoaResultSerialize;
typedef struct KOVAudioReSample KOVAudioReSample;
#endif

#endif
