// Plain numbers, which is all that our writer produces, take a fast path without allocation. Everything else
// ("+1", "inf", blanks, nonsense) is left to QByteArray, whose conversions say what such a text means.
#include <KOVDoaHandle/result/resultnumbers_p.h>

#include <QtCore/QByteArray>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <system_error>

namespace KOVResult {

namespace {

constexpr int significantDigits = 6;
constexpr double infinity = std::numeric_limits<double>::infinity();

QByteArray byteArray(std::string_view text)
{
    return QByteArray(text.data(), static_cast<int>(text.size()));
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// A sign or a digit first and a digit last: leaves out "inf", "nan", ".5" and "5.".
bool beginsAndEndsLikeANumber(std::string_view text)
{
    return !text.empty() && (isDigit(text.front()) || text.front() == '-') && isDigit(text.back());
}

// True for a number exactly half-way between two texts of six digits, such as 43915.25. QString writes the one farther
// from zero there, where the standard conversion writes the even one.
bool liesHalfWay(double value)
{
    // Half-way numbers have seven digits, the last one a 5. With digits behind the point, at most ten of them leave
    // a value that a float can hold, so that all such numbers are multiples of 1 / 1024.
    const double scaled = value * 1024.0;
    if (scaled != std::trunc(scaled) || std::isinf(value)) {
        return false;
    }
    // Enough digits for the exact value of any float of that kind.
    constexpr int allDigits = 60;
    char buffer[allDigits + 16];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value),
                                            std::chars_format::scientific, allDigits);
    const std::string_view digits(buffer + 1 + significantDigits,
                                  static_cast<std::size_t>(end - buffer) - 1 - significantDigits);
    return digits.front() == '5' && digits.find_first_not_of('0', 1) == digits.find('e');
}

}  // namespace

void appendNumber(std::string& text, float value)
{
    if (std::isnan(value)) {
        text += "nan";
        return;
    }
    if (value == 0.0F) {
        text += '0';  // also for the negative zero
        return;
    }
    double written = static_cast<double>(value);
    if (liesHalfWay(written)) {
        written = std::nextafter(written, written > 0.0 ? infinity : -infinity);
    }
    char buffer[32];
    const auto [end, error] =
        std::to_chars(buffer, buffer + sizeof buffer, written, std::chars_format::general, significantDigits);
    text.append(buffer, end);
}

void appendNumber(std::string& text, int value)
{
    char buffer[16];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
    text.append(buffer, end);
}

float readFloat(std::string_view text)
{
    if (beginsAndEndsLikeANumber(text)) {
        double value = 0.0;
        const char* const textEnd = text.data() + text.size();
        const auto [end, error] = std::from_chars(text.data(), textEnd, value);
        const double magnitude = std::fabs(value);
        const bool isOrdinary = value == 0.0 || (magnitude >= std::numeric_limits<float>::min() &&
                                                 magnitude <= std::numeric_limits<float>::max());
        if (error == std::errc{} && end == textEnd && isOrdinary) {
            return static_cast<float>(value);
        }
    }
    return byteArray(text).toFloat();
}

int readInt(std::string_view text)
{
    if (beginsAndEndsLikeANumber(text)) {
        int value = 0;
        const char* const textEnd = text.data() + text.size();
        const auto [end, error] = std::from_chars(text.data(), textEnd, value);
        if (error == std::errc{} && end == textEnd) {
            return value;
        }
    }
    return byteArray(text).toInt();
}

std::string_view takePart(std::string_view& text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) {
        text = {};
        return {};
    }
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    const std::string_view part = text.substr(begin, end - begin);
    text.remove_prefix(end);
    return part;
}

}  // namespace KOVResult
