// kovdoa simulate scene: recordings of moving leaks.
#include <iostream>
#include <memory>
#include <optional>

#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/cli/simulatecommands.h"
#include "tools/render/framesink.h"
#include "tools/scene/camerapicture.h"
#include "tools/scene/scenerecorder.h"
#include "tools/scene/scenesimulation.h"
#include "tools/support/filepaths.h"
#include "tools/support/partialfile.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct SimulateOptions
{
    SceneOptions scene;
    cv::Size map{48, 64};
    cv::Size picture{640, 480};
    bool peaks = false;
    std::filesystem::path output;
    std::filesystem::path cameraPicture;
    std::filesystem::path truth;
};

void checkFiles(const SimulateOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addOutput("OUT", options.output);
    files.addOutput("--camera-picture", options.cameraPicture);
    files.addOutput("--truth", options.truth);
    files.addOutput("--log", common.log);
    files.checkDistinct();
}

ExitStatus simulateScene(const SimulateOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    if (!options.cameraPicture.empty()) {
        checkPngName("--camera-picture", options.cameraPicture);
    }
    SceneOptions sceneOptions = options.scene;
    sceneOptions.rows = options.map.width;
    sceneOptions.cols = options.map.height;
    sceneOptions.pictureWidth = options.picture.width;
    sceneOptions.pictureHeight = options.picture.height;

    Workspace workspace(common.log);
    // Opened before the long work: better refused now than after it.
    std::optional<PartialFile> picture = openIfWanted(options.cameraPicture);
    std::optional<PartialFile> truth = openIfWanted(options.truth);
    SceneSimulation scene(sceneOptions);
    SceneRecorder recorder(options.output, scene, options.peaks);
    {
        Progress progress("Simulating", sceneOptions.frames, !common.noProgress);
        recorder.record([&progress] { progress.step(); });
    }
    if (picture) {
        writePng(*picture, drawCameraPicture(scene));
    }
    if (truth) {
        truth->write(recorder.truth().dump(1) + "\n");
    }
    const std::uint64_t bytes = recorder.finish();
    for (std::optional<PartialFile>* const beside : {&picture, &truth}) {
        if (*beside) {
            (*beside)->commit();
        }
    }
    workspace.keepLog();

    std::cout << printable(options.output.string()) << ": " << counted(sceneOptions.frames, "frame")
              << ", maps of " << sceneOptions.rows << " x " << sceneOptions.cols << ", "
              << counted(sceneOptions.sources, "source") << ", " << bytes << " bytes\n";
    return EXIT_GOOD;
}

void addOptions(const CommandSyntax& command, SimulateOptions& options)
{
    SceneOptions& scene = options.scene;
    const SizeBounds mapBounds{cv::Size(4, 4), cv::Size(512, 512)};
    addPath(command, "OUT", options.output, "FILE", "The recording to write").required();
    addInteger(command, "--frames", scene.frames, 1, 1000000, "Number of frames");
    addSize(command, "--map", options.map, mapBounds, "ROWSxCOLS", "Size of the energy maps");
    addInteger(command, "--sources", scene.sources, 0, 26, "Number of moving sources");
    addSeed(command, "--seed", scene.seed, "The same seed gives the same recording");
    addNumber(command, "--noise", scene.noise, 0.0, 1000.0,
              "Noise of each microphone in the working band, Pa");
    addSize(command, "--picture", options.picture, pictureBounds, "WIDTHxHEIGHT",
            "Size of the camera picture");
    addInteger(command, "--fft-length", scene.fftLength, 64, 65536, "FFT length of the spectra, samples");
    addNumber(command, "--fps", scene.frameRate, 0.1, 1000.0, "Frames per second, by which the sources move");
    command.addFlag("--peaks", options.peaks, "Store the peaks of each frame, with identities");
    addPath(command, "--camera-picture", options.cameraPicture, "OUT.png",
            "Draw the camera's picture of the scene");
    addPath(command, "--truth", options.truth, "OUT.json", "Write where the sources are in each frame");
}

}  // namespace

void addSimulateSceneCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax scene =
        parent.addCommand("scene", "Record moving leaks as an array of 208 microphones hears them");
    const auto options = std::make_shared<SimulateOptions>();
    addOptions(scene, *options);
    scene.setFooter(
        "Example:\n"
        "  kovdoa simulate scene leak.kov --frames 150 --sources 3 --camera-picture wall.png");
    scene.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return simulateScene(*options, common); };
    });
}

}  // namespace kovtools
