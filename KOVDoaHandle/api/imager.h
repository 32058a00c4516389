/* The imager: from a frame to the colour overlay of a camera picture. C99 and C++.
 *
 *     KOVOFFLineDoaObject* imager = CreateDoaObject();
 *     DoaObjectInit(imager, 48, 64, 640, 480);
 *     mat1d_uint8* image = createMat1dUint8(480, 640 * 3);
 *     DoaObjectUpdateImagerRGB(imager, frame, image);     // image now holds blue, green, red bytes
 *     ...
 *     destroyMat1dUint8(image);
 *     ReleaseDoaObject(imager);
 *
 * Handles are not checked, unless said otherwise. One thread at a time may use an imager. A switch is on only for
 * exactly 1; its getter returns 1 or 0.
 */
#ifndef KOVDOA_API_IMAGER_H
#define KOVDOA_API_IMAGER_H

#include <KOVDoaHandle/api/handles.h>
#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Creates an imager; the caller frees it with ReleaseDoaObject (which ignores a null handle). */
KOVDOA_EXPORT KOVOFFLineDoaObject* CreateDoaObject(void);
KOVDOA_EXPORT void ReleaseDoaObject(KOVOFFLineDoaObject* imager);

/* Sets the sizes and switches the log files on; mandatory before rendering. Returns 1.
 *   mapScaleA, mapScaleB  turn the region's relative half-axes into map cells: A along the rows' index, B along the
 *                         columns' index (see DoaObjectSetRadius)
 *   width, height         camera picture and overlay, pixels
 * A value below 1 keeps the former one (640, 480, 640, 480 at first). */
KOVDOA_EXPORT int DoaObjectInit(KOVOFFLineDoaObject* imager, int mapScaleA, int mapScaleB, int width,
                                int height);

/* Dynamic range of the colour scale, dB (3 at first). */
KOVDOA_EXPORT void DoaObjectSetDynamic(KOVOFFLineDoaObject* imager, float dynamic);
KOVDOA_EXPORT float DoaObjectGetDynamic(KOVOFFLineDoaObject* imager);

/* Minimum level, linear in the unit of the maps, and threshold of the peak search (1e-8 at first). */
KOVDOA_EXPORT void DoaObjectSetMinPreSdLever(KOVOFFLineDoaObject* imager, float level);
KOVDOA_EXPORT float DoaObjectGetMinPreSdLever(KOVOFFLineDoaObject* imager);

/* Region of interest: an ellipse around the middle of the picture with the half-axes, in pixels,
 * width * radius / (p * k) and height * radius / (q * k); k follows from the image scale. A radius of 0 or less
 * means no region; the getter then returns -1. Both half-axes must be more than one pixel: a smaller region
 * ends in a C++ exception. The getter drops the radius's fraction. */
KOVDOA_EXPORT void DoaObjectSetRadius(KOVOFFLineDoaObject* imager, int radius, int p, int q);
KOVDOA_EXPORT int DoaObjectGetRadius(KOVOFFLineDoaObject* imager);

/* Palette: 0 rainbow (also any other value), 1 black-red-yellow-white, 2 grey. */
KOVDOA_EXPORT void DoaObjectSetPalletId(KOVOFFLineDoaObject* imager, int palletId);
KOVDOA_EXPORT int DoaObjectGetPalletId(KOVOFFLineDoaObject* imager);

/* Number of cursors (1 at first), and whether several are allowed (off at first). */
KOVDOA_EXPORT void DoaObjectSetCursorNum(KOVOFFLineDoaObject* imager, int count);
KOVDOA_EXPORT int DoaObjectGetCursorNum(KOVOFFLineDoaObject* imager);
KOVDOA_EXPORT void DoaObjectSetMultCursorEnable(KOVOFFLineDoaObject* imager, int enable);
KOVDOA_EXPORT int DoaObjectGetMultCursorEnable(KOVOFFLineDoaObject* imager);

/* Colours the map outside the region of interest too (off at first). */
KOVDOA_EXPORT void DoaObjectSetIsImagerOutSideRadiusShow(KOVOFFLineDoaObject* imager, int enable);
KOVDOA_EXPORT int DoaObjectGetIsImagerOutSideRadiusShow(KOVOFFLineDoaObject* imager);

/* Zoom of the camera picture (1 at first), above 0; the region of interest follows it, and must stay large enough. */
KOVDOA_EXPORT void DoaObjectSetImageScale(KOVOFFLineDoaObject* imager, float scale);
KOVDOA_EXPORT float DoaObjectGetImageScale(KOVOFFLineDoaObject* imager);

/* Renders one frame.
 *   result  rewritten: its extremes, relative to the map's median; found peaks are appended to a frame without any
 *   image   height rows of width * 3 bytes, written completely; black where nothing is shown; stays the caller's */
KOVDOA_EXPORT void DoaObjectUpdateImagerRGB(KOVOFFLineDoaObject* imager, EngMapResult* result,
                                            mat1d_uint8* image);

#ifdef __cplusplus
}
#endif

#endif
