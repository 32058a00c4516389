/* Recordings: loading result files. C99 and C++. (Writing is the class KOVDoaResultSerialize's.)
 *
 *     KOVDoaResultSerialize* recording = createResultSerializeHandle("leak.kov", "cache");
 *     while (!getIsOpenFileComplete(recording)) { ... }
 *     for (int i = 0; i < getResultFrame(recording); ++i)
 *         DoaObjectUpdateImagerRGB(imager, getResultHandleFromIndex(recording, i), image);
 *     destoryResultSerializeHandle(recording);
 *
 * Handles are not checked, unless said otherwise.
 */
#ifndef KOVDOA_API_RESULTFILE_H
#define KOVDOA_API_RESULTFILE_H

#ifndef __cplusplus
#    include <stdbool.h>
#endif

#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Starts loading a recording on a worker thread and returns at once.
 *   filePath   the recording;  cachePath  folder for the loaded frames, "./cache/" when null or empty
 * Both are read as Latin-1, so a path with other characters needs the class. The caller frees the handle with
 * destoryResultSerializeHandle. */
KOVDOA_EXPORT KOVDoaResultSerialize* createResultSerializeHandle(const char* filePath, const char* cachePath);

/* True once the load has ended, whatever it found. */
KOVDOA_EXPORT bool getIsOpenFileComplete(KOVDoaResultSerialize* recording);

/* Frees the recording with all its frames; a null handle is ignored. (The spelling is the boundary's.) */
KOVDOA_EXPORT void destoryResultSerializeHandle(KOVDoaResultSerialize* recording);

/* Number of frames loaded so far. */
KOVDOA_EXPORT int getResultFrame(KOVDoaResultSerialize* recording);

/* What the header says: size of the maps, of the camera picture, FFT length. 64, 48, 480, 640, 1024 until read. */
KOVDOA_EXPORT int getResRows(KOVDoaResultSerialize* recording);
KOVDOA_EXPORT int getResCols(KOVDoaResultSerialize* recording);
KOVDOA_EXPORT int getImgRows(KOVDoaResultSerialize* recording);
KOVDOA_EXPORT int getImgCols(KOVDoaResultSerialize* recording);
KOVDOA_EXPORT int getFFTLen(KOVDoaResultSerialize* recording);

/* One frame, owned by the recording; null when index is negative or not below getResultFrame. */
KOVDOA_EXPORT EngMapResult* getResultHandleFromIndex(KOVDoaResultSerialize* recording, int index);

/* Version text of the file, at most 31 bytes of UTF-8, in one buffer that the next call (with any handle)
 * overwrites; empty until it has been read. Threads: one at a time in the whole process. */
KOVDOA_EXPORT const char* getResultFileVersion(KOVDoaResultSerialize* recording);

#ifdef __cplusplus
}
#endif

#endif
