// Any bytes as one of the small texts that the program reads; the first byte says which. Each is either taken or
// refused with one of the program's own errors, and what is taken keeps its promises: values are in range, written
// down again they are read as the same, and a line that does not parse loses nothing but itself.
#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/arrayaudio/brokenmicrophones.h"
#include "tools/arrayaudio/geometryfile.h"
#include "tools/arrayaudio/standingsource.h"
#include "tools/calibration/pointpairs.h"
#include "tools/csv/csvlines.h"
#include "tools/discharge/modelfile.h"
#include "tools/gasleak/leakstream.h"
#include "tools/gasleak/leaktablefile.h"
#include "tools/scene/scenesimulation.h"
#include "tools/support/errors.h"

namespace {

using Lines = std::vector<std::string>;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "relation broken: %s\n", what);
    std::abort();
}

void require(bool holds, const char* what)
{
    if (!holds) {
        fail(what);
    }
}

// A folder that lives as long as the process, and in it one file.
const std::filesystem::path& fileWith(std::string_view text, const char* name = "input.txt")
{
    static const QTemporaryDir folder;
    static std::filesystem::path file;
    file = std::filesystem::path(folder.path().toStdString()) / name;
    std::ofstream(file, std::ios::binary).write(text.data(), static_cast<std::streamsize>(text.size()));
    return file;
}

std::string digits(double value)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

bool sameBits(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

kovtools::LineReader inPieces(std::string_view text, std::size_t piece)
{
    return kovtools::LineReader([text, piece](char* buffer, std::size_t size) mutable {
        const std::size_t count = std::min({piece, size, text.size()});
        std::memcpy(buffer, text.data(), count);
        text.remove_prefix(count);
        return count;
    });
}

Lines linesOf(kovtools::LineReader reader)
{
    Lines lines;
    for (std::string line; reader.next(line);) {
        lines.push_back(line);
        require(reader.number() == static_cast<int>(lines.size()), "a line has another number");
    }
    return lines;
}

void readLines(std::string_view text)
{
    constexpr std::size_t all = SIZE_MAX;
    const Lines lines = linesOf(inPieces(text, all));
    require(linesOf(inPieces(text, 1)) == lines && linesOf(inPieces(text, 7)) == lines,
            "the lines depend on the pieces that they come in");
    const auto ends = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    require(lines.size() == ends + (!text.empty() && text.back() != '\n' ? 1 : 0), "a line is lost");
    for (const std::string& line : lines) {
        const Lines fields = kovtools::commaFields(line);
        require(fields.size() == 1 + static_cast<std::size_t>(std::count(line.begin(), line.end(), ',')),
                "a field is lost");
        for (const std::string& field : fields) {
            if (const std::optional<double> number = kovtools::numberIn(field)) {
                const std::optional<double> again = kovtools::numberIn(digits(*number));
                require(again && sameBits(*again, *number), "a number is read as another");
            }
        }
    }
}

void readGeometry(std::string_view text)
{
    const std::vector<kovtools::Microphone> array = kovtools::readGeometry(fileWith(text));
    require(!array.empty() && array.size() <= kovtools::mostMicrophones, "an array of an absurd size");
    std::string written;
    for (const kovtools::Microphone& at : array) {
        require(std::hypot(at.x, at.y, at.z) <= kovtools::largestArrayRadius, "a microphone is far off");
        written += digits(at.x) + " " + digits(at.y) + "," + digits(at.z) + "# position\r\n\n";
    }
    const std::vector<kovtools::Microphone> again = kovtools::readGeometry(fileWith(written));
    require(std::equal(array.begin(), array.end(), again.begin(), again.end(),
                       [](const kovtools::Microphone& a, const kovtools::Microphone& b) {
                           return sameBits(a.x, b.x) && sameBits(a.y, b.y) && sameBits(a.z, b.z);
                       }),
            "an array is read as another");
}

void readPointPairs(std::string_view text)
{
    const kovtools::PointPairs pairs = kovtools::readPointPairs(fileWith(text));
    std::string written = "sx,sy,dx,dy\n";
    for (const kovtools::PointPair& pair : pairs) {
        for (const unsigned value : {pair.source.x, pair.source.y, pair.target.x, pair.target.y}) {
            require(value <= kovtools::largestCoordinate, "a coordinate is out of range");
            written += std::to_string(value) + ",";
        }
        written.back() = '\n';
    }
    const kovtools::PointPairs again = kovtools::readPointPairs(fileWith(written));
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        require(pairs[i].source.x == again[i].source.x && pairs[i].source.y == again[i].source.y &&
                    pairs[i].target.x == again[i].target.x && pairs[i].target.y == again[i].target.y,
                "a pair is read as another");
    }
}

void readLeakTable(std::string_view text)
{
    const kovtools::LeakTableFile table = kovtools::readLeakTableFile(fileWith(text));
    const auto lines = std::count(table.usable.begin(), table.usable.end(), '\n');
    require(table.points > 0 && lines == table.points + static_cast<std::ptrdiff_t>(table.badLines.size()),
            "a line of the table is lost");
    const kovtools::LeakTableFile again = kovtools::readLeakTableFile(fileWith(table.usable));
    require(again.usable == table.usable && again.points == table.points &&
                again.badLines.size() == table.badLines.size(),
            "what is left of the table is not left alone");
}

void readMeasurements(std::string_view text)
{
    // The process has one table, the first one loaded, so the meter lives as long. It writes where the process stands.
    static const kovtools::LeakMeter meter = [] {
        QDir::setCurrent(QString::fromStdString(fileWith("").parent_path().string()));
        return kovtools::LeakMeter("60 1.5 0.02\n61 1.5 0\n-20 0.1 3\n", 5);
    }();
    std::ostringstream csv;
    std::ostringstream json;
    kovtools::LineReader lines = inPieces(text, 5);
    kovtools::LineReader linesAgain = inPieces(text, 4096);
    const kovtools::LeakStreamOutcome answered = answerLeakStream(lines, meter, false, false, csv);
    const kovtools::LeakStreamOutcome asJson = answerLeakStream(linesAgain, meter, true, true, json);
    require(answered.answered == asJson.answered && answered.badLines == asJson.badLines,
            "the answers depend on their form");
    const std::string table = csv.str();
    require(std::count(table.begin(), table.end(), '\n') == answered.answered + 1, "an answer is lost");
    std::istringstream objects(json.str());
    for (std::string line; std::getline(objects, line);) {
        require(nlohmann::json::parse(line).contains("entry"), "an answer is no JSON");
    }
}

void readModel(std::string_view text)
{
    const std::filesystem::path folder = fileWith(text, kovtools::varianceModelName).parent_path();
    kovtools::checkModels(folder);
    // What is left when the last number goes is not whole.
    std::istringstream numbers{std::string(text)};
    numbers.imbue(std::locale::classic());
    std::vector<float> values;
    for (float value = 0.0F; numbers >> value;) {
        values.push_back(value);
    }
    const std::size_t wanted =
        4 + static_cast<std::size_t>(values.at(1)) * (1 + kovtools::dischargeFeatureCount);
    require(values.size() >= wanted, "a model is taken that is not whole");
}

void readArguments(std::string_view text)
{
    kovtools::BrokenMicrophones broken;
    std::vector<kovtools::StandingSource> sources;
    for (const std::string& line : linesOf(inPieces(text, 4096))) {
        const std::string value = line.empty() ? line : line.substr(1);
        switch (line.empty() ? '\0' : line[0]) {
            case 'd':
                broken.dead.push_back(kovtools::parseMicrophone("--dead", value));
                break;
            case '=':
                broken.duplicates.push_back(kovtools::parsePair("--duplicate", value, '='));
                break;
            case ':':
                broken.swaps.push_back(kovtools::parsePair("--swap", value, ':'));
                break;
            default:
                sources.push_back(kovtools::parseSource(line));
                require(std::isfinite(sources.back().distance) && sources.back().distance > 0.0,
                        "a source has no distance");
        }
    }
    constexpr int channels = 208;
    broken.check(channels);
    for (const int microphone : broken.dead) {
        require(microphone >= 0 && microphone < channels, "a microphone that is not there is dead");
    }
    kovtools::checkWays(sources, kovtools::sunflowerSpiral());
}

void readAs(char kind, std::string_view text)
{
    switch (kind) {
        case 'a':
            return readArguments(text);
        case 'g':
            return readGeometry(text);
        case 'l':
            return readLines(text);
        case 'm':
            return readModel(text);
        case 'p':
            return readPointPairs(text);
        case 's':
            return readMeasurements(text);
        case 't':
            return readLeakTable(text);
        default:
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    std::string complaint = "accepted";
    try {
        readAs(static_cast<char>(bytes[0]), {reinterpret_cast<const char*>(bytes) + 1, size - 1});
    } catch (const kovtools::DataError& error) {
        complaint = error.what();
    } catch (const kovtools::UsageError& error) {
        complaint = error.what();
    }
    require(!complaint.empty(), "refused without a word");
    return 0;
}
