#include "tools/support/inquotes.h"

namespace kovtools {

std::string inQuotes(const std::filesystem::path& path)
{
    std::string text(1, '\'');
    text.append(path.string());
    text.push_back('\'');
    return text;
}

}  // namespace kovtools
