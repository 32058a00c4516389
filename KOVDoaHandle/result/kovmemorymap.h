// Memory for thousands of frames, from files in a cache folder rather than from the heap.
#ifndef KOVDOA_KOVMEMORYMAP_H
#define KOVDOA_KOVMEMORYMAP_H

#include <QtCore/QString>

#include <cstddef>
#include <memory>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// A bump allocator over 16 MiB file mappings, with a count of live allocations per block: a block's view is
// unmapped and its file deleted when its last allocation is freed. The pages of frames that nobody looks at
// can thus be written out by the system. Freed space inside a living block is not reused.
//
// Threads: one at a time.
class KOVDOA_EXPORT KOVMemoryMap
{
public:
    // Uses the folder `path` for the backing files; creates it, with its parents, when it is missing.
    explicit KOVMemoryMap(const QString& path);

    // Blocks that still hold allocations stay mapped until the process ends, and their files stay in the
    // folder: a host may still be reading them.
    ~KOVMemoryMap();

    KOVMemoryMap(const KOVMemoryMap&) = delete;
    KOVMemoryMap& operator=(const KOVMemoryMap&) = delete;

    // Returns `size` bytes, zero when fresh, aligned only as far as the sizes asked for before make it so;
    // null when the backing file cannot be made (missing folder, no rights, disk full). A request above 16
    // MiB gets a block with just 16 MiB behind it: never ask for more.
    void* MapMalloc(std::size_t size);

    // Gives an allocation back. Unknown pointers, and pointers given back already, are ignored.
    void MapFree(void* p);

private:
    class KOVDOA_LOCAL Private;
    std::unique_ptr<Private> d;
};

#endif
