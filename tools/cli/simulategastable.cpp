// kovdoa simulate gastable: a calibration table for the gas-leak mode.
#include <iostream>
#include <memory>

#include "tools/cli/optiontypes.h"
#include "tools/cli/simulatecommands.h"
#include "tools/gasleak/leaktablesimulation.h"
#include "tools/support/errors.h"
#include "tools/support/filepaths.h"
#include "tools/support/partialfile.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr int mostPoints = 2000000;  // 40 MB of text

struct GasTableOptions
{
    std::filesystem::path output;
    LeakTableOptions table;
};

ExitStatus simulateGasTable(const GasTableOptions& options, const CommonOptions& common)
{
    const LeakTableOptions& table = options.table;
    if (table.highestLevel < table.lowestLevel) {
        throw UsageError("--highest lies below --lowest");
    }
    if (table.farthest < table.nearest) {
        throw UsageError("--farthest lies before --nearest");
    }
    if (pointsOfLeakTable(table) > mostPoints) {
        throw UsageError("the table would have more than " + std::to_string(mostPoints) + " lines");
    }
    FilesOfCommand files;
    files.addOutput("OUT", options.output);
    files.addOutput("--log", common.log);
    files.checkDistinct();

    Workspace workspace(common.log);
    writeWholeFile(options.output, simulateLeakTable(table));
    workspace.keepLog();
    std::cout << printable(options.output.string()) << ": " << counted(pointsOfLeakTable(table), "line")
              << ", " << table.lowestLevel << " to " << table.highestLevel << " dB, " << table.nearest
              << " to " << table.farthest << " m\n";
    return EXIT_GOOD;
}

void addOptions(const CommandSyntax& command, GasTableOptions& options)
{
    LeakTableOptions& table = options.table;
    addPath(command, "OUT", options.output, "OUT", "The table").required();
    addNumber(command, "--lowest", table.lowestLevel, 0.0, 200.0, "Lowest sound power level, dB re 1 pW");
    addNumber(command, "--highest", table.highestLevel, 0.0, 200.0, "Highest sound power level, dB");
    addNumber(command, "--nearest", table.nearest, 0.1, 1000.0, "Shortest distance, m");
    addNumber(command, "--farthest", table.farthest, 0.1, 1000.0, "Longest distance, m");
    addNumber(command, "--one-litre", table.levelOfOneLitre, 0.0, 200.0,
              "Sound power level of a leak of 1 l/min, dB");
    addNumber(command, "--absorption", table.absorption, 0.0, 10.0, "Absorption of the air, dB/m");
}

}  // namespace

void addSimulateGasTableCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("gastable", "Write a plausible calibration table for gas leaks");
    const auto options = std::make_shared<GasTableOptions>();
    addOptions(command, *options);
    command.setFooter("Example:\n  kovdoa simulate gastable table.txt --farthest 20");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return simulateGasTable(*options, common); };
    });
}

}  // namespace kovtools
