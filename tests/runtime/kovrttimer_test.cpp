#include <KOVDoaHandle/runtime/kovrttimer.h>

#include <gtest/gtest.h>

#include <sys/time.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

// Allowance for a busy machine, ms. Small against the intervals below, so no wrong term can hide in it.
constexpr float busyMs = 150.0F;

float millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<float, std::milli>(Clock::now() - start).count();
}

void waitFor(std::chrono::milliseconds time)
{
    const auto end = Clock::now() + time;
    std::this_thread::sleep_until(end);
}

timespec added(timespec t, unsigned long ns)
{
    KOVRtTimer(1000).add_timespec(&t, ns);
    return t;
}

TEST(KOVRtTimer, ReadsZeroRightAfterAReset)
{
    KOVRtTimer timer(1'000'000);

    timer.reset();

    const float elapsed = timer.timeMs();
    EXPECT_GE(elapsed, 0.0F);
    EXPECT_LT(elapsed, busyMs);
}

TEST(KOVRtTimer, MeasuresTheMillisecondsSinceTheReset)
{
    KOVRtTimer timer(1'000'000);
    const auto start = Clock::now();
    timer.reset();

    waitFor(std::chrono::milliseconds(250));

    const float measured = timer.timeMs();
    const float elapsed = millisecondsSince(start);
    EXPECT_GE(measured, 249.5F);
    EXPECT_LE(measured, elapsed + 0.5F);
}

TEST(KOVRtTimer, KeepsTheFractionsOfAMillisecond)
{
    KOVRtTimer timer(1'000'000);
    bool sawAFraction = false;

    for (int i = 0; i < 50 && !sawAFraction; ++i) {
        const float elapsed = timer.timeMs();
        sawAFraction = elapsed != static_cast<float>(static_cast<int>(elapsed));
    }

    EXPECT_TRUE(sawAFraction);
}

TEST(KOVRtTimer, LeavesTheIntervalsPartBelowAMillisecondOutOfTheStopwatch)
{
    KOVRtTimer timer(1'000'900);

    const float elapsed = timer.timeMs();

    EXPECT_GE(elapsed, -0.91F);
    EXPECT_LT(elapsed, -0.9F + busyMs);
}

TEST(KOVRtTimer, StartsItsFirstPeriodWhenItIsMade)
{
    KOVRtTimer timer(300'000);
    const auto start = Clock::now();

    EXPECT_TRUE(timer.sleepToNextTime());

    EXPECT_GE(millisecondsSince(start), 250.0F);
}

TEST(KOVRtTimer, AdvancesTheDeadlineByTheIntervalHoweverLongTheLoopBodyTakes)
{
    KOVRtTimer timer(200'000);
    const auto start = Clock::now();

    ASSERT_TRUE(timer.sleepToNextTime());
    waitFor(std::chrono::milliseconds(50));
    ASSERT_TRUE(timer.sleepToNextTime());

    // Two periods from the start; with the body's time on top it would be 450 ms at least.
    const float elapsed = millisecondsSince(start);
    EXPECT_GE(elapsed, 399.0F);
    EXPECT_LT(elapsed, 440.0F + busyMs);
}

TEST(KOVRtTimer, DropsMissedPeriodsWithoutSleeping)
{
    KOVRtTimer timer(1000);
    waitFor(std::chrono::milliseconds(5));
    timer.setIntervalUs(4'000'000);
    const auto start = Clock::now();

    EXPECT_FALSE(timer.sleepToNextTime());

    EXPECT_LT(millisecondsSince(start), 2000.0F);
}

TEST(KOVRtTimer, StartsAPeriodAtTheMomentItFindsItselfLate)
{
    KOVRtTimer timer(1000);
    waitFor(std::chrono::milliseconds(5));
    timer.setIntervalUs(1'000'000);

    ASSERT_FALSE(timer.sleepToNextTime());

    const float elapsed = timer.timeMs();
    EXPECT_GE(elapsed, 0.0F);
    EXPECT_LT(elapsed, busyMs);
}

TEST(KOVRtTimer, KeepsTheDeadlineWhenTheIntervalChanges)
{
    KOVRtTimer timer(1'000'000);

    timer.setIntervalUs(500'000);

    EXPECT_EQ(timer.intervalUs(), 500'000UL);
    // The deadline is still a second away, while the stopwatch counts back from it by the new half second.
    EXPECT_NEAR(timer.timeMs(), -500.0F, busyMs);
}

TEST(KOVRtTimer, WrapsIntervalsBeyondThirtyTwoBitsOfNanoseconds)
{
    KOVRtTimer timer(4'294'968);  // 704 ns beyond

    EXPECT_NEAR(timer.timeMs(), 4294.0F, busyMs);
}

TEST(KOVRtTimer, DoesNotResumeASleepThatASignalInterrupts)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    struct sigaction before = {};
    ASSERT_EQ(sigaction(SIGALRM, &action, &before), 0);
    KOVRtTimer timer(4'000'000);
    const auto start = Clock::now();
    const itimerval alarm = {{0, 20'000}, {0, 20'000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &alarm, nullptr), 0);

    EXPECT_TRUE(timer.sleepToNextTime());

    const float elapsed = millisecondsSince(start);
    const itimerval off = {};
    setitimer(ITIMER_REAL, &off, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    EXPECT_LT(elapsed, 3000.0F);
}

TEST(KOVRtTimer, LeavesASumOfExactlyOneSecondOfNanosecondsUnnormalised)
{
    const timespec sum = added({1, 500'000'000}, 500'000'000);

    EXPECT_EQ(sum.tv_sec, 1);
    EXPECT_EQ(sum.tv_nsec, 1'000'000'000);
}

TEST(KOVRtTimer, NormalisesASumAboveOneSecondOfNanoseconds)
{
    const timespec sum = added({1, 500'000'000}, 600'000'000);

    EXPECT_EQ(sum.tv_sec, 2);
    EXPECT_EQ(sum.tv_nsec, 100'000'000);
}

TEST(KOVRtTimer, AddsWholeSecondsOfNanoseconds)
{
    const timespec sum = added({1, 999'999'999}, 3'000'000'002);

    EXPECT_EQ(sum.tv_sec, 5);
    EXPECT_EQ(sum.tv_nsec, 1);
}

TEST(TimespecOperators, CompareSecondsFirstThenNanoseconds)
{
    const timespec early = {1, 900'000'000};
    const timespec late = {2, 100'000'000};
    const timespec later = {2, 100'000'001};

    EXPECT_TRUE(early < late);
    EXPECT_TRUE(late > early);
    EXPECT_TRUE(late < later);
    EXPECT_TRUE(later > late);
    EXPECT_FALSE(late < early);
    EXPECT_FALSE(late < late);
    EXPECT_FALSE(late > late);
}

TEST(TimespecOperators, AreEqualOnlyWhenBothPartsAre)
{
    EXPECT_TRUE((timespec{1, 5} == timespec{1, 5}));
    EXPECT_FALSE((timespec{1, 5} == timespec{2, 5}));
    EXPECT_FALSE((timespec{1, 5} == timespec{1, 6}));
    EXPECT_FALSE((timespec{1, 1'000'000'000} == timespec{2, 0}));
}

TEST(TimespecOperators, SubtractToMillisecondsWithFractions)
{
    EXPECT_EQ((timespec{2, 0} - timespec{1, 500'000'000}), 500.0F);
    EXPECT_EQ((timespec{1, 500'000'000} - timespec{2, 0}), -500.0F);
    EXPECT_EQ((timespec{1, 250'000} - timespec{1, 0}), 0.25F);
    EXPECT_EQ((timespec{1, 1'000'000'000} - timespec{1, 0}), 1000.0F);
}

TEST(TimespecOperators, AddToMillisecondsRatherThanToATimespec)
{
    const float sum = timespec{1, 500'000'000} + timespec{2, 750'000};

    EXPECT_EQ(sum, 3500.75F);
}

}  // namespace
