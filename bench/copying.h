// The bound that memory sets: an operation that delivers so many bytes takes at least as long as copying them.
#ifndef KOVDOA_BENCH_COPYING_H
#define KOVDOA_BENCH_COPYING_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace bench {

inline void copyBytes(benchmark::State& state, std::size_t bytes)
{
    const std::vector<char> from(bytes, 1);
    std::vector<char> to(bytes);
    for ([[maybe_unused]] auto iteration : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
}

}  // namespace bench

#endif
