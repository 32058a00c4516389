#include "tools/csv/csvlines.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <memory>
#include <system_error>
#include <utility>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/interrupt.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace {

constexpr std::size_t bufferBytes = 65536;
constexpr std::size_t mostNamedLines = 12;

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// A read is taken up again after a signal, waiting is not: so an interrupt is noticed while nobody types.
std::size_t readStandardInput(char* buffer, std::size_t size)
{
    for (;;) {
        throwIfInterrupted();
        pollfd input{STDIN_FILENO, POLLIN, 0};
        if (poll(&input, 1, -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw DataError("cannot wait for standard input");
        }
        const ssize_t got = read(STDIN_FILENO, buffer, size);
        if (got >= 0) {
            return static_cast<std::size_t>(got);
        }
        if (errno != EINTR && errno != EAGAIN) {
            throw DataError("cannot read standard input");
        }
    }
}

}  // namespace

LineReader::LineReader(Source source) : m_source(std::move(source)), m_buffer(bufferBytes) {}

LineReader LineReader::ofFile(const std::filesystem::path& file)
{
    const auto stream = std::make_shared<std::ifstream>(openForReading(file));
    return LineReader([stream, file](char* buffer, std::size_t size) {
        throwIfInterrupted();
        stream->read(buffer, static_cast<std::streamsize>(size));
        if (stream->bad()) {
            throw DataError("cannot read " + inQuotes(file));
        }
        return static_cast<std::size_t>(stream->gcount());
    });
}

LineReader LineReader::ofStandardInput()
{
    return LineReader(readStandardInput);
}

bool LineReader::refill()
{
    m_at = 0;
    m_end = m_source(m_buffer.data(), m_buffer.size());
    return m_end > 0;
}

bool LineReader::next(std::string& line)
{
    line.clear();
    bool isAny = false;
    while (m_at < m_end || refill()) {
        isAny = true;
        const char* const begin = m_buffer.data() + m_at;
        const char* const end = m_buffer.data() + m_end;
        const char* const stop = std::find(begin, end, '\n');
        line.append(begin, std::min(static_cast<std::size_t>(stop - begin), longestLine - line.size()));
        m_at += static_cast<std::size_t>(stop - begin);
        if (stop != end) {
            ++m_at;
            break;
        }
    }
    if (!isAny) {
        return false;
    }
    if (++m_number == 1) {
        line.erase(0, line.size() - withoutByteOrderMark(line).size());
    }
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return true;
}

std::string_view withoutByteOrderMark(std::string_view text)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

std::vector<std::string> commaFields(std::string_view line)
{
    std::vector<std::string> fields;
    for (;;) {
        const std::size_t comma = line.find(',');
        fields.emplace_back(trimmed(line.substr(0, comma)));
        if (comma == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(comma + 1);
    }
}

bool isBlank(std::string_view line)
{
    return trimmed(line).empty();
}

std::optional<double> numberIn(std::string_view text)
{
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::string namedLines(const std::vector<int>& numbers)
{
    std::string text = numbers.size() == 1 ? "line " : "lines ";
    const std::size_t named = std::min(numbers.size(), mostNamedLines);
    for (std::size_t i = 0; i < named; ++i) {
        const bool isLast = i + 1 == numbers.size();
        text += i == 0 ? "" : isLast ? " and " : ", ";
        text += std::to_string(numbers[i]);
    }
    if (named < numbers.size()) {
        text += " and " + std::to_string(numbers.size() - named) + " more";
    }
    return text;
}

}  // namespace kovtools
