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

int complain(const std::string& sentence, ExitStatus status)
{
    std::cerr << "kovdoa: " << sentence << '\n';
    return status;
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

// `status`, unless the results did not reach whoever reads them.
int flushed(ExitStatus status)
{
    std::cout.flush();
    return std::cout ? status : complain("cannot write to standard output", EXIT_BAD_DATA);
}

int run(const Action& action, const CommonOptions& common)
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

}  // namespace

int runCommandLine(int argc, const char* const* argv)
{
    openStandardStreams();
    watchForInterrupts();
    silenceLibraries();

    CLI::App app("Acoustic imaging: simulate, inspect and render recordings of energy maps.", "kovdoa");
    CommonOptions common;
    Action action;
    app.fallthrough();  // common options may stand behind the command too
    app.require_subcommand(1);
    app.set_version_flag("--version", versionText(), "Print the version with build details and exit");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.add_flag("--no-progress", common.noProgress,
                 "Show no progress bar (there is none without a terminal)");
    addPath(app, "--log", common.log, "FILE", "Keep the library's log in this file");
    app.footer(
        "Example:\n"
        "  kovdoa simulate scene leak.kov --camera-picture wall.png\n"
        "  kovdoa info leak.kov\n"
        "  kovdoa render leak.kov -o leak.mp4 --camera wall.png\n\n"
        "Exit status: 0 good, 1 bad data, 2 bad usage, 130 interrupted.");
    addSimulateCommand(app, action);
    addInfoCommand(app, action);
    addRenderCommand(app, action);

    try {
        app.parse(argc, argv);
    } catch (const CLI::RequiredError& error) {
        // What is missing is often there, but misspelt; then the misspelt word is the better thing to name.
        const std::vector<std::string> unknown = app.remaining(true);
        const std::string sentence = unknown.empty()
                                         ? oneLine(error.what())
                                         : inQuotes(unknown.front()) + " is no command or option known here";
        return complain(sentence + seeHelpOf(app), EXIT_BAD_USAGE);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            app.exit(error);  // help and version
            return flushed(EXIT_GOOD);
        }
        return complain(oneLine(error.what()) + seeHelpOf(app), EXIT_BAD_USAGE);
    }
    return run(action, common);
}

}  // namespace kovtools
