// kovdoa mix: several sounds in one file.
#include <algorithm>
#include <iomanip>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <vector>

#include "tools/audio/mixing.h"
#include "tools/audio/soundreader.h"
#include "tools/audio/soundwriter.h"
#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr int readingBlock = 65536;  // samples

struct MixOptions
{
    std::vector<std::filesystem::path> inputs;
    std::filesystem::path output;
    bool asFloat = false;
};

// The inputs, their channels side by side.
struct Sounds
{
    int sampleRate = 0;  // Hz
    std::vector<std::vector<float>> channels;
    std::string complaint;  // about the first input that is damaged
};

void checkFiles(const MixOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    for (const std::filesystem::path& input : options.inputs) {
        files.addInput("IN", input);
    }
    files.addOutput("-o", options.output);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    checkWavName("-o", options.output);
}

// All are opened before any of them is read: better refused now than after the reading.
std::vector<SoundReader> openInputs(const std::vector<std::filesystem::path>& inputs)
{
    std::vector<SoundReader> readers;
    for (const std::filesystem::path& input : inputs) {
        const SoundReader& reader = readers.emplace_back(input);
        const SoundReader& first = readers.front();
        if (reader.sampleRate() != first.sampleRate()) {
            throw DataError(inQuotes(first.path()) + " has " + std::to_string(first.sampleRate()) +
                            " samples per second and " + inQuotes(reader.path()) + " has " +
                            std::to_string(reader.sampleRate()) +
                            "; bring them to one rate with 'kovdoa resample'");
        }
        if (reader.samples() > std::numeric_limits<int>::max()) {
            throw DataError(inQuotes(reader.path()) + " is too long to be mixed");
        }
    }
    return readers;
}

void readChannels(SoundReader& reader, Sounds& sounds)
{
    const std::size_t before = sounds.channels.size();
    sounds.channels.resize(before + static_cast<std::size_t>(reader.channels()));
    std::vector<float> block;
    std::vector<float> samples;
    for (reader.read(readingBlock, block); !block.empty(); reader.read(readingBlock, block)) {
        for (int channel = 0; channel < reader.channels(); ++channel) {
            takeChannel(block, reader.channels(), channel, samples);
            std::vector<float>& whole = sounds.channels[before + static_cast<std::size_t>(channel)];
            whole.insert(whole.end(), samples.begin(), samples.end());
        }
    }
}

Sounds readInputs(std::vector<SoundReader>& readers, bool showProgress)
{
    Sounds sounds;
    sounds.sampleRate = readers.front().sampleRate();
    Progress progress("Reading", static_cast<int>(readers.size()), showProgress);
    for (SoundReader& reader : readers) {
        readChannels(reader, sounds);
        if (sounds.complaint.empty()) {
            sounds.complaint = reader.complaint();
        }
        progress.step();
    }
    return sounds;
}

void writeMixture(Mixture& mixture, bool asFloat, SoundWriter& writer)
{
    if (asFloat) {
        writer.write(mixture.samples);
    } else {
        const std::vector<std::int16_t> samples = inSixteenBits(mixture);
        writer.write(samples.data(), static_cast<int>(samples.size()));
    }
    writer.finish();
}

// What became of a sum that was too large.
std::string remarks(const Mixture& mixture)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(1);
    if (mixture.reduction > 0.0) {
        text << "; the sum was too large and was brought down by " << mixture.reduction << " dB";
    }
    if (mixture.lowest < -1.0) {
        text << "; it falls to " << mixture.lowest << ", below full scale";
    }
    return text.str();
}

ExitStatus mixSounds(const MixOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    Workspace workspace(common.log);
    std::vector<SoundReader> readers = openInputs(options.inputs);
    long long longest = 0;
    for (const SoundReader& reader : readers) {
        longest = std::max(longest, reader.samples());
    }
    const SampleFormat format = options.asFloat ? SampleFormat::Float32 : SampleFormat::Integer16;
    SoundWriter writer(options.output, {1, readers.front().sampleRate(), format}, longest);
    Sounds sounds = readInputs(readers, !common.noProgress);
    Mixture mixture = mix(sounds.channels);
    writeMixture(mixture, options.asFloat, writer);
    workspace.keepLog();

    std::cout << printable(options.output.string()) << writer.summary() << "; "
              << counted(static_cast<int>(sounds.channels.size()), "channel") << " of "
              << counted(static_cast<int>(readers.size()), "file") << " mixed" << remarks(mixture) << '\n';
    std::cout.flush();
    if (!sounds.complaint.empty()) {
        throw DataError(sounds.complaint);
    }
    return EXIT_GOOD;
}

}  // namespace

void addMixCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("mix", "Mix several sound files, or the channels of one, into one channel");
    const auto options = std::make_shared<MixOptions>();
    addPaths(command, "IN", options->inputs, "IN...", "The sound files; every channel of each is mixed")
        .required();
    addPath(command, "-o,--output", options->output, "OUT.wav", "The WAV file to write, 16-bit").required();
    command.addFlag("--float", options->asFloat, "Write 32-bit float samples");
    command.setFooter(
        "Example:\n"
        "  kovdoa mix left.wav right.wav -o both.wav\n"
        "  kovdoa mix array/data-0.wav -o eight.wav --float");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return mixSounds(*options, common); };
    });
}

}  // namespace kovtools
