// kovdoa gasleak: leak rates from levels and distances, by a calibration table.
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>

#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/gasleak/leakmeter.h"
#include "tools/gasleak/leakplot.h"
#include "tools/gasleak/leakstream.h"
#include "tools/gasleak/leaktablefile.h"
#include "tools/render/framesink.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr int lastMode = 5;
constexpr double notGiven = std::numeric_limits<double>::quiet_NaN();

struct GasLeakOptions
{
    std::filesystem::path table;
    std::filesystem::path stream;  // empty: none, or standard input
    bool isStandardInput = false;
    int mode = lastMode;
    double distance = notGiven;  // m
    double level = notGiven;     // dB
    std::filesystem::path plot;
    bool json = false;

    bool hasStream() const { return isStandardInput || !stream.empty(); }
    bool hasDistance() const { return !std::isnan(distance); }
    bool hasLevel() const { return !std::isnan(level); }
};

void checkOptions(const GasLeakOptions& options, const CommonOptions& common)
{
    if (options.hasLevel() && !options.hasDistance()) {
        throw UsageError("--level needs the --distance that it was measured at");
    }
    if (options.hasStream() && options.hasLevel()) {
        throw UsageError("measurements come either from MEASUREMENTS or from --distance and --level");
    }
    if (!options.plot.empty() && !options.hasDistance()) {
        throw UsageError("--plot needs the --distance that it is for");
    }
    if (options.hasStream() && options.hasDistance() && options.plot.empty()) {
        throw UsageError("MEASUREMENTS holds the distances; --distance is for --level and --plot");
    }
    if (!options.hasStream() && !options.hasLevel() && options.plot.empty()) {
        throw UsageError("nothing to do: give --distance and --level, MEASUREMENTS (a file or -), or --plot");
    }
    FilesOfCommand files;
    files.addInput("--table", options.table);
    files.addInput("MEASUREMENTS", options.stream);
    files.addOutput("--plot", options.plot);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    if (!options.plot.empty()) {
        checkPngName("--plot", options.plot);
    }
}

LeakMeasurement measurementOf(const GasLeakOptions& options)
{
    return {static_cast<float>(options.distance), static_cast<float>(options.level)};
}

void writePlot(const GasLeakOptions& options, const LeakMeter& meter, PartialFile& file)
{
    const auto distance = static_cast<float>(options.distance);
    std::optional<LeakPoint> marked;
    if (options.hasLevel()) {
        marked = LeakPoint{static_cast<float>(options.level), meter.measure(measurementOf(options))};
    }
    writePng(file, drawLeakPlot(leakCurve(meter, distance), distance, marked));
    file.commit();
}

void answerOne(const GasLeakOptions& options, const LeakMeter& meter)
{
    const LeakMeasurement measurement = measurementOf(options);
    const LeakAnswer answer = meter.measure(measurement);
    if (options.json) {
        nlohmann::ordered_json json{{"mode", options.mode}};
        json.update(leakJson(measurement, answer));
        std::cout << json.dump(2) << '\n';
    } else {
        std::cout << leakText(measurement, answer) << '\n';
    }
}

std::vector<int> answerStream(const GasLeakOptions& options, const LeakMeter& meter)
{
    LineReader lines =
        options.isStandardInput ? LineReader::ofStandardInput() : LineReader::ofFile(options.stream);
    return answerLeakStream(lines, meter, options.json, options.isStandardInput, std::cout).badLines;
}

// Everything that could be answered has been answered.
void complainAboutLines(const GasLeakOptions& options, const std::vector<int>& tableLines,
                        const std::vector<int>& streamLines)
{
    std::string text;
    if (!streamLines.empty()) {
        text = namedLines(streamLines) + " of " +
               (options.isStandardInput ? std::string("standard input") : inQuotes(options.stream)) +
               (streamLines.size() == 1 ? " is" : " are") + " no distance in m and level in dB";
    }
    if (!tableLines.empty()) {
        text += (text.empty() ? "" : "; besides, ") + namedLines(tableLines) + " of " +
                inQuotes(options.table) + (tableLines.size() == 1 ? " is" : " are") +
                " not three numbers and " + (tableLines.size() == 1 ? "was" : "were") + " left out";
    }
    if (!text.empty()) {
        throw DataError(text);
    }
}

ExitStatus measureGasLeak(const GasLeakOptions& options, const CommonOptions& common)
{
    checkOptions(options, common);
    const LeakTableFile table = readLeakTableFile(options.table);
    Workspace workspace(common.log);
    std::optional<PartialFile> plot = openIfWanted(options.plot);
    const LeakMeter meter(table.usable, options.mode);
    std::vector<int> badLines;
    if (options.hasStream()) {
        badLines = answerStream(options, meter);
    } else if (options.hasLevel()) {
        answerOne(options, meter);
    }
    if (plot) {
        writePlot(options, meter, *plot);
        if (!options.json && !options.hasStream()) {
            std::cout << printable(options.plot.string()) << ": " << leakPlotWidth << " x " << leakPlotHeight
                      << '\n';
        }
    }
    std::cout.flush();
    workspace.keepLog();
    complainAboutLines(options, table.badLines, badLines);
    return EXIT_GOOD;
}

void addStream(const CommandSyntax& command, GasLeakOptions& options)
{
    const auto read = [&options](const std::string& text) {
        if (text.empty()) {
            refuse("MEASUREMENTS", "'' is not a file name");
        }
        options.isStandardInput = text == "-";
        options.stream =
            options.isStandardInput ? std::filesystem::path() : absolutePath("MEASUREMENTS", text);
    };
    command
        .addOption("MEASUREMENTS", read,
                   "A file of lines \"distance,level\" in m and dB; - is standard input")
        .kind("FILE|-");
}

void addOptions(const CommandSyntax& command, GasLeakOptions& options)
{
    addPath(command, "--table", options.table, "FILE",
            "The calibration table: lines of level, distance, leak rate")
        .required();
    addStream(command, options);
    addInteger(command, "--mode", options.mode, 0, lastMode,
               "What the table's leak rate is multiplied by: 0, 1 and 5 by 1, 2 by 4, 3 by 2, 4 by 3");
    addNumber(command, "--distance", options.distance, shortestLeakDistance, longestLeakDistance,
              "Distance to the leak, m")
        .shownDefault("");
    addNumber(command, "--level", options.level, lowestLeakLevel, highestLeakLevel,
              "Sound pressure level at the instrument, dB")
        .shownDefault("");
    addPath(command, "--plot", options.plot, "OUT.png",
            "Draw the leak rate over the level, for the distance given");
    command.addFlag("--json", options.json, "Answer in JSON; measurements from a file as a line each");
}

}  // namespace

void addGasLeakCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("gasleak", "Estimate leak rates from levels and distances");
    const auto options = std::make_shared<GasLeakOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa simulate gastable table.txt\n"
        "  kovdoa gasleak --table table.txt --distance 2 --level 62 --plot leak.png\n"
        "  kovdoa gasleak --table table.txt --mode 2 measurements.csv");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return measureGasLeak(*options, common); };
    });
}

}  // namespace kovtools
