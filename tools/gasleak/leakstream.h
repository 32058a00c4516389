// Measurements as a stream of lines, each answered as it comes.
#ifndef KOVTOOLS_LEAKSTREAM_H
#define KOVTOOLS_LEAKSTREAM_H

#include <iosfwd>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "tools/csv/csvlines.h"
#include "tools/gasleak/leakmeter.h"

namespace kovtools {

// What can be measured: no instrument hears farther, and levels beyond these are slips of the pen. Inclusive.
constexpr double shortestLeakDistance = 0.001;  // m
constexpr double longestLeakDistance = 100000.0;
constexpr double lowestLeakLevel = -1000.0;  // dB
constexpr double highestLeakLevel = 10000.0;

// "distance,level" in m and dB; nothing when the line is anything else or out of range.
std::optional<LeakMeasurement> parseLeakMeasurement(const std::string& line);

// Keys `distance_m`, `level_db`, `power_level_db`, `entry`, `lrq` and `leak`; the last two are null without an entry,
// and `leak` where the rate has no logarithm.
nlohmann::ordered_json leakJson(const LeakMeasurement& measurement, const LeakAnswer& answer);

// One sentence for a reader.
std::string leakText(const LeakMeasurement& measurement, const LeakAnswer& answer);

struct LeakStreamOutcome
{
    int answered = 0;
    std::vector<int> badLines;
};

// Answers every line that parses: as a line of CSV behind a header, or as a line of JSON. Blank lines are passed over,
// and so is a first line that names the columns. `flushEach`: whoever reads waits for each answer. Throws DataError
// when the answers cannot be written.
LeakStreamOutcome answerLeakStream(LineReader& lines, const LeakMeter& meter, bool asJson, bool flushEach,
                                   std::ostream& out);

}  // namespace kovtools

#endif
