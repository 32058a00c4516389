// What the commands of the program have in common.
#ifndef KOVTOOLS_COMMAND_H
#define KOVTOOLS_COMMAND_H

#include <filesystem>
#include <functional>

#include "tools/cli/commandsyntax.h"
#include "tools/support/errors.h"

namespace kovtools {

// Options that every command understands.
struct CommonOptions
{
    bool noProgress = false;
    std::filesystem::path log;  // absolute; empty: the library's log is dropped
};

// What a command does once the arguments have been read. Results go to stdout, everything else to stderr;
// problems are thrown as DataError or UsageError. Returns EXIT_GOOD, or EXIT_BAD_DATA when it has done what
// it could with a damaged file and has said so.
using Action = std::function<ExitStatus(const CommonOptions&)>;

// Each adds one command (with its own options and help) to `parent`. When the user chooses it, its action is
// put into `chosen`, to be run after all arguments have been found right.
void addSimulateCommand(const CommandSyntax& parent, Action& chosen);
void addBeamformCommand(const CommandSyntax& parent, Action& chosen);
void addInfoCommand(const CommandSyntax& parent, Action& chosen);
void addRenderCommand(const CommandSyntax& parent, Action& chosen);
void addCheckCommand(const CommandSyntax& parent, Action& chosen);
void addRecoverCommand(const CommandSyntax& parent, Action& chosen);
void addListenCommand(const CommandSyntax& parent, Action& chosen);
void addResampleCommand(const CommandSyntax& parent, Action& chosen);
void addMixCommand(const CommandSyntax& parent, Action& chosen);
void addMicCheckCommand(const CommandSyntax& parent, Action& chosen);
void addPrpdCommand(const CommandSyntax& parent, Action& chosen);
void addGasLeakCommand(const CommandSyntax& parent, Action& chosen);
void addPulsesCommand(const CommandSyntax& parent, Action& chosen);
void addCalibrateCommand(const CommandSyntax& parent, Action& chosen);
void addTrackCommand(const CommandSyntax& parent, Action& chosen);

}  // namespace kovtools

#endif
