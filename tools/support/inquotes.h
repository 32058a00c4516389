// File names inside sentences.
#ifndef KOVTOOLS_INQUOTES_H
#define KOVTOOLS_INQUOTES_H

#include <filesystem>
#include <string>

namespace kovtools {

// 'name', as the file system spells it.
std::string inQuotes(const std::filesystem::path& path);

}  // namespace kovtools

#endif
