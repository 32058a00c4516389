// The command line as a whole.
#ifndef KOVTOOLS_COMMANDLINE_H
#define KOVTOOLS_COMMANDLINE_H

#include "tools/cli/command.h"

namespace kovtools {

// What the arguments ask for.
struct Request
{
    Action action;  // none: the answer has been given, and `status` is what to exit with
    CommonOptions common;
    ExitStatus status = EXIT_GOOD;
};

// Reads the arguments and does nothing yet. Help and version go to stdout, the sentence about what is wrong to stderr.
Request readArguments(int argc, const char* const* argv);

// Reads the arguments, runs the command they name and returns the exit status.
int runCommandLine(int argc, const char* const* argv);

}  // namespace kovtools

#endif
