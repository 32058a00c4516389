// The recursion of a second-order section, four samples at a time, in one variant per kind of processor.
//
// One after the other, each output waits for the one before it: a multiplication and two additions, about a
// dozen cycles. Written out for a group of four,
//   y[j] = u[j] + h[j + 1] y[-1] - a2 h[j] y[-2],  u[j] = w[j] + h[1] w[j - 1] + ... + h[j] w[0],
// with w the feed-forward part and h the response of the feedback alone, only the last two outputs of a group
// are waited for, once in four samples, and everything else is done several numbers at a time. No poles are
// added and cancelled, as they are in the scattered forms of look-ahead, so rounding is that of a plain direct
// form. (K. K. Parhi, D. G. Messerschmitt, "Pipeline interleaving and parallelism in recursive digital
// filters", 1989, part II.)
//
// A sum for sample j reads only samples up to j, by shifting zeros in rather than by multiplying with 0. So a
// group that is not complete yet can be computed with whatever stands in its later places.
#ifndef KOVDOA5_KOVFILTERKERNEL_P_H
#define KOVDOA5_KOVFILTERKERNEL_P_H

#include <array>
#include <cstddef>

namespace filterkernel {

constexpr std::ptrdiff_t groupSize = 4;

// A section with a0 = 1, as the recursion needs it.
struct Section
{
    double b0, b1, b2;
    double h1, h2, h3;
    alignas(32) std::array<double, groupSize> earlier1;  // weight of y[-1] in y[0] ... y[3]
    alignas(32) std::array<double, groupSize> earlier2;  // weight of y[-2]
};

// The two samples before a group.
struct State
{
    alignas(16) std::array<double, 2> x;  // x[-2], x[-1]
    alignas(16) std::array<double, 2> y;  // y[-2], y[-1]
};

// Filters `groups` groups from `in` to `out` (which may be the same) and moves the state on. Every variant
// gives the same bits: each does the same roundings in the same order.
using Kernel = void (*)(const Section& section, State& state, const float* in, float* out,
                        std::ptrdiff_t groups);

void filterPairs(const Section& section, State& state, const float* in, float* out, std::ptrdiff_t groups);

// For a processor with AVX2; null where the library is built for another kind of processor.
extern const Kernel filterQuads;

// The fastest that this processor can run.
Kernel fastest();

}  // namespace filterkernel

#endif
