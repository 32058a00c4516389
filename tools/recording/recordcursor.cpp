#include "tools/recording/recordcursor.h"

#include <algorithm>
#include <charconv>

namespace kovtools {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::size_t longestLine =
    1024UL * 1024;  // bytes; of longer ones the library reads the beginning only

}  // namespace

std::string_view RecordCursor::line()
{
    std::size_t searched = 0;
    std::size_t wanted = 1;
    for (;;) {
        const std::string_view text = visible(wanted);
        const std::size_t end = text.find(lineEnd, searched);
        if (std::min(end, text.size()) > longestLine) {
            throw Damaged{"a line has no end"};
        }
        if (end != std::string_view::npos) {
            m_position += end + lineEnd.size();
            return text.substr(0, end);
        }
        if (text.size() < wanted) {
            throw CutOff{};
        }
        // The window may end between the two letters of a line end.
        searched = text.size() - 1;
        wanted = text.size() + 1;
    }
}

void RecordCursor::skipBlock(std::uint64_t count)
{
    if (m_end - m_position < count + lineEnd.size()) {
        throw CutOff{};
    }
    m_position += count;
    const std::string_view behind = visible(lineEnd.size());
    if (behind.size() < lineEnd.size()) {
        throw CutOff{};
    }
    if (!behind.starts_with(lineEnd)) {
        throw Damaged{"a block of binary data does not end where it should"};
    }
    m_position += lineEnd.size();
}

// Like FileWindow::at() at the position, but only up to the end.
std::string_view RecordCursor::visible(std::size_t count)
{
    const std::uint64_t left = m_end - m_position;
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, left));
    return m_window.at(m_position, wanted)
        .substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(left, SIZE_MAX)));
}

std::optional<int> wholeNumber(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

}  // namespace kovtools
