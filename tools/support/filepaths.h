// Which file a path really leads to.
#ifndef KOVTOOLS_FILEPATHS_H
#define KOVTOOLS_FILEPATHS_H

#include <filesystem>
#include <string>
#include <vector>

namespace kovtools {

// Where writing to `path` (absolute) ends up: symbolic links are followed, also one to a file that does not
// exist yet. A ring of links is returned as a link.
std::filesystem::path throughLinks(std::filesystem::path path);

// Whether both lead to the same file, or would if they existed.
bool isSameFile(const std::filesystem::path& first, const std::filesystem::path& second);

// The files of one command. Made to find, before any work, that an output would replace an input or another
// output: the user would lose one of them without a word.
class FilesOfCommand
{
public:
    // `role`: how the user calls it, such as "--log". An empty path is an option that was not given.
    void addInput(const std::string& role, const std::filesystem::path& path);
    void addOutput(const std::string& role, const std::filesystem::path& path);

    // A folder that fills with frame-00001.png and so on.
    void addPictureFolder(const std::string& role, const std::filesystem::path& folder);

    // Throws UsageError when an output is an input or another output.
    void checkDistinct() const;

private:
    enum class Kind { Input, Output, PictureFolder };

    struct File
    {
        std::string role;
        std::filesystem::path path;
        Kind kind;
    };

    void add(const std::string& role, const std::filesystem::path& path, Kind kind);
    static void checkPair(const File& first, const File& second);
    static bool isPictureOf(const File& folder, const File& file);

    std::vector<File> m_files;
};

}  // namespace kovtools

#endif
