/* Frames of imaging results, as opaque handles. C99 and C++.
 *
 *     EngMapResult* frame = createResultHandle(48, 64, 480, 640, 1024);
 *     mat2d_fp32* map = getResEngMap(frame);      // fill its 48 x 64 linear levels
 *     ...
 *     releaseResultHandle(frame);
 *
 * No handle is checked. Hosts built with the same C++ toolchain may read the fields directly
 * (KOVDoaHandle/imaging/engmapresult.h).
 */
#ifndef KOVDOA_API_RESULTS_H
#define KOVDOA_API_RESULTS_H

#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Creates a frame with every field zero and no peaks.
 *   resRows, resCols  size of the energy map
 *   imgRows, imgCols  accepted and ignored; they keep the argument list that of a recording's header
 *   fftLen            FFT length; the spectrum has (fftLen >> 1) + 1 bins
 * The caller frees it with releaseResultHandle. */
KOVDOA_EXPORT EngMapResult* createResultHandle(int resRows, int resCols, int imgRows, int imgCols,
                                               int fftLen);

/* Frees a frame, its map, its spectrum and its peaks. Not for frames that a recording owns. */
KOVDOA_EXPORT void releaseResultHandle(EngMapResult* result);

/* The energy map and the power spectrum; they stay the frame's. */
KOVDOA_EXPORT mat2d_fp32* getResEngMap(EngMapResult* result);
KOVDOA_EXPORT vec_fp32* getPowerSpec(EngMapResult* result);

/* The extremes that rendering found: inside the region of interest (or in the whole map), and outside it. */
KOVDOA_EXPORT fpoint2d getMaxSpl(EngMapResult* result);
KOVDOA_EXPORT fpoint2d getMinSpl(EngMapResult* result);
KOVDOA_EXPORT fpoint2d getMaxSplExtern(EngMapResult* result);
KOVDOA_EXPORT fpoint2d getMinSplExtern(EngMapResult* result);

/* Median level and target distance (m), as the frame's producer supplied them. */
KOVDOA_EXPORT float getMedian(EngMapResult* result);
KOVDOA_EXPORT float getDistance(EngMapResult* result);

/* Number of peaks of the frame. */
KOVDOA_EXPORT int getPeaksNum(EngMapResult* result);

/* Level and position of one peak. An index below 0 or above the number of peaks gives (0, 0, 0). Pass indices below
 * getPeaksNum: an index equal to it is not caught, and reads behind the last peak. */
KOVDOA_EXPORT fpoint2d getPeaksValue(EngMapResult* result, int index);

#ifdef __cplusplus
}
#endif

#endif
