#include "tools/gasleak/leakstream.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ostream>

#include "tools/support/errors.h"

namespace kovtools {

namespace {

// Shortest decimal fraction that is read back as the same float.
std::string plain(float value)
{
    std::array<char, 48> text{};
    for (int digits = 6; digits <= 9; ++digits) {
        std::snprintf(text.data(), text.size(), "%.*g", digits, static_cast<double>(value));
        if (std::strtof(text.data(), nullptr) == value) {
            break;
        }
    }
    return text.data();
}

// Without the digits that only the conversion to double brings.
double asDouble(float value)
{
    return std::strtod(plain(value).c_str(), nullptr);
}

// Only rates above 0 have a logarithm.
bool hasLeak(const LeakAnswer& answer)
{
    return answer.entry != LeakEntry::None && std::isfinite(answer.leak);
}

bool namesColumns(const std::string& line)
{
    std::string small = line;
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const std::vector<std::string> fields = commaFields(small);
    return fields.size() == 2 && fields[0].starts_with("distance") && fields[1].starts_with("level");
}

void answerAsCsv(int number, const LeakMeasurement& measurement, const LeakAnswer& answer, std::ostream& out)
{
    out << number << ',' << plain(measurement.distance) << ',' << plain(measurement.level) << ','
        << plain(answer.powerLevel) << ',' << leakEntryName(answer.entry) << ',';
    out << (answer.entry == LeakEntry::None ? "" : plain(answer.rate)) << ','
        << (hasLeak(answer) ? plain(answer.leak) : "") << '\n';
}

void answerAsJson(int number, const LeakMeasurement& measurement, const LeakAnswer& answer, std::ostream& out)
{
    nlohmann::ordered_json json{{"line", number}};
    json.update(leakJson(measurement, answer));
    out << json.dump() << '\n';
}

}  // namespace

std::optional<LeakMeasurement> parseLeakMeasurement(const std::string& line)
{
    const std::vector<std::string> fields = commaFields(line);
    if (fields.size() != 2) {
        return std::nullopt;
    }
    const std::optional<double> distance = numberIn(fields[0]);
    const std::optional<double> level = numberIn(fields[1]);
    const bool isUsable = distance && level && *distance >= shortestLeakDistance &&
                          *distance <= longestLeakDistance && *level >= lowestLeakLevel &&
                          *level <= highestLeakLevel;
    if (!isUsable) {
        return std::nullopt;
    }
    return LeakMeasurement{static_cast<float>(*distance), static_cast<float>(*level)};
}

nlohmann::ordered_json leakJson(const LeakMeasurement& measurement, const LeakAnswer& answer)
{
    nlohmann::ordered_json json{{"distance_m", asDouble(measurement.distance)},
                                {"level_db", asDouble(measurement.level)},
                                {"power_level_db", asDouble(answer.powerLevel)},
                                {"entry", leakEntryName(answer.entry)},
                                {"lrq", nullptr},
                                {"leak", nullptr}};
    if (answer.entry != LeakEntry::None) {
        json["lrq"] = asDouble(answer.rate);
    }
    if (hasLeak(answer)) {
        json["leak"] = asDouble(answer.leak);
    }
    return json;
}

std::string leakText(const LeakMeasurement& measurement, const LeakAnswer& answer)
{
    std::string text = plain(measurement.distance) + " m, " + plain(measurement.level) +
                       " dB (sound power level " + plain(answer.powerLevel) + " dB): ";
    if (answer.entry == LeakEntry::None) {
        return text + "no entry in the table";
    }
    text += "leak rate " + plain(answer.rate) +
            (hasLeak(answer) ? ", leak value " + plain(answer.leak) : std::string(", no leak value"));
    return answer.entry == LeakEntry::Exact
               ? text
               : text + " (the table has no entry for this; the one of its bound is taken)";
}

LeakStreamOutcome answerLeakStream(LineReader& lines, const LeakMeter& meter, bool asJson, bool flushEach,
                                   std::ostream& out)
{
    LeakStreamOutcome outcome;
    if (!asJson) {
        out << "line,distance_m,level_db,power_level_db,entry,lrq,leak\n";
    }
    std::string line;
    while (lines.next(line)) {
        if (isBlank(line) || (lines.number() == 1 && namesColumns(line))) {
            continue;
        }
        const std::optional<LeakMeasurement> measurement = parseLeakMeasurement(line);
        if (!measurement) {
            outcome.badLines.push_back(lines.number());
            continue;
        }
        const LeakAnswer answer = meter.measure(*measurement);
        (asJson ? answerAsJson : answerAsCsv)(lines.number(), *measurement, answer, out);
        ++outcome.answered;
        if (flushEach) {
            out.flush();
        }
        if (!out) {
            throw DataError("cannot write to standard output");
        }
    }
    return outcome;
}

}  // namespace kovtools
