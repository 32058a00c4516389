#include <KOVDoaHandle/imaging/distancesteadier_p.h>

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <limits>
#include <ostream>
#include <random>

#include "tests/support/bits.h"

using KOVPrivate::DistanceStatus;
using KOVPrivate::DistanceSteadier;

namespace {

constexpr float before = 1000.0F;  // ms; not yet too long
const float after = std::nextafter(before, 2000.0F);

// ---- The whole table of states ----

// Ten readings whose variance lies well inside a band, half of them above 5 and half below.
enum class Spread { Low, Moderate, High };

float halfWidth(Spread spread)
{
    switch (spread) {
        case Spread::Low:
            return 0.1F;  // variance 0.01
        case Spread::Moderate:
            return 0.387F;  // 0.15
        case Spread::High:
            return 0.548F;  // 0.3
    }
    return 0.0F;
}

// Feeds ten readings of one spread, which fill the history. The last verdict is by them alone; returns its answer.
bool feedSpread(DistanceSteadier& steadier, Spread spread)
{
    bool restarted = false;
    for (int i = 0; i < 10; ++i) {
        restarted = steadier.feed(i % 2 == 0 ? 5.0F + halfWidth(spread) : 5.0F - halfWidth(spread));
    }
    return restarted;
}

// The wanted state with a history of high spread in it: the ways in which a host gets there.
DistanceSteadier steadierIn(DistanceStatus status)
{
    DistanceSteadier steadier;
    feedSpread(steadier, Spread::High);  // the first ten decide nothing
    if (status != DistanceStatus::NoResult) {
        feedSpread(steadier, Spread::Low);
    }
    if (status == DistanceStatus::Measuring) {
        feedSpread(steadier, Spread::High);
    }
    return steadier;
}

struct Transition
{
    const char* name;
    DistanceStatus from;
    Spread spread;
    DistanceStatus to;
    bool restarts;
};

void PrintTo(const Transition& transition, std::ostream* stream)
{
    *stream << transition.name;
}

class DistanceTransitions : public ::testing::TestWithParam<Transition>
{
};

TEST_P(DistanceTransitions, LeadWhereTheTableSays)
{
    const Transition transition = GetParam();
    DistanceSteadier steadier = steadierIn(transition.from);
    ASSERT_EQ(steadier.status(), transition.from);

    const bool restarts = feedSpread(steadier, transition.spread);

    EXPECT_EQ(steadier.status(), transition.to);
    EXPECT_EQ(restarts, transition.restarts);
}

INSTANTIATE_TEST_SUITE_P(
    DistanceSteadier, DistanceTransitions,
    ::testing::Values(Transition{"NoResultWithALowSpreadIsStable", DistanceStatus::NoResult, Spread::Low,
                                 DistanceStatus::Stable, false},
                      Transition{"MeasuringWithALowSpreadIsStable", DistanceStatus::Measuring, Spread::Low,
                                 DistanceStatus::Stable, false},
                      Transition{"StableWithALowSpreadIsStable", DistanceStatus::Stable, Spread::Low,
                                 DistanceStatus::Stable, false},
                      Transition{"NoResultWithAModerateSpreadMeasures", DistanceStatus::NoResult,
                                 Spread::Moderate, DistanceStatus::Measuring, true},
                      Transition{"MeasuringWithAModerateSpreadMeasuresAnew", DistanceStatus::Measuring,
                                 Spread::Moderate, DistanceStatus::Measuring, true},
                      Transition{"StableWithAModerateSpreadIsStable", DistanceStatus::Stable,
                                 Spread::Moderate, DistanceStatus::Stable, false},
                      Transition{"NoResultWithAHighSpreadStaysSo", DistanceStatus::NoResult, Spread::High,
                                 DistanceStatus::NoResult, false},
                      Transition{"MeasuringWithAHighSpreadGoesOn", DistanceStatus::Measuring, Spread::High,
                                 DistanceStatus::Measuring, false}),
    [](const auto& test) { return test.param.name; });

TEST(DistanceSteadier, BeginsToMeasureOnceWhenAStableResultIsLost)
{
    DistanceSteadier steadier = steadierIn(DistanceStatus::Stable);

    // The stable result ends with one of these readings; those after it leave the stopwatch alone.
    int restarts = 0;
    for (int i = 0; i < 10; ++i) {
        restarts += steadier.feed(i % 2 == 0 ? 8.0F : 2.0F) ? 1 : 0;
    }

    EXPECT_EQ(steadier.status(), DistanceStatus::Measuring);
    EXPECT_EQ(restarts, 1);
}

// ---- The status in time ----

TEST(DistanceSteadier, GivesUpMeasuringAfterMoreThanASecond)
{
    DistanceSteadier steadier = steadierIn(DistanceStatus::Measuring);

    EXPECT_EQ(steadier.statusAfter(0.0F), DistanceStatus::Measuring);
    EXPECT_EQ(steadier.statusAfter(before), DistanceStatus::Measuring);
    EXPECT_EQ(steadier.statusAfter(after), DistanceStatus::NoResult);
    EXPECT_EQ(steadier.statusAfter(0.0F), DistanceStatus::NoResult);
}

TEST(DistanceSteadier, KeepsAStableResultForAsLongAsItIsAsked)
{
    DistanceSteadier steadier = steadierIn(DistanceStatus::Stable);

    EXPECT_EQ(steadier.statusAfter(1e9F), DistanceStatus::Stable);
}

TEST(DistanceSteadier, HasNoResultForAsLongAsItIsAsked)
{
    DistanceSteadier steadier;

    EXPECT_EQ(steadier.statusAfter(1e9F), DistanceStatus::NoResult);
}

TEST(DistanceSteadier, KeepsTheLastStableDistanceWhileItMeasuresAndAfterIt)
{
    DistanceSteadier steadier = steadierIn(DistanceStatus::Measuring);
    const float last = steadier.result();
    EXPECT_NEAR(last, 5.0F, 0.15F);

    steadier.statusAfter(after);

    EXPECT_EQ(steadier.status(), DistanceStatus::NoResult);
    EXPECT_EQ(steadier.result(), last);
}

// ---- Bands, to the last bit ----

// Of nine readings of 5 and one of `far`, summed up in this order.
float varianceWithOneAt(float far)
{
    float sum = 0.0F;
    for (int i = 0; i < 9; ++i) {
        sum += 5.0F;
    }
    const float mean = (sum + far) / 10.0F;
    float squares = 0.0F;
    for (int i = 0; i < 9; ++i) {
        squares += static_cast<float>(static_cast<double>(5.0F - mean) * static_cast<double>(5.0F - mean));
    }
    squares += static_cast<float>(static_cast<double>(far - mean) * static_cast<double>(far - mean));
    return squares / 10.0F;
}

// The first reading whose variance does not lie below the limit.
float firstNotBelow(double limit)
{
    float far = 5.5F;
    while (static_cast<double>(varianceWithOneAt(far)) < limit) {
        far = std::nextafter(far, 10.0F);
    }
    return far;
}

DistanceStatus statusWithOneAt(float far)
{
    DistanceSteadier steadier;
    steadier.feed(5.0F);  // leaves the history with the eleventh
    for (int i = 0; i < 9; ++i) {
        steadier.feed(5.0F);
    }
    steadier.feed(far);
    return steadier.status();
}

TEST(DistanceSteadier, IsStableBelowAVarianceOfATenthAndNotAbove)
{
    const float far = firstNotBelow(0.1);

    EXPECT_EQ(statusWithOneAt(std::nextafter(far, 0.0F)), DistanceStatus::Stable);
    EXPECT_EQ(statusWithOneAt(far), DistanceStatus::Measuring);
}

TEST(DistanceSteadier, MeasuresUpToAVarianceOfAFifthAndNotAbove)
{
    const float far = firstNotBelow(0.2);

    EXPECT_EQ(statusWithOneAt(std::nextafter(far, 0.0F)), DistanceStatus::Measuring);
    EXPECT_EQ(statusWithOneAt(far), DistanceStatus::NoResult);
}

// ---- Against a plain version ----

// Every step by the letter, with the sums written out.
class PlainSteadier
{
public:
    bool feed(float d)
    {
        if (!(d > 0)) {
            return false;
        }
        m_history.push_back(d);
        if (m_history.size() <= 10) {
            return false;
        }
        m_history.pop_front();
        float sum = 0.0F;
        for (const float x : m_history) {
            sum += x;
        }
        const float mean = sum / 10.0F;
        float squares = 0.0F;
        for (const float x : m_history) {
            const double deviation = static_cast<double>(x - mean);
            squares += static_cast<float>(deviation * deviation);
        }
        const float variance = squares / 10.0F;
        float near = 0.0F;
        float count = 0.0F;
        for (const float x : m_history) {
            if (static_cast<double>(std::fabs(x - mean)) < 0.2) {
                near += x;
                count += 1.0F;
            }
        }
        const float average = count > 0.0F ? near / count : mean;
        if (static_cast<double>(variance) < 0.1) {
            status = 2;
            const float tenths = average * 10.0F;
            // Whole numbers already beyond the integers.
            result = std::fabs(tenths) < 1e9F ? static_cast<float>(static_cast<int>(tenths)) / 10.0F
                                              : tenths / 10.0F;
        } else if (static_cast<double>(variance) >= 0.1 && static_cast<double>(variance) <= 0.2) {
            if (status != 2) {
                status = 1;
                return true;
            }
        } else if (static_cast<double>(variance) > 0.2) {
            if (status == 2) {
                status = 1;
                return true;
            }
        }
        return false;
    }

    int statusAfter(float elapsedMs)
    {
        if (status == 1 && elapsedMs > 1000.0F) {
            status = 0;
        }
        return status;
    }

    float result = -1.0F;
    int status = 0;

private:
    std::deque<float> m_history;
};

TEST(DistanceSteadier, AgreesWithAPlainVersionToTheLastBit)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::mt19937 random(11);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    int changes[3] = {};
    for (int stream = 0; stream < 40; ++stream) {
        DistanceSteadier steadier;
        PlainSteadier plain;
        float centre = 4.0F;
        float width = 0.1F;
        float elapsedMs = 0.0F;
        for (int i = 0; i < 2000; ++i) {
            if (random() % 16 == 0) {
                width = std::exp(2.0F * uniform(random) - 1.0F);
            }
            if (random() % 200 == 0) {
                centre = std::exp(8.0F * uniform(random));
            }
            float reading = centre + width * uniform(random);
            if (random() % 300 == 0) {
                const float odd[] = {0.0F,      -1.0F, std::nanf(""), infinity,
                                     -infinity, 3e38F, 1e-40F,        2147483648.0F};
                reading = odd[random() % 8];
            }

            const int statusBefore = plain.status;
            const bool restarts = plain.feed(reading);
            ASSERT_EQ(restarts, steadier.feed(reading)) << "stream " << stream << ", reading " << i;
            elapsedMs = restarts ? 0.0F : elapsedMs + 150.0F;
            ASSERT_EQ(plain.statusAfter(elapsedMs), static_cast<int>(steadier.statusAfter(elapsedMs)))
                << "stream " << stream << ", reading " << i;
            ASSERT_TRUE(testsupport::sameBits(plain.result, steadier.result()))
                << "stream " << stream << ", reading " << i;
            changes[plain.status] += plain.status != statusBefore ? 1 : 0;
        }
    }
    // Every state was entered often enough for the comparison to mean something.
    EXPECT_GT(changes[0], 100);
    EXPECT_GT(changes[1], 100);
    EXPECT_GT(changes[2], 100);
}

TEST(DistanceSteadier, TruncatesAResultBeyondTheIntegersToItself)
{
    DistanceSteadier steadier;

    for (int i = 0; i < 11; ++i) {
        steadier.feed(1073741824.0F);  // 2^30: sums of ten and their tenth are exact
    }

    EXPECT_EQ(steadier.status(), DistanceStatus::Stable);
    EXPECT_EQ(steadier.result(), 1073741824.0F);
}

TEST(DistanceSteadier, RecoversFromAnInfiniteReading)
{
    DistanceSteadier steadier;
    for (int i = 0; i < 11; ++i) {
        steadier.feed(3.0F);
    }

    steadier.feed(std::numeric_limits<float>::infinity());
    EXPECT_EQ(steadier.status(), DistanceStatus::Stable);
    EXPECT_EQ(steadier.result(), 3.0F);
    for (int i = 0; i < 10; ++i) {
        steadier.feed(4.0F);
    }

    EXPECT_EQ(steadier.result(), 4.0F);
}

}  // namespace
