// Output that appears whole or not at all.
#ifndef KOVTOOLS_PARTIALFILE_H
#define KOVTOOLS_PARTIALFILE_H

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace kovtools {

// A file is written beside its final place, in the same folder and with the same extension (by which writers
// choose the format), and renamed when it is complete. Without commit() it is removed. What is meant for a pipe or a
// device waits in the temporary folder and is copied there when it is complete: writers want to go back in a file.
class PartialFile
{
public:
    // Throws DataError when the folder of `target` (absolute) does not exist or cannot be written to, or when
    // `target` is a folder or a disk. An existing file at `target` stays until commit(). When it is a
    // symbolic link, the link stays and the file that it leads to is meant.
    explicit PartialFile(const std::filesystem::path& target);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    // Where to write; an empty file stands there already.
    const std::filesystem::path& path() const { return m_partial; }

    // Makes `bytes` its whole content. Throws DataError.
    void write(std::string_view bytes);

    // Puts the file in its place. Throws DataError when that fails; Interrupted while nobody reads a pipe.
    void commit();

private:
    std::filesystem::path m_target;
    std::filesystem::path m_partial;
    bool m_isStream = false;  // m_target is a pipe or a device
    bool m_committed = false;
};

// Nothing for an empty path: an output that the user did not ask for.
std::optional<PartialFile> openIfWanted(const std::filesystem::path& target);

// Writes `bytes` as the whole content of `target`. Throws DataError.
void writeWholeFile(const std::filesystem::path& target, std::string_view bytes);

// Opens a file in binary. Throws DataError when it is missing, unreadable or no regular file.
std::ifstream openForReading(const std::filesystem::path& source);

// Reads a whole file. Throws DataError when it is missing, unreadable or no regular file.
std::string readWholeFile(const std::filesystem::path& source);

}  // namespace kovtools

#endif
