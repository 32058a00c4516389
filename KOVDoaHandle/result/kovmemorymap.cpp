// The bump allocator over file mappings. A block goes when its last allocation goes; until then its freed
// space stays unused, which is what keeps an allocation at one table entry and fresh memory at zero.
#include <KOVDoaHandle/result/kovmemorymap.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QUuid>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include <KOVDoaHandle/foundation/kovlog_p.h>
#include <KOVDoaHandle/result/filemapping_p.h>

namespace {

const char source[] = "kovmemorymap";

// 16 MiB bounds the number of files: 1,365 maps of 64 x 48 cells fit into one.
constexpr std::size_t blockBytes = std::size_t{16} * 1024 * 1024;

// The file name as the system spells it: UTF-16 on Windows, elsewhere the bytes that Qt itself uses for this
// name, so that both mean the same folder whatever the locale.
std::filesystem::path nativePath(const QString& fileName)
{
    if constexpr (std::is_same_v<std::filesystem::path::value_type, char>) {
        return QFile::encodeName(fileName).toStdString();
    } else {
        return fileName.toStdU16String();
    }
}

struct Block
{
    FileMapping mapping;
    std::uint64_t count = 0;  // live allocations
    std::size_t used =
        0;  // bytes carved from the start of the view; above blockBytes after an oversized request
};

}  // namespace

class KOVMemoryMap::Private
{
public:
    explicit Private(QString path) : cachePath(std::move(path)) {}

    Block* openBlock();
    void* carve(Block& block, std::size_t size);

    QString cachePath;
    std::unordered_map<void*, Block> blocks;        // by the base address of the view
    std::unordered_map<void*, Block*> allocations;  // by the address handed out; map nodes do not move
    Block* current = nullptr;                       // the block that is being filled
};

// Makes a new block the current one. Null, and the current block stays, when its file cannot be made.
Block* KOVMemoryMap::Private::openBlock()
{
    const QString fileName = cachePath + QLatin1Char('/') + QUuid::createUuid().toString(QUuid::Id128);
    KOVDOA_DEBUG(source) << "KOVMemoryMap::MapMalloc:" << fileName;
    FileMapping mapping(nativePath(fileName), blockBytes);
    void* const base = mapping.data();
    if (base == nullptr) {
        return nullptr;
    }
    Block& block = blocks[base];
    block.mapping = std::move(mapping);
    current = &block;
    return current;
}

void* KOVMemoryMap::Private::carve(Block& block, std::size_t size)
{
    void* const p = static_cast<char*>(block.mapping.data()) + block.used;
    // An empty allocation shares its address with the next one, which takes over the entry.
    allocations[p] = &block;
    block.used += size;
    ++block.count;
    block.mapping.prepare(std::min(block.used, blockBytes));
    return p;
}

KOVMemoryMap::KOVMemoryMap(const QString& path) : d(std::make_unique<Private>(path))
{
    if (!QDir(path).exists()) {
        QDir().mkpath(path);
        KOVDOA_DEBUG(source) << "KOVMemoryMap: creat path" << path;
    }
}

KOVMemoryMap::~KOVMemoryMap()
{
    for (auto& [base, block] : d->blocks) {
        block.mapping.release();
    }
}

void* KOVMemoryMap::MapMalloc(std::size_t size)
{
    // Full means used >= capacity: the address just behind a view may be the base of another one, so not even
    // an empty allocation may lie there.
    Block* block = d->current;
    if (block == nullptr || block->used >= blockBytes || blockBytes - block->used < size) {
        block = d->openBlock();
        if (block == nullptr) {
            return nullptr;
        }
    }
    return d->carve(*block, size);
}

void KOVMemoryMap::MapFree(void* p)
{
    const auto allocation = d->allocations.find(p);
    if (allocation == d->allocations.end()) {
        return;
    }
    Block* const block = allocation->second;
    d->allocations.erase(allocation);
    if (--block->count > 0) {
        return;
    }
    if (block == d->current) {
        d->current = nullptr;
    }
    d->blocks.erase(block->mapping.data());
}
