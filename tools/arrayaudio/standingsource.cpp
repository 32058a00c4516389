#include "tools/arrayaudio/standingsource.h"

#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <optional>
#include <string_view>

#include "tools/support/errors.h"

namespace kovtools {

namespace {

constexpr double degree = std::numbers::pi / 180.0;
constexpr double leakWidth = 8000.0;  // Hz
constexpr std::array<std::string_view, 3> kindNames{"leak", "tone", "pulses"};

struct Field
{
    const char* name;
    double StandingSource::*target;
    double low;
    double high;
};

// Closer than 0.2 m a source would stand within the array; tones need to stay clear of half the sample rate.
constexpr Field fields[] = {
    {"azimuth (degrees)", &StandingSource::azimuth, -90.0, 90.0},
    {"elevation (degrees)", &StandingSource::elevation, -90.0, 90.0},
    {"distance (m)", &StandingSource::distance, 0.2, 1000.0},
    {"level (Pa at 1 m)", &StandingSource::level, 0.0, 1000.0},
    {"frequency (Hz)", &StandingSource::frequency, 100.0, 45000.0},
};
constexpr std::size_t neededFields = 3;

std::vector<std::string> split(const std::string& text)
{
    std::vector<std::string> parts(1);
    for (const char letter : text) {
        if (letter == ',') {
            parts.emplace_back();
        } else {
            parts.back() += letter;
        }
    }
    return parts;
}

std::optional<double> readNumber(std::string_view text)
{
    double value = 0.0;
    if (text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = error == std::errc() && end == text.data() + text.size() && std::isfinite(value);
    return whole ? std::optional<double>(value) : std::nullopt;
}

[[noreturn]] void refuse(const std::string& text, const std::string& reason)
{
    throw UsageError("'" + text + "' is no source: " + reason);
}

SourceKind parseKind(const std::string& text, const std::string& kind)
{
    for (std::size_t i = 0; i < kindNames.size(); ++i) {
        if (kind == kindNames[i]) {
            return static_cast<SourceKind>(i);
        }
    }
    refuse(text, "it does not begin with leak@, tone@ or pulses@");
}

}  // namespace

Direction StandingSource::direction() const
{
    const double across = std::cos(elevation * degree);
    return {across * std::sin(azimuth * degree), std::sin(elevation * degree),
            across * std::cos(azimuth * degree)};
}

Microphone StandingSource::position() const
{
    const Direction towards = direction();
    return {distance * towards.x, distance * towards.y, distance * towards.z};
}

std::string sourceName(std::size_t index)
{
    return std::string(1, static_cast<char>('A' + index % 26));
}

std::vector<StandingSource> defaultSources()
{
    StandingSource strong;
    strong.azimuth = 12.0;
    strong.elevation = -6.0;
    StandingSource weak;
    weak.azimuth = -17.2;
    weak.elevation = -4.6;
    weak.level = 0.06;
    weak.frequency = 24000.0;
    return {strong, weak};
}

StandingSource parseSource(const std::string& text)
{
    const std::size_t at = text.find('@');
    StandingSource source;
    source.kind = parseKind(text, text.substr(0, at));
    if (at == std::string::npos) {
        refuse(text, "AZIMUTH,ELEVATION,DISTANCE are missing behind an @");
    }
    const std::vector<std::string> parts = split(text.substr(at + 1));
    if (parts.size() < neededFields || parts.size() > std::size(fields)) {
        refuse(text, "behind the @ stand AZIMUTH,ELEVATION,DISTANCE[,LEVEL[,FREQUENCY]]");
    }
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Field& field = fields[i];
        const std::optional<double> value = readNumber(parts[i]);
        if (!value || *value < field.low || *value > field.high) {
            refuse(text, "its " + std::string(field.name) + " is not a number from " +
                             std::to_string(field.low).substr(0, 6) + " to " +
                             std::to_string(static_cast<int>(field.high)));
        }
        source.*field.target = *value;
    }
    return source;
}

void checkWays(const std::vector<StandingSource>& sources, const std::vector<Microphone>& array)
{
    for (std::size_t s = 0; s < sources.size(); ++s) {
        const Microphone source = sources[s].position();
        for (std::size_t m = 0; m < array.size(); ++m) {
            const double way =
                std::hypot(source.x - array[m].x, source.y - array[m].y, source.z - array[m].z);
            if (way < leastWay) {
                throw UsageError("source " + sourceName(s) + " stands at microphone " + std::to_string(m) +
                                 "; there must be at least 1 cm between them");
            }
        }
    }
}

std::string kindName(SourceKind kind)
{
    return std::string(kindNames.at(static_cast<std::size_t>(kind)));
}

double leakDensity(double frequency, double hump)
{
    const double offset = (frequency - hump) / leakWidth;
    return 1.0 / (1.0 + offset * offset);
}

}  // namespace kovtools
