#include <KOVDoaHandle/KOVAudio/samplememory_p.h>

#if defined(__linux__)
#    include <sys/mman.h>
#endif

namespace KOVAudio {

namespace {

constexpr std::size_t cacheLineBytes = 64;
constexpr std::size_t largePageBytes = std::size_t{2} << 20;

std::size_t roundedUp(std::size_t bytes, std::size_t unit)
{
    return (bytes + unit - 1) / unit * unit;
}

// A hint: where it is not followed, everything works with small pages.
void wishForLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    static_cast<void>(::madvise(memory, bytes, MADV_HUGEPAGE));
#endif
}

}  // namespace

SampleMemory allocateSamples(std::size_t count)
{
    const bool isLarge = count * sizeof(float) >= largePageBytes;
    const std::size_t alignment = isLarge ? largePageBytes : cacheLineBytes;
    // The last page is taken whole too.
    const std::size_t bytes = roundedUp(count * sizeof(float), alignment);
    void* const memory = ::operator new[](bytes, std::align_val_t{alignment}, std::nothrow);
    if (memory != nullptr && isLarge) {
        wishForLargePages(memory, bytes);
    }
    return {static_cast<float*>(memory), SampleMemoryDeleter{std::align_val_t{alignment}}};
}

}  // namespace KOVAudio
