// File names inside sentences.
#ifndef KOVTOOLS_QUOTED_H
#define KOVTOOLS_QUOTED_H

#include <filesystem>
#include <string>

namespace kovtools {

// 'name', as the file system spells it.
std::string quoted(const std::filesystem::path& path);

}  // namespace kovtools

#endif
