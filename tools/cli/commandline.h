// The command line as a whole.
#ifndef KOVTOOLS_COMMANDLINE_H
#define KOVTOOLS_COMMANDLINE_H

namespace kovtools {

// Reads the arguments, runs the command they name and returns the exit status.
int runCommandLine(int argc, const char* const* argv);

}  // namespace kovtools

#endif
