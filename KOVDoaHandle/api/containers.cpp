// Thin accessors over the numeric records: each forwards to the engine or is one load or store.
#include <KOVDoaHandle/api/containers.h>

#include <cstddef>

namespace {

// 64 bits: a picture may have more elements than an int can count.
template <typename Matrix>
std::ptrdiff_t indexOf(const Matrix& matrix, int row, int col)
{
    return static_cast<std::ptrdiff_t>(row) * matrix.cols + col;
}

}  // namespace

vec_fp32* createVecFp32(int len)
{
    return create_vec_fp32(len);
}

void destroyVecFp32(vec_fp32* vector)
{
    destroy_vec_fp32(vector);
}

int getVecFp32Len(vec_fp32* vector)
{
    return vector->len;
}

float* getVecFp32Data(vec_fp32* vector)
{
    return vector->data;
}

float getVecFp32Value(vec_fp32* vector, int i)
{
    return vector->data[i];
}

void setVecFp32Value(vec_fp32* vector, int i, float value)
{
    vector->data[i] = value;
}

mat2d_fp32* createMat2dFp32(int rows, int cols)
{
    return create_mat2d_fp32(rows, cols);
}

void destroyMat2dFp32(mat2d_fp32* matrix)
{
    destroy_mat2d_fp32(matrix);
}

int getMat2dFp32Rows(mat2d_fp32* matrix)
{
    return matrix->rows;
}

int getMat2dFp32Cols(mat2d_fp32* matrix)
{
    return matrix->cols;
}

float* getMat2dFp32Data(mat2d_fp32* matrix, int row)
{
    return matrix->data[row];
}

float getMat2dFp32Value(mat2d_fp32* matrix, int row, int col)
{
    return matrix->data[row][col];
}

void setMat2dFp32Value(mat2d_fp32* matrix, int row, int col, float value)
{
    matrix->data[row][col] = value;
}

mat2d_int32* createMat2dInt32(int rows, int cols)
{
    return create_mat2d_int32(rows, cols);
}

void destroyMat2dInt32(mat2d_int32* matrix)
{
    destroy_mat2d_int32(matrix);
}

int getMat2dInt32Rows(mat2d_int32* matrix)
{
    return matrix->rows;
}

int getMat2dInt32Cols(mat2d_int32* matrix)
{
    return matrix->cols;
}

int32_t* getMat2dInt32Data(mat2d_int32* matrix, int row)
{
    return matrix->data[row];
}

int32_t getMat2dInt32Value(mat2d_int32* matrix, int row, int col)
{
    return matrix->data[row][col];
}

void setMat2dInt32Value(mat2d_int32* matrix, int row, int col, int32_t value)
{
    matrix->data[row][col] = value;
}

mat1d_uint8* createMat1dUint8(int rows, int cols)
{
    return create_mat1d_uint8(rows, cols);
}

void destroyMat1dUint8(mat1d_uint8* matrix)
{
    destroy_mat1d_uint8(matrix);
}

int getMat1dUint8Rows(mat1d_uint8* matrix)
{
    return matrix->rows;
}

int getMat1dUint8Cols(mat1d_uint8* matrix)
{
    return matrix->cols;
}

uint8_t* getMat1dUint8Data(mat1d_uint8* matrix)
{
    return matrix->data;
}

uint8_t getMat1dUint8Value(mat1d_uint8* matrix, int row, int col)
{
    return matrix->data[indexOf(*matrix, row, col)];
}

void setMat1dUint8Value(mat1d_uint8* matrix, int row, int col, uint8_t value)
{
    matrix->data[indexOf(*matrix, row, col)] = value;
}

mat1d_fp32* createMat1dFp32(int rows, int cols)
{
    return create_mat1d_fp32(rows, cols);
}

void destroyMat1dFp32(mat1d_fp32* matrix)
{
    destroy_mat1d_fp32(matrix);
}

int getMat1dFp32Rows(mat1d_fp32* matrix)
{
    return matrix->rows;
}

int getMat1dFp32Cols(mat1d_fp32* matrix)
{
    return matrix->cols;
}

float* getMat1dFp32Data(mat1d_fp32* matrix)
{
    return matrix->data;
}

float getMat1dFp32Value(mat1d_fp32* matrix, int row, int col)
{
    return matrix->data[indexOf(*matrix, row, col)];
}

void setMat1dFp32Value(mat1d_fp32* matrix, int row, int col, float value)
{
    matrix->data[indexOf(*matrix, row, col)] = value;
}

mat1d_short* createMat1dInt16(int rows, int cols)
{
    return create_mat1d_short(rows, cols);
}

void destroyMat1dInt16(mat1d_short* matrix)
{
    destroy_mat1d_short(matrix);
}

int getMat1dInt16Rows(mat1d_short* matrix)
{
    return matrix->rows;
}

int getMat1dInt16Cols(mat1d_short* matrix)
{
    return matrix->cols;
}

int16_t* getMat1dInt16Data(mat1d_short* matrix)
{
    return matrix->data;
}

int16_t getMat1dInt16Value(mat1d_short* matrix, int row, int col)
{
    return matrix->data[indexOf(*matrix, row, col)];
}

void setMat1dInt16Value(mat1d_short* matrix, int row, int col, int16_t value)
{
    matrix->data[indexOf(*matrix, row, col)] = value;
}

mat2d_short* createMat2dInt16(int rows, int cols)
{
    return create_mat2d_short(rows, cols);
}

void destroyMat2dInt16(mat2d_short* matrix)
{
    destroy_mat2d_short(matrix);
}

int getMat2dInt16Rows(mat2d_short* matrix)
{
    return matrix->rows;
}

int getMat2dInt16Cols(mat2d_short* matrix)
{
    return matrix->cols;
}

int16_t* getMat2dInt16Data(mat2d_short* matrix, int row)
{
    return matrix->data[row];
}

int16_t getMat2dInt16Value(mat2d_short* matrix, int row, int col)
{
    return matrix->data[row][col];
}

void setMat2dInt16Value(mat2d_short* matrix, int row, int col, int16_t value)
{
    matrix->data[row][col] = value;
}
