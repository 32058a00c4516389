// How many seconds of audio are dealt with in a second.
#ifndef KOVDOA_BENCH_REALTIME_H
#define KOVDOA_BENCH_REALTIME_H

#include <benchmark/benchmark.h>

namespace bench {

// `samples` of one channel at 96 kHz in each iteration.
inline void countRealTime(benchmark::State& state, double samples)
{
    state.counters["real_time_factor"] = benchmark::Counter(
        samples * static_cast<double>(state.iterations()) / 96000.0, benchmark::Counter::kIsRate);
}

}  // namespace bench

#endif
