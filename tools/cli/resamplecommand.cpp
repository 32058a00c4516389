// kovdoa resample: a sound file at another sample rate.
#include <iostream>
#include <memory>
#include <optional>

#include "tools/audio/resampling.h"
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

struct ResampleOptions
{
    ResamplingOptions resampling;
    std::optional<SampleFormat> format;  // none: the input's
    std::filesystem::path input;
    std::filesystem::path output;
};

void checkFiles(const ResampleOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("IN", options.input);
    files.addOutput("-o", options.output);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    checkWavName("-o", options.output);
}

void checkFilterRate(const ResamplingOptions& options, const std::filesystem::path& input)
{
    if ((options.aliasing || options.dc) && options.inputRate != resamplerFilterRate) {
        throw UsageError(std::string(options.aliasing ? "--remove-aliasing" : "--remove-dc") +
                         " switches on a filter that is made for " + std::to_string(resamplerFilterRate) +
                         " Hz, but " + inQuotes(input) + " has " + std::to_string(options.inputRate) +
                         " samples per second");
    }
}

ResamplingBlock blockOf(const ResamplingOptions& options)
{
    const std::optional<ResamplingBlock> block = resamplingBlock(options.inputRate, options.outputRate);
    if (!block) {
        throw UsageError(
            "the rates " + std::to_string(options.inputRate) + " and " + std::to_string(options.outputRate) +
            " Hz have too little in common to be converted sample by sample; choose another --rate");
    }
    return *block;
}

ExitStatus resample(const ResampleOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    Workspace workspace(common.log);
    SoundReader reader(options.input);
    ResamplingOptions resampling = options.resampling;
    resampling.inputRate = reader.sampleRate();
    checkFilterRate(resampling, options.input);
    const ResamplingBlock block = blockOf(resampling);

    SoundWriter writer(options.output,
                       {reader.channels(), resampling.outputRate, options.format.value_or(reader.format())},
                       resampledLength(reader.samples(), block));
    Resampling resampler(resampling, block, reader.channels());
    {
        Progress progress("Resampling", static_cast<int>(reader.samples() / block.input), !common.noProgress);
        std::vector<float> samples;
        for (reader.read(block.input, samples); !samples.empty(); reader.read(block.input, samples)) {
            writer.write(resampler.resample(samples));
            progress.step();
        }
    }
    writer.finish();
    workspace.keepLog();

    std::cout << printable(options.output.string()) << writer.summary();
    if (writer.clipped() > 0) {
        std::cout << "; " << counted(writer.clipped(), "sample")
                  << " clipped (a lower --gain or --format float avoids that)";
    }
    std::cout << '\n';
    std::cout.flush();
    if (!reader.complaint().empty()) {
        throw DataError(reader.complaint());
    }
    return EXIT_GOOD;
}

void addFormat(const CommandSyntax& command, std::optional<SampleFormat>& format)
{
    const auto read = [&format](const std::string& text) {
        if (text == "16") {
            format = SampleFormat::Integer16;
        } else if (text == "24") {
            format = SampleFormat::Integer24;
        } else if (text == "float") {
            format = SampleFormat::Float32;
        } else {
            refuse("--format", "'" + text + "' is not one of 16, 24, float");
        }
    };
    command.addOption("--format", read, "Samples of the output: 16, 24 or float")
        .kind("NAME")
        .shownDefault("as in the input");
}

void addOptions(const CommandSyntax& command, ResampleOptions& options)
{
    ResamplingOptions& resampling = options.resampling;
    addPath(command, "IN", options.input, "IN", "The sound file").required();
    addPath(command, "-o,--output", options.output, "OUT.wav", "The WAV file to write").required();
    addInteger(command, "--rate", resampling.outputRate, 1000, 768000, "Sample rate of the output, Hz")
        .shownDefault("")
        .required();
    addNumber(command, "--gain", resampling.gain, -120.0, 120.0, "Gain, dB");
    command.addFlag("--remove-aliasing", resampling.aliasing,
                    "The library's flag of that name: a high-pass at 10 Hz (input at 96000 Hz only)");
    command.addFlag(
        "--remove-dc", resampling.dc,
        "The library's flag of that name: a low-pass at the output rate (input at 96000 Hz only)");
    addFormat(command, options.format);
}

}  // namespace

void addResampleCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("resample", "Change the sample rate of a sound file by picking samples");
    const auto options = std::make_shared<ResampleOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa resample bat.wav -o half.wav --rate 48000 --gain 6");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return resample(*options, common); };
    });
}

}  // namespace kovtools
