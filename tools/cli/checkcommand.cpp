// kovdoa check: a verdict on every record of a recording.
#include <fstream>
#include <iostream>
#include <memory>

#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/integrity/recordingverdicts.h"
#include "tools/recording/recordingpieces.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct CheckOptions
{
    std::filesystem::path file;
    bool faultsOnly = false;
    bool json = false;
};

// Throws DataError unless all is well.
void judge(const std::filesystem::path& file, const HeaderFinding& header, const VerdictCounts& counts)
{
    if (header.verdict != Verdict::Complete) {
        throw DataError(inQuotes(file) + " " + headerDamage(header));
    }
    if (counts.faults() > 0) {
        throw DataError(inQuotes(file) + " is damaged: " + std::to_string(counts.faults()) + " of its " +
                        std::to_string(counts.total()) + " records " + (counts.faults() == 1 ? "is" : "are") +
                        " not complete");
    }
}

ExitStatus checkRecording(const CheckOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("FILE", options.file);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    Workspace workspace(common.log);
    std::ifstream stream = openForReading(options.file);
    RecordingPieces pieces(stream);
    const auto write = options.json ? writeVerdictJson : writeVerdictTable;
    const VerdictCounts counts = write(std::cout, options.file, pieces, options.faultsOnly);
    std::cout.flush();
    workspace.keepLog();
    if (stream.bad()) {
        throw DataError("cannot read " + inQuotes(options.file));
    }
    judge(options.file, pieces.header(), counts);
    return EXIT_GOOD;
}

}  // namespace

void addCheckCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("check", "Say of every record of a recording whether it is complete");
    const auto options = std::make_shared<CheckOptions>();
    addPath(command, "FILE", options->file, "FILE", "The recording of maps").required();
    command.addFlag("--faults", options->faultsOnly, "List only the records that are not complete");
    command.addFlag("--json", options->json, "Answer in JSON");
    command.setFooter(
        "Example:\n  kovdoa check leak.kov --faults\n\n"
        "Exit status: 0 only if the header and every record are complete.");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return checkRecording(*options, common); };
    });
}

}  // namespace kovtools
