// Every command of the program with arguments that make it read and write all it can, for what all of them keep to.
#ifndef KOVTOOLS_TESTS_COMMANDTABLE_H
#define KOVTOOLS_TESTS_COMMANDTABLE_H

#include <iosfwd>
#include <string>
#include <vector>

#include "tests/tools/program.h"

namespace kovtools::tests {

struct CommandRow
{
    std::string label;                   // letters only, one of its own
    std::vector<std::string> command;    // its words
    std::vector<std::string> arguments;  // behind them
    std::vector<std::string> inputs;     // the files that the arguments lead to
    std::vector<std::string> outputs;
    bool succeeds = true;  // with the inputs of writeInputs(); what it needs else takes too long to make
    std::vector<std::string>
        streams{};  // inputs of which each line is answered for itself, whatever the others are

    std::vector<std::string> line() const;
};

void PrintTo(const CommandRow& row, std::ostream* out);

const std::vector<CommandRow>& everyCommand();

// Puts usable inputs of the command into the sandbox, and the folders that its outputs are to be in.
void writeInputs(const CommandRow& row, const Sandbox& sandbox);

}  // namespace kovtools::tests

#endif
