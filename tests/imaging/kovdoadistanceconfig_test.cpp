#include <KOVDoaHandle/imaging/kovdoadistanceconfig.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <thread>

namespace {

void feed(KOVDoaDistanceConfig& distance, float reading, int times)
{
    for (int i = 0; i < times; ++i) {
        distance.feedDis(reading);
    }
}

// Five readings on each side of the centre: a variance of the half width squared.
void feedAround(KOVDoaDistanceConfig& distance, float centre, float halfWidth)
{
    for (int i = 0; i < 10; ++i) {
        distance.feedDis(i % 2 == 0 ? centre + halfWidth : centre - halfWidth);
    }
}

TEST(KOVDoaDistanceConfig, StartsWithoutAResult)
{
    KOVDoaDistanceConfig distance;

    EXPECT_EQ(distance.getDistanceResult(), -1.0F);
    EXPECT_EQ(distance.getDistanceProcessStatus(), 0);
}

TEST(KOVDoaDistanceConfig, DecidesWithTheEleventhReading)
{
    KOVDoaDistanceConfig distance;

    feed(distance, 3.0F, 10);
    EXPECT_EQ(distance.getDistanceProcessStatus(), 0);
    EXPECT_EQ(distance.getDistanceResult(), -1.0F);
    distance.feedDis(3.0F);

    EXPECT_EQ(distance.getDistanceProcessStatus(), 2);
    EXPECT_EQ(distance.getDistanceResult(), 3.0F);
}

TEST(KOVDoaDistanceConfig, TruncatesToOneDecimal)
{
    KOVDoaDistanceConfig distance;

    feed(distance, 2.37F, 11);

    EXPECT_EQ(distance.getDistanceResult(), 2.3F);
}

class WhatIsNoReading : public ::testing::TestWithParam<float>
{
};

TEST_P(WhatIsNoReading, ChangesNothing)
{
    KOVDoaDistanceConfig distance;
    feed(distance, 3.0F, 10);

    feed(distance, GetParam(), 20);
    EXPECT_EQ(distance.getDistanceProcessStatus(), 0);
    distance.feedDis(3.0F);

    EXPECT_EQ(distance.getDistanceProcessStatus(), 2);
    EXPECT_EQ(distance.getDistanceResult(), 3.0F);
}

INSTANTIATE_TEST_SUITE_P(KOVDoaDistanceConfig, WhatIsNoReading,
                         ::testing::Values(0.0F, -0.0F, -1.0F, -INFINITY, NAN));

TEST(KOVDoaDistanceConfig, LeavesAnOutlierOutOfTheAverage)
{
    KOVDoaDistanceConfig distance;
    feed(distance, 3.05F, 10);

    // The mean is 3.13; the variance 0.0576.
    distance.feedDis(3.85F);

    EXPECT_EQ(distance.getDistanceProcessStatus(), 2);
    EXPECT_EQ(distance.getDistanceResult(), 3.0F);
}

TEST(KOVDoaDistanceConfig, UsesThePlainMeanWhenEveryReadingIsFarFromIt)
{
    KOVDoaDistanceConfig distance;
    distance.feedDis(5.0F);

    // Two clusters, 0.25 on either side of 5.25; variance 0.0625.
    feedAround(distance, 5.25F, 0.25F);

    EXPECT_EQ(distance.getDistanceProcessStatus(), 2);
    EXPECT_EQ(distance.getDistanceResult(), 5.2F);
}

TEST(KOVDoaDistanceConfig, KeepsAStableResultThroughAModerateSpread)
{
    KOVDoaDistanceConfig distance;
    feed(distance, 5.0F, 11);

    feedAround(distance, 5.0F, 0.387F);  // variance 0.15

    EXPECT_EQ(distance.getDistanceProcessStatus(), 2);
    EXPECT_EQ(distance.getDistanceResult(), 5.0F);
}

TEST(KOVDoaDistanceConfig, HidesTheResultWhileItMeasures)
{
    KOVDoaDistanceConfig distance;
    feed(distance, 5.0F, 11);

    feedAround(distance, 5.0F, 0.548F);  // variance 0.3

    EXPECT_EQ(distance.getDistanceProcessStatus(), 1);
    EXPECT_EQ(distance.getDistanceResult(), -1.0F);
}

// In real time, to see that the stopwatch is the right one; the table of states is tested with times of its own.
TEST(KOVDoaDistanceConfig, FallsBackToNoResultASecondAfterMeasuringBegan)
{
    using Clock = std::chrono::steady_clock;
    constexpr auto longestWait = std::chrono::seconds(30);
    KOVDoaDistanceConfig distance;
    feed(distance, 5.0F, 11);

    const auto start = Clock::now();
    feedAround(distance, 5.0F, 0.548F);
    ASSERT_EQ(distance.getDistanceProcessStatus(), 1);
    while (distance.getDistanceProcessStatus() == 1 && Clock::now() - start < longestWait) {
        // A high spread does not put the end off.
        distance.feedDis(8.0F);
        distance.feedDis(2.0F);
        std::this_thread::yield();
    }
    const std::chrono::duration<double> elapsed = Clock::now() - start;

    EXPECT_EQ(distance.getDistanceProcessStatus(), 0);
    EXPECT_GE(elapsed.count(), 1.0);
    // Generous: the machine may be busy with something else.
    EXPECT_LT(elapsed.count(), 10.0);
}

// The stopwatch is not that of the object's life.
TEST(KOVDoaDistanceConfig, CountsTheSecondFromWhereMeasuringBegan)
{
    using Clock = std::chrono::steady_clock;
    KOVDoaDistanceConfig distance;
    const auto made = Clock::now();
    while (Clock::now() - made < std::chrono::milliseconds(1100)) {
        distance.feedDis(5.0F);
        std::this_thread::yield();
    }
    ASSERT_EQ(distance.getDistanceProcessStatus(), 2);

    const auto lost = Clock::now();
    feedAround(distance, 5.0F, 0.548F);
    const int status = distance.getDistanceProcessStatus();

    if (Clock::now() - lost < std::chrono::seconds(1)) {
        EXPECT_EQ(status, 1);
    } else {
        GTEST_SKIP() << "the machine was busy with something else for a whole second";
    }
}

}  // namespace
