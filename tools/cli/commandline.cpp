#include "tools/cli/commandline.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tools/cli/command.h"
#include "tools/cli/optiontypes.h"
#include "tools/cli/versiontext.h"
#include "tools/support/inquotes.h"
#include "tools/support/interrupt.h"
#include "tools/support/silence.h"
#include "tools/support/standardstreams.h"
#include "tools/support/wording.h"

namespace kovtools {

namespace {

// "kovdoa render" when that is how far the user got.
std::string deepestCommand(const CLI::App& app)
{
    std::string name = app.get_name();
    const CLI::App* current = &app;
    while (!current->get_subcommands().empty()) {
        current = current->get_subcommands().front();
        name += " " + current->get_name();
    }
    return name;
}

std::string seeHelpOf(const CLI::App& app)
{
    return " (see " + inQuotes(deepestCommand(app) + " --help") + ")";
}

std::string oneLine(std::string text)
{
    for (char& letter : text) {
        if (letter == '\n' || letter == '\r') {
            letter = ' ';
        }
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '.')) {
        text.pop_back();
    }
    return text;
}

// "a command is needed after 'kovdoa simulate': scene"; empty when no command is missing.
std::string missingCommand(const CLI::App& app)
{
    const CLI::App* current = &app;
    while (!current->get_subcommands().empty()) {
        current = current->get_subcommands().front();
    }
    std::string names;
    for (const CLI::App* const command : current->get_subcommands(nullptr)) {
        names += (names.empty() ? "" : ", ") + command->get_name();
    }
    return names.empty() ? names
                         : "a command is needed after " + inQuotes(deepestCommand(app)) + ": " + names;
}

// What is missing is often there, but misspelt; then the misspelt word is the better thing to name.
std::string missingWord(const CLI::App& app, const CLI::RequiredError& error)
{
    const std::vector<std::string> unknown = app.remaining(true);
    if (!unknown.empty()) {
        return inQuotes(unknown.front()) + " is no command or option known here";
    }
    const std::string command = missingCommand(app);
    return command.empty() ? oneLine(error.what()) : command;
}

// An option with no value or with too many. The library's text begins with the option's name and a colon.
std::string wrongNumberOfValues(const CLI::ArgumentMismatch& error)
{
    const std::string text = oneLine(error.what());
    const std::string option = text.substr(0, text.find(':'));
    return option + (text.ends_with("missing") ? " needs a value behind it"
                                               : " may be given only once, with one value");
}

ExitStatus complain(const std::string& sentence, ExitStatus status)
{
    std::cerr << "kovdoa: " << printable(sentence) << '\n';
    return status;
}

// `status`, unless the results did not reach whoever reads them.
ExitStatus flushed(ExitStatus status)
{
    std::cout.flush();
    return std::cout ? status : complain("cannot write to standard output", EXIT_BAD_DATA);
}

ExitStatus run(const Action& action, const CommonOptions& common)
{
    try {
        return flushed(action(common));
    } catch (const UsageError& error) {
        return complain(error.what(), EXIT_BAD_USAGE);
    } catch (const DataError& error) {
        return complain(error.what(), EXIT_BAD_DATA);
    } catch (const Interrupted&) {
        return complain("interrupted; nothing unfinished was left behind", EXIT_INTERRUPTED);
    } catch (const std::bad_alloc&) {
        return complain("not enough memory for this", EXIT_BAD_DATA);
    } catch (const std::exception& error) {
        return complain("something unexpected went wrong: " + oneLine(error.what()), EXIT_BAD_DATA);
    }
}

// Everything that may be asked for.
void addCommands(CLI::App& app, CommonOptions& common, Action& action)
{
    const CommandSyntax program(&app);
    app.fallthrough();  // common options may stand behind the command too
    app.require_subcommand(1);
    app.set_version_flag("--version", versionText(), "Print the version with build details and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.add_flag("--no-progress", common.noProgress,
                 "Show no progress bar (there is none without a terminal)");
    addPath(program, "--log", common.log, "FILE", "Keep the library's log in this file");
    app.footer(
        "Example:\n"
        "  kovdoa simulate array leak --camera-picture wall.png\n"
        "  kovdoa miccheck leak\n"
        "  kovdoa beamform leak -o leak.kov\n"
        "  kovdoa render leak.kov -o leak.mp4 --camera wall.png\n\n"
        "Exit status: 0 good, 1 bad data, 2 bad usage, 130 interrupted.");
    addSimulateCommand(program, action);
    addBeamformCommand(program, action);
    addInfoCommand(program, action);
    addRenderCommand(program, action);
    addCheckCommand(program, action);
    addRecoverCommand(program, action);
    addListenCommand(program, action);
    addResampleCommand(program, action);
    addMixCommand(program, action);
    addMicCheckCommand(program, action);
    addPrpdCommand(program, action);
    addGasLeakCommand(program, action);
    addPulsesCommand(program, action);
    addCalibrateCommand(program, action);
    addTrackCommand(program, action);
}

}  // namespace

Request readArguments(int argc, const char* const* argv)
{
    CLI::App app("Acoustic imaging: from the audio of a microphone array to the overlay of a camera picture.",
                 "kovdoa");
    Request request;
    addCommands(app, request.common, request.action);
    const auto answered = [](ExitStatus status) { return Request{{}, {}, status}; };
    try {
        app.parse(argc, argv);
    } catch (const CLI::RequiredError& error) {
        return answered(complain(missingWord(app, error) + seeHelpOf(app), EXIT_BAD_USAGE));
    } catch (const CLI::ArgumentMismatch& error) {
        return answered(complain(wrongNumberOfValues(error) + seeHelpOf(app), EXIT_BAD_USAGE));
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            app.exit(error);  // help and version
            return answered(flushed(EXIT_GOOD));
        }
        return answered(complain(oneLine(error.what()) + seeHelpOf(app), EXIT_BAD_USAGE));
    }
    return request;
}

int runCommandLine(int argc, const char* const* argv)
{
    openStandardStreams();
    watchForInterrupts();
    silenceLibraries();
    const Request request = readArguments(argc, argv);
    return request.action ? run(request.action, request.common) : request.status;
}

}  // namespace kovtools
