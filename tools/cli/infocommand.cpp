// kovdoa info: what is in a recording.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/recording/recording.h"
#include "tools/recording/recordingsummary.h"
#include "tools/support/filepaths.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct InfoOptions
{
    std::filesystem::path file;
    double frameRate = 25.0;
    bool json = false;
};

void checkFiles(const InfoOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("FILE", options.file);
    files.addOutput("--log", common.log);
    files.checkDistinct();
}

ExitStatus showInfo(const InfoOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    Workspace workspace(common.log);
    const Recording recording(options.file);
    const RecordingSummary summary = summarise(recording, options.frameRate);
    if (options.json) {
        // A file name may be any bytes; JSON is UTF-8.
        std::cout << summaryJson(summary).dump(2, ' ', false,
                                               nlohmann::ordered_json::error_handler_t::replace)
                  << '\n';
    } else {
        std::cout << summaryText(summary);
    }
    std::cout.flush();
    workspace.keepLog();
    if (!recording.complaint().empty()) {
        throw DataError(recording.complaint());
    }
    return EXIT_GOOD;
}

}  // namespace

void addInfoCommand(CLI::App& parent, Action& chosen)
{
    CLI::App* const info = parent.add_subcommand("info", "Say what is in a recording");
    const auto options = std::make_shared<InfoOptions>();
    addPath(*info, "FILE", options->file, "FILE", "The recording")->required();
    info->add_flag("--json", options->json, "Answer in JSON");
    addNumber(*info, "--fps", options->frameRate, 0.1, 1000.0,
              "Frames per second to assume for the duration: records carry no time");
    info->footer("Example:\n  kovdoa info leak.kov --json");
    info->callback([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return showInfo(*options, common); };
    });
}

}  // namespace kovtools
