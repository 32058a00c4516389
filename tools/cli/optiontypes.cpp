#include "tools/cli/optiontypes.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

namespace kovtools {

namespace {

// Locale-free, and the whole text must belong to the number.
template <typename Number>
std::optional<Number> parse(std::string_view text)
{
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) {
        return std::nullopt;
    }
    return value;
}

[[noreturn]] void reject(const std::string& name, const std::string& text, const std::string& expected)
{
    refuse(name.substr(name.rfind(',') + 1), "'" + text + "' is not " + expected);
}

std::string plain(double value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

std::string sizeText(cv::Size size)
{
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

bool isWithin(cv::Size size, const SizeBounds& bounds)
{
    return size.width >= bounds.low.width && size.height >= bounds.low.height &&
           size.width <= bounds.high.width && size.height <= bounds.high.height;
}

std::optional<cv::Size> parseSize(std::string_view text)
{
    const std::size_t cross = text.find('x');
    if (cross == std::string_view::npos) {
        return std::nullopt;
    }
    const std::optional<int> first = parse<int>(text.substr(0, cross));
    const std::optional<int> second = parse<int>(text.substr(cross + 1));
    if (!first || !second) {
        return std::nullopt;
    }
    return cv::Size(*first, *second);
}

std::optional<FrameRange> parseRange(std::string_view text)
{
    const std::size_t colon = text.find(':');
    const std::string_view first = text.substr(0, colon);
    const std::string_view last = colon == std::string_view::npos ? first : text.substr(colon + 1);
    FrameRange range;
    if (!first.empty() || colon == std::string_view::npos) {
        const std::optional<int> number = parse<int>(first);
        if (!number || *number < 1) {
            return std::nullopt;
        }
        range.first = *number;
    }
    if (!last.empty()) {
        const std::optional<int> number = parse<int>(last);
        if (!number || *number < range.first) {
            return std::nullopt;
        }
        range.last = *number;
    }
    return range;
}

}  // namespace

// "link/.." stays, for the system to follow: it is the parent of what the link leads to, not the folder of the link.
std::filesystem::path absolutePath(const std::string& name, const std::string& text)
{
    std::error_code error;
    const std::filesystem::path whole = std::filesystem::absolute(text, error);
    if (error) {
        refuse(name.substr(name.rfind(',') + 1),
               "'" + text + "' cannot be found: the working directory is gone");
    }
    std::filesystem::path path;
    for (const std::filesystem::path& part : whole) {
        if (!part.empty() && part != ".") {
            path /= part;
        }
    }
    return path;
}

const SizeBounds pictureBounds{cv::Size(160, 120), cv::Size(7680, 4320)};

OptionSyntax addInteger(const CommandSyntax& command, const std::string& name, int& target, int low, int high,
                        const std::string& help)
{
    const auto read = [&target, name, low, high](const std::string& text) {
        const std::optional<int> value = parse<int>(text);
        if (!value || *value < low || *value > high) {
            reject(name, text, "a whole number from " + std::to_string(low) + " to " + std::to_string(high));
        }
        target = *value;
    };
    return command.addOption(name, read, help).kind("N").shownDefault(std::to_string(target));
}

OptionSyntax addSeed(const CommandSyntax& command, const std::string& name, std::uint64_t& target,
                     const std::string& help)
{
    const auto read = [&target, name](const std::string& text) {
        const std::optional<std::uint64_t> value = parse<std::uint64_t>(text);
        if (!value) {
            reject(name, text, "a whole number from 0 to 18446744073709551615");
        }
        target = *value;
    };
    return command.addOption(name, read, help).kind("N").shownDefault(std::to_string(target));
}

OptionSyntax addNumber(const CommandSyntax& command, const std::string& name, double& target, double low,
                       double high, const std::string& help)
{
    const auto read = [&target, name, low, high](const std::string& text) {
        const std::optional<double> value = parse<double>(text);
        if (!value || !std::isfinite(*value) || *value < low || *value > high) {
            reject(name, text, "a number from " + plain(low) + " to " + plain(high));
        }
        target = *value;
    };
    return command.addOption(name, read, help).kind("X").shownDefault(plain(target));
}

OptionSyntax addSize(const CommandSyntax& command, const std::string& name, cv::Size& target,
                     const SizeBounds& bounds, const std::string& kind, const std::string& help)
{
    const auto read = [&target, name, bounds, kind](const std::string& text) {
        const std::optional<cv::Size> value = parseSize(text);
        if (!value || !isWithin(*value, bounds)) {
            reject(name, text,
                   "a size " + kind + " from " + sizeText(bounds.low) + " to " + sizeText(bounds.high));
        }
        target = *value;
    };
    const OptionSyntax option = command.addOption(name, read, help).kind(kind);
    if (!target.empty()) {
        option.shownDefault(sizeText(target));
    }
    return option;
}

OptionSyntax addPath(const CommandSyntax& command, const std::string& name, std::filesystem::path& target,
                     const std::string& kind, const std::string& help)
{
    const auto read = [&target, name](const std::string& text) {
        if (text.empty()) {
            reject(name, text, "a file name");
        }
        target = absolutePath(name, text);
    };
    return command.addOption(name, read, help).kind(kind);
}

OptionSyntax addPaths(const CommandSyntax& command, const std::string& name,
                      std::vector<std::filesystem::path>& target, const std::string& kind,
                      const std::string& help)
{
    const auto read = [&target, name](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            if (text.empty()) {
                reject(name, text, "a file name");
            }
            target.push_back(absolutePath(name, text));
        }
    };
    return command.addOptionOfMany(name, read, help).kind(kind);
}

OptionSyntax addFrameRange(const CommandSyntax& command, const std::string& name, FrameRange& target,
                           const std::string& help)
{
    const auto read = [&target, name](const std::string& text) {
        const std::optional<FrameRange> range = parseRange(text);
        if (!range) {
            reject(name, text, "a range of frames such as 10:20, 10:, :20 or 7 (from 1)");
        }
        target = *range;
    };
    return command.addOption(name, read, help).kind("A:B");
}

}  // namespace kovtools
