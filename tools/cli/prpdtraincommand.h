// The command below kovdoa prpd.
#ifndef KOVTOOLS_PRPDTRAINCOMMAND_H
#define KOVTOOLS_PRPDTRAINCOMMAND_H

#include "tools/cli/command.h"

namespace kovtools {

void addPrpdTrainCommand(const CommandSyntax& parent, Action& chosen);

}  // namespace kovtools

#endif
