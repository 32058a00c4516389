#include "tools/support/quoted.h"

namespace kovtools {

std::string quoted(const std::filesystem::path& path)
{
    std::string text(1, '\'');
    text.append(path.string());
    text.push_back('\'');
    return text;
}

}  // namespace kovtools
