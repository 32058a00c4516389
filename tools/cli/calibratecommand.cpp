// kovdoa calibrate: the mapping between two pictures from corresponding points.
#include <iostream>
#include <memory>

#include "tools/calibration/picturemapping.h"
#include "tools/calibration/pointpairs.h"
#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/support/filepaths.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct CalibrateOptions
{
    std::filesystem::path pairs;
    bool json = false;
};

ExitStatus calibrate(const CalibrateOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("PAIRS", options.pairs);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    Workspace workspace(common.log);
    const PointPairs pairs = readPointPairs(options.pairs);
    const PictureMapping mapping = fitMapping(pairs);
    if (options.json) {
        std::cout << mappingJson(mapping, pairs).dump(2) << '\n';
    } else {
        std::cout << mappingText(mapping, pairs);
    }
    std::cout.flush();
    workspace.keepLog();
    return EXIT_GOOD;
}

}  // namespace

void addCalibrateCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("calibrate", "Fit the mapping between two pictures to 16 pairs of points");
    const auto options = std::make_shared<CalibrateOptions>();
    addPath(command, "PAIRS", options->pairs, "FILE",
            "16 lines sx,sy,dx,dy: a point in the one picture and the same in the other, whole pixels")
        .required();
    command.addFlag("--json", options->json, "Answer in JSON");
    command.setFooter("Example:\n  kovdoa calibrate pairs.csv --json");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return calibrate(*options, common); };
    });
}

}  // namespace kovtools
