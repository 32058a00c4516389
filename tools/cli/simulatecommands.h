// The commands of the simulate family.
#ifndef KOVTOOLS_SIMULATECOMMANDS_H
#define KOVTOOLS_SIMULATECOMMANDS_H

#include "tools/cli/command.h"

namespace kovtools {

void addSimulateSceneCommand(const CommandSyntax& parent, Action& chosen);
void addSimulateArrayCommand(const CommandSyntax& parent, Action& chosen);
void addSimulatePdCommand(const CommandSyntax& parent, Action& chosen);
void addSimulateGasTableCommand(const CommandSyntax& parent, Action& chosen);

}  // namespace kovtools

#endif
