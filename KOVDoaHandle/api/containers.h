/* The numeric containers, for callers that cannot see their layouts. C99 and C++.
 *
 * Raw on purpose: no handle and no index is checked, every getter and setter is a single load or store, and an index
 * outside the record is undefined behaviour. Elements of a new container are zero; counts are those it was created
 * with. A container made here is freed by its destroy function (null is ignored).
 *
 * Two things look uneven and are kept: the names say Int16 where the records say short, and the Data function of a
 * two-dimensional record takes a row (and returns that row's pointer) where that of a one-dimensional record returns
 * the whole buffer.
 */
#ifndef KOVDOA_API_CONTAINERS_H
#define KOVDOA_API_CONTAINERS_H

#include <stdint.h>

#include <KOVDoaHandle/foundation/engine/containers.h>
#include <KOVDoaHandle/foundation/kovdoaexport.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A vector of single-precision numbers (a power spectrum). */
KOVDOA_EXPORT vec_fp32* createVecFp32(int len);
KOVDOA_EXPORT void destroyVecFp32(vec_fp32* vector);
KOVDOA_EXPORT int getVecFp32Len(vec_fp32* vector);
KOVDOA_EXPORT float* getVecFp32Data(vec_fp32* vector);
KOVDOA_EXPORT float getVecFp32Value(vec_fp32* vector, int i);
KOVDOA_EXPORT void setVecFp32Value(vec_fp32* vector, int i, float value);

/* A single-precision matrix behind row pointers (an energy map). */
KOVDOA_EXPORT mat2d_fp32* createMat2dFp32(int rows, int cols);
KOVDOA_EXPORT void destroyMat2dFp32(mat2d_fp32* matrix);
KOVDOA_EXPORT int getMat2dFp32Rows(mat2d_fp32* matrix);
KOVDOA_EXPORT int getMat2dFp32Cols(mat2d_fp32* matrix);
KOVDOA_EXPORT float* getMat2dFp32Data(mat2d_fp32* matrix, int row);
KOVDOA_EXPORT float getMat2dFp32Value(mat2d_fp32* matrix, int row, int col);
KOVDOA_EXPORT void setMat2dFp32Value(mat2d_fp32* matrix, int row, int col, float value);

/* A 32-bit integer matrix behind row pointers. */
KOVDOA_EXPORT mat2d_int32* createMat2dInt32(int rows, int cols);
KOVDOA_EXPORT void destroyMat2dInt32(mat2d_int32* matrix);
KOVDOA_EXPORT int getMat2dInt32Rows(mat2d_int32* matrix);
KOVDOA_EXPORT int getMat2dInt32Cols(mat2d_int32* matrix);
KOVDOA_EXPORT int32_t* getMat2dInt32Data(mat2d_int32* matrix, int row);
KOVDOA_EXPORT int32_t getMat2dInt32Value(mat2d_int32* matrix, int row, int col);
KOVDOA_EXPORT void setMat2dInt32Value(mat2d_int32* matrix, int row, int col, int32_t value);

/* A byte matrix in one buffer (a picture: cols = width * channels). */
KOVDOA_EXPORT mat1d_uint8* createMat1dUint8(int rows, int cols);
KOVDOA_EXPORT void destroyMat1dUint8(mat1d_uint8* matrix);
KOVDOA_EXPORT int getMat1dUint8Rows(mat1d_uint8* matrix);
KOVDOA_EXPORT int getMat1dUint8Cols(mat1d_uint8* matrix);
KOVDOA_EXPORT uint8_t* getMat1dUint8Data(mat1d_uint8* matrix);
KOVDOA_EXPORT uint8_t getMat1dUint8Value(mat1d_uint8* matrix, int row, int col);
KOVDOA_EXPORT void setMat1dUint8Value(mat1d_uint8* matrix, int row, int col, uint8_t value);

/* A single-precision matrix in one buffer. */
KOVDOA_EXPORT mat1d_fp32* createMat1dFp32(int rows, int cols);
KOVDOA_EXPORT void destroyMat1dFp32(mat1d_fp32* matrix);
KOVDOA_EXPORT int getMat1dFp32Rows(mat1d_fp32* matrix);
KOVDOA_EXPORT int getMat1dFp32Cols(mat1d_fp32* matrix);
KOVDOA_EXPORT float* getMat1dFp32Data(mat1d_fp32* matrix);
KOVDOA_EXPORT float getMat1dFp32Value(mat1d_fp32* matrix, int row, int col);
KOVDOA_EXPORT void setMat1dFp32Value(mat1d_fp32* matrix, int row, int col, float value);

/* A 16-bit matrix in one buffer. */
KOVDOA_EXPORT mat1d_short* createMat1dInt16(int rows, int cols);
KOVDOA_EXPORT void destroyMat1dInt16(mat1d_short* matrix);
KOVDOA_EXPORT int getMat1dInt16Rows(mat1d_short* matrix);
KOVDOA_EXPORT int getMat1dInt16Cols(mat1d_short* matrix);
KOVDOA_EXPORT int16_t* getMat1dInt16Data(mat1d_short* matrix);
KOVDOA_EXPORT int16_t getMat1dInt16Value(mat1d_short* matrix, int row, int col);
KOVDOA_EXPORT void setMat1dInt16Value(mat1d_short* matrix, int row, int col, int16_t value);

/* A 16-bit matrix behind row pointers. */
KOVDOA_EXPORT mat2d_short* createMat2dInt16(int rows, int cols);
KOVDOA_EXPORT void destroyMat2dInt16(mat2d_short* matrix);
KOVDOA_EXPORT int getMat2dInt16Rows(mat2d_short* matrix);
KOVDOA_EXPORT int getMat2dInt16Cols(mat2d_short* matrix);
KOVDOA_EXPORT int16_t* getMat2dInt16Data(mat2d_short* matrix, int row);
KOVDOA_EXPORT int16_t getMat2dInt16Value(mat2d_short* matrix, int row, int col);
KOVDOA_EXPORT void setMat2dInt16Value(mat2d_short* matrix, int row, int col, int16_t value);

#ifdef __cplusplus
}
#endif

#endif
