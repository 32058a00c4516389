// Options of the commands about partial discharge.
#ifndef KOVTOOLS_DISCHARGEOPTIONS_H
#define KOVTOOLS_DISCHARGEOPTIONS_H

#include "tools/cli/commandsyntax.h"
#include "tools/discharge/mains.h"

namespace kovtools {

// --mains 50|60
void addMains(const CommandSyntax& command, Mains& mains);

// --channel N, from 1; stored from 0.
void addSoundChannel(const CommandSyntax& command, int& channel);

}  // namespace kovtools

#endif
