#include "tools/recording/recordingsummary.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

#include <KOVDoaHandle/imaging/engmapresult.h>

#include "tools/support/wording.h"

namespace kovtools {

using nlohmann::ordered_json;

namespace {

void takeMap(RecordingSummary& summary, const mat2d_fp32& map, int number)
{
    for (int row = 0; row < map.rows; ++row) {
        for (int col = 0; col < map.cols; ++col) {
            const float level = map.data[row][col];
            if (!std::isfinite(level)) {
                ++summary.unusableCells;
                continue;
            }
            if (!summary.highest || level > summary.highest->level) {
                summary.highest = MapCell{level, number, row, col};
            }
            if (!summary.lowest || level < summary.lowest->level) {
                summary.lowest = MapCell{level, number, row, col};
            }
        }
    }
}

std::string cellText(const MapCell& cell)
{
    std::ostringstream text;
    text << cell.level;
    if (cell.level > 0.0F) {
        text << " (" << std::fixed << std::setprecision(1) << 20.0 * std::log10(cell.level) << " dB re 1)";
    }
    text << " in frame " << cell.frame << " at row " << cell.row << ", column " << cell.col;
    return text.str();
}

ordered_json cellJson(const std::optional<MapCell>& cell)
{
    if (!cell) {
        return nullptr;
    }
    ordered_json json{{"level", cell->level},
                      {"db", nullptr},
                      {"frame", cell->frame},
                      {"row", cell->row},
                      {"col", cell->col}};
    if (cell->level > 0.0F) {
        json["db"] = 20.0 * std::log10(cell->level);
    }
    return json;
}

// Where not every record could be loaded, the rest of the answer is about fewer frames than the file has.
std::string loadedOf(const RecordingSummary& summary)
{
    const int records = summary.scan.completeRecords;
    return summary.frames == records ? std::string() : " loaded of " + std::to_string(records);
}

std::string wholeness(const RecordingScan& scan)
{
    return scan.isWhole() ? "yes" : "no: it " + scan.damage;
}

}  // namespace

RecordingSummary summarise(const Recording& recording, double frameRate)
{
    RecordingSummary summary;
    summary.file = recording.path().string();
    summary.scan = recording.scan();
    summary.frames = recording.frames();
    summary.frameRate = frameRate;
    for (int i = 0; i < summary.frames; ++i) {
        const EngMapResult& frame = recording.frame(i);
        takeMap(summary, *frame.ResEngMap, i + 1);
        const int peaks = static_cast<int>(frame.peaks.size());
        summary.peaks += peaks;
        summary.framesWithPeaks += peaks > 0 ? 1 : 0;
        summary.mostPeaks = std::max(summary.mostPeaks, peaks);
    }
    return summary;
}

std::string summaryText(const RecordingSummary& summary)
{
    const RecordingScan& scan = summary.scan;
    std::ostringstream text;
    text << "file       " << printable(summary.file) << '\n'
         << "size       " << scan.bytes << " bytes\n"
         << "complete   " << wholeness(scan) << '\n'
         << "version    " << printable(scan.version) << '\n'
         << "map        " << scan.resRows << " rows x " << scan.resCols << " columns\n"
         << "picture    " << scan.imgCols << " x " << scan.imgRows << " pixels\n"
         << "spectrum   " << scan.fftLen / 2 + 1 << " bins (FFT length " << scan.fftLen << ")\n"
         << "frames     " << summary.frames << loadedOf(summary) << '\n'
         << "duration   " << summary.durationSeconds() << " s, assuming " << summary.frameRate
         << " frames per second (records carry no time)\n";
    if (summary.highest) {
        text << "highest    " << cellText(*summary.highest) << '\n'
             << "lowest     " << cellText(*summary.lowest) << '\n';
    }
    if (summary.unusableCells > 0) {
        text << "unusable   " << summary.unusableCells << " map cells are no finite numbers\n";
    }
    text << "peaks      " << summary.peaks << " stored, in " << counted(summary.framesWithPeaks, "frame")
         << ", at most " << summary.mostPeaks << " in one\n";
    return text.str();
}

ordered_json summaryJson(const RecordingSummary& summary)
{
    const RecordingScan& scan = summary.scan;
    return {
        {"file", summary.file},
        {"bytes", scan.bytes},
        {"complete", scan.isWhole()},
        {"damage", scan.isWhole() ? ordered_json(nullptr) : ordered_json(scan.damage)},
        {"version", scan.version},
        {"map", {{"rows", scan.resRows}, {"cols", scan.resCols}}},
        {"picture", {{"width", scan.imgCols}, {"height", scan.imgRows}}},
        {"fft_length", scan.fftLen},
        {"records", scan.completeRecords},
        {"frames", summary.frames},
        {"assumed_frame_rate_hz", summary.frameRate},
        {"assumed_duration_s", summary.durationSeconds()},
        {"highest", cellJson(summary.highest)},
        {"lowest", cellJson(summary.lowest)},
        {"unusable_cells", summary.unusableCells},
        {"peaks",
         {{"stored", summary.peaks},
          {"frames_with_peaks", summary.framesWithPeaks},
          {"most_in_a_frame", summary.mostPeaks}}},
    };
}

}  // namespace kovtools
