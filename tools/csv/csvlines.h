// Small tables of numbers as text: read line by line, each line with its number, so that what does not parse can be
// named.
#ifndef KOVTOOLS_CSVLINES_H
#define KOVTOOLS_CSVLINES_H

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kovtools {

// Hands out the lines of a text. A line ends with a line feed, with or without a carriage return before it; what stands
// behind the last one is a line too. No line that holds a few numbers is longer than `longestLine`: the rest of such a
// line is dropped, so that a file without line ends cannot fill the memory.
class LineReader
{
public:
    static constexpr std::size_t longestLine = 4096;

    // Fills a buffer and returns how much; 0 at the end. May throw.
    using Source = std::function<std::size_t(char* buffer, std::size_t size)>;
    explicit LineReader(Source source);

    // Throws DataError when the file is missing, unreadable or no regular file.
    static LineReader ofFile(const std::filesystem::path& file);

    // Waits for each line. Throws Interrupted while waiting.
    static LineReader ofStandardInput();

    // False at the end.
    bool next(std::string& line);

    // Of the line that was handed out last; the first is 1.
    int number() const { return m_number; }

private:
    bool refill();

    Source m_source;
    std::vector<char> m_buffer;
    std::size_t m_at = 0;
    std::size_t m_end = 0;
    int m_number = 0;
};

// What some editors and spreadsheets put before UTF-8 text is no part of its first line.
std::string_view withoutByteOrderMark(std::string_view text);

// The fields between commas, without the blanks around them.
std::vector<std::string> commaFields(std::string_view line);

bool isBlank(std::string_view line);

// The whole text as a finite number, with a point whatever the locale says. A leading '+' is allowed.
std::optional<double> numberIn(std::string_view text);

// "line 3", "lines 3 and 7", "lines 1, 2, 3, 4, 5 and 12 more".
std::string namedLines(const std::vector<int>& numbers);

}  // namespace kovtools

#endif
