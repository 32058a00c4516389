// Options of the commands about partial discharge.
#ifndef KOVTOOLS_DISCHARGEOPTIONS_H
#define KOVTOOLS_DISCHARGEOPTIONS_H

#include "tools/discharge/mains.h"

namespace CLI {
class App;
}

namespace kovtools {

// --mains 50|60
void addMains(CLI::App& command, Mains& mains);

// --channel N, from 1; stored from 0.
void addSoundChannel(CLI::App& command, int& channel);

}  // namespace kovtools

#endif
