// kovdoa render: pictures and videos of a recording.
#include <algorithm>
#include <iostream>
#include <memory>

#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/render/framesink.h"
#include "tools/render/recordingrenderer.h"
#include "tools/support/filepaths.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct RenderCommandOptions
{
    RenderOptions render;
    FrameRange frames;
    std::filesystem::path file;
    std::filesystem::path output;
    std::filesystem::path camera;
    std::filesystem::path contactSheet;
};

// The picture size that the recording was made for, unless the user chose one.
cv::Size pictureSize(const RecordingScan& scan, cv::Size chosen)
{
    if (!chosen.empty()) {
        return chosen;
    }
    const cv::Size recorded(scan.imgCols, scan.imgRows);
    if (recorded.width < pictureBounds.low.width || recorded.height < pictureBounds.low.height ||
        recorded.width > pictureBounds.high.width || recorded.height > pictureBounds.high.height) {
        throw UsageError("the recording was made for pictures of " + std::to_string(recorded.width) + " x " +
                         std::to_string(recorded.height) + " pixels; choose a usable size with --picture");
    }
    return recorded;
}

FrameRange existingFrames(const FrameRange& wanted, int frames)
{
    if (frames > 0 && wanted.first > frames) {
        throw UsageError("--frames begins at " + std::to_string(wanted.first) +
                         ", but the recording ends with frame " + std::to_string(frames));
    }
    return {wanted.first, wanted.last == 0 ? frames : std::min(wanted.last, frames)};
}

void checkOptions(const RenderCommandOptions& options)
{
    checkFrameSinkName(options.output);
    if (!options.contactSheet.empty()) {
        checkPngName("--contact-sheet", options.contactSheet);
    }
    if (options.render.outside && options.render.radius == 0) {
        throw UsageError("--outside needs a region of interest; give one with --radius");
    }
    if (!options.render.radiusSize.empty() && options.render.radius == 0) {
        throw UsageError("--radius-size needs a --radius");
    }
    if (options.render.track && options.render.plain) {
        throw UsageError("--track paints marks, and --plain wants none");
    }
    if (options.render.trackedPeaks > 0 && !options.render.track) {
        throw UsageError("--strongest is for --track");
    }
}

void checkFiles(const RenderCommandOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("FILE", options.file);
    files.addInput("--camera", options.camera);
    if (isVideoName(options.output)) {
        files.addOutput("-o", options.output);
    } else {
        files.addPictureFolder("-o", options.output);
    }
    files.addOutput("--contact-sheet", options.contactSheet);
    files.addOutput("--log", common.log);
    files.checkDistinct();
}

ExitStatus renderRecording(const RenderCommandOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    checkOptions(options);
    Workspace workspace(common.log);
    const Recording recording(options.file);
    RenderOptions render = options.render;
    render.picture = pictureSize(recording.scan(), render.picture);
    const cv::Mat camera = options.camera.empty() ? cv::Mat() : readCameraPicture(options.camera);
    const FrameRange frames = existingFrames(options.frames, recording.frames());

    RecordingRenderer renderer(recording, render, camera);
    const int count = frames.last - frames.first + 1;
    {
        Progress progress("Rendering", count, !common.noProgress);
        renderer.render(frames.first, frames.last, options.output, options.contactSheet,
                        [&progress] { progress.step(); });
    }
    workspace.keepLog();

    std::cout << printable(options.output.string()) << ": " << counted(count, "picture") << " of "
              << render.picture.width << " x " << render.picture.height << '\n';
    if (!options.contactSheet.empty()) {
        std::cout << printable(options.contactSheet.string()) << ": contact sheet\n";
    }
    std::cout.flush();
    if (!recording.complaint().empty()) {
        throw DataError(recording.complaint());
    }
    return EXIT_GOOD;
}

void addPalette(const CommandSyntax& command, int& palette)
{
    const auto read = [&palette](const std::string& text) {
        if (text == "rainbow" || text == "0") {
            palette = 0;
        } else if (text == "hot" || text == "bryw" || text == "1") {
            palette = 1;
        } else if (text == "grey" || text == "gray" || text == "2") {
            palette = 2;
        } else {
            refuse("--palette", "'" + text + "' is not one of rainbow, hot, grey (or 0, 1, 2)");
        }
    };
    command.addOption("--palette", read, "rainbow (0), hot (1, bryw) or grey (2)")
        .kind("NAME")
        .shownDefault("rainbow");
}

void addColourOptions(const CommandSyntax& command, RenderOptions& render)
{
    addPalette(command, render.palette);
    addNumber(command, "--dynamic", render.dynamicRange, 0.1, 120.0, "Dynamic range of the colours, dB");
    addNumber(command, "--min-level", render.minimumLevel, 0.0, 1e9,
              "Minimum level, linear, in the maps' unit");
    addNumber(command, "--reference", render.referenceLevel, 1e-12, 1e9,
              "What the dB beside cursors refer to, in the maps' unit");
    addNumber(command, "--blend", render.blend, 0.0, 1.0, "Share of the colours over the camera picture");
}

void addRegionOptions(const CommandSyntax& command, RenderOptions& render)
{
    addInteger(command, "--radius", render.radius, 0, 100000, "Radius of the region of interest (0: none)");
    addSize(command, "--radius-size", render.radiusSize, {cv::Size(1, 1), cv::Size(65535, 65535)}, "PxQ",
            "What the radius is measured against (default: the picture, so the radius is in pixels)");
    command.addFlag("--outside", render.outside, "Colour outside the region too");
    addInteger(command, "--cursors", render.cursors, 0, 1000, "Number of cursors");
    command.addFlag("--several-cursors", render.severalCursors,
                    "Show the map as bumps around the cursors only");
    addNumber(command, "--image-scale", render.imageScale, 0.01, 1000.0,
              "Zoom of the camera picture, which the region follows");
}

void addOptions(const CommandSyntax& command, RenderCommandOptions& options)
{
    RenderOptions& render = options.render;
    addPath(command, "FILE", options.file, "FILE", "The recording").required();
    addPath(command, "-o,--output", options.output, "OUT",
            "A folder for PNG files, or a name ending in .mp4 or .avi")
        .required();
    addFrameRange(command, "--frames", options.frames,
                  "Frames to render, from 1, both ends included (default: all)");
    addSize(command, "--picture", render.picture, pictureBounds, "WIDTHxHEIGHT",
            "Size of the pictures (default: what the recording says)");
    addNumber(command, "--fps", render.frameRate, 0.1, 1000.0, "Frames per second");
    addPath(command, "--camera", options.camera, "FILE", "Camera picture, stretched to the picture size");
    addPath(command, "--contact-sheet", options.contactSheet, "FILE.png",
            "Also write one picture of a dozen evenly spread frames");
    command.addFlag("--plain", render.plain, "No marks, no colour bar, no text");
    command.addFlag("--track", render.track, "Mark the tracks of peaks with their identities");
    addInteger(command, "--strongest", render.trackedPeaks, 0, 100000,
               "Peaks of a frame that are followed, the strongest ones (0: all)");
    addColourOptions(command, render);
    addRegionOptions(command, render);
}

}  // namespace

void addRenderCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command = parent.addCommand("render", "Make pictures or a video of a recording");
    const auto options = std::make_shared<RenderCommandOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa render leak.kov -o leak.mp4 --camera wall.png --dynamic 12 --cursors 3\n"
        "  kovdoa render leak.kov -o frames --frames 1:10 --radius 120 --outside");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return renderRecording(*options, common); };
    });
}

}  // namespace kovtools
