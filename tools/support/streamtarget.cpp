#include "tools/support/streamtarget.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/interrupt.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

constexpr int pollInterval = 50;  // ms, while nobody reads a pipe yet

[[noreturn]] void fail(const fs::path& target, int error)
{
    throw DataError("cannot write to " + inQuotes(target) + ": " + std::generic_category().message(error));
}

// An open descriptor. Nothing blocks on it, so that an interrupt is noticed while nobody reads.
class Descriptor
{
public:
    explicit Descriptor(const fs::path& target)
    {
        for (;;) {
            throwIfInterrupted();
            m_descriptor = open(target.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
            if (m_descriptor >= 0) {
                return;
            }
            // For a pipe that is how the system says that nobody reads it.
            if (errno != EINTR && !(errno == ENXIO && fs::is_fifo(target))) {
                fail(target, errno);
            }
            poll(nullptr, 0, pollInterval);
        }
    }
    ~Descriptor() { close(m_descriptor); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    void write(std::string_view bytes, const fs::path& target)
    {
        while (!bytes.empty()) {
            throwIfInterrupted();
            const ssize_t written = ::write(m_descriptor, bytes.data(), bytes.size());
            if (written >= 0) {
                bytes.remove_prefix(static_cast<std::size_t>(written));
            } else if (errno == EAGAIN) {
                pollfd room{m_descriptor, POLLOUT, 0};
                poll(&room, 1, -1);
            } else if (errno != EINTR) {
                fail(target, errno);
            }
        }
    }

private:
    int m_descriptor = -1;
};

}  // namespace

bool isStreamTarget(const fs::path& target)
{
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    return fs::is_fifo(status) || fs::is_character_file(status);
}

void checkStreamTarget(const fs::path& target)
{
    if (access(target.c_str(), W_OK) != 0) {
        fail(target, errno);
    }
}

void copyToStream(const fs::path& file, const fs::path& target)
{
    constexpr std::size_t step = 65536;  // bytes
    std::ifstream source = openForReading(file);
    Descriptor stream(target);
    std::array<char, step> buffer{};
    while (source) {
        source.read(buffer.data(), buffer.size());
        stream.write({buffer.data(), static_cast<std::size_t>(source.gcount())}, target);
    }
    if (source.bad()) {
        throw DataError("cannot read " + inQuotes(file));
    }
}

}  // namespace kovtools
