// The cache's file mapping on POSIX systems.
#include <KOVDoaHandle/result/filemapping_p.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace {

// Repeats a call that a signal interrupted.
template <typename Call>
int retried(Call call)
{
    int result = 0;
    do {
        result = call();
    } while (result == -1 && errno == EINTR);
    return result;
}

// Gives the file its size together with the disk space. With the size alone, a disk that runs full later
// would end the process with SIGBUS in the middle of a store into the view; so that is left for file systems
// that cannot reserve space.
bool reserve(int descriptor, std::size_t size)
{
    const auto length = static_cast<off_t>(size);
#ifdef __linux__
    if (retried([&] { return ::fallocate(descriptor, 0, 0, length); }) == 0) {
        return true;
    }
    if (errno != EOPNOTSUPP && errno != ENOSYS) {
        return false;
    }
#endif
    return retried([&] { return ::ftruncate(descriptor, length); }) == 0;
}

// How much prepare() does at a time: large enough for the system to use large pages in its cache, small
// enough not to make a short recording pay for a whole block.
constexpr std::size_t preparedBytes = std::size_t{1024} * 1024;

// Writes zeros over [begin, end) of the file, from one small buffer but in few calls.
bool writeZeros(int descriptor, std::size_t begin, std::size_t end)
{
    static const char zeros[64 * 1024] = {};
    while (begin < end) {
        std::array<iovec, preparedBytes / sizeof zeros> pieces{};
        std::size_t count = 0;
        for (std::size_t at = begin; at < end && count < pieces.size(); at += sizeof zeros) {
            pieces[count++] = {const_cast<char*>(zeros), std::min(sizeof zeros, end - at)};
        }
        const ssize_t written =
            ::pwritev(descriptor, pieces.data(), static_cast<int>(count), static_cast<off_t>(begin));
        if (written <= 0) {
            return false;
        }
        begin += static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace

FileMapping::FileMapping(std::filesystem::path file, std::size_t size) : m_file(std::move(file)), m_size(size)
{
    const int descriptor =
        retried([&] { return ::open(m_file.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600); });
    if (descriptor == -1) {
        return;
    }
    void* view = MAP_FAILED;
    if (reserve(descriptor, size)) {
        view = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    }
    if (view == MAP_FAILED) {
        ::close(descriptor);
        std::error_code ignored;
        std::filesystem::remove(m_file, ignored);
        return;
    }
    m_view = view;
    m_handle = descriptor;
}

// Touching reserved space for the first time through the view costs a page fault with a disk block look-up
// for every 4 KiB. Writing zeros through the descriptor first brings the pages into the cache in large
// pieces: filling a block then takes less than half the time. The view shows the same pages.
void FileMapping::prepare(std::size_t end) noexcept
{
    while (m_handle != noHandle && m_prepared < end) {
        const std::size_t chunkEnd = std::min(m_prepared + preparedBytes, m_size);
        const bool isWritten = writeZeros(static_cast<int>(m_handle), m_prepared, chunkEnd);
        m_prepared = chunkEnd;
        if (!isWritten || m_prepared == m_size) {
            ::close(static_cast<int>(m_handle));  // the view keeps the file open
            m_handle = noHandle;
        }
    }
}

void FileMapping::close() noexcept
{
    if (m_view == nullptr) {
        return;
    }
    ::munmap(m_view, m_size);
    std::error_code ignored;
    std::filesystem::remove(m_file, ignored);
    release();
}

void FileMapping::release() noexcept
{
    if (m_handle != noHandle) {
        ::close(static_cast<int>(m_handle));
        m_handle = noHandle;
    }
    m_view = nullptr;
}
