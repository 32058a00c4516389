#include "tools/support/wording.h"

#include <array>
#include <cstdio>

namespace kovtools {

namespace {

std::string inHex(unsigned char letter)
{
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\x%02X", static_cast<unsigned>(letter));
    return text.data();
}

// The second half of a control character of 8 bits, as UTF-8 writes it; terminals obey those too.
bool isLateControl(std::string_view text, std::size_t at)
{
    const auto first = static_cast<unsigned char>(text[at]);
    const auto second = static_cast<unsigned char>(at + 1 < text.size() ? text[at + 1] : 0);
    return first == 0xC2 && second >= 0x80 && second < 0xA0;
}

}  // namespace

std::string printable(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto letter = static_cast<unsigned char>(text[i]);
        if (letter == '\n') {
            result += "\\n";
        } else if (letter == '\r') {
            result += "\\r";
        } else if (letter == '\t') {
            result += "\\t";
        } else if (letter < 0x20 || letter == 0x7F) {
            result += inHex(letter);
        } else if (isLateControl(text, i)) {
            result += inHex(static_cast<unsigned char>(text[++i]));
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string counted(long long number, std::string_view noun)
{
    return std::to_string(number) + " " + std::string(noun) + (number == 1 ? "" : "s");
}

}  // namespace kovtools
