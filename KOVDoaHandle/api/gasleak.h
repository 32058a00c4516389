/* Gas leaks. C99 and C++.
 *
 *     KOVGasleakProcess* gasLeak = CreateGasLeakHandle("leaktable.txt");
 *     GasLeakSetGasLeakMode(gasLeak, 2);
 *     while (...) {
 *         GasLeakFeedData(gasLeak, distance, 0.0f, level);
 *         show(GasLeakGetLRQ(gasLeak), GasLeakGetGetLeak(gasLeak));
 *     }
 *     ReleaseGasLeakHandle(gasLeak);
 *
 * Handles are not checked, unless said otherwise. Threads: one feeds a handle, others may read it and set its mode.
 * The class KOVGasleakProcess says more about the table and the numbers.
 */
#ifndef KOVDOA_API_GASLEAK_H
#define KOVDOA_API_GASLEAK_H

#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The first handle of the process starts loading the calibration table on a worker thread and returns at once; those
 * after it share that table, whatever file they name.
 *   tableFile   path in UTF-8; null, or a file that cannot be read, gives an empty table
 * The caller frees the handle with ReleaseGasLeakHandle; the table stays. */
KOVDOA_EXPORT KOVGasleakProcess* CreateGasLeakHandle(const char* tableFile);

/* Null is ignored. */
KOVDOA_EXPORT void ReleaseGasLeakHandle(KOVGasleakProcess* gasLeak);

/* One measurement: distance to the source in m, sound pressure level in dB; the third value is not used. Before the
 * table is loaded, and where it has no entry, the results stay as they are. */
KOVDOA_EXPORT void GasLeakFeedData(KOVGasleakProcess* gasLeak, float distance, float reserved, float spl);

/* Leak-rate quantity, in the unit of the table; 0 before the first result. */
KOVDOA_EXPORT float GasLeakGetLRQ(KOVGasleakProcess* gasLeak);

/* log10 of the leak-rate quantity, less 1; 0 before the first result. (The name's spelling is the boundary's.) */
KOVDOA_EXPORT float GasLeakGetGetLeak(KOVGasleakProcess* gasLeak);

/* 5 at first. The quantity is the table's value times 1 (modes 0, 1, 5), 4 (mode 2), 2 (mode 3) or 3 (mode 4). Any
 * other mode is kept too, and leaves the quantity as it is. */
KOVDOA_EXPORT int GasLeakGetGasLeakMode(KOVGasleakProcess* gasLeak);
KOVDOA_EXPORT void GasLeakSetGasLeakMode(KOVGasleakProcess* gasLeak, int mode);

#ifdef __cplusplus
}
#endif

#endif
