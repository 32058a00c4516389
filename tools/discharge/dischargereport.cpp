#include "tools/discharge/dischargereport.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "tools/support/wording.h"

namespace kovtools {

namespace {

constexpr float majority = 50.0F;  // percent

// "0.01234 (-38.2 dB)": decibels relative to full scale.
std::string levelText(float level)
{
    std::ostringstream text;
    text.precision(4);
    text << level;
    if (level > 0.0F) {
        text.precision(1);
        text << std::fixed << " (" << 20.0F * std::log10(level) << " dB)";
    }
    return text.str();
}

std::string percentText(float percent)
{
    std::ostringstream text;
    text.precision(1);
    text << std::fixed << percent << " %";
    return text.str();
}

// Names by which the shares go in JSON, too.
const char* verdictKey(Verdict verdict)
{
    switch (verdict) {
        case Verdict::Corona:
            return "corona";
        case Verdict::AlongSurface:
            return "along_surface";
        case Verdict::Suspension:
            return "suspension";
        case Verdict::NoDischarge:
            return "no_discharge";
        case Verdict::Undecided:
            break;
    }
    return "undecided";
}

}  // namespace

Verdict verdictOf(const PRPDResult& result)
{
    if (result.coronaPercent > majority) {
        return Verdict::Corona;
    }
    if (result.alongSurfacePercent > majority) {
        return Verdict::AlongSurface;
    }
    if (result.suspensionPercent > majority) {
        return Verdict::Suspension;
    }
    return noisePercent(result) > majority ? Verdict::NoDischarge : Verdict::Undecided;
}

std::string verdictText(Verdict verdict)
{
    switch (verdict) {
        case Verdict::Corona:
            return "corona discharge";
        case Verdict::AlongSurface:
            return "along-surface discharge";
        case Verdict::Suspension:
            return "suspension discharge (a floating part)";
        case Verdict::NoDischarge:
            return "no discharge";
        case Verdict::Undecided:
            break;
    }
    return "undecided: no kind has more than half of the votes";
}

float noisePercent(const PRPDResult& result)
{
    return std::max(100.0F - (result.coronaPercent + result.alongSurfacePercent + result.suspensionPercent),
                    0.0F);
}

std::string reportText(const DischargeReport& report)
{
    const PRPDResult& result = report.analysis.result;
    std::ostringstream text;
    text << "file           " << printable(report.file.string()) << "\n"
         << "mains          " << frequencyOf(report.mains) << " Hz\n"
         << "duration       " << report.seconds << " s\n"
         << "F1             " << levelText(result.F1) << ", at the mains frequency\n"
         << "F2             " << levelText(result.F2) << ", at twice the mains frequency\n"
         << "floor          " << levelText(result.RMS) << "\n"
         << "peak           " << levelText(result.peak) << "\n"
         << "votes          " << report.analysis.votes << "\n"
         << "corona         " << percentText(result.coronaPercent) << "\n"
         << "along-surface  " << percentText(result.alongSurfacePercent) << "\n"
         << "suspension     " << percentText(result.suspensionPercent) << "\n"
         << "no discharge   " << percentText(noisePercent(result)) << "\n"
         << "verdict        " << verdictText(verdictOf(result)) << "\n";
    return text.str();
}

nlohmann::ordered_json reportJson(const DischargeReport& report)
{
    const PRPDResult& result = report.analysis.result;
    return {{"file", report.file.string()},
            {"mains_hz", frequencyOf(report.mains)},
            {"duration_s", report.seconds},
            {"f1", result.F1},
            {"f2", result.F2},
            {"floor", result.RMS},
            {"peak", result.peak},
            {"votes", report.analysis.votes},
            {"percent",
             {{"corona", result.coronaPercent},
              {"along_surface", result.alongSurfacePercent},
              {"suspension", result.suspensionPercent}}},
            {"verdict", verdictKey(verdictOf(result))}};
}

}  // namespace kovtools
