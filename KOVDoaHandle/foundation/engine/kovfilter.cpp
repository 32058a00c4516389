// The recursion, four samples at a time.
//
// One after the other, each output waits for the one before it: a multiplication and two additions, about a
// dozen cycles. Written out for a group of four,
//   y[j] = u[j] + h[j + 1] y[-1] - a2 h[j] y[-2],  u[j] = w[j] + h[1] w[j - 1] + ... + h[j] w[0],
// with w the feed-forward part and h the response of the feedback alone, only the last two outputs of a group
// are waited for, once in four samples, and everything else is done two numbers at a time. No poles are added
// and cancelled, as they are in the scattered forms of look-ahead, so rounding is that of a plain direct form.
// (K. K. Parhi, D. G. Messerschmitt, "Pipeline interleaving and parallelism in recursive digital filters",
// 1989, part II: block processing.)
//
// A sum for sample j reads only samples up to j, by shifting rather than by multiplying with 0. So a group that
// is not complete yet can be computed with whatever stands in its later places, and computed again when more
// has come: that is how a stream cut anywhere gives the bits of the uncut one.
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace {

using Pair = double __attribute__((vector_size(16)));
using FloatPair = float __attribute__((vector_size(8)));

constexpr int groupSize = 4;

// Far below any signal, and still 50 times the smallest normal single-precision number.
constexpr double silence = 1e-36;

struct Section
{
    Pair b0, b1, b2;
    Pair h1, h2, h3;
    // Weight of y[-1] and of y[-2] in y[0], y[1] and in y[2], y[3].
    Pair earlier1Of01, earlier1Of23;
    Pair earlier2Of01, earlier2Of23;
};

// The two samples before a group.
struct Before
{
    Pair x;  // x[-2], x[-1]
    Pair y;  // y[-2], y[-1]
};

struct Outputs
{
    Pair y01;
    Pair y23;
};

Section sectionOf(const IIRCoef_t& coefficients)
{
    const double a0 = double{coefficients.a0};
    const double b0 = double{coefficients.b0} / a0;
    const double b1 = double{coefficients.b1} / a0;
    const double b2 = double{coefficients.b2} / a0;
    const double a1 = double{coefficients.a1} / a0;
    const double a2 = double{coefficients.a2} / a0;
    const double h1 = -a1;
    const double h2 = -a1 * h1 - a2;
    const double h3 = -a1 * h2 - a2 * h1;
    const double h4 = -a1 * h3 - a2 * h2;
    return {.b0 = Pair{b0, b0},
            .b1 = Pair{b1, b1},
            .b2 = Pair{b2, b2},
            .h1 = Pair{h1, h1},
            .h2 = Pair{h2, h2},
            .h3 = Pair{h3, h3},
            .earlier1Of01 = Pair{h1, h2},
            .earlier1Of23 = Pair{h3, h4},
            .earlier2Of01 = Pair{-a2, -a2 * h1},
            .earlier2Of23 = Pair{-a2 * h2, -a2 * h3}};
}

inline Pair loadPair(const float* in)
{
    FloatPair pair;
    std::memcpy(&pair, in, sizeof pair);
    return __builtin_convertvector(pair, Pair);
}

inline void storePair(Pair value, float* out)
{
    const FloatPair pair = __builtin_convertvector(value, FloatPair);
    std::memcpy(out, &pair, sizeof pair);
}

// (second of a, first of b)
inline Pair between(Pair a, Pair b)
{
    return __builtin_shufflevector(a, b, 1, 2);
}

inline Outputs filterGroup(const Section& section, const Before& before, Pair x01, Pair x23)
{
    const Pair none = {0.0, 0.0};
    const Pair w01 = section.b0 * x01 + section.b1 * between(before.x, x01) + section.b2 * before.x;
    const Pair w23 = section.b0 * x23 + section.b1 * between(x01, x23) + section.b2 * x01;
    const Pair afterNone = between(none, w01);
    const Pair u01 = w01 + section.h1 * afterNone;
    const Pair u23 = w23 + section.h1 * between(w01, w23) + section.h2 * w01 + section.h3 * afterNone;
    const Pair earlier1 = __builtin_shufflevector(before.y, before.y, 1, 1);
    const Pair earlier2 = __builtin_shufflevector(before.y, before.y, 0, 0);
    return {u01 + section.earlier2Of01 * earlier2 + section.earlier1Of01 * earlier1,
            u23 + section.earlier2Of23 * earlier2 + section.earlier1Of23 * earlier1};
}

inline Before next(Pair x23, Pair y23)
{
    if (std::abs(y23[0]) < silence && std::abs(y23[1]) < silence) [[unlikely]] {
        y23 = Pair{0.0, 0.0};
    }
    return {x23, y23};
}

// Filters `count` samples, a multiple of the group's size.
Before filterGroups(const Section& section, Before before, const float* in, float* out, std::ptrdiff_t count)
{
    for (std::ptrdiff_t i = 0; i < count; i += groupSize) {
        const Pair x01 = loadPair(in + i);
        const Pair x23 = loadPair(in + i + 2);
        const Outputs outputs = filterGroup(section, before, x01, x23);
        storePair(outputs.y01, out + i);
        storePair(outputs.y23, out + i + 2);
        before = next(x23, outputs.y23);
    }
    return before;
}

}  // namespace

class KOVFilter::Private
{
public:
    explicit Private(const IIRCoef_t& coefficients) : section(sectionOf(coefficients)) {}

    // Takes as many samples as the group that has begun still needs, at most `count`; returns how many.
    std::ptrdiff_t continueGroup(const float* in, float* out, std::ptrdiff_t count)
    {
        const std::ptrdiff_t taken = std::min<std::ptrdiff_t>(groupSize - begun, count);
        std::copy_n(in, taken, group.data() + begun);
        const Pair x23 = loadPair(group.data() + 2);
        const Outputs outputs = filterGroup(section, before, loadPair(group.data()), x23);
        std::array<float, groupSize> filtered;
        storePair(outputs.y01, filtered.data());
        storePair(outputs.y23, filtered.data() + 2);
        std::copy_n(filtered.data() + begun, taken, out);
        begun += taken;
        if (begun == groupSize) {
            before = next(x23, outputs.y23);
            beginGroup();
        }
        return taken;
    }

    void beginGroup()
    {
        group.fill(0.0F);
        begun = 0;
    }

    Section section;
    Before before{};
    std::array<float, groupSize> group{};
    std::ptrdiff_t begun = 0;  // samples of `group` that have come
};

KOVFilter::KOVFilter(IIRCoef_t coefficients) : d(std::make_unique<Private>(coefficients)) {}

KOVFilter::~KOVFilter() = default;

void KOVFilter::filter(float* in, float* out, int n)
{
    const std::ptrdiff_t count = std::max(n, 0);
    std::ptrdiff_t done = 0;
    if (d->begun > 0 && count > 0) {
        done = d->continueGroup(in, out, count);
    }
    const std::ptrdiff_t whole = (count - done) / groupSize * groupSize;
    d->before = filterGroups(d->section, d->before, in + done, out + done, whole);
    done += whole;
    if (done < count) {
        d->continueGroup(in + done, out + done, count - done);
    }
}

void KOVFilter::reset()
{
    d->before = Before{};
    d->beginGroup();
}
