/* The numeric records that cross the library's boundary, and the functions that create and destroy them.
 *
 * C99 and C++; C linkage. Two storage schemes exist:
 *   vec_fp32, mat1d_...  one contiguous buffer; a matrix is row-major: element (r, c) is data[r * cols + c]
 *   mat2d_...            an array of `rows` row pointers, each to `cols` elements: element (r, c) is data[r][c]
 * Reach the rows of a mat2d only through its row pointers; do not rely on how they lie in memory.
 *
 * A record and its elements are owned together and freed by the matching destroy function; records are never
 * shared implicitly. Nothing here checks a handle. Threads: different records may be used from different
 * threads; one record needs the caller's own lock.
 */
#ifndef KOVDOA_ENGINE_CONTAINERS_H
#define KOVDOA_ENGINE_CONTAINERS_H

#include <stdint.h>

#include <KOVDoaHandle/foundation/engine/kovdoa5export.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A vector of single-precision numbers, for example a power spectrum. */
typedef struct vec_fp32
{
    int32_t len; /* number of elements */
    float* data; /* len elements */
} vec_fp32;

/* A single-precision matrix in one row-major buffer. */
typedef struct mat1d_fp32
{
    int32_t rows;
    int32_t cols;
    float* data; /* rows * cols elements */
} mat1d_fp32;

/* A byte matrix in one row-major buffer. It carries no channel count: an interleaved picture of n channels and
 * width w has cols = w * n, and channel k of pixel (x, y) is data[(y * w + x) * n + k]. */
typedef struct mat1d_uint8
{
    int32_t rows;
    int32_t cols;
    uint8_t* data; /* rows * cols elements */
} mat1d_uint8;

/* A 16-bit matrix in one row-major buffer. */
typedef struct mat1d_short
{
    int32_t rows;
    int32_t cols;
    int16_t* data; /* rows * cols elements */
} mat1d_short;

/* A single-precision matrix reached through row pointers: the type of energy maps. */
typedef struct mat2d_fp32
{
    int32_t rows;
    int32_t cols;
    float** data; /* rows pointers, each to cols elements */
} mat2d_fp32;

/* A 16-bit matrix reached through row pointers. */
typedef struct mat2d_short
{
    int32_t rows;
    int32_t cols;
    int16_t** data; /* rows pointers, each to cols elements */
} mat2d_short;

/* A 32-bit integer matrix reached through row pointers. */
typedef struct mat2d_int32
{
    int32_t rows;
    int32_t cols;
    int32_t** data; /* rows pointers, each to cols elements */
} mat2d_int32;

/* A map value with its position in the map; 12 bytes, returned by value across the boundary. */
typedef struct fpoint2d
{
    float value; /* linear level, in the unit of the map */
    int32_t row; /* 0 is the top row */
    int32_t col; /* 0 is the left column */
} fpoint2d;

/* Create a record of the given size; every element is zero.
 *   len, rows, cols  stored in the record as given. Where one of them is not positive the record has no
 *                    elements; a negative count is reported through the message hook.
 * Returns a record that the caller frees with the matching destroy function. Elements start on a 64-byte
 * boundary. Throws std::bad_alloc when memory runs out. */
KOVDOA5_EXPORT vec_fp32* create_vec_fp32(int len);
KOVDOA5_EXPORT mat1d_fp32* create_mat1d_fp32(int rows, int cols);
KOVDOA5_EXPORT mat1d_uint8* create_mat1d_uint8(int rows, int cols);
KOVDOA5_EXPORT mat1d_short* create_mat1d_short(int rows, int cols);
KOVDOA5_EXPORT mat2d_fp32* create_mat2d_fp32(int rows, int cols);
KOVDOA5_EXPORT mat2d_short* create_mat2d_short(int rows, int cols);
KOVDOA5_EXPORT mat2d_int32* create_mat2d_int32(int rows, int cols);

/* Free a record made by the matching create function, and its elements. A null pointer is ignored. */
KOVDOA5_EXPORT void destroy_vec_fp32(vec_fp32* vector);
KOVDOA5_EXPORT void destroy_mat1d_fp32(mat1d_fp32* matrix);
KOVDOA5_EXPORT void destroy_mat1d_uint8(mat1d_uint8* matrix);
KOVDOA5_EXPORT void destroy_mat1d_short(mat1d_short* matrix);
KOVDOA5_EXPORT void destroy_mat2d_fp32(mat2d_fp32* matrix);
KOVDOA5_EXPORT void destroy_mat2d_short(mat2d_short* matrix);
KOVDOA5_EXPORT void destroy_mat2d_int32(mat2d_int32* matrix);

#ifdef __cplusplus
}
#endif

#endif
