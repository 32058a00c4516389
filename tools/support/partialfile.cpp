#include "tools/support/partialfile.h"

#include <unistd.h>

#include <fstream>
#include <string>
#include <system_error>
#include <utility>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

// A hidden name that no other process and no earlier run uses.
fs::path partialName(const fs::path& target)
{
    static int serial = 0;
    ++serial;
    fs::path name(".");
    name += target.stem();
    name += ".partial-" + std::to_string(getpid()) + "-" + std::to_string(serial);
    name += target.extension();
    return target.parent_path() / name;
}

}  // namespace

PartialFile::PartialFile(fs::path target) : m_target(std::move(target)), m_partial(partialName(m_target))
{
    std::error_code error;
    if (fs::is_directory(m_target, error)) {
        throw DataError(inQuotes(m_target) + " is a folder; a file name is needed");
    }
    if (!fs::is_directory(m_target.parent_path(), error)) {
        throw DataError("the folder " + inQuotes(m_target.parent_path()) + " does not exist");
    }
    if (!std::ofstream(m_partial, std::ios::binary).is_open()) {
        throw DataError("cannot write to " + inQuotes(m_target));
    }
}

PartialFile::~PartialFile()
{
    if (!m_committed) {
        std::error_code ignored;
        fs::remove(m_partial, ignored);
    }
}

void PartialFile::commit()
{
    std::error_code error;
    fs::rename(m_partial, m_target, error);
    if (error) {
        throw DataError("cannot write " + inQuotes(m_target) + ": " + error.message());
    }
    m_committed = true;
}

void writeWholeFile(const fs::path& target, std::string_view bytes)
{
    PartialFile file(target);
    std::ofstream stream(file.path(), std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) {
        throw DataError("cannot write " + inQuotes(target) + " (is the disk full?)");
    }
    file.commit();
}

std::string readWholeFile(const fs::path& source)
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
    std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (stream.bad()) {
        throw DataError("cannot read " + inQuotes(source));
    }
    return bytes;
}

}  // namespace kovtools
