// Small turns of language.
#ifndef KOVTOOLS_WORDING_H
#define KOVTOOLS_WORDING_H

#include <string>
#include <string_view>

namespace kovtools {

// `text` with its control characters spelled out, such as \\n and \\x1B: text from files and file names must not
// break a line of the answer or steer the terminal. Anything else stays, whatever its encoding.
std::string printable(std::string_view text);

// "1 frame", "2 frames".
std::string counted(long long number, std::string_view noun);

}  // namespace kovtools

#endif
