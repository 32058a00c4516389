// kovdoa info: what is in a recording of maps, or of array audio.
#include <iostream>
#include <memory>
#include <system_error>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/audio/arraysummary.h"
#include "tools/cli/arrayoptions.h"
#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/recording/recording.h"
#include "tools/recording/recordingsummary.h"
#include "tools/scene/arraygeometry.h"
#include "tools/support/filepaths.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct InfoOptions
{
    std::filesystem::path file;
    double frameRate = 25.0;
    int channels = arrayMicrophones;
    bool json = false;
};

void checkFiles(const InfoOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    addSetAsInput(files, "FILE", options.file, options.channels);  // of a folder, its files too
    files.addOutput("--log", common.log);
    files.checkDistinct();
}

template <typename Summary>
void showSummary(const Summary& summary, bool json)
{
    if (json) {
        // A file name may be any bytes; JSON is UTF-8.
        std::cout << summaryJson(summary).dump(2, ' ', false,
                                               nlohmann::ordered_json::error_handler_t::replace)
                  << '\n';
    } else {
        std::cout << summaryText(summary);
    }
    std::cout.flush();
}

ExitStatus showInfo(const InfoOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    Workspace workspace(common.log);
    std::error_code error;
    if (std::filesystem::is_directory(options.file, error)) {
        if (options.channels % channelsPerFile != 0) {
            throw UsageError("--channels " + std::to_string(options.channels) +
                             " is not a multiple of 8; each file of array audio holds 8");
        }
        showSummary(summariseArray(options.file, options.channels), options.json);
        workspace.keepLog();
        return EXIT_GOOD;
    }
    const Recording recording(options.file);
    showSummary(summarise(recording, options.frameRate), options.json);
    workspace.keepLog();
    if (!recording.complaint().empty()) {
        throw DataError(recording.complaint());
    }
    return EXIT_GOOD;
}

}  // namespace

void addInfoCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax info =
        parent.addCommand("info", "Say what is in a recording, or in a folder of array audio");
    const auto options = std::make_shared<InfoOptions>();
    addPath(info, "FILE", options->file, "FILE",
            "The recording of maps, or the folder with data-0.wav and so on")
        .required();
    info.addFlag("--json", options->json, "Answer in JSON");
    addNumber(info, "--fps", options->frameRate, 0.1, 1000.0,
              "Frames per second to assume for the duration: records carry no time");
    addInteger(info, "--channels", options->channels, 8, 1024,
               "Channels of a folder of array audio, a multiple of 8");
    info.setFooter("Example:\n  kovdoa info leak.kov --json\n  kovdoa info array --channels 208");
    info.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return showInfo(*options, common); };
    });
}

}  // namespace kovtools
