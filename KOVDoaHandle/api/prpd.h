/* Partial discharge: feed ultrasonic audio, poll, read the pattern and the verdict. C99 and C++.
 *
 *     KOVPrpdProcess* prpd = CreatePRPDHandle("models");
 *     PRPDSetPddMode(prpd, 0);                                   (50 Hz mains)
 *     for (each block of 96 kHz audio) {
 *         PRPDFeedAudio(prpd, samples, n);
 *         if (PRPDUpdatePdd(prpd)) {
 *             PRPDResult* result = PRPDFrameData(prpd, pattern, 2400);
 *             show(pattern, PRPDResultGetCoronaPercent(result));
 *         }
 *     }
 *     ReleasePRPDHandle(prpd);
 *
 * Handles are pointers to a KOVPrpdProcess (see diagnostics/kovprpdprocess.h for what the steps mean) and are
 * not checked, unless said otherwise.
 * Threads: one may feed while another polls, reads or resets.
 */
#ifndef KOVDOA_API_PRPD_H
#define KOVDOA_API_PRPD_H

#ifndef __cplusplus
#    include <stdbool.h>
#endif

#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A new analyser.
 *   dir  folder of the model files "SVM1.txt" and "SVM2.txt"; null: "/sdcard/workdir/". Files may be missing.
 * The caller frees it with ReleasePRPDHandle, which ignores a null handle. */
KOVDOA_EXPORT KOVPrpdProcess* CreatePRPDHandle(const char* dir);
KOVDOA_EXPORT void ReleasePRPDHandle(KOVPrpdProcess* prpd);

/* Mains frequency: 0 is 50 Hz, 1 is 60 Hz; any other number is stored and counts as 50 Hz. */
KOVDOA_EXPORT void PRPDSetPddMode(KOVPrpdProcess* prpd, int mode);
KOVDOA_EXPORT int PRPDGetPddMode(KOVPrpdProcess* prpd);

/* Feeds n samples of 96 kHz audio, -1 ... 1. Ignored when samples is null or n is not positive. */
KOVDOA_EXPORT void PRPDFeedAudio(KOVPrpdProcess* prpd, float* samples, int n);

/* One poll: builds a pattern from the newest samples and casts its vote. True when there were enough samples:
 * 60544, with 60 Hz mains 50624, since the start or the last reset. */
KOVDOA_EXPORT bool PRPDUpdatePdd(KOVPrpdProcess* prpd);

/* Forgets votes, verdict, levels, tracked phase and stream. */
KOVDOA_EXPORT void PRPDReset(KOVPrpdProcess* prpd);

/* Bins in a page of the pattern, one mains cycle: 240, with 60 Hz mains 200. Pages: 10. */
KOVDOA_EXPORT int PRPDPageLength(KOVPrpdProcess* prpd);
KOVDOA_EXPORT int PRPDPageNumber(void);

/* The result record, and the pattern of the last poll.
 *   out       receives PRPDPageNumber() pages of PRPDPageLength() bins, page by page; nothing is written when it
 *             is null or capacity, in floats, is less than that
 * The record is one for the whole process: the next call, with any handle, overwrites it. Threads: values are
 * never torn, but a record read while another thread calls may mix both. */
KOVDOA_EXPORT PRPDResult* PRPDFrameData(KOVPrpdProcess* prpd, float* out, int capacity);

/* Amplitude of the pattern at the mains frequency and at twice the mains frequency; noise floor; largest sample,
 * at most 1. All relative to full scale. */
KOVDOA_EXPORT float PRPDResultGetF1(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetF2(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetRMS(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetPeak(PRPDResult* result);

/* Shares of the votes, 0 ... 100; all 0 until 26 votes have been cast. The rest up to 100 are votes for noise.
 */
KOVDOA_EXPORT float PRPDResultGetCoronaPercent(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetAlongSurfacePercent(PRPDResult* result);
KOVDOA_EXPORT float PRPDResultGetSuspensionPercent(PRPDResult* result);

#ifdef __cplusplus
}
#endif

#endif
