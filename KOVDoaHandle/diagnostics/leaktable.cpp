// A table may have a hundred thousand lines, so fields are read where they lie; only unusual spellings of a number go
// through QString.
#include <KOVDoaHandle/diagnostics/leaktable_p.h>

#include <QtCore/QString>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace KOVPrivate {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
// Stands for a line that is too long: it counts as a line, but has not three fields.
constexpr std::string_view skippedLine = "-";

// Toward zero; the nearest integer for what lies beyond them, 0 for a NaN.
int truncated(float value)
{
    // The first float above the integers; its negative is the lowest integer itself.
    constexpr float beyond = 2147483648.0F;
    if (value >= beyond) {
        return std::numeric_limits<int>::max();
    }
    if (value < -beyond) {
        return std::numeric_limits<int>::min();
    }
    return std::isnan(value) ? 0 : static_cast<int>(value);
}

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

float readByTheBook(std::string_view field)
{
    // Decoding a piece of its own would drop a byte-order mark that, inside a text, makes a field no number.
    if (field.starts_with(byteOrderMark)) {
        return 0.0F;
    }
    return QString::fromUtf8(field.data(), static_cast<int>(field.size())).toFloat();
}

// Digits with at most one point between them, few enough that both the digits and the power of ten that divides them
// are exact in double precision: their quotient is then the correctly rounded number.
float readNumber(std::string_view field)
{
    constexpr std::size_t mostDigits = 15;
    static constexpr std::array<double, mostDigits + 1> powersOfTen = {
        1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const char* at = field.data();
    const char* const end = at + field.size();
    const bool isNegative = at != end && *at == '-';
    if (isNegative) {
        ++at;
    }
    std::int64_t digits = 0;
    const char* const whole = at;
    for (; at != end && isDigit(*at); ++at) {
        digits = digits * 10 + (*at - '0');
        if (at - whole >= static_cast<std::ptrdiff_t>(mostDigits)) {
            return readByTheBook(field);
        }
    }
    auto digitCount = static_cast<std::size_t>(at - whole);
    std::size_t decimals = 0;
    if (at != end && *at == '.' && digitCount > 0) {
        const char* const fraction = ++at;
        for (; at != end && isDigit(*at) && digitCount < mostDigits; ++at, ++digitCount) {
            digits = digits * 10 + (*at - '0');
        }
        decimals = static_cast<std::size_t>(at - fraction);
    }
    if (at != end || digitCount == 0) {
        return readByTheBook(field);
    }
    const double value = static_cast<double>(digits) / powersOfTen[decimals];
    return static_cast<float>(isNegative ? -value : value);
}

// Cuts the next field off a line; empty when there is none left.
std::string_view takeField(std::string_view& line)
{
    std::size_t begin = 0;
    while (begin < line.size() && line[begin] == ' ') {
        ++begin;
    }
    std::size_t end = begin;
    while (end < line.size() && line[end] != ' ') {
        ++end;
    }
    const std::string_view field = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return field;
}

void widen(int& lowest, int& highest, float value)
{
    if (value > static_cast<float>(highest)) {
        highest = truncated(value);
    }
    if (value < static_cast<float>(lowest)) {
        lowest = truncated(value);
    }
}

}  // namespace

int tenths(float value)
{
    return truncated(value * 10.0F);
}

void LeakTableReader::feed(std::string_view bytes)
{
    std::size_t begin = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        if (!isLineEnd(bytes[at])) {
            continue;
        }
        const std::string_view line = bytes.substr(begin, at - begin);
        begin = at + 1;
        if (m_unfinished.empty() && !m_isUnfinishedTooLong) {
            takeLine(line);
        } else {
            keepUnfinished(line);
            takeLine(m_unfinished);
            m_unfinished.clear();
            m_isUnfinishedTooLong = false;
        }
    }
    keepUnfinished(bytes.substr(begin));
}

LeakTable LeakTableReader::finish()
{
    takeLine(m_unfinished);
    m_unfinished.clear();
    m_lastRates = nullptr;
    return std::exchange(m_table, LeakTable());
}

void LeakTableReader::keepUnfinished(std::string_view rest)
{
    if (m_unfinished.size() + rest.size() > longestLine) {
        m_unfinished = std::string(skippedLine);
        m_isUnfinishedTooLong = true;
    }
    if (!m_isUnfinishedTooLong) {
        m_unfinished += rest;
    }
}

void LeakTableReader::takeLine(std::string_view line)
{
    if (std::exchange(m_isTextBegin, false) && line.starts_with(byteOrderMark)) {
        line.remove_prefix(byteOrderMark.size());
    }
    if (line.empty()) {
        return;
    }
    if (line.size() > longestLine) {
        line = skippedLine;
    }
    const bool isFirst = std::exchange(m_isFirstLine, false);
    const std::string_view level = takeField(line);
    const std::string_view distance = takeField(line);
    const std::string_view rate = takeField(line);
    if (rate.empty() || !takeField(line).empty()) {
        return;
    }
    const float levelValue = readNumber(level);
    const float distanceValue = readNumber(distance);
    if (isFirst) {
        // A table whose first line is skipped has a range that starts from 0.
        m_table.minSpl = m_table.maxSpl = truncated(levelValue);
        m_table.minDistance = m_table.maxDistance = truncated(distanceValue);
    }
    store(levelValue, distanceValue, readNumber(rate));
}

void LeakTableReader::store(float level, float distance, float rate)
{
    widen(m_table.minSpl, m_table.maxSpl, level);
    widen(m_table.minDistance, m_table.maxDistance, distance);
    ratesAt(tenths(distance)).insert(tenths(level), rate);
}

QHash<int, float>& LeakTableReader::ratesAt(int distanceKey)
{
    if (m_lastRates == nullptr || m_lastDistanceKey != distanceKey) {
        // Nodes of a QHash stay where they are when others are added.
        m_lastRates = &m_table.rates[distanceKey];
        m_lastDistanceKey = distanceKey;
        if (m_lastRates->isEmpty()) {
            // Lines in a row, not what the last distance has in all: however the lines alternate, the room made is
            // never more than the lines read.
            m_lastRates->reserve(m_linesInARow);
        }
        m_linesInARow = 0;
    }
    ++m_linesInARow;
    return *m_lastRates;
}

}  // namespace KOVPrivate
