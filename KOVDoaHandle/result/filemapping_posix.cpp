// The cache's file mapping on POSIX systems.
#include <KOVDoaHandle/result/filemapping_p.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

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
    ::close(descriptor);  // the view keeps the file open
    if (view == MAP_FAILED) {
        std::error_code ignored;
        std::filesystem::remove(m_file, ignored);
        return;
    }
    m_view = view;
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
