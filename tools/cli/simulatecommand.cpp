// kovdoa simulate: recordings of made-up scenes.
#include <CLI/CLI.hpp>

#include "tools/cli/simulatecommands.h"

namespace kovtools {

void addSimulateCommand(CLI::App& parent, Action& chosen)
{
    CLI::App* const family = parent.add_subcommand("simulate", "Make recordings of simulated scenes");
    family->require_subcommand(1);
    family->footer(
        "Example:\n"
        "  kovdoa simulate scene leak.kov --sources 2 --seed 7\n"
        "  kovdoa simulate array leak --swap 3:77\n"
        "  kovdoa simulate pd corona.wav --type corona");
    addSimulateSceneCommand(*family, chosen);
    addSimulateArrayCommand(*family, chosen);
    addSimulatePdCommand(*family, chosen);
    addSimulateGasTableCommand(*family, chosen);
}

}  // namespace kovtools
