#include "tools/support/parallel.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <vector>

namespace kovtools {

void inParallel(int count, int grain, const std::function<void(int, int)>& work)
{
    const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    const int grains = (count + grain - 1) / grain;
    const int run = (grains + cores - 1) / cores * grain;
    if (count <= run) {
        work(0, count);
        return;
    }
    std::vector<std::exception_ptr> failures(static_cast<std::size_t>(cores));
    {
        std::vector<std::jthread> threads;
        for (int first = 0; first < count; first += run) {
            threads.emplace_back([&, first, worker = threads.size()] {
                try {
                    work(first, std::min(first + run, count));
                } catch (...) {
                    failures[worker] = std::current_exception();
                }
            });
        }
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    }
}

}  // namespace kovtools
