// kovdoa track: identities of the sources of a recording over time.
#include <iostream>
#include <memory>
#include <optional>

#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/recording/recording.h"
#include "tools/render/framesink.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"
#include "tools/tracking/peakfollower.h"
#include "tools/tracking/trackplot.h"
#include "tools/tracking/tracks.h"

namespace kovtools {

namespace {

constexpr int smallestMap = 4;  // rows and columns; the peak search reads that far

struct TrackOptions
{
    std::filesystem::path file;
    std::filesystem::path output;  // empty: standard output
    std::filesystem::path plot;
    FollowOptions follow;
    bool json = false;
};

void checkFiles(const TrackOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("RECORDING", options.file);
    files.addOutput("-o", options.output);
    files.addOutput("--plot", options.plot);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    if (!options.plot.empty()) {
        checkPngName("--plot", options.plot);
    }
}

void checkRecording(const Recording& recording)
{
    if (recording.frames() == 0) {
        throw DataError(recording.complaint().empty() ? inQuotes(recording.path()) + " holds no frames"
                                                      : recording.complaint());
    }
    const RecordingScan& scan = recording.scan();
    if (scan.resRows < smallestMap || scan.resCols < smallestMap) {
        throw DataError(inQuotes(recording.path()) + " has maps of " + std::to_string(scan.resRows) + " x " +
                        std::to_string(scan.resCols) + " cells; at least 4 x 4 are needed to find peaks");
    }
}

std::string answer(const TrackOptions& options, const Recording& recording, const std::vector<Track>& tracks)
{
    if (!options.json) {
        return tracksCsv(tracks);
    }
    const nlohmann::ordered_json json{
        {"file", recording.path().string()}, {"frames", recording.frames()}, {"tracks", tracksJson(tracks)}};
    // A file name may be any bytes; JSON is UTF-8.
    return json.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string plotTitle(const Recording& recording, const std::vector<Track>& tracks)
{
    return counted(static_cast<int>(tracks.size()), "track") + " in " + counted(recording.frames(), "frame");
}

ExitStatus trackPeaks(const TrackOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    Workspace workspace(common.log);
    const Recording recording(options.file);
    checkRecording(recording);
    std::optional<PartialFile> output = openIfWanted(options.output);
    std::optional<PartialFile> plot = openIfWanted(options.plot);

    PeakFollower follower(options.follow);
    TrackCollector collector;
    HighestLevels highest(recording.scan().resRows, recording.scan().resCols);
    {
        Progress progress("Tracking", recording.frames(), !common.noProgress);
        for (int i = 0; i < recording.frames(); ++i) {
            const EngMapResult& frame = recording.frame(i);
            collector.add(i + 1, follower.follow(frame));
            highest.add(frame);
            progress.step();
        }
    }
    const std::vector<Track>& tracks = collector.tracks();
    if (plot) {
        writePng(*plot, drawTracks(tracks, highest.map(),
                                   cv::Size(recording.scan().imgCols, recording.scan().imgRows),
                                   plotTitle(recording, tracks)));
    }
    if (output) {
        output->write(answer(options, recording, tracks));
        output->commit();
        std::cout << printable(options.output.string()) << ": " << plotTitle(recording, tracks) << '\n';
    } else {
        std::cout << answer(options, recording, tracks);
    }
    if (plot) {
        plot->commit();
    }
    std::cout.flush();
    workspace.keepLog();
    if (!recording.complaint().empty()) {
        throw DataError(recording.complaint());
    }
    return EXIT_GOOD;
}

void addOptions(const CommandSyntax& command, TrackOptions& options)
{
    addPath(command, "RECORDING", options.file, "FILE", "The recording").required();
    addPath(command, "-o,--output", options.output, "OUT",
            "Write the table there instead of to standard output");
    addPath(command, "--plot", options.plot, "OUT.png", "Draw the tracks on the map");
    addInteger(command, "--strongest", options.follow.strongest, 0, 100000,
               "Peaks of a frame that are followed, the strongest ones (0: all)");
    addNumber(command, "--min-level", options.follow.minimumLevel, 0.0, 1e9,
              "Level above which peaks are searched for, linear, in the maps' unit");
    command.addFlag("--json", options.json, "Answer in JSON");
}

}  // namespace

void addTrackCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("track", "Follow the sources of a recording from frame to frame");
    const auto options = std::make_shared<TrackOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa track leak.kov -o tracks.csv --plot tracks.png --strongest 3");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return trackPeaks(*options, common); };
    });
}

}  // namespace kovtools
