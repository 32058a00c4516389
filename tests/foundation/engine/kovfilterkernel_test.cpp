// The variants of the recursion against each other, bit for bit.
#include <KOVDoaHandle/foundation/engine/kovfilterkernel_p.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/bits.h"

namespace {

using filterkernel::filterPairs;
using filterkernel::filterQuads;
using filterkernel::Section;
using filterkernel::State;
using testsupport::sameBits;

bool canRunQuads()
{
#ifdef __x86_64__
    return filterQuads != nullptr && __builtin_cpu_supports("avx2");
#else
    return false;
#endif
}

Section randomSection(std::mt19937& random)
{
    std::uniform_real_distribution<double> radius(0.0, 0.999);
    std::uniform_real_distribution<double> any(-2.0, 2.0);
    const double r = radius(random);
    const double a1 = r * any(random);
    const double a2 = r * r;
    const double h1 = -a1;
    const double h2 = -a1 * h1 - a2;
    const double h3 = -a1 * h2 - a2 * h1;
    const double h4 = -a1 * h3 - a2 * h2;
    return {any(random), any(random), any(random),      h1,
            h2,          h3,          {h1, h2, h3, h4}, {-a2, -a2 * h1, -a2 * h2, -a2 * h3}};
}

// The kernel's formulas, one statement a rounding, one output after the other.
void plainGroups(const Section& s, State& state, const float* in, float* out, std::ptrdiff_t groups)
{
    for (std::ptrdiff_t group = 0; group < groups; ++group, in += 4, out += 4) {
        const std::array<double, 6> x = {state.x[0], state.x[1], in[0], in[1], in[2], in[3]};
        // Three zeros before the feed-forward part of the group.
        std::array<double, 7> w{};
        std::array<double, 4> y{};
        for (std::size_t j = 0; j < 4; ++j) {
            double sum = s.b0 * x[j + 2];
            sum += s.b1 * x[j + 1];
            sum += s.b2 * x[j];
            w[j + 3] = sum;
            sum += s.h1 * w[j + 2];
            sum += s.h2 * w[j + 1];
            sum += s.h3 * w[j];
            sum += s.earlier2[j] * state.y[0];
            sum += s.earlier1[j] * state.y[1];
            y[j] = sum;
        }
        for (std::size_t j = 0; j < 4; ++j) {
            out[j] = static_cast<float>(y[j]);
        }
        state = {{x[4], x[5]}, {y[2], y[3]}};
    }
}

// NaNs count as one: which of two NaNs a sum takes over is the processor's business.
bool same(float a, float b)
{
    return (std::isnan(a) && std::isnan(b)) || sameBits(a, b);
}

void expectPlainBits(filterkernel::Kernel kernel)
{
    constexpr std::ptrdiff_t groups = 50;
    std::mt19937 random(11);
    std::normal_distribution<float> normal;
    const std::array<float, 8> adversarial = {0.0F,
                                              -0.0F,
                                              std::numeric_limits<float>::denorm_min(),
                                              -std::numeric_limits<float>::min(),
                                              std::numeric_limits<float>::max(),
                                              1e-30F,
                                              -1.0F,
                                              -std::numeric_limits<float>::infinity()};
    for (int round = 0; round < 400; ++round) {
        const Section section = randomSection(random);
        std::vector<float> in(groups * 4);
        const unsigned kinds = round % 4 == 0 ? 2 : (round % 4 == 1 ? 7 : 8);
        for (float& value : in) {
            value = round % 4 == 3 ? normal(random) : adversarial[random() % kinds];
        }
        std::vector<float> expected = in;
        std::vector<float> found = in;
        State expectedState{};
        State foundState{};

        plainGroups(section, expectedState, expected.data(), expected.data(), groups);
        kernel(section, foundState, found.data(), found.data(), groups);

        for (std::size_t i = 0; i < in.size(); ++i) {
            ASSERT_TRUE(same(expected[i], found[i])) << "round " << round << ", sample " << i;
        }
        if (!std::isnan(expectedState.y[0]) && !std::isnan(expectedState.y[1])) {
            ASSERT_EQ(std::memcmp(&expectedState, &foundState, sizeof foundState), 0) << "round " << round;
        }
    }
}

TEST(FilterKernel, PairsGiveTheBitsOfThePlainFormula)
{
    expectPlainBits(filterPairs);
}

TEST(FilterKernel, QuadsGiveTheBitsOfThePlainFormula)
{
    if (!canRunQuads()) {
        GTEST_SKIP() << "this processor has no AVX2";
    }
    expectPlainBits(filterQuads);
}

TEST(FilterKernel, TheFastestIsOneThatThisProcessorRuns)
{
    EXPECT_EQ(filterkernel::fastest(), canRunQuads() ? filterQuads : filterPairs);
}

TEST(FilterKernel, NoGroupsLeaveStateAndOutputAlone)
{
    std::mt19937 random(3);
    const Section section = randomSection(random);
    State state{{1.0, 2.0}, {3.0, 4.0}};
    float untouched = 5.0F;

    for (const auto kernel : {filterPairs, filterkernel::fastest()}) {
        kernel(section, state, &untouched, &untouched, 0);

        EXPECT_EQ(untouched, 5.0F);
        EXPECT_EQ(state.x, (std::array<double, 2>{1.0, 2.0}));
        EXPECT_EQ(state.y, (std::array<double, 2>{3.0, 4.0}));
    }
}

}  // namespace
