// Work shared out over the processor's cores.
#ifndef KOVTOOLS_PARALLEL_H
#define KOVTOOLS_PARALLEL_H

#include <functional>

namespace kovtools {

// Cuts 0 .. count - 1 into as many runs as there are cores, multiples of `grain` but for the last, calls
// work(first, end) for each on a thread of its own and waits for all of them. What one of them throws is thrown here.
// Which run an item falls into depends on the machine, so no result may.
void inParallel(int count, int grain, const std::function<void(int, int)>& work);

}  // namespace kovtools

#endif
