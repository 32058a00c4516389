// The cache's file mapping on Windows.
#include <KOVDoaHandle/result/filemapping_p.h>

#include <windows.h>

#include <cstdint>
#include <system_error>

FileMapping::FileMapping(std::filesystem::path file, std::size_t size) : m_file(std::move(file)), m_size(size)
{
    const HANDLE handle = ::CreateFileW(m_file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                        nullptr, CREATE_ALWAYS, FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return;
    }
    // Making the mapping extends the file to its size, which reserves the disk space.
    const auto size64 = static_cast<std::uint64_t>(size);
    const HANDLE mapping =
        ::CreateFileMappingW(handle, nullptr, PAGE_READWRITE, static_cast<DWORD>(size64 >> 32),
                             static_cast<DWORD>(size64 & 0xFFFFFFFFU), nullptr);
    ::CloseHandle(handle);  // the mapping keeps the file open
    if (mapping != nullptr) {
        m_view = ::MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, size);
    }
    if (m_view != nullptr) {
        m_handle = reinterpret_cast<std::intptr_t>(mapping);
    } else {
        if (mapping != nullptr) {
            ::CloseHandle(mapping);
        }
        std::error_code ignored;
        std::filesystem::remove(m_file, ignored);
    }
}

// The system's own read-ahead does this job.
void FileMapping::prepare(std::size_t end) noexcept
{
    m_prepared = end;
}

void FileMapping::close() noexcept
{
    if (m_view == nullptr) {
        return;
    }
    ::UnmapViewOfFile(m_view);
    ::CloseHandle(reinterpret_cast<HANDLE>(m_handle));
    std::error_code ignored;
    std::filesystem::remove(m_file, ignored);
    release();
}

void FileMapping::release() noexcept
{
    m_handle = noHandle;
    m_view = nullptr;
}
