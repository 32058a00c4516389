#include "tools/audio/microphonereport.h"

#include <array>
#include <cmath>
#include <iomanip>
#include <sstream>

#include "tools/support/wording.h"

namespace kovtools {

using nlohmann::ordered_json;

namespace {

// "84.2 ok", "-inf FAIL"; the words have one length, so that columns stay in line.
std::string cell(const std::optional<TestResult>& result, int decimals)
{
    if (!result) {
        return "-     ";
    }
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << result->value
         << (result->passed ? " ok  " : " FAIL");
    return text.str();
}

void writeRow(std::ostream& text, const std::array<std::string, 5>& cells, const std::string& verdict)
{
    constexpr std::array<int, 5> widths{10, 14, 16, 15, 14};
    for (std::size_t i = 0; i < cells.size(); ++i) {
        text << std::setw(widths[i]) << cells[i];
    }
    text << "  " << verdict << '\n';
}

ordered_json number(float value)
{
    return std::isfinite(value) ? ordered_json(value) : ordered_json(nullptr);
}

ordered_json testJson(const std::optional<TestResult>& result)
{
    if (!result) {
        return nullptr;
    }
    return {{"value", number(result->value)}, {"passed", result->passed}};
}

ordered_json microphoneJson(const MicrophoneResult& microphone, int index)
{
    const bool isCopy = microphone.fault == Fault::Copy;
    return {
        {"microphone", index},
        {"level_db", testJson(microphone.level)},
        {"distinct", testJson(microphone.distinct)},
        {"lag_samples", testJson(microphone.alignment)},
        {"placement", testJson(microphone.placement)},
        {"fault",
         microphone.fault == Fault::None ? ordered_json(nullptr) : ordered_json(faultName(microphone.fault))},
        {"copy_of", isCopy ? ordered_json(microphone.copyOf) : ordered_json(nullptr)},
    };
}

}  // namespace

std::string verdict(const MicrophoneResult& microphone)
{
    const std::string name = faultName(microphone.fault);
    return microphone.fault == Fault::Copy ? name + " of " + std::to_string(microphone.copyOf) : name;
}

std::string checkSentence(const ArrayCheck& check)
{
    const std::vector<int> failing = check.failing();
    const std::string all = counted(static_cast<int>(check.microphones.size()), "microphone");
    if (failing.empty()) {
        return "all " + all + " pass";
    }
    std::ostringstream text;
    text << failing.size() << " of " << all << (failing.size() == 1 ? " fails: " : " fail: ");
    for (std::size_t i = 0; i < failing.size(); ++i) {
        text << (i > 0 ? ", " : "") << failing[i] << " ("
             << verdict(check.microphones[static_cast<std::size_t>(failing[i])]) << ")";
    }
    return text.str();
}

std::string checkText(const ArrayCheck& check)
{
    std::ostringstream text;
    writeRow(text, {"microphone", "level     ", "distinct     ", "lag     ", "placement     "}, "verdict");
    for (std::size_t i = 0; i < check.microphones.size(); ++i) {
        const MicrophoneResult& microphone = check.microphones[i];
        writeRow(text,
                 {std::to_string(i), cell(microphone.level, 1), cell(microphone.distinct, 1),
                  cell(microphone.alignment, 0), cell(microphone.placement, 2)},
                 verdict(microphone));
    }
    if (!check.placementReason.empty()) {
        text << "placement not checked: " << check.placementReason << '\n';
    }
    text << checkSentence(check) << '\n';
    return text.str();
}

ordered_json checkJson(const ArrayCheck& check, const std::string& folder)
{
    ordered_json microphones = ordered_json::array();
    for (std::size_t i = 0; i < check.microphones.size(); ++i) {
        microphones.push_back(microphoneJson(check.microphones[i], static_cast<int>(i)));
    }
    return {
        {"folder", folder},
        {"samples", check.samples},
        {"sample_rate_hz", check.sampleRate},
        {"passed", check.failing().empty()},
        {"failing", check.failing()},
        {"placement_not_checked",
         check.placementReason.empty() ? ordered_json(nullptr) : ordered_json(check.placementReason)},
        {"microphones", microphones},
    };
}

}  // namespace kovtools
