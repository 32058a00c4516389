// kovdoa prpd: which partial discharge a recording is of.
#include <iostream>
#include <memory>
#include <optional>

#include "tools/audio/soundreader.h"
#include "tools/cli/command.h"
#include "tools/cli/dischargeoptions.h"
#include "tools/cli/optiontypes.h"
#include "tools/cli/prpdtraincommand.h"
#include "tools/discharge/dischargeanalysis.h"
#include "tools/discharge/dischargepicture.h"
#include "tools/discharge/dischargereport.h"
#include "tools/discharge/modelfile.h"
#include "tools/discharge/shippedmodel.h"
#include "tools/render/framesink.h"
#include "tools/support/filepaths.h"
#include "tools/support/partialfile.h"
#include "tools/support/progress.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace {

struct PrpdOptions
{
    DischargeInput input;
    std::filesystem::path models;  // empty: the shipped ones
    std::filesystem::path plot;
    bool json = false;
};

void checkFiles(const PrpdOptions& options, const CommonOptions& common)
{
    FilesOfCommand files;
    files.addInput("FILE", options.input.file);
    if (!options.models.empty()) {
        files.addInput("--models", options.models / halvesModelName);
        files.addInput("--models", options.models / varianceModelName);
    }
    files.addOutput("--plot", options.plot);
    files.addOutput("--log", common.log);
    files.checkDistinct();
    if (!options.plot.empty()) {
        checkPngName("--plot", options.plot);
    }
}

// Where the library finds the models.
std::filesystem::path modelFolder(const PrpdOptions& options)
{
    if (!options.models.empty()) {
        checkModels(options.models);
        return options.models;
    }
    const std::filesystem::path shipped = "models";  // in the workspace
    writeShippedModels(shipped);
    return shipped;
}

void printReport(const DischargeReport& report, bool json)
{
    if (json) {
        // A file name may be any bytes; JSON is UTF-8.
        std::cout << reportJson(report).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
                  << '\n';
    } else {
        std::cout << reportText(report);
    }
    std::cout.flush();
}

ExitStatus analyse(const PrpdOptions& options, const CommonOptions& common)
{
    checkFiles(options, common);
    Workspace workspace(common.log);
    const std::filesystem::path models = modelFolder(options);
    std::optional<PartialFile> plot = openIfWanted(options.plot);
    SoundReader reader(options.input.file);
    checkDischargeRecording(reader, options.input);

    DischargePicture picture(options.input.mains);
    DischargeReport report{options.input.file, options.input.mains, reader.seconds(), {}};
    {
        Progress progress("Analysing", static_cast<int>(reader.samples() / dischargeBlock),
                          !common.noProgress);
        report.analysis = analyseDischarge(
            reader, options.input, models,
            [&picture](const DischargePattern& pattern) { picture.add(pattern.frame); },
            [&progress] { progress.step(); });
    }
    if (plot) {
        writePng(*plot, picture.draw(report.analysis));
        plot->commit();
    }
    workspace.keepLog();
    printReport(report, options.json);
    if (!reader.complaint().empty()) {
        throw DataError(reader.complaint());
    }
    return EXIT_GOOD;
}

void addOptions(const CommandSyntax& command, PrpdOptions& options)
{
    // Not required as far as the parser goes: the command below this one has no such file.
    addPath(command, "FILE", options.input.file, "FILE", "A sound file of 96000 samples per second");
    addMains(command, options.input.mains);
    addSoundChannel(command, options.input.channel);
    addPath(command, "--models", options.models, "DIR",
            "Folder of the classifier's model files (default: models learned from simulated signals)");
    addPath(command, "--plot", options.plot, "OUT.png", "Draw the phase-resolved picture");
    command.addFlag("--json", options.json, "Answer in JSON");
}

// Training has options of its own, some of them of the same name; what stands before its name would be lost.
void refuseOptions(const CommandSyntax& command)
{
    const std::vector<std::string> given = command.givenOptions();
    if (!given.empty()) {
        refuse(given.front(), "is for the analysis; options of the training stand behind 'train'");
    }
}

}  // namespace

void addPrpdCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("prpd", "Say which kind of partial discharge a recording is of");
    const auto options = std::make_shared<PrpdOptions>();
    addOptions(command, *options);
    addPrpdTrainCommand(command, chosen);
    command.setFooter(
        "Example:\n"
        "  kovdoa prpd switchgear.wav --mains 50 --plot switchgear.png\n"
        "  kovdoa prpd train --surface s1.wav s2.wav --suspension f1.wav f2.wav -o models\n"
        "  kovdoa prpd switchgear.wav --models models");
    command.whenChosen([options, command, &chosen] {
        if (command.hasChosenCommand()) {
            refuseOptions(command);
            return;
        }
        if (options->input.file.empty()) {
            refuse("FILE", "a sound file is needed");
        }
        chosen = [options](const CommonOptions& common) { return analyse(*options, common); };
    });
}

}  // namespace kovtools
