// Fields are recognised by what their key contains, and one line may fill several. In particular the
// "maxSplExternView" line also fills maxSplExtern, overwriting what the "maxSplExtern" line before it has
// set. This is deliberate, so that a recording shows the same values in every release. maxSpl and minSpl are compared whole and so
// keep their own.
#include <KOVDoaHandle/result/resultrecord_p.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/result/resultformat_p.h>
#include <KOVDoaHandle/result/resultnumbers_p.h>

namespace KOVResult {

namespace {

enum class Match { whole, part };

struct Rule
{
    std::string_view key;
    Match match;
};

// In the order in which they apply. Scalars come first; FieldRule names the places.
constexpr std::array rules{
    Rule{keyPowerBands, Match::part},
    Rule{keyMaxSpl, Match::whole},
    Rule{keyMinSpl, Match::whole},
    Rule{keyMaxSplExtern, Match::part},
    Rule{keyMinSplExtern, Match::part},
    Rule{keyMaxSplView, Match::part},
    Rule{keyMinSplView, Match::part},
    Rule{keyMaxSplExternView, Match::part},
    Rule{keyMinSplExternView, Match::part},
    Rule{keyFirstPointInRadius, Match::part},
    Rule{keyMedian, Match::part},
    Rule{keyDistance, Match::part},
    Rule{keyPeaks, Match::part},
    Rule{keyPowerSpec, Match::part},
    Rule{keyEngMap, Match::part},
};
enum FieldRule : unsigned {
    rulePowerBands,
    ruleFirstPoint,
    ruleLastPoint = ruleFirstPoint + 7,
    ruleFirstPointInRadius,
    ruleMedian,
    ruleDistance,
    rulePeaks,
    rulePowerSpec,
    ruleEngMap,
};
static_assert(rules.size() == ruleEngMap + 1 && rules[ruleLastPoint].key == keyMinSplExternView);

// The frame's points in the order of their rules.
constexpr std::array<fpoint2d EngMapResult::*, ruleLastPoint - ruleFirstPoint + 1> points{
    &EngMapResult::maxSpl,           &EngMapResult::minSpl,           &EngMapResult::maxSplExtern,
    &EngMapResult::minSplExtern,     &EngMapResult::maxSplView,       &EngMapResult::minSplView,
    &EngMapResult::maxSplExternView, &EngMapResult::minSplExternView,
};

// One bit for each rule that a key meets.
using RuleSet = std::uint32_t;

constexpr RuleSet bit(unsigned rule)
{
    return RuleSet{1} << rule;
}

constexpr RuleSet searchRules(std::string_view key)
{
    RuleSet met = 0;
    for (unsigned i = 0; i < rules.size(); ++i) {
        const bool meets = rules[i].match == Match::whole ? key == rules[i].key
                                                          : key.find(rules[i].key) != std::string_view::npos;
        met |= meets ? bit(i) : 0;
    }
    return met;
}

// The rules' own keys are all that a good file contains; their answers are worked out beforehand.
constexpr auto rulesOfOwnKeys = [] {
    std::array<RuleSet, rules.size()> sets{};
    for (std::size_t i = 0; i < rules.size(); ++i) {
        sets[i] = searchRules(rules[i].key);
    }
    return sets;
}();

RuleSet rulesFor(std::string_view key)
{
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (key == rules[i].key) {
            return rulesOfOwnKeys[i];
        }
    }
    return searchRules(key);
}

fpoint2d readPoint(std::string_view value)
{
    fpoint2d point{};
    point.value = readFloat(takePart(value));
    point.row = readInt(takePart(value));
    point.col = readInt(takePart(value));
    return point;
}

TargetPoint readPeak(std::string_view line)
{
    TargetPoint peak;
    peak.value = readFloat(takePart(line));
    peak.row = readInt(takePart(line));
    peak.col = readInt(takePart(line));
    peak.id = readInt(takePart(line));
    peak.life = readInt(takePart(line));
    peak.matched = readInt(takePart(line)) != 0;
    return peak;
}

bool readPeaks(ByteCursor& cursor, int count, std::vector<TargetPoint>& peaks, std::size_t maxPeaks)
{
    // The count is the file's word only; more than a usual frame's worth is not believed in advance.
    constexpr int usualPeaks = 16;
    if (count > 0) {
        peaks.reserve(peaks.size() + static_cast<std::size_t>(std::min(count, usualPeaks)));
    }
    for (int i = 0; i < count && !cursor.atEnd(); ++i) {
        if (peaks.size() >= maxPeaks) {
            return false;
        }
        peaks.push_back(readPeak(cursor.line()));
    }
    return true;
}

std::size_t byteCount(int floats)
{
    return floats > 0 ? static_cast<std::size_t>(floats) * sizeof(float) : 0;
}

void readBlock(ByteCursor& cursor, float* values, int count)
{
    const std::string_view block = cursor.bytes(byteCount(count));
    if (!block.empty()) {
        std::memcpy(values, block.data(), block.size());
    }
}

void readMap(ByteCursor& cursor, const mat2d_fp32& map)
{
    for (int row = 0; row < map.rows && !cursor.atEnd(); ++row) {
        readBlock(cursor, map.cols > 0 ? map.data[row] : nullptr, map.cols);
    }
}

void readScalars(RuleSet met, std::string_view value, EngMapResult& frame)
{
    if ((met & bit(rulePowerBands)) != 0) {
        frame.PowerBandsFFTSpec = readFloat(value);
    }
    for (unsigned i = 0; i < points.size(); ++i) {
        if ((met & bit(ruleFirstPoint + i)) != 0) {
            frame.*points[i] = readPoint(value);
        }
    }
    if ((met & bit(ruleFirstPointInRadius)) != 0) {
        frame.firstPointInRadius = value.find("true") != std::string_view::npos;
    }
    if ((met & bit(ruleMedian)) != 0) {
        frame.median = readFloat(value);
    }
    if ((met & bit(ruleDistance)) != 0) {
        frame.distance = readFloat(value);
    }
}

}  // namespace

bool readFields(ByteCursor& cursor, EngMapResult& frame, std::size_t maxPeaks)
{
    while (!cursor.atEnd()) {
        std::string_view line = cursor.line();
        if (line.find(recordEnd) != std::string_view::npos) {
            break;
        }
        if (!line.starts_with(fieldMark)) {
            continue;
        }
        line.remove_prefix(fieldMark.size());
        const std::size_t keyEnd = line.find(':');
        if (keyEnd == std::string_view::npos) {
            // Without its value a key says nothing; at the end of a torn file it may even be half of another key.
            continue;
        }
        const std::string_view value = line.substr(keyEnd + 1);
        const RuleSet met = rulesFor(line.substr(0, keyEnd));

        readScalars(met, value, frame);
        if ((met & bit(rulePeaks)) != 0 && !readPeaks(cursor, readInt(value), frame.peaks, maxPeaks)) {
            return false;
        }
        if ((met & bit(rulePowerSpec)) != 0) {
            readBlock(cursor, frame.PowerSpec->data, frame.PowerSpec->len);
        }
        if ((met & bit(ruleEngMap)) != 0) {
            readMap(cursor, *frame.ResEngMap);
        }
    }
    return true;
}

}  // namespace KOVResult
