// kovdoa prpd train: models of surface and suspension discharges, learned from recordings.
#include "tools/cli/prpdtraincommand.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "tools/audio/soundreader.h"
#include "tools/cli/dischargeoptions.h"
#include "tools/cli/optiontypes.h"
#include "tools/discharge/dischargeanalysis.h"
#include "tools/discharge/modelfile.h"
#include "tools/discharge/modeltraining.h"
#include "tools/support/filepaths.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"
#include "tools/support/progress.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

struct TrainOptions
{
    std::vector<std::string> surface;
    std::vector<std::string> suspension;
    Mains mains = Mains::Hz50;
    std::vector<std::string> surface60;
    std::vector<std::string> suspension60;
    int channel = 0;
    fs::path output;
};

struct Recording
{
    DischargeInput input;
    bool isSuspension;
};

fs::path absolutePath(const std::string& text)
{
    std::error_code error;
    fs::path path = fs::absolute(text, error);
    if (error) {
        throw UsageError("'" + text + "' cannot be found: the working directory is gone");
    }
    return path;
}

std::vector<Recording> recordingsOf(const TrainOptions& options)
{
    std::vector<Recording> recordings;
    const auto add = [&](const std::vector<std::string>& files, Mains mains, bool isSuspension) {
        for (const std::string& file : files) {
            recordings.push_back({{absolutePath(file), options.channel, mains}, isSuspension});
        }
    };
    add(options.surface, options.mains, false);
    add(options.surface60, Mains::Hz60, false);
    add(options.suspension, options.mains, true);
    add(options.suspension60, Mains::Hz60, true);
    return recordings;
}

void checkFiles(const std::vector<Recording>& recordings, const TrainOptions& options,
                const CommonOptions& common)
{
    FilesOfCommand files;
    for (const Recording& recording : recordings) {
        files.addInput(recording.isSuspension ? "--suspension" : "--surface", recording.input.file);
    }
    files.addOutput("-o", options.output / halvesModelName);
    files.addOutput("-o", options.output / varianceModelName);
    files.addOutput("--log", common.log);
    files.checkDistinct();
}

// The patterns of a recording that the classifier would be asked about, with a line on stdout about how many.
TrainingRecording learnFrom(const Recording& recording)
{
    SoundReader reader(recording.input.file);
    checkDischargeRecording(reader, recording.input);
    TrainingRecording training{recording.isSuspension, {}};
    const DischargeAnalysis analysis = analyseDischarge(
        reader, recording.input, {},
        [&training](const DischargePattern& pattern) {
            if (isClassified(pattern.frame)) {
                training.patterns.push_back(featuresOf(pattern.frame));
            }
        },
        [] {});
    if (!reader.complaint().empty()) {
        throw DataError(reader.complaint());
    }
    std::cout << printable(recording.input.file.string()) << ": "
              << (recording.isSuspension ? "suspension" : "surface") << ", " << training.patterns.size()
              << " of " << counted(analysis.votes, "pattern") << " usable\n";
    return training;
}

void checkEnough(const std::vector<TrainingRecording>& recordings)
{
    int usable[2] = {0, 0};
    for (const TrainingRecording& recording : recordings) {
        usable[recording.isSuspension ? 1 : 0] += 1;
    }
    if (usable[0] < fewestRecordings || usable[1] < fewestRecordings) {
        throw DataError("at least " + std::to_string(fewestRecordings) +
                        " recordings of each kind must have patterns that are bound to the mains and no "
                        "corona, one to learn from and one to test with; there are " +
                        std::to_string(usable[0]) + " of surface and " + std::to_string(usable[1]) +
                        " of suspension discharges");
    }
}

std::string modelLine(const char* name, const TrainedModel& model)
{
    char learned[96];
    std::snprintf(learned, sizeof learned, "gamma %g, C %g, cross-validated accuracy %.1f %%",
                  model.vectors.gamma, model.cost, 100.0 * model.accuracy);
    return std::string(name) + ": " + counted(static_cast<int>(model.vectors.vectors.size()), "vector") +
           " from " + counted(model.patterns, "pattern") + ", " + learned;
}

void makeFolder(const fs::path& folder)
{
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw DataError("cannot create the folder " + inQuotes(folder) + ": " + error.message());
    }
}

ExitStatus train(const TrainOptions& options, const CommonOptions& common)
{
    const std::vector<Recording> recordings = recordingsOf(options);
    checkFiles(recordings, options, common);
    Workspace workspace(common.log);
    makeFolder(options.output);
    PartialFile halvesFile(options.output / halvesModelName);
    PartialFile varianceFile(options.output / varianceModelName);

    std::vector<TrainingRecording> learned;
    {
        Progress progress("Reading", static_cast<int>(recordings.size()), !common.noProgress);
        for (const Recording& recording : recordings) {
            TrainingRecording training = learnFrom(recording);
            if (!training.patterns.empty()) {
                learned.push_back(std::move(training));
            }
            progress.step();
        }
    }
    checkEnough(learned);
    Progress progress("Learning", 2 * trainingSteps, !common.noProgress);
    const auto step = [&progress] { progress.step(); };
    const TrainedModel halves = trainModel(learned, FeatureSet::Halves, step);
    const TrainedModel variance = trainModel(learned, FeatureSet::Variance, step);
    halvesFile.write(modelText(halves.vectors));
    varianceFile.write(modelText(variance.vectors));
    halvesFile.commit();
    varianceFile.commit();
    workspace.keepLog();
    std::cout << modelLine(halvesModelName, halves) << " (not decided by)\n"
              << modelLine(varianceModelName, variance) << " on recordings left out\n";
    return EXIT_GOOD;
}

void addFiles(const CommandSyntax& command, const std::string& name, std::vector<std::string>& files,
              const std::string& help)
{
    command.addOptionOfMany(name, files, help).kind("FILES");
}

void addOptions(const CommandSyntax& command, TrainOptions& options)
{
    addFiles(command, "--surface", options.surface, "Recordings of discharges along a surface");
    addFiles(command, "--suspension", options.suspension, "Recordings of discharges of floating parts");
    addMains(command, options.mains);
    addFiles(command, "--surface-60", options.surface60, "More of them, at 60 Hz mains whatever --mains is");
    addFiles(command, "--suspension-60", options.suspension60,
             "More of them, at 60 Hz mains whatever --mains is");
    addSoundChannel(command, options.channel);
    addPath(command, "-o,--output", options.output, "DIR", "Folder for the model files; made if missing")
        .required();
}

}  // namespace

void addPrpdTrainCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax command =
        parent.addCommand("train", "Learn to tell surface from suspension discharges, from recordings");
    const auto options = std::make_shared<TrainOptions>();
    addOptions(command, *options);
    command.setFooter(
        "Example:\n"
        "  kovdoa prpd train --surface s1.wav s2.wav --suspension f1.wav f2.wav -o models");
    command.whenChosen([options, &chosen] {
        if (options->surface.empty() && options->surface60.empty()) {
            refuse("--surface", "recordings are needed");
        }
        if (options->suspension.empty() && options->suspension60.empty()) {
            refuse("--suspension", "recordings are needed");
        }
        chosen = [options](const CommonOptions& common) { return train(*options, common); };
    });
}

}  // namespace kovtools
