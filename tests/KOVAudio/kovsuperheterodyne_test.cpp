// The listener's life, its settings and what it keeps pending.
#include <KOVDoaHandle/KOVAudio/kovsuperheterodyne.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>

#include "plainlistening.h"
#include "tests/support/bits.h"

using namespace listening;
using testsupport::sameBits;

namespace {

struct Reading
{
    const short* sound;
    int count;
};

Reading readAll(KOVSuperHeterodyne& monitor)
{
    int count = -2;
    const short* sound = monitor.readAll(count);
    return {sound, count};
}

// An initialised monitor that has not been started.
class Listener : public ::testing::Test
{
protected:
    Listener() { monitor.init(); }

    void feedSamples(int n)
    {
        Samples samples = noise(static_cast<std::size_t>(n), 0.1F, 7);
        feed(monitor, samples);
    }

    // Of any length, in one call.
    void feedAtOnce(Samples samples) { monitor.feedSignal(samples.data(), static_cast<int>(samples.size())); }

    KOVSuperHeterodyne monitor;
};

TEST(ListenerBeforeInit, HasItsDefaults)
{
    KOVSuperHeterodyne monitor;

    EXPECT_FALSE(monitor.isStart());
    EXPECT_EQ(monitor.baseFrequency(), 38600.0F);
    EXPECT_EQ(monitor.getVolume(), 0.0F);
    EXPECT_EQ(monitor.channel(), 127);
}

TEST(ListenerBeforeInit, TakesNothingAndGivesNothing)
{
    KOVSuperHeterodyne monitor;
    Samples samples(100, 0.5F);

    monitor.feedSignal(samples.data(), 100);
    const Reading stopped = readAll(monitor);
    monitor.start();
    monitor.feedSignal(samples.data(), 100);
    const Reading started = readAll(monitor);
    monitor.setBaseFrequency(30000.0F);
    monitor.flushBuffer();
    monitor.stop();

    EXPECT_EQ(stopped.count, -1);
    EXPECT_EQ(stopped.sound, nullptr);
    EXPECT_EQ(started.count, 0);
    EXPECT_EQ(monitor.baseFrequency(), 30000.0F);
}

TEST_F(Listener, BeginsAfreshAtASecondInit)
{
    monitor.setVolume(6.0F);
    monitor.start();
    feedSamples(5000);
    readAll(monitor);
    feedSamples(1000);
    const Samples signal = noise(3000, 0.5F, 8);

    monitor.init();
    const int pending = readAll(monitor).count;
    feed(monitor, signal);
    const Sound found = readFrom(monitor);

    EXPECT_EQ(pending, 0);
    EXPECT_TRUE(monitor.isStart());
    EXPECT_EQ(PlainChain(38600.0F, 6.0F).read(signal), found);
}

TEST_F(Listener, GivesNullAndMinusOneWhenStoppedWithNothingPending)
{
    const Reading reading = readAll(monitor);

    EXPECT_EQ(reading.count, -1);
    EXPECT_EQ(reading.sound, nullptr);
}

TEST_F(Listener, GivesNoSamplesWhenStartedWithNothingPending)
{
    monitor.start();

    const Reading reading = readAll(monitor);

    EXPECT_EQ(reading.count, 0);
    EXPECT_NE(reading.sound, nullptr);
}

TEST_F(Listener, ProcessesWhatIsPendingWhenStopped)
{
    const Samples signal = noise(1000, 0.5F, 9);

    feed(monitor, signal);
    const Sound found = readFrom(monitor);

    EXPECT_EQ(PlainChain(38600.0F).read(signal), found);
    EXPECT_EQ(readAll(monitor).count, -1);
}

TEST_F(Listener, StartsWithClearedFiltersAndPhaseAndNothingPending)
{
    const Samples signal = noise(3000, 0.5F, 10);
    feedSamples(777);
    readAll(monitor);
    feedSamples(500);

    monitor.start();
    const int pending = readAll(monitor).count;
    feed(monitor, signal);

    EXPECT_TRUE(monitor.isStart());
    EXPECT_EQ(pending, 0);
    EXPECT_EQ(PlainChain(38600.0F).read(signal), readFrom(monitor));
}

TEST_F(Listener, KeepsWhatIsPendingWhenItStops)
{
    monitor.start();
    feedSamples(600);

    monitor.stop();

    EXPECT_FALSE(monitor.isStart());
    EXPECT_EQ(readAll(monitor).count, 300);
    EXPECT_EQ(readAll(monitor).count, -1);
}

TEST_F(Listener, DropsWhatIsPendingWhenFlushed)
{
    monitor.start();
    feedSamples(600);

    monitor.flushBuffer();

    EXPECT_EQ(readAll(monitor).count, 0);
}

class ListenerBacklog : public Listener, public ::testing::WithParamInterface<bool>
{
protected:
    ListenerBacklog()
    {
        if (GetParam()) {
            monitor.start();
        }
    }
};

TEST_P(ListenerBacklog, TakesOneMoreBlockAt101376)
{
    feedSamples(mostKept);

    feedSamples(1024);

    EXPECT_EQ(readAll(monitor).count, bufferSize / 2);
}

TEST_P(ListenerBacklog, IsDroppedByAFeedAbove101376AndTheFeedKept)
{
    const Samples signal = noise(1000, 0.5F, 13);
    feedSamples(mostKept);
    feedSamples(1);

    feed(monitor, signal);

    EXPECT_EQ(PlainChain(38600.0F).read(signal), readFrom(monitor));
}

TEST_P(ListenerBacklog, KeepsTheBeginningOfAFeedThatFindsNoRoom)
{
    const Samples signal = noise(150'000, 0.5F, 14);

    feedAtOnce(signal);
    const Sound found = readFrom(monitor);

    EXPECT_EQ(PlainChain(38600.0F).read(Samples(signal.begin(), signal.begin() + bufferSize)), found);
}

TEST_P(ListenerBacklog, IsFilledUpByAFeedThatIsLargerThanTheRoomLeft)
{
    feedSamples(100'000);

    feedAtOnce(Samples(3000, 0.25F));

    EXPECT_EQ(readAll(monitor).count, bufferSize / 2);
}

TEST_P(ListenerBacklog, IsNotShortenedByANegativeFeed)
{
    feedSamples(2000);

    monitor.feedSignal(static_cast<float*>(nullptr), -1000);
    monitor.feedSignal(static_cast<short*>(nullptr), std::numeric_limits<int>::min());
    monitor.feedSignal(static_cast<float*>(nullptr), -1, 2.0F);

    EXPECT_EQ(readAll(monitor).count, 1000);
}

TEST_P(ListenerBacklog, IsDroppedByAnEmptyFeedOnlyWhenStarted)
{
    const bool started = GetParam();
    feedSamples(mostKept + 2);

    monitor.feedSignal(static_cast<short*>(nullptr), 0);

    EXPECT_EQ(readAll(monitor).count, started ? 0 : (mostKept + 2) / 2);
}

TEST_P(ListenerBacklog, OutlivesAnEmptyFeedAt101376)
{
    feedSamples(mostKept);

    monitor.feedSignal(static_cast<short*>(nullptr), 0);

    EXPECT_EQ(readAll(monitor).count, mostKept / 2);
}

INSTANTIATE_TEST_SUITE_P(All, ListenerBacklog, ::testing::Bool(),
                         [](const auto& test) { return test.param ? "Started" : "Stopped"; });

struct BaseFrequency
{
    float asked;
    float kept;
};

class ListenerBase : public Listener, public ::testing::WithParamInterface<BaseFrequency>
{
};

TEST_P(ListenerBase, IsRoundedToHundreds)
{
    monitor.setBaseFrequency(GetParam().asked);

    EXPECT_EQ(monitor.baseFrequency(), GetParam().kept);
}

INSTANTIATE_TEST_SUITE_P(All, ListenerBase,
                         ::testing::Values(BaseFrequency{38649.0F, 38600.0F},
                                           BaseFrequency{38650.0F, 38700.0F},
                                           BaseFrequency{20000.0F, 20000.0F}, BaseFrequency{49.0F, 0.0F},
                                           BaseFrequency{50.0F, 100.0F}, BaseFrequency{-50.0F, -100.0F}));

TEST_F(Listener, KeepsPhaseAndRumbleFilterWhenItsBaseChangesWhileStopped)
{
    const Samples before = noise(3001, 0.5F, 15);
    const Samples after = noise(3000, 0.5F, 16);
    PlainChain plain(38600.0F);
    plain.read(before);
    plain.retune(25000.0F);

    feed(monitor, before);
    readAll(monitor);
    feedSamples(400);
    monitor.setBaseFrequency(25000.0F);
    const int pending = readAll(monitor).count;
    feed(monitor, after);
    const Sound found = readFrom(monitor);

    EXPECT_EQ(pending, -1);
    EXPECT_FALSE(monitor.isStart());
    EXPECT_EQ(plain.read(after), found);
    EXPECT_NE(PlainChain(25000.0F).read(after), found);
}

TEST_F(Listener, BeginsAnewWhenItsBaseChangesWhileStarted)
{
    const Samples signal = noise(3000, 0.5F, 17);
    monitor.start();
    feedSamples(3001);
    readAll(monitor);
    feedSamples(400);

    const auto begin = std::chrono::steady_clock::now();
    monitor.setBaseFrequency(25000.0F);
    const auto taken = std::chrono::steady_clock::now() - begin;
    const int pending = readAll(monitor).count;
    feed(monitor, signal);

    EXPECT_GE(taken, std::chrono::milliseconds(100));
    EXPECT_TRUE(monitor.isStart());
    EXPECT_EQ(pending, 0);
    EXPECT_EQ(PlainChain(25000.0F).read(signal), readFrom(monitor));
}

TEST_F(Listener, SurvivesABaseThatIsNoNumber)
{
    monitor.setBaseFrequency(std::numeric_limits<float>::quiet_NaN());
    monitor.start();
    feedSamples(1000);
    readAll(monitor);
    const Samples signal = noise(1000, 0.5F, 18);

    monitor.stop();
    monitor.setBaseFrequency(38600.0F);
    monitor.start();
    feed(monitor, signal);

    EXPECT_EQ(PlainChain(38600.0F).read(signal), readFrom(monitor));
}

TEST_F(Listener, GivesTheVolumeBackInDecibels)
{
    for (const float decibels : {6.0F, 0.0F, -20.0F, 40.0F}) {
        monitor.setVolume(decibels);
        EXPECT_NEAR(monitor.getVolume(), decibels, 1e-5F);
    }
}

TEST_F(Listener, CountsDecibelsFromAMillionth)
{
    EXPECT_EQ(monitor.getDecibel(1.0F), 120.0F);
    EXPECT_EQ(monitor.getDecibel(0.0F), -std::numeric_limits<float>::infinity());
    for (const float x : {0.001F, 0.3F, 1e-6F, 123.4F}) {
        const float logarithm = std::log10(x);
        EXPECT_TRUE(sameBits(static_cast<float>(20.0 * double{logarithm} + 120.0), monitor.getDecibel(x)));
    }
}

TEST_F(Listener, CalculatesTheStandardDeviationInSinglePrecision)
{
    for (const std::size_t n : {std::size_t{1}, std::size_t{2}, std::size_t{1023}, std::size_t{20'000}}) {
        Samples x = noise(n, 0.7F, 19);
        for (float& value : x) {
            value += 0.3F;
        }
        EXPECT_TRUE(sameBits(plainDeviation(x), monitor.rmsCalculate(x.data(), static_cast<int>(n)))) << n;
    }
    Samples plusMinusOne{3.0F, 5.0F, 3.0F, 5.0F};
    EXPECT_EQ(monitor.rmsCalculate(plusMinusOne.data(), 4), 1.0F);
    EXPECT_TRUE(std::isnan(monitor.rmsCalculate(nullptr, 0)));
}

TEST_F(Listener, OnlyKeepsTheChannel)
{
    const Samples signal = noise(1000, 0.5F, 20);

    monitor.setChannel(-5);
    feed(monitor, signal);

    EXPECT_EQ(monitor.channel(), -5);
    EXPECT_EQ(PlainChain(38600.0F).read(signal), readFrom(monitor));
}

}  // namespace
