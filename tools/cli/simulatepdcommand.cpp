// kovdoa simulate pd: partial discharges as an ultrasonic microphone hears them.
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <vector>

#include "tools/audio/soundwriter.h"
#include "tools/cli/dischargeoptions.h"
#include "tools/cli/optiontypes.h"
#include "tools/cli/simulatecommands.h"
#include "tools/discharge/dischargesignal.h"
#include "tools/support/filepaths.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

constexpr int blockSize = dischargeRate / 10;

struct SimulatePdOptions
{
    std::filesystem::path output;
    DischargeSignalOptions signal;
    double seconds = 5.0;
};

void writeSignal(const SimulatePdOptions& options, SoundWriter& writer, long long samples, bool withProgress)
{
    DischargeSignal signal(options.signal);
    Progress progress("Simulating", static_cast<int>((samples + blockSize - 1) / blockSize), withProgress);
    std::vector<float> block;
    for (long long done = 0; done < samples; done += blockSize) {
        signal.next(static_cast<int>(std::min<long long>(blockSize, samples - done)), block);
        writer.write(block);
        progress.step();
    }
}

ExitStatus simulatePd(const SimulatePdOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addOutput("OUT", options.output);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    checkWavName("OUT", options.output);

    Workspace workspace(common.log);
    const long long samples = std::llround(options.seconds * dischargeRate);
    SoundWriter writer(options.output, {1, dischargeRate, SampleFormat::Float32}, samples);
    writeSignal(options, writer, samples, !common.noProgress);
    writer.finish();
    workspace.keepLog();

    std::cout << printable(options.output.string()) << writer.summary() << ", "
              << dischargeName(options.signal.kind) << " at " << frequencyOf(options.signal.mains)
              << " Hz mains\n";
    return EXIT_GOOD;
}

void addType(const CommandSyntax& command, DischargeKind& kind)
{
    const auto read = [&kind](const std::string& text) {
        for (const DischargeKind one : allDischargeKinds) {
            if (text == dischargeName(one)) {
                kind = one;
                return;
            }
        }
        refuse("--type", "'" + text + "' is not one of corona, surface, suspension, noise");
    };
    command.addOption("--type", read, "What discharges: corona, surface, suspension or noise")
        .kind("NAME")
        .required();
}

void addOptions(const CommandSyntax& command, SimulatePdOptions& options)
{
    DischargeSignalOptions& signal = options.signal;
    addPath(command, "OUT", options.output, "OUT.wav", "The WAV file to write").required();
    addType(command, signal.kind);
    addMains(command, signal.mains);
    addNumber(command, "--seconds", options.seconds, 0.001, 3600.0, "Length of the recording, s");
    addSeed(command, "--seed", signal.seed,
            "The same seed gives the same recording; another is another object");
    addNumber(command, "--level", signal.level, 0.0, 1.0, "Amplitude of a typical burst, full scale 1");
    addNumber(command, "--noise", signal.noise, 0.0, 1.0, "Background noise, root mean square, full scale 1");
    addNumber(command, "--drift", signal.drift, 0.0, 2.0,
              "How far the mains frequency strays from its nominal value, Hz");
    addNumber(command, "--phase", signal.phase, 0.0, 360.0,
              "Phase of the mains at the first sample, degrees");
}

}  // namespace

void addSimulatePdCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("pd", "Record a partial discharge as an ultrasonic microphone hears it");
    const auto options = std::make_shared<SimulatePdOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa simulate pd corona.wav --type corona --mains 50 --seconds 5 --seed 7");
    command.whenChosen([options, &chosen] {
        chosen = [options](const CommonOptions& common) { return simulatePd(*options, common); };
    });
}

}  // namespace kovtools
