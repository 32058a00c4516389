#include "tools/arrayaudio/geometryfile.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

#include "tools/csv/csvlines.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace {

constexpr std::string_view separators = " \t,\r";

// The next word, taken off the front of `line`; empty at its end.
std::string_view takeWord(std::string_view& line)
{
    line.remove_prefix(std::min(line.find_first_not_of(separators), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(separators));
    line.remove_prefix(word.size());
    return word;
}

// Three numbers and nothing else.
bool parsePosition(std::string_view line, std::array<double, 3>& numbers)
{
    for (double& number : numbers) {
        std::string_view word = takeWord(line);
        if (word.starts_with('+')) {
            word.remove_prefix(1);
        }
        const char* const wordEnd = word.data() + word.size();
        const auto [end, error] = std::from_chars(word.data(), wordEnd, number);
        if (error != std::errc() || end != wordEnd || !std::isfinite(number)) {
            return false;
        }
    }
    return takeWord(line).empty();
}

[[noreturn]] void complain(const std::filesystem::path& file, int line, const std::string& what)
{
    throw DataError("line " + std::to_string(line) + " of " + inQuotes(file) + " " + what);
}

std::string metres(double length)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g m", length);
    return text.data();
}

}  // namespace

std::vector<Microphone> readGeometry(const std::filesystem::path& file)
{
    const std::string text = readWholeFile(file);
    std::vector<Microphone> array;
    std::string_view rest = withoutByteOrderMark(text);
    for (int number = 1; !rest.empty(); ++number) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        line = line.substr(0, line.find('#'));
        if (line.find_first_not_of(separators) == std::string_view::npos) {
            continue;
        }
        std::array<double, 3> at{};
        if (!parsePosition(line, at)) {
            complain(file, number, "is not a position: three numbers, x y z in metres, are needed");
        }
        if (std::hypot(at[0], at[1], at[2]) > largestArrayRadius) {
            complain(file, number,
                     "is farther than " + metres(largestArrayRadius) + " from the middle of the array");
        }
        if (static_cast<int>(array.size()) == mostMicrophones) {
            complain(
                file, number,
                "is one too many: an array has at most " + std::to_string(mostMicrophones) + " channels");
        }
        array.push_back({at[0], at[1], at[2]});
    }
    if (array.empty()) {
        throw DataError(inQuotes(file) + " holds no positions");
    }
    return array;
}

}  // namespace kovtools
