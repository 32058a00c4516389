// A place in a recording that moves on line by line and block by block.
#ifndef KOVTOOLS_RECORDCURSOR_H
#define KOVTOOLS_RECORDCURSOR_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/recording/filewindow.h"

namespace kovtools {

// Thrown by whoever reads through a cursor: the data ends too early, or says something impossible.
struct CutOff
{
};
struct Damaged
{
    std::string what;
};

class RecordCursor
{
public:
    // Goes from `from` to `end` at most, offsets in the file.
    RecordCursor(FileWindow& window, std::uint64_t from, std::uint64_t end)
        : m_window(window), m_position(from), m_end(end)
    {
    }

    std::uint64_t position() const { return m_position; }
    bool startsWith(std::string_view text) { return visible(text.size()).starts_with(text); }

    // The text up to the next line end, which is skipped. Valid until the next call of anything here.
    std::string_view line();

    // Skips `count` raw bytes and the line end behind them.
    void skipBlock(std::uint64_t count);

private:
    std::string_view visible(std::size_t count);

    FileWindow& m_window;
    std::uint64_t m_position;
    std::uint64_t m_end;
};

// A whole decimal number and nothing else.
std::optional<int> wholeNumber(std::string_view text);

}  // namespace kovtools

#endif
