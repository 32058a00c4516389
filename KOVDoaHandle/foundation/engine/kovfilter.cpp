// A section with its state. The stream is laid out in groups of four from its first sample on, wherever it is
// cut: a group that a cut leaves incomplete is computed as far as it has come, and again when more has come.
// So are the stretches after which the state is looked at. That is how a stream in pieces gives the bits of the
// whole.
#include <KOVDoaHandle/foundation/engine/kovfilter.h>
#include <KOVDoaHandle/foundation/engine/kovfilterkernel_p.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace {

using filterkernel::groupSize;

// Far below any signal, and still 50 times the smallest normal single-precision number.
constexpr double silence = 1e-36;
// A silent state is cleared once in so many groups: often enough, and too seldom to cost time.
constexpr std::ptrdiff_t groupsInStretch = 64;

filterkernel::Section sectionOf(const IIRCoef_t& coefficients)
{
    const double a0 = double{coefficients.a0};
    const double a1 = double{coefficients.a1} / a0;
    const double a2 = double{coefficients.a2} / a0;
    const double h1 = -a1;
    const double h2 = -a1 * h1 - a2;
    const double h3 = -a1 * h2 - a2 * h1;
    const double h4 = -a1 * h3 - a2 * h2;
    return {.b0 = double{coefficients.b0} / a0,
            .b1 = double{coefficients.b1} / a0,
            .b2 = double{coefficients.b2} / a0,
            .h1 = h1,
            .h2 = h2,
            .h3 = h3,
            .earlier1 = {h1, h2, h3, h4},
            .earlier2 = {-a2, -a2 * h1, -a2 * h2, -a2 * h3}};
}

}  // namespace

class KOVFilter::Private
{
public:
    explicit Private(const IIRCoef_t& coefficients) : section(sectionOf(coefficients)) {}

    // Filters whole groups, looking at the state between stretches.
    void filterGroups(const float* in, float* out, std::ptrdiff_t groups)
    {
        while (groups > 0) {
            const std::ptrdiff_t now = std::min(groups, groupsInStretch - groupsDone);
            kernel(section, state, in, out, now);
            in += now * groupSize;
            out += now * groupSize;
            groups -= now;
            groupsDone += now;
            if (groupsDone == groupsInStretch) {
                groupsDone = 0;
                clearSilence();
            }
        }
    }

    // Takes as many samples as the group that has begun still needs, at most `count`; returns how many.
    std::ptrdiff_t continueGroup(const float* in, float* out, std::ptrdiff_t count)
    {
        const std::ptrdiff_t taken = std::min(groupSize - begun, count);
        std::copy_n(in, taken, group.data() + begun);
        const bool complete = begun + taken == groupSize;
        const filterkernel::State stateBefore = state;
        std::array<float, groupSize> filtered;
        if (complete) {
            filterGroups(group.data(), filtered.data(), 1);
        } else {
            kernel(section, state, group.data(), filtered.data(), 1);
            state = stateBefore;
        }
        std::copy_n(filtered.data() + begun, taken, out);
        begun = complete ? 0 : begun + taken;
        return taken;
    }

    void reset()
    {
        state = {};
        group.fill(0.0F);
        begun = 0;
        groupsDone = 0;
    }

    std::ptrdiff_t begun = 0;  // samples of `group` that have come

private:
    void clearSilence()
    {
        if (std::abs(state.y[0]) < silence && std::abs(state.y[1]) < silence) {
            state.y = {};
        }
    }

    const filterkernel::Section section;
    const filterkernel::Kernel kernel = filterkernel::fastest();
    filterkernel::State state{};
    std::array<float, groupSize> group{};
    std::ptrdiff_t groupsDone = 0;  // of the present stretch
};

KOVFilter::KOVFilter(IIRCoef_t coefficients) : d(std::make_unique<Private>(coefficients)) {}

KOVFilter::~KOVFilter() = default;

void KOVFilter::filter(float* in, float* out, int n)
{
    const std::ptrdiff_t count = std::max(n, 0);
    std::ptrdiff_t done = 0;
    if (d->begun > 0) {
        done = d->continueGroup(in, out, count);
    }
    const std::ptrdiff_t groups = (count - done) / groupSize;
    d->filterGroups(in + done, out + done, groups);
    done += groups * groupSize;
    if (done < count) {
        d->continueGroup(in + done, out + done, count - done);
    }
}

void KOVFilter::reset()
{
    d->reset();
}
