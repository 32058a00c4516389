// kovdoa miccheck: the self-test of the microphone array.
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/audio/arraypicture.h"
#include "tools/audio/microphonecheck.h"
#include "tools/audio/microphonereport.h"
#include "tools/cli/arrayoptions.h"
#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/render/framesink.h"
#include "tools/scene/arraygeometry.h"
#include "tools/support/filepaths.h"
#include "tools/support/partialfile.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct MicCheckOptions
{
    std::filesystem::path folder;
    std::filesystem::path plot;
    bool json = false;
    bool withoutPlacement = false;
};

void checkFiles(const MicCheckOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    addSetAsInput(files, "DIR", options.folder, arrayMicrophones);
    files.addOutput("--plot", options.plot);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    if (!options.plot.empty()) {
        checkPngName("--plot", options.plot);
    }
}

ExitStatus checkMicrophones(const MicCheckOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    Workspace workspace(common.log);
    std::optional<PartialFile> plot;
    if (!options.plot.empty()) {
        plot.emplace(options.plot);
    }
    ArrayRecording recording(options.folder, arrayMicrophones);
    const ArrayCheck check = checkArray(recording, !options.withoutPlacement);
    if (plot) {
        writePng(*plot, drawArray(check));
        plot->commit();
    }
    workspace.keepLog();
    if (options.json) {
        // A folder's name may be any bytes; JSON is UTF-8.
        std::cout << checkJson(check, options.folder.string())
                         .dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
                  << '\n';
    } else {
        std::cout << checkText(check);
    }
    std::cout.flush();
    if (!check.failing().empty()) {
        throw DataError(checkSentence(check));
    }
    if (const std::string complaint = recording.complaint(); !complaint.empty()) {
        throw DataError(complaint);
    }
    return EXIT_GOOD;
}

}  // namespace

void addMicCheckCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("miccheck", "Find the microphones of an array recording that do not work");
    const auto options = std::make_shared<MicCheckOptions>();
    addPath(command, "DIR", options->folder, "DIR", "The folder with data-0.wav to data-25.wav").required();
    command.addFlag("--json", options->json, "Answer in JSON");
    addPath(command, "--plot", options->plot, "OUT.png",
            "Also draw the array with the microphones that fail");
    command.addFlag("--no-placement", options->withoutPlacement,
                    "Do not compare with the documented geometry; for recordings of another one");
    command.setFooter(
        "Microphones have the numbers of the recording: channel j of data-i.wav is 8 i + j, all from 0.\n"
        "Exit status 1 when a microphone fails.\n\n"
        "Example:\n"
        "  kovdoa miccheck array --plot array.png");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return checkMicrophones(*options, common); };
    });
}

}  // namespace kovtools
