// What a recording contains, in figures.
#ifndef KOVTOOLS_RECORDINGSUMMARY_H
#define KOVTOOLS_RECORDINGSUMMARY_H

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "tools/recording/recording.h"

namespace kovtools {

struct MapCell
{
    float level;  // linear
    int frame;    // from 1
    int row;
    int col;
};

struct RecordingSummary
{
    std::string file;
    RecordingScan scan;
    int frames = 0;
    double frameRate = 25.0;         // frames/s; assumed, records carry no time
    std::optional<MapCell> highest;  // none without a frame
    std::optional<MapCell> lowest;
    long long unusableCells = 0;  // NaN or infinite
    int framesWithPeaks = 0;
    int mostPeaks = 0;  // in one frame
    long long peaks = 0;

    double durationSeconds() const { return frames / frameRate; }
};

RecordingSummary summarise(const Recording& recording, double frameRate);

// For people, several lines; and for machines.
std::string summaryText(const RecordingSummary& summary);
nlohmann::ordered_json summaryJson(const RecordingSummary& summary);

}  // namespace kovtools

#endif
