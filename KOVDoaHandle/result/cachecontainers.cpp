#include <KOVDoaHandle/result/cachecontainers_p.h>

#include <cstddef>
#include <cstdlib>

#include <KOVDoaHandle/result/kovmemorymap.h>

namespace KOVResult {

std::uint64_t elementBytes(std::int64_t rows, std::int64_t cols)
{
    if (rows <= 0 || cols <= 0) {
        return 0;
    }
    return static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(cols) * sizeof(float);
}

mat2d_fp32* createCachedMatrix(KOVMemoryMap& cache, int rows, int cols)
{
    const std::uint64_t bytes = elementBytes(rows, cols);
    if (bytes > maxContainerBytes) {
        return nullptr;
    }
    auto* matrix = static_cast<mat2d_fp32*>(std::malloc(sizeof(mat2d_fp32)));
    if (matrix == nullptr) {
        return nullptr;
    }
    *matrix = {rows, cols, nullptr};
    if (bytes == 0) {
        return matrix;
    }
    const auto rowCount = static_cast<std::size_t>(rows);
    auto** const rowPointers = static_cast<float**>(std::malloc(rowCount * sizeof(float*)));
    auto* const elements = rowPointers != nullptr
                               ? static_cast<float*>(cache.MapMalloc(static_cast<std::size_t>(bytes)))
                               : nullptr;
    if (elements == nullptr) {
        std::free(rowPointers);
        std::free(matrix);
        return nullptr;
    }
    for (std::size_t row = 0; row < rowCount; ++row) {
        rowPointers[row] = elements + row * static_cast<std::size_t>(cols);
    }
    matrix->data = rowPointers;
    return matrix;
}

vec_fp32* createCachedVector(KOVMemoryMap& cache, int len)
{
    const std::uint64_t bytes = elementBytes(1, len);
    if (bytes > maxContainerBytes) {
        return nullptr;
    }
    auto* vector = static_cast<vec_fp32*>(std::malloc(sizeof(vec_fp32)));
    if (vector == nullptr) {
        return nullptr;
    }
    *vector = {len, nullptr};
    if (bytes == 0) {
        return vector;
    }
    vector->data = static_cast<float*>(cache.MapMalloc(static_cast<std::size_t>(bytes)));
    if (vector->data == nullptr) {
        std::free(vector);
        return nullptr;
    }
    return vector;
}

void destroyCachedMatrix(KOVMemoryMap& cache, mat2d_fp32* matrix)
{
    if (matrix == nullptr) {
        return;
    }
    if (matrix->data != nullptr) {
        cache.MapFree(matrix->data[0]);
        std::free(matrix->data);
    }
    std::free(matrix);
}

void destroyCachedVector(KOVMemoryMap& cache, vec_fp32* vector)
{
    if (vector == nullptr) {
        return;
    }
    cache.MapFree(vector->data);
    std::free(vector);
}

}  // namespace KOVResult
