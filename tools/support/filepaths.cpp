#include "tools/support/filepaths.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <system_error>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

constexpr int mostLinks = 40;  // in a row; as many as the system itself follows

bool isFrameName(const fs::path& name)
{
    constexpr std::string_view before = "frame-";
    constexpr std::string_view after = ".png";
    const std::string text = name.string();
    return text.size() > before.size() + after.size() && text.starts_with(before) && text.ends_with(after) &&
           std::all_of(text.begin() + before.size(), text.end() - after.size(),
                       [](unsigned char letter) { return std::isdigit(letter) != 0; });
}

}  // namespace

fs::path throughLinks(fs::path path)
{
    std::error_code error;
    for (int i = 0; i < mostLinks && fs::is_symlink(fs::symlink_status(path, error)); ++i) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) {
            return path;
        }
        path = path.parent_path() / next;
    }
    const fs::path resolved = fs::weakly_canonical(path, error);
    return error ? path : resolved;
}

bool isSameFile(const fs::path& first, const fs::path& second)
{
    std::error_code error;
    if (fs::exists(first, error) && fs::exists(second, error)) {
        return fs::equivalent(first, second, error);
    }
    return throughLinks(first) == throughLinks(second);
}

void FilesOfCommand::addInput(const std::string& role, const fs::path& path)
{
    add(role, path, Kind::Input);
}

void FilesOfCommand::addOutput(const std::string& role, const fs::path& path)
{
    add(role, path, Kind::Output);
}

void FilesOfCommand::addPictureFolder(const std::string& role, const fs::path& folder)
{
    add(role, folder, Kind::PictureFolder);
}

void FilesOfCommand::add(const std::string& role, const fs::path& path, Kind kind)
{
    if (!path.empty()) {
        m_files.push_back({role, path, kind});
    }
}

void FilesOfCommand::checkDistinct() const
{
    for (std::size_t i = 0; i < m_files.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            checkPair(m_files[j], m_files[i]);
        }
    }
}

void FilesOfCommand::checkPair(const File& first, const File& second)
{
    if (first.kind == Kind::Input && second.kind == Kind::Input) {
        return;
    }
    std::error_code error;
    if (fs::is_character_file(first.path, error)) {
        return;  // nothing is replaced in /dev/null
    }
    if (isSameFile(first.path, second.path)) {
        throw UsageError(inQuotes(second.path) + " is both " + first.role + " and " + second.role +
                         "; one would replace the other");
    }
    if (isPictureOf(first, second) || isPictureOf(second, first)) {
        const bool folderFirst = first.kind == Kind::PictureFolder;
        const File& folder = folderFirst ? first : second;
        const File& file = folderFirst ? second : first;
        throw UsageError(inQuotes(file.path) + " is both " + file.role + " and a picture of the folder " +
                         folder.role + "; one would replace the other");
    }
}

bool FilesOfCommand::isPictureOf(const File& folder, const File& file)
{
    if (folder.kind != Kind::PictureFolder) {
        return false;
    }
    const fs::path target = throughLinks(file.path);
    if (isFrameName(target.filename()) && isSameFile(target.parent_path(), folder.path)) {
        return true;
    }
    // A picture that lies there already may be a link to the file.
    std::error_code error;
    for (fs::directory_iterator entry(folder.path, error), end; !error && entry != end;
         entry.increment(error)) {
        if (isFrameName(entry->path().filename()) && isSameFile(entry->path(), file.path)) {
            return true;
        }
    }
    return false;
}

}  // namespace kovtools
