// kovdoa simulate array: the audio of every microphone of an array.
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/arrayaudio/arraysimulation.h"
#include "tools/arrayaudio/arraytruth.h"
#include "tools/arrayaudio/arraywriter.h"
#include "tools/cli/arrayoptions.h"
#include "tools/cli/optiontypes.h"
#include "tools/cli/simulatecommands.h"
#include "tools/render/framesink.h"
#include "tools/scene/camerapicture.h"
#include "tools/scene/scenesimulation.h"
#include "tools/support/filepaths.h"
#include "tools/support/partialfile.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr double longestSeconds = 1200.0;  // files keep their sizes in 32 bits; this stays well inside
static_assert(longestSeconds * sampleRate < static_cast<double>(longestWav));

constexpr std::size_t mostSources = 26;  // one letter each

struct SimulateArrayOptions
{
    std::filesystem::path output;
    ArrayChoice array;
    double seconds = 2.0;
    double noise = 0.02;
    std::uint64_t seed = 1;
    std::vector<std::string> sources;
    std::vector<std::string> dead;
    std::vector<std::string> duplicates;
    std::vector<std::string> swaps;
    cv::Size picture{640, 480};
    std::filesystem::path cameraPicture;
    std::filesystem::path truth;
};

ArraySimulationOptions readSimulation(const SimulateArrayOptions& options)
{
    ArraySimulationOptions simulation;
    simulation.array = chosenArray(options.array);
    simulation.noise = options.noise;
    simulation.seed = options.seed;
    for (const std::string& text : options.sources) {
        simulation.sources.push_back(parseSource(text));
    }
    if (options.sources.empty()) {
        simulation.sources = defaultSources();
    }
    if (simulation.sources.size() > mostSources) {
        throw UsageError("--source: there are at most " + std::to_string(mostSources) + " sources");
    }
    checkWays(simulation.sources, simulation.array);
    for (const std::string& text : options.dead) {
        simulation.broken.dead.push_back(parseMicrophone("--dead", text));
    }
    for (const std::string& text : options.duplicates) {
        simulation.broken.duplicates.push_back(parsePair("--duplicate", text, '='));
    }
    for (const std::string& text : options.swaps) {
        simulation.broken.swaps.push_back(parsePair("--swap", text, ':'));
    }
    simulation.broken.check(static_cast<int>(simulation.array.size()));
    return simulation;
}

void checkFiles(const SimulateArrayOptions& options, int channels, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("--geometry", options.array.geometry);
    addSetAsOutput(files, "OUT_DIR", options.output, channels);
    files.addOutput("--camera-picture", options.cameraPicture);
    files.addOutput("--truth", options.truth);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    if (!options.cameraPicture.empty()) {
        checkPngName("--camera-picture", options.cameraPicture);
    }
}

std::vector<StandingMark> visibleSources(const std::vector<StandingSource>& sources, const FieldOfView& view)
{
    std::vector<StandingMark> marks;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        const Direction direction = sources[i].direction();
        if (direction.z > 0.0) {
            marks.push_back({sourceName(i), view.position(direction)});
        }
    }
    return marks;
}

void writeAudio(ArraySimulation& simulation, ArrayWriter& writer, std::int64_t samples, bool withProgress)
{
    const auto steps = static_cast<int>((samples + ArraySimulation::step - 1) / ArraySimulation::step);
    Progress progress("Simulating", steps, withProgress);
    for (std::int64_t done = 0; done < samples; done += ArraySimulation::step) {
        const float* const* const rows = simulation.next();
        writer.append(rows, static_cast<int>(std::min<std::int64_t>(ArraySimulation::step, samples - done)));
        progress.step();
    }
}

ExitStatus simulateArray(const SimulateArrayOptions& options, const CommonOptions& common)
{
    const ArraySimulationOptions wanted = readSimulation(options);
    const auto channels = static_cast<int>(wanted.array.size());
    checkFiles(options, channels, common);
    const auto samples = static_cast<std::int64_t>(std::llround(options.seconds * sampleRate));
    const FieldOfView view(options.picture.width, options.picture.height);

    Workspace workspace(common.log);
    // Opened before the long work: better refused now than after it. The folder first: the others may lie in it.
    ArrayWriter writer(options.output, channels, static_cast<int>(sampleRate), samples);
    std::optional<PartialFile> picture = openIfWanted(options.cameraPicture);
    std::optional<PartialFile> truth = openIfWanted(options.truth);
    ArraySimulation simulation(wanted);
    writeAudio(simulation, writer, samples, !common.noProgress);
    if (picture) {
        writePng(*picture, drawCameraPicture(options.picture, visibleSources(wanted.sources, view)));
    }
    if (truth) {
        truth->write(describeArray(wanted, samples, view).dump(1) + "\n");
    }
    writer.commit();
    for (std::optional<PartialFile>* const beside : {&picture, &truth}) {
        if (*beside) {
            (*beside)->commit();
        }
    }
    workspace.keepLog();

    std::cout << printable(options.output.string()) << ": " << counted(channels, "channel") << " in "
              << counted(filesOfSet(channels), "file") << ", " << samples << " samples each at "
              << static_cast<int>(sampleRate) << " Hz, "
              << counted(static_cast<int>(wanted.sources.size()), "source") << '\n';
    return EXIT_GOOD;
}

void addList(const CommandSyntax& command, const std::string& name, std::vector<std::string>& target,
             const std::string& kind, const std::string& help)
{
    command.addRepeatedOption(name, target, help).kind(kind);
}

void addOptions(const CommandSyntax& command, SimulateArrayOptions& options)
{
    addPath(command, "OUT_DIR", options.output, "OUT_DIR", "The folder for the WAV files; made if missing")
        .required();
    addNumber(command, "--seconds", options.seconds, 0.001, longestSeconds, "Length of the recording");
    addList(command, "--source", options.sources, "KIND@AZ,EL,DIST[,PA[,HZ]]",
            "A source: leak, tone or pulses, degrees to the right and up, metres, level at 1 m, frequency "
            "(several times for several; default: a leak and a weaker one)");
    addNumber(command, "--noise", options.noise, 0.0, 1000.0,
              "Noise of each microphone in the working band, Pa");
    addSeed(command, "--seed", options.seed, "The same seed gives the same recording");
    addList(command, "--dead", options.dead, "N", "Microphone N records nothing (several times for several)");
    addList(command, "--duplicate", options.duplicates, "N=M", "Microphone N carries the signal of M");
    addList(command, "--swap", options.swaps, "N:M", "Microphones N and M are swapped");
    addArrayOptions(command, options.array);
    addSize(command, "--picture", options.picture, pictureBounds, "WIDTHxHEIGHT",
            "Size of the camera picture");
    addPath(command, "--camera-picture", options.cameraPicture, "OUT.png",
            "Draw the camera's picture of the scene");
    addPath(command, "--truth", options.truth, "OUT.json", "Write where the sources are and what is broken");
}

}  // namespace

void addSimulateArrayCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command = parent.addCommand(
        "array", "Record the audio of every microphone of the array, as a folder of WAV files");
    const auto options = std::make_shared<SimulateArrayOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa simulate array leak --seconds 4 --camera-picture wall.png\n"
        "  kovdoa simulate array tone --source tone@20,5,3,0.1,25000 --dead 17 --swap 3:77");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return simulateArray(*options, common); };
    });
}

}  // namespace kovtools
