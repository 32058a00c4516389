// The boundary's float containers with their elements in the cache instead of the heap.
#ifndef KOVDOA_CACHECONTAINERS_P_H
#define KOVDOA_CACHECONTAINERS_P_H

#include <cstdint>

#include <KOVDoaHandle/foundation/engine/containers.h>

class KOVMemoryMap;

namespace KOVResult {

// The largest container, which is what one block of the cache holds.
constexpr std::uint64_t maxContainerBytes = std::uint64_t{16} * 1024 * 1024;

// Bytes of the elements; 0 when a count is not positive. The product of two counts always fits.
std::uint64_t elementBytes(std::int64_t rows, std::int64_t cols);

// Elements are zero: fresh cache memory is, and its space is never used twice. Null when memory or the cache
// fails, or when there are more than maxContainerBytes of elements. A matrix without elements has no row
// pointers.
mat2d_fp32* createCachedMatrix(KOVMemoryMap& cache, int rows, int cols);
vec_fp32* createCachedVector(KOVMemoryMap& cache, int len);

// A null record is ignored.
void destroyCachedMatrix(KOVMemoryMap& cache, mat2d_fp32* matrix);
void destroyCachedVector(KOVMemoryMap& cache, vec_fp32* vector);

}  // namespace KOVResult

#endif
