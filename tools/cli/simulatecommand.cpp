// kovdoa simulate: made-up input for the other commands.

#include "tools/cli/simulatecommands.h"

namespace kovtools {

void addSimulateCommand(const CommandSyntax& parent, Action& chosen)
{
    const CommandSyntax family =
        parent.addCommand("simulate", "Make recordings, sounds and tables to try the other commands with");
    family.requireCommand();
    family.setFooter(
        "Example:\n"
        "  kovdoa simulate scene leak.kov --sources 2 --seed 7\n"
        "  kovdoa simulate array leak --swap 3:77\n"
        "  kovdoa simulate pd corona.wav --type corona\n"
        "  kovdoa simulate gastable table.txt --farthest 20");
    addSimulateSceneCommand(family, chosen);
    addSimulateArrayCommand(family, chosen);
    addSimulatePdCommand(family, chosen);
    addSimulateGasTableCommand(family, chosen);
}

}  // namespace kovtools
