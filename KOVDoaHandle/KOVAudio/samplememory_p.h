// Memory for whole recordings.
#ifndef KOVDOA_SAMPLEMEMORY_P_H
#define KOVDOA_SAMPLEMEMORY_P_H

#include <cstddef>
#include <memory>
#include <new>

namespace KOVAudio {

struct SampleMemoryDeleter
{
    std::align_val_t alignment{};

    void operator()(float* samples) const { ::operator delete[](samples, alignment); }
};
using SampleMemory = std::unique_ptr<float[], SampleMemoryDeleter>;

// Uninitialised, at least at a cache line; null when there is no such memory. Large requests ask the system for large
// pages, because in a recording of 160 MB most of the time to load it would go into 40 000 page faults.
SampleMemory allocateSamples(std::size_t count);

}  // namespace KOVAudio

#endif
