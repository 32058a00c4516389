// Following the phase, and where the pages may start.
#include <KOVDoaHandle/diagnostics/phasetracker_p.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

namespace {

using KOVPrivate::mains50;
using KOVPrivate::mains60;
using KOVPrivate::MainsGeometry;
using KOVPrivate::PhaseTracker;

// An envelope with the strongest bin of each of the first four cycles at the given positions.
std::vector<float> envelopeWith(const std::vector<int>& positions, const MainsGeometry& mains)
{
    std::vector<float> envelope(static_cast<std::size_t>(mains.bins()), 0.1F);
    for (std::size_t k = 0; k < positions.size(); ++k) {
        envelope[k * static_cast<std::size_t>(mains.cycle) + static_cast<std::size_t>(positions[k])] = 1.0F;
    }
    return envelope;
}

void follow(PhaseTracker& tracker, const std::vector<int>& positions, bool accepted = true,
            const MainsGeometry& mains = mains50)
{
    std::vector<float> envelope = envelopeWith(positions, mains);
    tracker.follow(envelope.data(), accepted, mains);
}

TEST(PhaseReference, IsTheLastOfFourPositionsThatLieTogether)
{
    PhaseTracker tracker;

    follow(tracker, {100, 40, 120, 60});

    EXPECT_EQ(tracker.reference(), 120.0F);
}

TEST(PhaseReference, IsThePositionNearestToTheFormerOneWhenTheyAreScattered)
{
    PhaseTracker tracker;
    follow(tracker, {130, 130, 130, 130});
    follow(tracker, {}, false);

    follow(tracker, {10, 200, 125, 91});

    EXPECT_EQ(tracker.reference(), 125.0F);
}

TEST(PhaseReference, TakesTheEarlierOfTwoPositionsEquallyNear)
{
    PhaseTracker tracker;
    follow(tracker, {130, 130, 130, 130});
    follow(tracker, {}, false);

    follow(tracker, {140, 120, 10, 200});

    EXPECT_EQ(tracker.reference(), 120.0F);
}

TEST(PhaseReference, TakesEightyBinsApartAsTogetherAtBothMains)
{
    for (const MainsGeometry* mains : {&mains50, &mains60}) {
        PhaseTracker together;
        PhaseTracker scattered;

        follow(together, {20, 100, 30, 40}, true, *mains);
        follow(scattered, {20, 101, 30, 40}, true, *mains);

        EXPECT_EQ(together.reference(), 100.0F);
        EXPECT_EQ(scattered.reference(), 20.0F) << "the nearest to 0, where every tracker starts";
    }
}

TEST(PhaseReference, LooksAtTheFirstFourCyclesOnly)
{
    PhaseTracker tracker;

    follow(tracker, {50, 50, 50, 50, 200, 200, 200, 200});

    EXPECT_EQ(tracker.reference(), 50.0F);
}

TEST(PhaseReference, TakesTheFirstOfEquallyStrongBins)
{
    PhaseTracker tracker;
    std::vector<float> flat(static_cast<std::size_t>(mains50.bins()), 0.5F);
    follow(tracker, {7, 7, 7, 7});
    follow(tracker, {}, false);

    tracker.follow(flat.data(), true, mains50);

    EXPECT_EQ(tracker.reference(), 0.0F);
}

TEST(PhaseReference, IsKeptForFourAcceptedPatternsAfterASearch)
{
    PhaseTracker tracker;
    follow(tracker, {50, 50, 50, 50});

    for (int i = 0; i < 4; ++i) {
        follow(tracker, {60, 60, 60, 60});
        EXPECT_EQ(tracker.reference(), 50.0F) << "pattern " << i;
    }
    follow(tracker, {60, 60, 60, 60});
    EXPECT_EQ(tracker.reference(), 60.0F);
}

TEST(PhaseReference, IsKeptByARejectedPatternAndSearchedByTheNextAcceptedOne)
{
    PhaseTracker tracker;
    follow(tracker, {50, 50, 50, 50});

    follow(tracker, {60, 60, 60, 60}, false);
    EXPECT_EQ(tracker.reference(), 50.0F);

    follow(tracker, {60, 60, 60, 60});
    EXPECT_EQ(tracker.reference(), 60.0F);
}

TEST(DisplayedPhase, ApproachesANearReferenceByWholeEighths)
{
    PhaseTracker tracker;

    follow(tracker, {79, 79, 79, 79});
    EXPECT_EQ(tracker.displayed(), 9.0F);  // 79 / 8

    follow(tracker, {79, 79, 79, 79});
    EXPECT_EQ(tracker.displayed(), 17.0F);  // + 70 / 8
}

TEST(DisplayedPhase, StopsLessThanEightBinsFromTheReference)
{
    PhaseTracker tracker;
    for (int i = 0; i < 100; ++i) {
        follow(tracker, {50, 50, 50, 50});
    }

    EXPECT_EQ(tracker.displayed(), 43.0F);
}

TEST(DisplayedPhase, StaysWhenTheReferenceIsFarAndTheAverageNear)
{
    PhaseTracker tracker;

    follow(tracker, {80, 80, 80, 80});

    EXPECT_EQ(tracker.displayed(), 0.0F);
}

// From 0 the average comes to 0.3 * 200 = 60 and then 102: more than 80 away, less than 160.
TEST(DisplayedPhase, JumpsHalfACycleWhenTheAverageHasGoneFar)
{
    PhaseTracker tracker;

    follow(tracker, {200, 200, 200, 200});
    EXPECT_EQ(tracker.displayed(), 0.0F);
    follow(tracker, {200, 200, 200, 200});
    EXPECT_EQ(tracker.displayed(), 0.0F);
    follow(tracker, {200, 200, 200, 200});

    EXPECT_EQ(tracker.displayed(), 120.0F + 80.0F * 0.25F);
}

TEST(DisplayedPhase, CountsSixtySixBinsAsFarAtSixtyHertz)
{
    PhaseTracker nearBy;
    PhaseTracker farAway;

    follow(nearBy, {65, 65, 65, 65}, true, mains60);
    follow(farAway, {66, 66, 66, 66}, true, mains60);

    EXPECT_EQ(nearBy.displayed(), 8.0F);
    EXPECT_EQ(farAway.displayed(), 0.0F);
}

// A whole cycle is reached with 60 Hz only, and only after a change of the mains: with one of them alone the displayed
// phase jumps before it is so far away. These references lead just beyond 133 bins; each is found and then kept by a
// rejected pattern.
TEST(DisplayedPhase, JumpsAWholeCycleWhenTheAverageIsFartherThanThat)
{
    const struct
    {
        int reference;
        const MainsGeometry& second;  // mains of the rejected pattern
    } steps[] = {{117, mains50}, {81, mains60}, {0, mains50}, {0, mains50}, {0, mains50}, {112, mains50}};
    PhaseTracker tracker;
    for (const auto& [at, second] : steps) {
        follow(tracker, {at, at, at, at});
        follow(tracker, {}, false, second);
    }
    follow(tracker, {239, 239, 239, 239});
    ASSERT_EQ(tracker.displayed(), -18.5625F);  // the average is at 114.53

    follow(tracker, {}, false, mains60);

    const float candidate = -18.5625F + 200.0F;
    EXPECT_EQ(tracker.displayed(), candidate + (239.0F - candidate) * 0.25F);
}

TEST(PageOffset, LiesThePhaseOffsetBeforeTheDisplayedPhase)
{
    PhaseTracker fifty;
    PhaseTracker sixty;

    EXPECT_EQ(fifty.pageOffset(mains50), 186);
    EXPECT_EQ(sixty.pageOffset(mains60), 155);

    for (int i = 0; i < 100; ++i) {
        follow(fifty, {70, 70, 70, 70});
        follow(sixty, {60, 60, 60, 60}, true, mains60);
    }
    ASSERT_EQ(fifty.displayed(), 63.0F);
    EXPECT_EQ(fifty.pageOffset(mains50), 9);
    ASSERT_EQ(sixty.displayed(), 53.0F);
    EXPECT_EQ(sixty.pageOffset(mains60), 8);
}

TEST(PageOffset, IsAWholeCycleAtThePhaseOffsetItself)
{
    PhaseTracker tracker;
    follow(tracker, {54, 54, 54, 54});
    while (tracker.displayed() < 54.0F) {
        const float before = tracker.displayed();
        const int ahead = static_cast<int>(before) + 8;
        const int next = std::min(ahead, 62);
        follow(tracker, {}, false);
        follow(tracker, {next, next, next, next});
        ASSERT_GT(tracker.displayed(), before);
    }
    ASSERT_EQ(tracker.displayed(), 54.0F);

    EXPECT_EQ(tracker.pageOffset(mains50), 240);
}

// Whatever the references and the mains do, the pages stay inside the envelope; and the worst that random
// references reach comes near the proven bounds.
TEST(PageOffset, KeepsThePagesInsideTheEnvelopeWhateverTheReferencesDo)
{
    std::mt19937 random(9);
    float lowest = 0.0F;
    float highest = 0.0F;
    for (int run = 0; run < 40; ++run) {
        PhaseTracker tracker;
        const bool switching = run % 2 == 1;
        int position = 0;
        for (int i = 0; i < 1500; ++i) {
            const MainsGeometry& mains = switching && random() % 8 == 0 ? mains60 : mains50;
            if (random() % 6 == 0) {
                const bool extreme = random() % 2 == 0;
                position = extreme ? (random() % 2 == 0 ? 0 : mains.cycle - 1)
                                   : static_cast<int>(random() % static_cast<unsigned>(mains.cycle));
            }
            position = std::min(position, mains.cycle - 1);
            follow(tracker, {}, false, mains);
            follow(tracker, {position, position, position, position}, true, mains);
            lowest = std::min(lowest, tracker.displayed());
            highest = std::max(highest, tracker.displayed());
            for (const MainsGeometry* drawn : {&mains50, &mains60}) {
                const int offset = tracker.pageOffset(*drawn);
                ASSERT_GE(offset, 0);
                ASSERT_LE(offset, drawn->cycle);
            }
        }
    }

    EXPECT_GE(lowest, -60.0F);
    EXPECT_LT(highest, 300.0F);
    EXPECT_GT(highest, 240.0F) << "the phase never went beyond a cycle: the test does not reach far enough";
}

TEST(PhaseTracker, StaysFiniteOnAnEnvelopeWithoutNumbers)
{
    PhaseTracker tracker;
    std::vector<float> envelope(static_cast<std::size_t>(mains50.bins()),
                                std::numeric_limits<float>::quiet_NaN());
    envelope[17] = std::numeric_limits<float>::infinity();

    for (int i = 0; i < 20; ++i) {
        tracker.follow(envelope.data(), true, mains50);
    }

    EXPECT_EQ(tracker.reference(), 0.0F);
    EXPECT_EQ(tracker.displayed(), 0.0F);
}

}  // namespace
