// One file of a fixed size, mapped into memory: all that the cache needs from the operating system. One
// source file per system implements it; nothing here knows Qt.
#ifndef KOVDOA_FILEMAPPING_P_H
#define KOVDOA_FILEMAPPING_P_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <utility>

// Owns the view and the file behind it; both go when the object goes. Threads: one at a time.
class FileMapping
{
public:
    // Maps nothing.
    FileMapping() noexcept = default;

    // Creates `file` (an existing one is emptied), gives it `size` bytes of disk space, all zero, and maps
    // them for reading and writing. On failure data() is null and no file is left behind: the folder is
    // missing or read-only, the disk is full, or the address space is.
    FileMapping(std::filesystem::path file, std::size_t size);

    ~FileMapping() { close(); }

    FileMapping(FileMapping&& other) noexcept { swap(other); }
    FileMapping& operator=(FileMapping&& other) noexcept
    {
        FileMapping(std::move(other)).swap(*this);
        return *this;
    }

    // Start of the view, page-aligned; null when nothing is mapped.
    void* data() const noexcept { return m_view; }

    // Promises that the first `end` bytes are about to be filled, and that nobody has touched what earlier
    // promises did not cover. Only a hint: it makes the first touch of those pages several times cheaper.
    // Costs about as much as writing the bytes once.
    void prepare(std::size_t end) noexcept;

    // Unmaps the view and deletes the file.
    void close() noexcept;

    // Forgets the view: it stays mapped until the process ends, and the file stays on the disk.
    void release() noexcept;

private:
    static constexpr std::intptr_t noHandle = -1;

    void swap(FileMapping& other) noexcept
    {
        m_file.swap(other.m_file);
        std::swap(m_view, other.m_view);
        std::swap(m_size, other.m_size);
        std::swap(m_prepared, other.m_prepared);
        std::swap(m_handle, other.m_handle);
    }

    std::filesystem::path m_file;
    void* m_view = nullptr;
    std::size_t m_size = 0;
    std::size_t m_prepared = 0;         // bytes from the start that prepare() has covered
    std::intptr_t m_handle = noHandle;  // the system's handle that the mapping still needs
};

#endif
