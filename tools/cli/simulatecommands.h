// The commands of the simulate family.
#ifndef KOVTOOLS_SIMULATECOMMANDS_H
#define KOVTOOLS_SIMULATECOMMANDS_H

#include "tools/cli/command.h"

namespace kovtools {

void addSimulateSceneCommand(CLI::App& parent, Action& chosen);
void addSimulateArrayCommand(CLI::App& parent, Action& chosen);
void addSimulatePdCommand(CLI::App& parent, Action& chosen);
void addSimulateGasTableCommand(CLI::App& parent, Action& chosen);

}  // namespace kovtools

#endif
