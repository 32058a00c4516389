// The pulse detector from outside: what it buffers, finds, cuts out and forgets.
#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "pulsefixture.h"
#include "pulseoracle.h"

namespace {

using namespace pulsefixture;

constexpr int length = 100;

// Channel 0 is searched, channel 1 counts its samples from `first`.
std::vector<Samples> withBursts(std::size_t n, const std::vector<std::size_t>& bursts, int first = 0)
{
    Samples detected(n, 0.0F);
    for (const std::size_t burst : bursts) {
        addBurst(detected, burst, 1.0F);
    }
    return {detected, counting(first, n)};
}

TEST(KOVPluseDetection, CutsAllChannelsThreeQuartersOfASegmentBeforeThePeak)
{
    KOVPluseDetection detector(96000, length, 2);
    const std::vector<Samples> channels = withBursts(2000, {1000});
    feed(detector, channels, 0);

    const Pulse pulse = getPulse(detector, 2, length);

    EXPECT_TRUE(pulse.found);
    EXPECT_EQ(pulse.count, 1);
    EXPECT_EQ(pulse.segments[1], counting(925, length));
    EXPECT_EQ(pulse.segments[0], Samples(channels[0].begin() + 925, channels[0].begin() + 1025));
}

TEST(KOVPluseDetection, CountsTheBurstsAndGivesTheStrongest)
{
    KOVPluseDetection detector(96000, length, 2);
    std::vector<Samples> channels = withBursts(5000, {500, 2000, 4000});
    addBurst(channels[0], 3000, 1.5F);
    feed(detector, channels, 0);

    const Pulse pulse = getPulse(detector, 2, length);

    EXPECT_EQ(pulse.count, 4);
    EXPECT_EQ(pulse.segments[1], counting(2925, length));
}

TEST(KOVPluseDetection, DoesNotCountBurstsOfLessThanATwentiethOfTheStrongestEnergy)
{
    KOVPluseDetection detector(96000, length, 2);
    std::vector<Samples> channels = withBursts(5000, {1000});
    addBurst(channels[0], 2000, 0.23F);  // 0.0529 of the energy
    addBurst(channels[0], 3000, 0.22F);  // 0.0484
    feed(detector, channels, 0);

    EXPECT_EQ(getPulse(detector, 2, length).count, 2);
}

TEST(KOVPluseDetection, SearchesTheChosenChannel)
{
    KOVPluseDetection detector(96000, length, 2);
    std::vector<Samples> channels = withBursts(2000, {1000});
    std::swap(channels[0], channels[1]);
    feed(detector, channels, 1);

    const Pulse pulse = getPulse(detector, 2, length);

    EXPECT_EQ(pulse.count, 1);
    EXPECT_EQ(pulse.segments[0], counting(925, length));
}

TEST(KOVPluseDetection, MovesASegmentThatWouldBeginBeforeTheSignalInside)
{
    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(2000, {10}), 0);

    EXPECT_EQ(getPulse(detector, 2, length).segments[1], counting(0, length));
}

TEST(KOVPluseDetection, MovesASegmentThatWouldRunPastTheSignalToEndWithIt)
{
    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(2000, {1990}), 0);

    EXPECT_EQ(getPulse(detector, 2, length).segments[1], counting(1900, length));
}

TEST(KOVPluseDetection, FindsNothingInSilenceAndFlushesAllTheSame)
{
    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(2000, {}), 0);

    const Pulse silent = getPulse(detector, 2, length);

    EXPECT_FALSE(silent.found);
    EXPECT_EQ(silent.count, 0);
    EXPECT_EQ(silent.segments[1], Samples(length, -1.0F));
    // Of the 2000 samples the last 100 are left, so a peak behind them reaches back into these.
    feed(detector, withBursts(200, {0}, 2000), 0);
    EXPECT_EQ(getPulse(detector, 2, length).segments[1], counting(1925, length));
}

TEST(KOVPluseDetection, DoesNotSearchWhatAFlushLeavesAgain)
{
    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(2000, {1950}), 0);
    ASSERT_EQ(getPulse(detector, 2, length).count, 1);
    feed(detector, withBursts(500, {}, 2000), 0);

    EXPECT_EQ(getPulse(detector, 2, length).count, 0);
}

TEST(KOVPluseDetection, KeepsTheLastSegmentOfMoreSamplesThanItHolds)
{
    KOVPluseDetection detector(96000, length, 2);
    for (int block = 0; block < 8; ++block) {
        feed(detector, withBursts(4096, {1000}, block * 4096), 0);  // 32768 in all
    }
    feed(detector, withBursts(200, {0}, 32768), 0);

    const Pulse pulse = getPulse(detector, 2, length);

    EXPECT_EQ(pulse.count, 1) << "the bursts before the flush are forgotten";
    EXPECT_EQ(pulse.segments[1], counting(32768 - 75, length));
}

TEST(KOVPluseDetection, HoldsAsManySamplesAsItsCapacity)
{
    KOVPluseDetection detector(96000, length, 2);
    for (int block = 0; block < 7; ++block) {
        feed(detector, withBursts(4681, {1000}, block * 4681), 0);  // 32767 in all
    }

    EXPECT_EQ(getPulse(detector, 2, length).count, 7);
}

TEST(KOVPluseDetection, TakesBlocksBeyondTheBuffer)
{
    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(100000, {1000, 99950}), 0);

    // Flushed at 36863, and every 36763 samples after that.
    const Pulse pulse = getPulse(detector, 2, length);

    EXPECT_EQ(pulse.count, 1);
    EXPECT_EQ(pulse.segments[1], counting(99875, length));
}

TEST(KOVPluseDetection, IgnoresBlocksThatAreNone)
{
    KOVPluseDetection detector(96000, length, 2);
    std::vector<Samples> channels = withBursts(2000, {1000});
    std::vector<float*> rows = pointers(channels);

    detector.FeedSignal(rows.data(), 0, 0);
    detector.FeedSignal(rows.data(), -5, 0);

    EXPECT_FALSE(getPulse(detector, 2, length).found);
}

TEST(KOVPluseDetection, LeavesTheCountAloneWhenThereIsNothingToSearchOrNowhereToWrite)
{
    KOVPluseDetection detector(96000, length, 2);
    EXPECT_EQ(getPulse(detector, 2, length).count, -1);

    feed(detector, withBursts(2000, {1000}), 0);
    int count = -7;
    EXPECT_FALSE(detector.GetPulse(nullptr, count));

    EXPECT_EQ(count, -7);
    EXPECT_EQ(getPulse(detector, 2, length).count, 1) << "nothing was flushed";
}

TEST(KOVPluseDetection, FlushesTheSignalOnDemand)
{
    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(2000, {1000}), 0);

    detector.FlushSignal();

    EXPECT_EQ(getPulse(detector, 2, length).count, 0);
    feed(detector, withBursts(length, {50}), 0);
    detector.FlushSignal();
    EXPECT_EQ(getPulse(detector, 2, length).count, -1) << "no more than a segment: all of it goes";
}

TEST(KOVPluseDetection, AddsUpDetectionsUntilThePulseIsFlushed)
{
    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(2000, {1000}), 0);
    detector.KOV_DetectPulse();
    detector.KOV_DetectPulse();
    detector.FlushPulse();
    detector.KOV_DetectPulse();

    EXPECT_EQ(getPulse(detector, 2, length).count, 2);
}

// What was found before samples were dropped is no longer there to be cut out.
TEST(KOVPluseDetection, ForgetsItsBurstsWhenItHoldsTooMuch)
{
    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(2000, {500, 1500}), 0);
    detector.KOV_DetectPulse();
    feed(detector, withBursts(30768, {}, 2000), 0);  // 32768 in all
    feed(detector, withBursts(500, {200}), 0);

    const Pulse pulse = getPulse(detector, 2, length);

    EXPECT_EQ(pulse.count, 1);
    EXPECT_EQ(pulse.segments[1], counting(125, length));
}

// Bursts without a positive value never become the strongest, so the former one's energy and place stand.
TEST(KOVPluseDetection, KeepsReferenceEnergyAndPlaceThroughItsFlushes)
{
    const auto negative = [](std::size_t n, std::size_t at, float amplitude) {
        Samples detected(n, 0.0F);
        for (std::size_t i = 0; i < 20; i += 2) {
            detected[at + i] = -amplitude;
        }
        return std::vector<Samples>{detected, counting(0, n)};
    };
    KOVPluseDetection fresh(96000, length, 2);
    feed(fresh, negative(2000, 1000, 0.01F), 0);
    const Pulse first = getPulse(fresh, 2, length);
    EXPECT_EQ(first.count, 1) << "any energy over a reference of 0";
    EXPECT_EQ(first.segments[1], counting(0, length)) << "the start is 0";

    KOVPluseDetection detector(96000, length, 2);
    feed(detector, withBursts(2000, {1000}), 0);
    ASSERT_EQ(getPulse(detector, 2, length).count, 1);
    detector.FlushPulse();
    feed(detector, negative(1900, 500, 0.01F), 0);
    EXPECT_EQ(getPulse(detector, 2, length).count, 0);
    feed(detector, negative(1900, 500, 1.0F), 0);
    const Pulse later = getPulse(detector, 2, length);
    EXPECT_EQ(later.count, 1);
    EXPECT_EQ(later.segments[1], counting(825, length))
        << "sample 925 of a buffer that begins with 100 others";
}

TEST(KOVPluseDetection, TakesAHumAsNoBurst)
{
    KOVPluseDetection detector(96000, 1000, 1);
    Samples hum;
    for (int i = 0; i < 8000; ++i) {
        hum.push_back(static_cast<float>(std::sin(0.005 * i)));
    }
    feed(detector, {hum}, 0);

    EXPECT_EQ(getPulse(detector, 1, 1000).count, 0);
}

// Between a hum and a hiss, which are mixed ever closer to the limit.
TEST(KOVPluseDetection, TakesAFifthOfTheEnergyBehindTheLowPassAsNoBurst)
{
    constexpr std::size_t segment = 1000;
    constexpr std::size_t peakAt = 2000;
    const auto mixed = [](float hiss) {
        Samples detected;
        for (std::size_t i = 0; i < 4000; ++i) {
            const float hum = std::sin(0.005F * static_cast<float>(i));
            detected.push_back(hum + (i % 2 == 0 ? hiss : -hiss));
        }
        detected[peakAt] = 5.0F;
        return detected;
    };
    const auto isBurst = [&mixed](float hiss) {
        KOVPluseDetection detector(96000, segment, 1);
        feed(detector, {mixed(hiss)}, 0);
        return getPulse(detector, 1, segment).found;
    };
    const auto lowShare = [&mixed](float hiss) {
        const Samples detected = mixed(hiss);
        const auto first = detected.begin() + (peakAt - 750);
        const Samples cut(first, first + segment);
        return pulseoracle::noiseFloor(cut) / pulseoracle::meanSquare(cut);
    };
    float hum = 0.0F;
    float burst = 3.0F;
    ASSERT_FALSE(isBurst(hum));
    ASSERT_TRUE(isBurst(burst));

    for (int step = 0; step < 16; ++step) {
        const float middle = (hum + burst) / 2.0F;
        (isBurst(middle) ? burst : hum) = middle;
    }

    EXPECT_NEAR(lowShare(hum), 0.2F, 1e-4F);
    EXPECT_NEAR(lowShare(burst), 0.2F, 1e-4F);
}

TEST(KOVPluseDetection, KeepsTheNumberOfThePulseChannel)
{
    KOVPluseDetection detector(96000, length, 2);
    EXPECT_EQ(detector.pulseChannel(), 207);

    detector.setPulseChannel(-3);

    EXPECT_EQ(detector.pulseChannel(), -3);
}

// A sample that stands alone: start and end of its burst are the sample itself.
TEST(KOVPluseDetectionBounds, EndWithSegmentsOfASingleSample)
{
    KOVPluseDetection detector(96000, 1, 2);
    Samples detected(2000, 0.0F);
    detected[1000] = 1.0F;
    detected[1500] = -0.9F;
    feed(detector, {detected, counting(0, 2000)}, 0);

    const Pulse pulse = getPulse(detector, 2, 1);

    EXPECT_EQ(pulse.count, 2);
    EXPECT_EQ(pulse.segments[1], counting(1000, 1));
}

TEST(KOVPluseDetectionBounds, EndWithSegmentsOfNoSample)
{
    for (const int none : {0, -5}) {
        KOVPluseDetection detector(96000, none, 2);
        feed(detector, withBursts(2000, {1000}), 0);

        EXPECT_EQ(getPulse(detector, 2, 0).count, 0);
    }
}

TEST(KOVPluseDetectionBounds, GiveAllThereIsWhenLessThanASegmentIsBuffered)
{
    KOVPluseDetection detector(96000, 500, 2);
    feed(detector, withBursts(120, {60}), 0);

    const Pulse pulse = getPulse(detector, 2, 500);

    EXPECT_EQ(pulse.count, 1);
    Samples expected = counting(0, 120);
    expected.resize(500, 0.0F);
    EXPECT_EQ(pulse.segments[1], expected);
}

class LongSegments : public ::testing::TestWithParam<int>
{
protected:
    // Enough to flush the buffer, and 12600 samples after that.
    void feedAll()
    {
        for (int block = 0; block < 4; ++block) {
            feed(detector, withBursts(12000, {6000}, block * 12000), 0);
            feed(detector, withBursts(300, {6}), 0);
        }
    }

    KOVPluseDetection detector{96000, GetParam(), 2};
};

// What a flush leaves exceeds the capacity at once, so that every block flushes and nothing is ever searched.
class SegmentsAroundTheCapacity : public LongSegments
{
};

TEST_P(SegmentsAroundTheCapacity, LeaveNothingToSearch)
{
    feedAll();

    EXPECT_EQ(getPulse(detector, 2, static_cast<std::size_t>(GetParam())).count, 0);
}

INSTANTIATE_TEST_SUITE_P(Lengths, SegmentsAroundTheCapacity, ::testing::Values(32767, 32768, 36000),
                         [](const auto& samples) { return std::to_string(samples.param) + "Samples"; });

// They are never complete; what lies behind the buffered samples is older ones, then zeros.
class SegmentsAroundTheBuffer : public LongSegments
{
};

TEST_P(SegmentsAroundTheBuffer, AreFilledUpWithWhatTheBufferHoldsAndZeros)
{
    feedAll();

    const Pulse pulse = getPulse(detector, 2, static_cast<std::size_t>(GetParam()));

    EXPECT_EQ(pulse.count, 1) << "half a segment around the first burst holds all others";
    const Samples& segment = pulse.segments[1];
    EXPECT_EQ(segment[299], 299.0F);
    EXPECT_EQ(segment[300], 36000.0F);
    EXPECT_EQ(segment[20000], 12000.0F + 7700.0F) << "of the second block, behind the first of 12300 samples";
    for (std::size_t i = 36600; i < segment.size(); ++i) {
        ASSERT_EQ(segment[i], 0.0F) << "sample " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, SegmentsAroundTheBuffer, ::testing::Values(36862, 36863, 36864, 200000),
                         [](const auto& samples) { return std::to_string(samples.param) + "Samples"; });

TEST(KOVPluseDetectionBounds, TakeADetectionChannelThatDoesNotExistAsSilent)
{
    for (const int channel : {-1, 2, std::numeric_limits<int>::max()}) {
        KOVPluseDetection detector(96000, length, 2);
        feed(detector, withBursts(2000, {1000}), 0);
        detector.FlushSignal();
        feed(detector, withBursts(2000, {1000}), channel);

        EXPECT_EQ(getPulse(detector, 2, length).count, 0) << "channel " << channel;
    }
}

TEST(KOVPluseDetectionBounds, AllowNoChannels)
{
    for (const int none : {0, -208}) {
        KOVPluseDetection detector(96000, length, none);
        float* nothing = nullptr;

        detector.FeedSignal(&nothing, 2000, 0);
        int count = -1;

        EXPECT_FALSE(detector.GetPulse(&nothing, count));
        EXPECT_EQ(count, 0);
    }
}

TEST(KOVPluseDetectionBounds, SurviveSamplesThatAreNoNumbers)
{
    KOVPluseDetection detector(96000, length, 2);
    std::vector<Samples> channels = withBursts(2000, {1000});
    channels[0][300] = std::numeric_limits<float>::quiet_NaN();
    channels[0][1500] = std::numeric_limits<float>::infinity();
    feed(detector, channels, 0);
    EXPECT_GE(getPulse(detector, 2, length).count, 0);

    feed(detector, withBursts(2000, {1000}), 0);
    EXPECT_EQ(getPulse(detector, 2, length).segments[1], counting(925, length));
}

}  // namespace
