#include "tools/support/partialfile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "tools/support/errors.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/streamtarget.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestExtension = 8;  // letters with the dot; formats are chosen by shorter ones
constexpr int mostNames = 1000;              // tried before giving up

// Throws DataError unless a file can stand at `target`: what is there and no file, a disk say, stays.
void checkTarget(const fs::path& target)
{
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (fs::is_directory(status)) {
        throw DataError(inQuotes(target) + " is a folder; a file name is needed");
    }
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw DataError(inQuotes(target) + " is not a regular file");
    }
    if (!fs::is_directory(target.parent_path(), error)) {
        throw DataError("the folder " + inQuotes(target.parent_path()) + " does not exist");
    }
}

// A hidden name that does not grow with the target's, which may be as long as names can be.
fs::path partialName(const fs::path& target)
{
    static int serial = 0;
    ++serial;
    fs::path name(".kovdoa-partial-" + std::to_string(getpid()) + "-" + std::to_string(serial));
    if (target.extension().native().size() <= longestExtension) {
        name += target.extension();
    }
    return target.parent_path() / name;
}

fs::path temporaryFolder()
{
    std::error_code error;
    fs::path folder = fs::temp_directory_path(error);
    if (error) {
        throw DataError("there is no folder for temporary files: " + error.message());
    }
    return folder;
}

// Creates an empty file that was not there before: not the leftover of a killed run, nor the file of a process
// that has the same number on another machine.
fs::path createPartial(const fs::path& target)
{
    for (int i = 0; i < mostNames; ++i) {
        fs::path name = partialName(target);
        const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor >= 0) {
            close(descriptor);
            return name;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    throw DataError("cannot write to " + inQuotes(target));
}

}  // namespace

PartialFile::PartialFile(const fs::path& target) : m_isStream(isStreamTarget(target))
{
    if (m_isStream) {
        checkStreamTarget(target);
        m_target = target;
        m_partial = createPartial(temporaryFolder() / target.filename());
        return;
    }
    checkTarget(target);
    m_target = throughLinks(target);
    if (fs::is_symlink(m_target)) {
        throw DataError(inQuotes(target) + " is a link that leads nowhere");
    }
    checkTarget(m_target);
    m_partial = createPartial(m_target);
}

PartialFile::~PartialFile()
{
    if (!m_committed) {
        std::error_code ignored;
        fs::remove(m_partial, ignored);
    }
}

void PartialFile::write(std::string_view bytes)
{
    std::ofstream stream(m_partial, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) {
        throw DataError("cannot write " + inQuotes(m_target) + " (is the disk full?)");
    }
}

void PartialFile::commit()
{
    if (m_isStream) {
        copyToStream(m_partial, m_target);
        return;  // and the file beside it goes
    }
    std::error_code error;
    fs::rename(m_partial, m_target, error);
    if (error) {
        throw DataError("cannot write " + inQuotes(m_target) + ": " + error.message());
    }
    m_committed = true;
}

std::optional<PartialFile> openIfWanted(const fs::path& target)
{
    return target.empty() ? std::optional<PartialFile>() : std::optional<PartialFile>(std::in_place, target);
}

void writeWholeFile(const fs::path& target, std::string_view bytes)
{
    PartialFile file(target);
    file.write(bytes);
    file.commit();
}

std::ifstream openForReading(const fs::path& source)
{
    std::error_code error;
    const fs::file_status status = fs::status(source, error);
    if (!fs::exists(status)) {
        throw DataError(inQuotes(source) + " does not exist");
    }
    if (fs::is_directory(status)) {
        throw DataError(inQuotes(source) + " is a folder, not a file");
    }
    if (!fs::is_regular_file(status)) {
        throw DataError(inQuotes(source) + " is not a regular file");
    }
    std::ifstream stream(source, std::ios::binary);
    if (!stream) {
        throw DataError("cannot read " + inQuotes(source));
    }
    return stream;
}

std::string readWholeFile(const fs::path& source)
{
    constexpr std::size_t step = 256UL * 1024;  // bytes
    std::ifstream stream = openForReading(source);
    std::string bytes;
    while (stream) {
        const std::size_t before = bytes.size();
        bytes.resize(before + step);
        stream.read(bytes.data() + before, static_cast<std::streamsize>(step));
        bytes.resize(before + static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad()) {
        throw DataError("cannot read " + inQuotes(source));
    }
    return bytes;
}

}  // namespace kovtools
