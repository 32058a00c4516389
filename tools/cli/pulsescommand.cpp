// kovdoa pulses: short bursts in a sound.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "tools/audio/soundreader.h"
#include "tools/audio/soundwriter.h"
#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/pulses/pulsefinder.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr int shortestSegment = 8;     // samples
constexpr int longestSegment = 16384;  // half a buffer: the other half is new each time
constexpr int mostChannels = 1024;     // libsndfile's own limit

struct PulsesOptions
{
    std::filesystem::path input;
    std::filesystem::path output;
    int channel = 1;
    int segment = 1024;
    bool json = false;
};

struct FoundPulses
{
    std::vector<PulseBuffer> buffers;
    std::vector<float> segments;  // interleaved, one behind the other
    long long count = 0;
    int cut = 0;  // segments
};

void checkFiles(const PulsesOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("IN", options.input);
    files.addOutput("-o", options.output);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    if (!options.output.empty()) {
        checkWavName("-o", options.output);
    }
}

FoundPulses findPulses(SoundReader& reader, const PulsesOptions& options, bool showProgress)
{
    FoundPulses found;
    PulseFinder finder({reader.channels(), reader.sampleRate(), options.segment, options.channel - 1},
                       [&found, keep = !options.output.empty()](const PulseBuffer& buffer,
                                                                const std::vector<float>& segment) {
                           found.buffers.push_back(buffer);
                           found.count += buffer.count;
                           if (keep && !segment.empty()) {
                               found.segments.insert(found.segments.end(), segment.begin(), segment.end());
                           }
                           found.cut += segment.empty() ? 0 : 1;
                       });
    const int step = PulseFinder::bufferSamples - options.segment;
    Progress progress("Searching",
                      static_cast<int>(std::min<long long>(reader.samples() / step + 1, 1 << 30)),
                      showProgress);
    std::vector<float> block;
    for (reader.read(finder.room(), block); !block.empty(); reader.read(finder.room(), block)) {
        finder.feed(block);
        progress.step();
    }
    finder.finish();
    return found;
}

void writeSegments(const FoundPulses& found, const SoundReader& reader, const PulsesOptions& options)
{
    SoundWriter writer(options.output, {reader.channels(), reader.sampleRate(), reader.format()},
                       static_cast<long long>(found.cut) * options.segment);
    writer.write(found.segments);
    writer.finish();
}

double decibels(float peak)
{
    return 20.0 * std::log10(static_cast<double>(peak));
}

nlohmann::ordered_json answerJson(const FoundPulses& found, const SoundReader& reader,
                                  const PulsesOptions& options)
{
    nlohmann::ordered_json json{{"sample_rate_hz", reader.sampleRate()},
                                {"channels", reader.channels()},
                                {"channel", options.channel},
                                {"segment_samples", options.segment},
                                {"pulses", found.count},
                                {"segments", found.cut},
                                {"buffers", nlohmann::ordered_json::array()}};
    for (const PulseBuffer& buffer : found.buffers) {
        nlohmann::ordered_json entry{{"time_s", static_cast<double>(buffer.first) / reader.sampleRate()},
                                     {"samples", buffer.samples},
                                     {"pulses", buffer.count},
                                     {"level_dbfs", nullptr},
                                     {"peak_dbfs", nullptr}};
        if (buffer.level > 0.0F) {
            entry["level_dbfs"] = decibels(buffer.level);
        }
        if (buffer.peak > 0.0F) {
            entry["peak_dbfs"] = decibels(buffer.peak);
        }
        json["buffers"].push_back(std::move(entry));
    }
    return json;
}

// Empty for silence.
std::string levelColumn(float level, int width)
{
    char text[32];
    std::snprintf(text, sizeof text, "%*.1f", width, decibels(level));
    return level > 0.0F ? std::string(text) : std::string();
}

void printTable(const FoundPulses& found, const SoundReader& reader)
{
    std::cout << "   from s      to s   pulses    RMS dBFS   strongest dBFS\n";
    for (const PulseBuffer& buffer : found.buffers) {
        const double from = static_cast<double>(buffer.first) / reader.sampleRate();
        const double to = static_cast<double>(buffer.first + buffer.samples) / reader.sampleRate();
        char line[96];
        std::snprintf(line, sizeof line, "%9.4f %9.4f %8d", from, to, buffer.count);
        std::cout << line << levelColumn(buffer.level, 12) << levelColumn(buffer.peak, 17) << '\n';
    }
    std::cout << found.count << (found.count == 1 ? " pulse in " : " pulses in ")
              << counted(static_cast<int>(found.buffers.size()), "buffer") << '\n';
}

ExitStatus searchPulses(const PulsesOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    Workspace workspace(common.log);
    SoundReader reader(options.input);
    if (options.channel > reader.channels()) {
        throw UsageError(inQuotes(reader.path()) + " has " + counted(reader.channels(), "channel") +
                         ", there is no channel " + std::to_string(options.channel));
    }
    const FoundPulses found = findPulses(reader, options, !common.noProgress);
    if (!options.output.empty()) {
        writeSegments(found, reader, options);
    }
    if (options.json) {
        std::cout << answerJson(found, reader, options).dump(2) << '\n';
    } else {
        printTable(found, reader);
        if (!options.output.empty()) {
            std::cout << printable(options.output.string()) << ": " << counted(found.cut, "segment") << " of "
                      << options.segment << " samples\n";
        }
    }
    std::cout.flush();
    workspace.keepLog();
    if (!reader.complaint().empty()) {
        throw DataError(reader.complaint());
    }
    return EXIT_GOOD;
}

void addOptions(const CommandSyntax& command, PulsesOptions& options)
{
    addPath(command, "IN", options.input, "IN.wav", "The sound").required();
    addPath(command, "-o,--output", options.output, "OUT.wav",
            "Write the strongest burst of each buffer, all channels, one segment behind the other");
    addInteger(command, "--channel", options.channel, 1, mostChannels,
               "The channel that is searched, from 1");
    addInteger(command, "--segment", options.segment, shortestSegment, longestSegment,
               "Length of a segment in samples; the burst's highest sample is at three quarters");
    command.addFlag("--json", options.json, "Answer in JSON");
}

}  // namespace

void addPulsesCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("pulses", "Count short bursts in a sound and cut them out");
    const auto options = std::make_shared<PulsesOptions>();
    addOptions(command, *options);
    command.setFooter("Example:\n  kovdoa pulses discharge.wav --channel 2 -o bursts.wav --segment 512");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return searchPulses(*options, common); };
    });
}

}  // namespace kovtools
