// What the analysis of a discharge comes to, in words and in JSON.
#ifndef KOVTOOLS_DISCHARGEREPORT_H
#define KOVTOOLS_DISCHARGEREPORT_H

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/discharge/dischargeanalysis.h"

namespace kovtools {

// What more than half of the votes say; Undecided when nothing has that many.
enum class Verdict { Corona, AlongSurface, Suspension, NoDischarge, Undecided };

Verdict verdictOf(const PRPDResult& result);

// "corona discharge" and so on.
std::string verdictText(Verdict verdict);

// Share of the votes that saw no discharge, percent.
float noisePercent(const PRPDResult& result);

struct DischargeReport
{
    std::filesystem::path file;
    Mains mains;
    double seconds;  // length of the recording
    DischargeAnalysis analysis;
};

std::string reportText(const DischargeReport& report);
nlohmann::ordered_json reportJson(const DischargeReport& report);

}  // namespace kovtools

#endif
