#include "tools/support/workspace.h"

#include <QtCore/QDir>

#include <algorithm>
#include <exception>
#include <string>
#include <system_error>
#include <vector>

#include <KOVDoaHandle/api/library.h>

#include "tools/support/errors.h"

namespace kovtools {

namespace fs = std::filesystem;

Workspace::Workspace(const fs::path& logTo) : m_directory(QDir::tempPath() + "/kovdoa-XXXXXX")
{
    if (!logTo.empty()) {
        m_log.emplace(logTo);
    }
    std::error_code error;
    m_home = fs::current_path(error);
    if (!m_directory.isValid() || !QDir::setCurrent(m_directory.path())) {
        throw DataError("cannot create a temporary folder in '" + QDir::tempPath().toStdString() + "'");
    }
    if (m_log) {
        initLogging();
    }
}

Workspace::~Workspace()
{
    try {
        keepLog();
    } catch (const std::exception&) {
        m_log.reset();  // the failure that brought us here is the one to report
    }
    // A directory that is somebody's working directory cannot be removed everywhere.
    std::error_code ignored;
    fs::current_path(m_home, ignored);
}

void Workspace::link(const fs::path& target, const std::string& name)
{
    std::error_code error;
    fs::create_symlink(target, name, error);
    if (error) {
        throw DataError("cannot create a link in the temporary folder: " + error.message());
    }
}

void Workspace::keepLog()
{
    if (!m_log) {
        return;
    }
    std::vector<fs::path> days;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator("log", error)) {
        days.push_back(entry.path());
    }
    std::sort(days.begin(), days.end());
    std::string text;
    for (const fs::path& day : days) {
        text += readWholeFile(day);
    }
    m_log->write(text);
    m_log->commit();
    m_log.reset();
}

}  // namespace kovtools
