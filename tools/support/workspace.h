// A temporary working directory of the program's own.
#ifndef KOVTOOLS_WORKSPACE_H
#define KOVTOOLS_WORKSPACE_H

#include <QtCore/QTemporaryDir>

#include <filesystem>
#include <optional>
#include <string>

#include "tools/support/partialfile.h"

namespace kovtools {

// The library writes "./log/" and "./cache/" into the working directory. So that neither ever appears where
// the user stands, the program works inside a temporary directory, which goes with the object. Paths that the
// user typed are made absolute first.
//
// The library's plain exports take paths as Latin-1, and Qt reads file names by the locale; the user's paths
// may be any bytes. Files are therefore handed to the library through symbolic links with plain names in this
// directory.
class Workspace
{
public:
    // Enters the directory. With `logTo` not empty the library's log is switched on at once and ends up in
    // that file. Throws DataError when there is no room for temporary files, or when that file cannot be
    // written.
    explicit Workspace(const std::filesystem::path& logTo);

    // A log that has not been kept until now, because the command failed, is kept as far as possible: that is
    // when it is wanted most.
    ~Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    // Makes `target` (absolute) reachable as `name` in the working directory. Throws DataError.
    static void link(const std::filesystem::path& target, const std::string& name);

    // Copies the library's log to where the user wants it; without such a wish does nothing. Throws
    // DataError.
    void keepLog();

private:
    QTemporaryDir m_directory;
    std::filesystem::path m_home;
    std::optional<PartialFile> m_log;  // until it is kept
};

}  // namespace kovtools

#endif
