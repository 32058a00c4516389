// kovdoa listen: ultrasound made audible.
#include <algorithm>
#include <iostream>
#include <memory>
#include <system_error>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/audio/listening.h"
#include "tools/audio/soundreader.h"
#include "tools/audio/soundwriter.h"
#include "tools/cli/arrayoptions.h"
#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/scene/arraygeometry.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr int mostChannels = 1024;  // libsndfile's own limit
constexpr int blocksPerStep = 64;   // of progress

// The mixer's first low-pass stands 4540 Hz below 48000 Hz minus the base. Below the lowest base it would let more
// through than the output can hold; above the highest it would leave nothing above the rumble filter.
constexpr double lowestBase = 20000.0;   // Hz
constexpr double highestBase = 43000.0;  // Hz

struct ListenOptions
{
    std::filesystem::path input;
    std::filesystem::path output;
    double base = 38600.0;  // Hz, as the monitor begins with
    double volume = 0.0;    // dB
    int channel = 0;        // from 1; 0: the mean of all
    int microphone = -1;    // of a folder, from 0; -1: not given
};

// Which sound to listen to.
struct Sound
{
    std::filesystem::path file;
    int channel;  // from 0; -1: the mean of all
};

Sound chosenSound(const ListenOptions& options)
{
    std::error_code error;
    if (!std::filesystem::is_directory(options.input, error)) {
        if (options.microphone >= 0) {
            throw UsageError(
                "--microphone is for folders of array audio; choose a channel of a file with --channel");
        }
        return {options.input, options.channel - 1};
    }
    if (options.channel > 0) {
        throw UsageError(
            "--channel is for files; choose a microphone of a folder of array audio with --microphone (from "
            "0)");
    }
    const int microphone = std::max(options.microphone, 0);
    return {fileOfSet(options.input, microphone / channelsPerFile), microphone % channelsPerFile};
}

void checkSound(const SoundReader& reader, const Sound& sound)
{
    if (reader.sampleRate() != monitorInputRate) {
        throw DataError(inQuotes(reader.path()) + " has " + std::to_string(reader.sampleRate()) +
                        " samples per second; the monitor needs " + std::to_string(monitorInputRate));
    }
    if (sound.channel >= reader.channels()) {
        throw UsageError(inQuotes(reader.path()) + " has " + counted(reader.channels(), "channel") +
                         ", there is no channel " + std::to_string(sound.channel + 1));
    }
    if (reader.samples() < 2) {
        throw DataError(inQuotes(reader.path()) + " holds a single sample; two make one of the output");
    }
}

void takeSound(const std::vector<float>& block, int channels, int channel, std::vector<float>& samples)
{
    if (channel >= 0) {
        takeChannel(block, channels, channel, samples);
        return;
    }
    const auto step = static_cast<std::size_t>(channels);
    samples.assign(block.size() / step, 0.0F);
    for (std::size_t i = 0; i < block.size(); ++i) {
        samples[i / step] += block[i] / static_cast<float>(channels);
    }
}

void listenTo(SoundReader& reader, int channel, Monitor& monitor, SoundWriter& writer, bool showProgress)
{
    Progress progress("Listening", static_cast<int>(reader.samples() / (monitorBlock * blocksPerStep)),
                      showProgress);
    std::vector<float> block;
    std::vector<float> samples;
    for (int number = 1;; ++number) {
        reader.read(monitorBlock, block);
        if (block.empty()) {
            return;
        }
        takeSound(block, reader.channels(), channel, samples);
        const std::vector<std::int16_t>& heard = monitor.hear(samples);
        writer.write(heard.data(), static_cast<int>(heard.size()));
        if (number % blocksPerStep == 0) {
            progress.step();
        }
    }
}

ExitStatus listen(const ListenOptions& options, const CommonOptions& common)
{
    const Sound sound = chosenSound(options);
    FilesOfCommand files;
    files.addInput("IN", sound.file);
    if (sound.file != options.input) {  // none of the other microphones may be replaced either
        addSetAsInput(files, "IN", options.input, arrayMicrophones);
    }
    files.addOutput("-o", options.output);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    checkWavName("-o", options.output);

    Workspace workspace(common.log);
    SoundReader reader(sound.file);
    checkSound(reader, sound);
    SoundWriter writer(options.output, {1, monitorOutputRate, SampleFormat::Integer16}, reader.samples() / 2);
    Monitor monitor(options.base, options.volume);
    listenTo(reader, sound.channel, monitor, writer, !common.noProgress);
    writer.finish();
    workspace.keepLog();

    std::cout << printable(options.output.string()) << writer.summary() << "; base frequency "
              << monitor.baseFrequency() << " Hz";
    if (monitor.clipped() > 0) {
        std::cout << ", " << counted(monitor.clipped(), "sample")
                  << " clipped (a lower --volume avoids that)";
    }
    std::cout << '\n';
    std::cout.flush();
    if (!reader.complaint().empty()) {
        throw DataError(reader.complaint());
    }
    return EXIT_GOOD;
}

void addOptions(const CommandSyntax& command, ListenOptions& options)
{
    addPath(command, "IN", options.input, "IN",
            "A sound file of 96000 samples per second, or a folder of array audio")
        .required();
    addPath(command, "-o,--output", options.output, "OUT.wav", "The WAV file to write, 48000 Hz, 16-bit")
        .required();
    addNumber(command, "--base", options.base, lowestBase, highestBase,
              "What becomes 0 Hz, Hz; rounded to steps of 100 Hz");
    addNumber(command, "--volume", options.volume, -60.0, 60.0, "Volume, dB");
    addInteger(command, "--channel", options.channel, 1, mostChannels, "Channel of the file, from 1")
        .shownDefault("the mean of all");
    addInteger(command, "--microphone", options.microphone, 0, arrayMicrophones - 1,
               "Microphone of a folder: channel j of data-i.wav is 8 i + j, all from 0")
        .shownDefault("0");
}

}  // namespace

void addListenCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command = parent.addCommand("listen", "Make ultrasound audible");
    const auto options = std::make_shared<ListenOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa listen bat.wav -o audible.wav --base 22000 --volume 12\n"
        "  kovdoa listen array --microphone 0 -o leak.wav");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return listen(*options, common); };
    });
}

}  // namespace kovtools
