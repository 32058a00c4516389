// kovdoa recover: a whole recording from a damaged one.
#include <iostream>
#include <memory>

#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/integrity/recordingrecovery.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct RecoverOptions
{
    std::filesystem::path file;
    std::filesystem::path output;
};

ExitStatus recover(const RecoverOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("FILE", options.file);
    files.addOutput("-o", options.output);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    Workspace workspace(common.log);
    const VerdictCounts counts =
        recoverRecording(options.file, options.output,
                         [](const std::string& sentence) { std::cout << printable(sentence) << '\n'; });
    std::cout << printable(options.output.string()) << ": " << counted(counts.complete, "complete record")
              << '\n';
    std::cout.flush();
    workspace.keepLog();
    if (counts.faults() > 0) {
        throw DataError(inQuotes(options.file) + " was damaged: recovered " +
                        counted(counts.complete, "complete record") + ", left out " +
                        std::to_string(counts.faults()));
    }
    return EXIT_GOOD;
}

}  // namespace

void addRecoverCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("recover", "Copy every complete record of a damaged recording into a new one");
    const auto options = std::make_shared<RecoverOptions>();
    addPath(command, "FILE", options->file, "FILE", "The recording of maps; it stays as it is").required();
    addPath(command, "-o,--output", options->output, "OUT", "The new recording").required();
    command.setFooter(
        "Example:\n  kovdoa recover cut.kov -o whole.kov\n\n"
        "Exit status: 0 if nothing had to be left out, 1 otherwise, also when OUT has been written.");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return recover(*options, common); };
    });
}

}  // namespace kovtools
