#include <KOVDoaHandle/imaging/kovtargettrack.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <ostream>
#include <vector>

namespace {

using Frame = std::vector<fpoint2d>;

fpoint2d peak(int row, int col, float value = 1.0F)
{
    fpoint2d point{};
    point.value = value;
    point.row = row;
    point.col = col;
    return point;
}

TargetPoint withId(int id)
{
    TargetPoint point;
    point.id = id;
    return point;
}

void feed(KOVTargetTrack& tracker, const Frame& frame, int times)
{
    for (int i = 0; i < times; ++i) {
        tracker.FeedData(frame);
    }
}

// Frames after which a steady peak is at full life.
constexpr int framesToFullLife = 41;

// ---- Births ----

TEST(KOVTargetTrack, HasNoTracksAfterAnEmptyFirstFrame)
{
    KOVTargetTrack tracker;

    tracker.FeedData({});

    EXPECT_TRUE(tracker.getTargetPoints().empty());
    EXPECT_EQ(tracker.createId({}), 0);
}

TEST(KOVTargetTrack, MakesTwoTracksOfTwoPeaksTenCellsApartAndReportsNeitherYet)
{
    KOVTargetTrack tracker;

    tracker.FeedData({peak(10, 10), peak(10, 20)});

    EXPECT_TRUE(tracker.getTargetPoints().empty());
    EXPECT_EQ(tracker.createId({}), 2);
    feed(tracker, {peak(10, 10), peak(10, 20)}, 16);
    const auto tracks = tracker.getTargetPoints();
    ASSERT_EQ(tracks.size(), 2U);
    EXPECT_EQ(tracks[0].id, 0);
    EXPECT_EQ(tracks[0].col, 10);
    EXPECT_EQ(tracks[1].id, 1);
    EXPECT_EQ(tracks[1].col, 20);
}

TEST(KOVTargetTrack, MakesATrackOfEachOfTwoNewPeaksInTheSameCell)
{
    KOVTargetTrack tracker;

    tracker.FeedData({peak(10, 10), peak(10, 10)});

    EXPECT_EQ(tracker.createId({}), 2);
}

TEST(KOVTargetTrack, FirstReportsASteadyPeakAfterSixteenFurtherMatches)
{
    KOVTargetTrack tracker;
    const Frame frame{peak(7, 9, 0.25F)};

    tracker.FeedData(frame);
    feed(tracker, frame, 15);
    EXPECT_TRUE(tracker.getTargetPoints().empty());
    tracker.FeedData(frame);

    const auto tracks = tracker.getTargetPoints();
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0].life, 26);
    EXPECT_TRUE(tracks[0].matched);
    EXPECT_EQ(tracks[0].value, 0.25F);
    EXPECT_EQ(tracks[0].row, 7);
    EXPECT_EQ(tracks[0].col, 9);
}

// ---- Matching ----

struct Offset
{
    int rows;
    int cols;
    bool matches;
};

void PrintTo(const Offset& offset, std::ostream* stream)
{
    *stream << offset.rows << " rows and " << offset.cols << " columns away";
}

class MatchingRadius : public ::testing::TestWithParam<Offset>
{
};

TEST_P(MatchingRadius, EndsBelowFiveCells)
{
    const Offset offset = GetParam();
    KOVTargetTrack tracker;
    tracker.FeedData({peak(100, 100)});

    tracker.FeedData({peak(100 + offset.rows, 100 + offset.cols)});

    EXPECT_EQ(tracker.createId({}), offset.matches ? 1 : 2);
}

INSTANTIATE_TEST_SUITE_P(KOVTargetTrack, MatchingRadius,
                         ::testing::Values(Offset{5, 0, false}, Offset{0, -5, false}, Offset{3, 4, false},
                                           Offset{-4, 3, false}, Offset{4, 2, true}, Offset{-2, -4, true},
                                           Offset{4, 0, true}, Offset{3, 3, true}, Offset{4, 4, false}));

TEST(KOVTargetTrack, FollowsAPeakThatMovesLessThanFiveCellsAFrame)
{
    KOVTargetTrack tracker;

    for (int frame = 0; frame < 30; ++frame) {
        tracker.FeedData({peak(4 * frame, 200 - 2 * frame, static_cast<float>(frame))});
    }

    const auto tracks = tracker.getTargetPoints();
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0].id, 0);
    EXPECT_EQ(tracks[0].row, 116);
    EXPECT_EQ(tracks[0].col, 142);
    EXPECT_EQ(tracks[0].value, 29.0F);
}

TEST(KOVTargetTrack, GivesTwoPeaksNearOneTrackBothToItAndKeepsTheSecondPosition)
{
    KOVTargetTrack tracker;
    feed(tracker, {peak(10, 10)}, 17);

    tracker.FeedData({peak(11, 10, 2.0F), peak(12, 11, 3.0F)});

    const auto tracks = tracker.getTargetPoints();
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0].row, 12);
    EXPECT_EQ(tracks[0].col, 11);
    EXPECT_EQ(tracks[0].value, 3.0F);
    EXPECT_EQ(tracks[0].life, 28);  // once for each of them
    EXPECT_EQ(tracker.createId({}), 1);
}

TEST(KOVTargetTrack, PrefersTheLowestIdentityToTheNearestTrack)
{
    KOVTargetTrack tracker;
    feed(tracker, {peak(10, 10), peak(10, 18)}, 1);
    // The second comes nearer, but not within reach of the first.
    feed(tracker, {peak(10, 10), peak(10, 16)}, framesToFullLife);

    tracker.FeedData({peak(10, 14)});

    const auto tracks = tracker.getTargetPoints();
    ASSERT_EQ(tracks.size(), 2U);
    EXPECT_TRUE(tracks[0].matched);
    EXPECT_EQ(tracks[0].col, 14);
    EXPECT_FALSE(tracks[1].matched);
    EXPECT_EQ(tracks[1].col, 16);
}

TEST(KOVTargetTrack, MatchesWhereEarlierPointsOfTheSameFrameHaveMovedATrack)
{
    KOVTargetTrack tracker;
    tracker.FeedData({peak(10, 10)});

    // 8 columns from where the track was, 4 from where the first point puts it.
    tracker.FeedData({peak(10, 14), peak(10, 18)});

    EXPECT_EQ(tracker.createId({}), 1);
}

TEST(KOVTargetTrack, KeepsPeaksAtOppositeEndsOfTheNumberRangeApart)
{
    KOVTargetTrack tracker;

    tracker.FeedData({peak(INT_MIN, INT_MIN), peak(INT_MAX, INT_MAX)});
    tracker.FeedData({peak(INT_MAX, INT_MIN)});
    tracker.FeedData({peak(INT_MAX - 3, INT_MAX)});

    // The third is the only one that a track has taken over.
    EXPECT_EQ(tracker.createId({}), 3);
}

TEST(KOVTargetTrack, CarriesAnyValueOfAPeakThrough)
{
    KOVTargetTrack tracker;
    feed(tracker, {peak(1, 1, 5.0F)}, 20);

    tracker.FeedData({peak(1, 1, std::nanf(""))});

    const auto tracks = tracker.getTargetPoints();
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_TRUE(std::isnan(tracks[0].value));
}

// ---- Life and death ----

TEST(KOVTargetTrack, LetsLifeGrowToFiftyAndNoFurther)
{
    KOVTargetTrack tracker;

    feed(tracker, {peak(3, 3)}, framesToFullLife);
    ASSERT_EQ(tracker.getTargetPoints().size(), 1U);
    EXPECT_EQ(tracker.getTargetPoints()[0].life, 50);
    tracker.FeedData({peak(3, 3)});

    EXPECT_EQ(tracker.getTargetPoints()[0].life, 50);
}

TEST(KOVTargetTrack, KeepsReportingAFullTrackForTwentyFourFramesWithoutItsPeak)
{
    KOVTargetTrack tracker;
    feed(tracker, {peak(3, 3)}, framesToFullLife);

    feed(tracker, {}, 24);
    ASSERT_EQ(tracker.getTargetPoints().size(), 1U);
    EXPECT_EQ(tracker.getTargetPoints()[0].life, 26);
    EXPECT_FALSE(tracker.getTargetPoints()[0].matched);
    tracker.FeedData({});

    EXPECT_TRUE(tracker.getTargetPoints().empty());
}

TEST(KOVTargetTrack, DropsAFullTrackWithTheFiftiethEmptyFrameAndFreesItsIdentity)
{
    KOVTargetTrack tracker;
    feed(tracker, {peak(3, 3)}, framesToFullLife);

    feed(tracker, {}, 49);
    EXPECT_TRUE(tracker.getTargetPoints().empty());
    EXPECT_EQ(tracker.createId({}), 1);
    tracker.FeedData({});

    EXPECT_EQ(tracker.createId({}), 0);
}

TEST(KOVTargetTrack, RevivesATrackOfLifeOneThatIsSeenAgain)
{
    KOVTargetTrack tracker;
    feed(tracker, {peak(3, 3)}, framesToFullLife);
    feed(tracker, {}, 49);

    feed(tracker, {peak(3, 3)}, 25);

    const auto tracks = tracker.getTargetPoints();
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0].id, 0);
    EXPECT_EQ(tracks[0].life, 26);
}

TEST(KOVTargetTrack, DoesNotAgeATrackInTheFrameOfItsBirth)
{
    KOVTargetTrack tracker;
    tracker.FeedData({peak(3, 3)});

    feed(tracker, {}, 9);
    EXPECT_EQ(tracker.createId({}), 1);
    tracker.FeedData({});

    EXPECT_EQ(tracker.createId({}), 0);
}

TEST(KOVTargetTrack, GivesFreedIdentitiesToNewPeaksLowestFirst)
{
    KOVTargetTrack tracker;
    const Frame four{peak(0, 0), peak(0, 20), peak(0, 40), peak(0, 60)};
    feed(tracker, four, framesToFullLife);
    // 0 and 2 die out.
    feed(tracker, {four[1], four[3]}, 50);

    feed(tracker, {four[1], four[3], peak(50, 0), peak(50, 20), peak(50, 40)}, 17);

    const auto tracks = tracker.getTargetPoints();
    ASSERT_EQ(tracks.size(), 5U);
    for (int id = 0; id < 5; ++id) {
        EXPECT_EQ(tracks[static_cast<std::size_t>(id)].id, id);
    }
    EXPECT_EQ(tracks[0].row, 50);
    EXPECT_EQ(tracks[0].col, 0);
    EXPECT_EQ(tracks[2].row, 50);
    EXPECT_EQ(tracks[2].col, 20);
    EXPECT_EQ(tracks[4].col, 40);
}

// ---- Identities ----

TEST(KOVTargetTrack, CreatesTheLowestIdentityThatNeitherTracksNorPendingOnesHave)
{
    KOVTargetTrack tracker;
    tracker.FeedData({peak(0, 0), peak(0, 20)});

    EXPECT_EQ(tracker.createId({}), 2);
    EXPECT_EQ(tracker.createId({withId(2), withId(3)}), 4);
    EXPECT_EQ(tracker.createId({withId(3), withId(2), withId(5), withId(2)}), 4);
    EXPECT_EQ(tracker.createId({withId(-1), withId(INT_MIN), withId(INT_MAX)}), 2);
}

TEST(KOVTargetTrack, FindsAnIdentityInAList)
{
    KOVTargetTrack tracker;

    EXPECT_TRUE(tracker.containId({withId(4), withId(7)}, 7));
    EXPECT_FALSE(tracker.containId({withId(4), withId(7)}, 5));
}

TEST(KOVTargetTrack, FindsNoIdentityInAnEmptyList)
{
    KOVTargetTrack tracker;

    EXPECT_FALSE(tracker.containId({}, 0));
}

}  // namespace
