// kovdoa beamform: from the audio of an array to a recording of energy maps.
#include <charconv>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/beamform/arraybeamformer.h"
#include "tools/cli/arrayoptions.h"
#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/recording/recordingwriter.h"
#include "tools/scene/framefields.h"
#include "tools/support/filepaths.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr int longestFft = 65536;

struct BeamformCommandOptions
{
    BeamformOptions beamform;
    ArrayChoice array;
    cv::Size map{48, 64};
    cv::Size picture{640, 480};
    bool peaks = false;
    std::filesystem::path folder;
    std::filesystem::path output;
};

void checkFiles(const BeamformCommandOptions& options, int channels, const CommonOptions& common)
{
    FilesOfCommand files;
    addSetAsInput(files, "DIR", options.folder, channels);
    files.addInput("--geometry", options.array.geometry);
    files.addOutput("-o", options.output);
    files.addOutput("--log", common.log);
    files.checkDistinct();
}

void beamformFrames(ArrayBeamformer& beamformer, RecordingWriter& writer, bool withPeaks, bool withProgress)
{
    const FrameContext context{beamformer.firstBandBin(), beamformer.lastBandBin(),
                               static_cast<float>(beamformer.options().distance)};
    PeakMarker peaks;
    Progress progress("Beamforming", beamformer.frames(), withProgress);
    for (int i = 0; i < beamformer.frames(); ++i) {
        const BeamformedFrame frame = beamformer.frame(i);
        fillFrameFields(context, frame.map, frame.spectrum, writer.frame());
        if (withPeaks) {
            peaks.mark(writer.frame());
        }
        writer.save();
        progress.step();
    }
}

ExitStatus beamform(const BeamformCommandOptions& options, const CommonOptions& common)
{
    const std::vector<Microphone> array = chosenArray(options.array);
    checkFiles(options, static_cast<int>(array.size()), common);
    BeamformOptions beamformOptions = options.beamform;
    beamformOptions.rows = options.map.width;
    beamformOptions.cols = options.map.height;
    beamformOptions.pictureWidth = options.picture.width;
    beamformOptions.pictureHeight = options.picture.height;

    Workspace workspace(common.log);
    ArrayRecording recording(options.folder, static_cast<int>(array.size()));
    ArrayBeamformer beamformer(recording, array, beamformOptions);
    RecordingWriter writer(options.output, {beamformOptions.rows, beamformOptions.cols, options.picture.width,
                                            options.picture.height, beamformOptions.fftLength});
    beamformFrames(beamformer, writer, options.peaks, !common.noProgress);
    const std::uint64_t bytes = writer.finish();
    workspace.keepLog();

    std::cout << printable(options.output.string()) << ": " << counted(beamformer.frames(), "frame")
              << ", maps of " << beamformOptions.rows << " x " << beamformOptions.cols << ", "
              << counted(recording.channels(), "channel") << ", " << bytes << " bytes\n";
    std::cout.flush();
    if (const std::string complaint = recording.complaint(); !complaint.empty()) {
        throw DataError(complaint);
    }
    return EXIT_GOOD;
}

bool readNumber(const std::string& text, double& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
}

void addBand(const CommandSyntax& command, BeamformOptions& target)
{
    const auto read = [&target](const std::string& text) {
        const std::size_t colon = text.find(':');
        double low = 0.0;
        double high = 0.0;
        if (colon == std::string::npos || !readNumber(text.substr(0, colon), low) ||
            !readNumber(text.substr(colon + 1), high) || low < 0.0 || high <= low) {
            refuse("--band", "'" + text + "' is not a band in Hz such as 8000:32000");
        }
        target.bandLow = low;
        target.bandHigh = high;
    };
    command.addOption("--band", read, "Band of frequencies that the maps show, Hz")
        .kind("LOW:HIGH")
        .shownDefault("8000:32000");
}

void addWindow(const CommandSyntax& command, WindowKind& target)
{
    const auto read = [&target](const std::string& text) {
        if (text == "hann") {
            target = WindowKind::Hann;
        } else if (text == "blackman") {
            target = WindowKind::Blackman;
        } else if (text == "rectangular") {
            target = WindowKind::Rectangular;
        } else {
            refuse("--window", "'" + text + "' is not one of hann, blackman, rectangular");
        }
    };
    command.addOption("--window", read, "hann, blackman or rectangular").kind("NAME").shownDefault("hann");
}

void addOptions(const CommandSyntax& command, BeamformCommandOptions& options)
{
    BeamformOptions& beamform = options.beamform;
    const SizeBounds mapBounds{cv::Size(4, 4), cv::Size(512, 512)};
    addPath(command, "DIR", options.folder, "DIR", "The folder of WAV files: data-0.wav, data-1.wav, ...")
        .required();
    addPath(command, "-o,--output", options.output, "FILE", "The recording to write").required();
    addBand(command, beamform);
    addInteger(command, "--bins", beamform.bins, 0, longestFft,
               "Frequencies that are beamformed, spread over the band (0: every one)");
    addSize(command, "--map", options.map, mapBounds, "ROWSxCOLS", "Size of the energy maps");
    addSize(command, "--picture", options.picture, pictureBounds, "WIDTHxHEIGHT",
            "Size of the camera picture that the maps cover");
    addNumber(command, "--distance", beamform.distance, 0.0, 1000.0,
              "Distance that the array is focused to, m (0: plane waves)");
    addWindow(command, beamform.window);
    addInteger(command, "--fft-length", beamform.fftLength, 64, longestFft, "Samples of a block");
    addNumber(command, "--overlap", beamform.overlap, 0.0, 0.95,
              "Share of a block that the next one covers again");
    addNumber(command, "--fps", beamform.frameRate, 0.1, 1000.0, "Frames per second");
    command.addFlag("--peaks", options.peaks, "Store the peaks of each frame, with identities");
    addArrayOptions(command, options.array);
}

}  // namespace

void addBeamformCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("beamform", "Make a recording of energy maps from the audio of an array");
    const auto options = std::make_shared<BeamformCommandOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa beamform leak -o leak.kov\n"
        "  kovdoa beamform other -o other.kov --geometry other.txt --band 2000:8000 --distance 0");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return beamform(*options, common); };
    });
}

}  // namespace kovtools
