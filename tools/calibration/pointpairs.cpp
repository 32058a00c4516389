#include "tools/calibration/pointpairs.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>
#include <system_error>
#include <vector>

#include "tools/csv/csvlines.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"

namespace kovtools {

namespace {

constexpr std::size_t coordinatesOfPair = 4;

unsigned coordinate(const std::string& field, const std::string& where)
{
    unsigned value = 0;
    const char* const end = field.data() + field.size();
    const auto [stop, error] = std::from_chars(field.data(), end, value);
    if (error != std::errc() || stop != end || value > largestCoordinate) {
        throw DataError(where + ": '" + field + "' is not a whole number of pixels from 0 to " +
                        std::to_string(largestCoordinate));
    }
    return value;
}

PointPair parsePair(const std::string& line, int number, const std::filesystem::path& file)
{
    const std::string where = "line " + std::to_string(number) + " of " + inQuotes(file);
    const std::vector<std::string> fields = commaFields(line);
    if (fields.size() != coordinatesOfPair) {
        throw DataError(where + " is not four whole numbers sx,sy,dx,dy");
    }
    return {number,
            {coordinate(fields[0], where), coordinate(fields[1], where)},
            {coordinate(fields[2], where), coordinate(fields[3], where)}};
}

// Words only: what has a digit in it was meant to be a pair.
bool namesColumns(const std::string& line)
{
    const std::vector<std::string> fields = commaFields(line);
    return fields.size() == coordinatesOfPair &&
           std::all_of(fields.begin(), fields.end(), [](const std::string& field) {
               return !field.empty() && std::isalpha(static_cast<unsigned char>(field[0])) != 0;
           });
}

}  // namespace

PointPairs readPointPairs(const std::filesystem::path& file)
{
    LineReader lines = LineReader::ofFile(file);
    PointPairs pairs{};
    int count = 0;
    std::string line;
    while (lines.next(line)) {
        if (isBlank(line) || (lines.number() == 1 && namesColumns(line))) {
            continue;
        }
        const PointPair pair = parsePair(line, lines.number(), file);
        if (count == calibrationPairs) {
            throw DataError("line " + std::to_string(lines.number()) + " of " + inQuotes(file) +
                            " is one pair too many: the fit takes " + std::to_string(calibrationPairs));
        }
        pairs[static_cast<std::size_t>(count++)] = pair;
    }
    if (count == 0) {
        throw DataError(inQuotes(file) + " holds no pairs of points; the fit takes " +
                        std::to_string(calibrationPairs) + " lines sx,sy,dx,dy");
    }
    if (count < calibrationPairs) {
        throw DataError(inQuotes(file) + " ends at line " + std::to_string(lines.number()) + " with " +
                        std::to_string(count) + " of the " + std::to_string(calibrationPairs) +
                        " pairs that the fit takes");
    }
    return pairs;
}

}  // namespace kovtools
