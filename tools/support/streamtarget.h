// Outputs that are no files: pipes and devices such as the terminal.
#ifndef KOVTOOLS_STREAMTARGET_H
#define KOVTOOLS_STREAMTARGET_H

#include <filesystem>

namespace kovtools {

// Whether bytes that are written there go somewhere else at once: a named pipe, a terminal, /dev/null, standard output
// by its name. Disks are not meant.
bool isStreamTarget(const std::filesystem::path& target);

// Throws DataError when nothing may be written there.
void checkStreamTarget(const std::filesystem::path& target);

// Writes the whole of `file` there, for a named pipe as soon as somebody reads it. Throws DataError when the reader goes
// away, Interrupted while waiting.
void copyToStream(const std::filesystem::path& file, const std::filesystem::path& target);

}  // namespace kovtools

#endif
