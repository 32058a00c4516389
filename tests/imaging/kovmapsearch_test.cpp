#include <KOVDoaHandle/imaging/kovmapsearch.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "tests/imaging/referencerenderer.h"
#include "tests/support/bits.h"
#include "tests/support/maps.h"

using namespace testsupport;

namespace {

// A bowl of negative levels with its top at (20, 20).
Map makeNegativeBowl()
{
    Map map = makeMap(41, 41);
    fill(*map, [](int row, int col) {
        return -1.0F - 0.01F * static_cast<float>((row - 20) * (row - 20) + (col - 20) * (col - 20));
    });
    return map;
}

Map makeRandomMap(int rows, int cols, unsigned seed, int levels)
{
    Map map = makeMap(rows, cols);
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> level(-levels, levels);
    fill(*map, [&](int, int) { return static_cast<float>(level(random)); });
    return map;
}

}  // namespace

TEST(FindMaxMin, FindsTheOneMaximumOfANegativeMap)
{
    const Map map = makeNegativeBowl();
    fpoint2d max, min;

    KOVPrivate::findMaxMin(map.get(), max, min);

    EXPECT_TRUE(samePoint({-1.0F, 20, 20}, max));
    EXPECT_TRUE(samePoint({map->data[0][0], 0, 0}, min));
}

TEST(FindMaxMin, KeepsTheFirstOfEqualMaximaInRowMajorOrder)
{
    const Map map = makeMap({{1, 1, 1, 1}, {1, 1, 5, 1}, {5, 1, 1, 1}, {1, 1, 1, 5}});
    fpoint2d max, min;

    KOVPrivate::findMaxMin(map.get(), max, min);

    EXPECT_TRUE(samePoint({5, 1, 2}, max));
}

TEST(FindMaxMin, ReportsTheFirstCellOfAFlatMap)
{
    const Map map = makeMap({{3, 3}, {3, 3}});
    fpoint2d max{9, 9, 9}, min{9, 9, 9};

    KOVPrivate::findMaxMin(map.get(), max, min);

    EXPECT_TRUE(samePoint({3, 0, 0}, max));
    EXPECT_TRUE(samePoint({3, 0, 0}, min));
}

TEST(FindMaxMin, PassesOverCellsThatAreNoNumbers)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Map map = makeMap({{1, nan}, {nan, 2}});
    fpoint2d max, min;

    KOVPrivate::findMaxMin(map.get(), max, min);

    EXPECT_TRUE(samePoint({2, 1, 1}, max));
    EXPECT_TRUE(samePoint({1, 0, 0}, min));
}

TEST(FindMaxMinWithRadius, SearchesJustTheCentreCellForRadiusZero)
{
    const Map map = makeNegativeBowl();
    fpoint2d max, min;

    KOVPrivate::findMaxMinWithRadius(map.get(), 0, max, min);

    // The centre is the seed already, and nothing beats it, so its position is not recorded.
    EXPECT_TRUE(samePoint({-1.0F, 0, 0}, max));
    EXPECT_TRUE(samePoint({-1.0F, 0, 0}, min));
}

TEST(FindMaxMinWithRadius, SeesNoCellBeyondTheRadius)
{
    const Map map =
        makeMap({{0, 0, 9, 0, 0}, {0, 1, 2, 3, 0}, {0, 4, 5, 6, 0}, {0, 7, 8, 1, 0}, {0, 0, 0, 0, 9}});
    fpoint2d max, min;

    KOVPrivate::findMaxMinWithRadius(map.get(), 1, max, min);

    EXPECT_TRUE(samePoint({8, 3, 2}, max));
    EXPECT_TRUE(samePoint({2, 1, 2}, min));
}

TEST(FindMaxMinWithRadius, CopesWithARadiusWhoseSquareLeavesThirtyTwoBits)
{
    const Map map = makeMap({{1, 2}, {3, 4}});
    fpoint2d max, min;

    KOVPrivate::findMaxMinWithRadius(map.get(), 2000000000, max, min);

    EXPECT_TRUE(samePoint({1, 0, 0}, min));
}

TEST(FindMaxMinWithOutEllipse, GivesTheCornerCellWhenTheEllipseCoversTheMap)
{
    const Map map = makeNegativeBowl();
    fpoint2d max, min;

    KOVPrivate::findMaxMinWithOutEllipse(map.get(), 100.0F, 100.0F, max, min);

    EXPECT_TRUE(samePoint({map->data[0][0], 0, 0}, max));
    EXPECT_TRUE(samePoint({map->data[0][0], 0, 0}, min));
}

TEST(FindMaxMinWithEllipse, GivesTheSeedBehindTheCentreWhenNoCellQualifies)
{
    const Map map = makeMap({{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}});
    fpoint2d max, min;

    // No cell centre lies within 0.1 cells of the middle of a map with even sides.
    KOVPrivate::findMaxMinWithEllipse(map.get(), 0.1F, 0.1F, max, min);

    EXPECT_TRUE(samePoint({11, 0, 0}, max));
    EXPECT_TRUE(samePoint({11, 0, 0}, min));
}

TEST(FindMaxMinWithEllipse, TakesTheFirstSemiAxisAlongTheRows)
{
    const Map map =
        makeMap({{0, 0, 9, 0, 0}, {0, 0, 0, 0, 0}, {8, 0, 1, 0, 7}, {0, 0, 0, 0, 0}, {0, 0, 6, 0, 0}});
    fpoint2d max, min;

    KOVPrivate::findMaxMinWithEllipse(map.get(), 2.0F, 1.0F, max, min);

    EXPECT_TRUE(samePoint({9, 0, 2}, max));
}

TEST(FindMaxMinWithEllipse, StaysInsideAMapOfASingleCell)
{
    const Map map = makeMap({{4}});
    fpoint2d max, min;

    KOVPrivate::findMaxMinWithEllipse(map.get(), 1.0F, 1.0F, max, min);

    EXPECT_TRUE(samePoint({4, 0, 0}, max));
}

struct SearchCase
{
    int rows, cols;
    unsigned seed;
};

class ExtremumSearch : public ::testing::TestWithParam<SearchCase>
{
};

TEST_P(ExtremumSearch, AgreesWithThePlainSearchInEveryForm)
{
    const auto [rows, cols, seed] = GetParam();
    const Map map = makeRandomMap(rows, cols, seed, 50);
    const reference::Grid grid(*map);
    fpoint2d max, min;
    const auto agree = [&](const reference::Extremes& expected) {
        return samePoint(expected.max, max) && samePoint(expected.min, min);
    };

    KOVPrivate::findMaxMin(map.get(), max, min);
    EXPECT_TRUE(agree(reference::findMaxMin(grid)));
    for (const int radius : {0, 1, 3, 1000}) {
        KOVPrivate::findMaxMinWithRadius(map.get(), radius, max, min);
        EXPECT_TRUE(agree(reference::findMaxMinWithRadius(grid, radius))) << radius;
        KOVPrivate::findMaxMinWithOutRadius(map.get(), radius, max, min);
        EXPECT_TRUE(agree(reference::findMaxMinWithOutRadius(grid, radius))) << radius;
    }
    for (const float a : {0.3F, 1.0F, 2.7F, 500.0F}) {
        for (const float b : {0.4F, 2.0F, 6.5F}) {
            KOVPrivate::findMaxMinWithEllipse(map.get(), a, b, max, min);
            EXPECT_TRUE(agree(reference::findMaxMinWithEllipse(grid, a, b))) << a << ' ' << b;
            KOVPrivate::findMaxMinWithOutEllipse(map.get(), a, b, max, min);
            EXPECT_TRUE(agree(reference::findMaxMinWithOutEllipse(grid, a, b))) << a << ' ' << b;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, ExtremumSearch,
                         ::testing::Values(SearchCase{4, 4, 1}, SearchCase{5, 4, 2}, SearchCase{7, 13, 3},
                                           SearchCase{48, 64, 4}, SearchCase{64, 48, 5},
                                           SearchCase{2, 31, 6}),
                         [](const auto& instance) {
                             return std::to_string(instance.param.rows) + "by" +
                                    std::to_string(instance.param.cols);
                         });

TEST(IsPeak, HoldsWhenNoneOfTheWindowIsGreater)
{
    float window[25] = {};
    window[12] = 3.0F;
    window[24] = 3.0F;

    EXPECT_TRUE(KOVPrivate::isPeak(window, 3.0F));
}

TEST(IsPeak, FailsWhenTheLastOfTheWindowIsGreater)
{
    float window[25] = {};
    window[24] = 3.5F;

    EXPECT_FALSE(KOVPrivate::isPeak(window, 3.0F));
}

TEST(FindPeaks, FindsTheOneMaximumOfANegativeMap)
{
    const Map map = makeNegativeBowl();
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 41, 41, -1.005F, peaks);

    ASSERT_EQ(peaks.size(), 1U);
    EXPECT_TRUE(samePoint({-1.0F, 20, 20}, peaks[0]));
}

TEST(FindPeaks, LeavesOutACellAtTheThresholdItself)
{
    const Map map = makeNegativeBowl();
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 41, 41, -1.0F, peaks);

    EXPECT_TRUE(peaks.empty());
}

TEST(FindPeaks, SkipsTwoColumnsBehindAPeak)
{
    Map map = makeMap(9, 12);
    map->data[4][4] = 5.0F;
    map->data[4][6] = 5.0F;
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 9, 12, 0.0F, peaks);

    ASSERT_EQ(peaks.size(), 1U);
    EXPECT_TRUE(samePoint({5.0F, 4, 4}, peaks[0]));
}

TEST(FindPeaks, FindsBothOfTwoEqualCellsThreeColumnsApart)
{
    Map map = makeMap(9, 12);
    map->data[4][4] = 5.0F;
    map->data[4][7] = 5.0F;
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 9, 12, 0.0F, peaks);

    EXPECT_EQ(peaks.size(), 2U);
}

TEST(FindPeaks, FindsEveryCellOfAPlateauThatStandsInDifferentRows)
{
    Map map = makeMap(12, 12);
    map->data[4][4] = 5.0F;
    map->data[5][4] = 5.0F;
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 12, 12, 0.0F, peaks);

    EXPECT_EQ(peaks.size(), 2U);
}

TEST(FindPeaks, FindsTheFirstAndTheFourthCellOfAFlatRun)
{
    Map map = makeMap(12, 12);
    for (int col = 3; col < 7; ++col) {
        map->data[5][col] = 5.0F;
    }
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 12, 12, 0.0F, peaks);

    ASSERT_EQ(peaks.size(), 2U);
    EXPECT_EQ(std::min(peaks[0].col, peaks[1].col), 3);
    EXPECT_EQ(std::max(peaks[0].col, peaks[1].col), 6);
}

TEST(FindPeaks, AppendsAndSortsWhatTheListHeldBefore)
{
    Map map = makeMap(9, 9);
    map->data[4][4] = 5.0F;
    std::vector<fpoint2d> peaks{{1.0F, 7, 7}, {9.0F, 8, 8}};

    KOVPrivate::findpeaks(map.get(), 9, 9, 0.0F, peaks);

    ASSERT_EQ(peaks.size(), 3U);
    EXPECT_TRUE(samePoint({9.0F, 8, 8}, peaks[0]));
    EXPECT_TRUE(samePoint({5.0F, 4, 4}, peaks[1]));
    EXPECT_TRUE(samePoint({1.0F, 7, 7}, peaks[2]));
}

TEST(FindPeaks, StillSortsTheListWhenTheMapHasNoInnerRows)
{
    const Map map = makeMap(2, 9);
    std::vector<fpoint2d> peaks{{1.0F, 0, 0}, {2.0F, 1, 1}};

    KOVPrivate::findpeaks(map.get(), 2, 9, 0.0F, peaks);

    EXPECT_TRUE(samePoint({2.0F, 1, 1}, peaks[0]));
}

TEST(FindPeaks, SortsAListThatHoldsNoNumbersWithoutHarm)
{
    const Map map = makeMap(4, 4);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<fpoint2d> peaks;
    for (int i = 0; i < 40; ++i) {
        peaks.push_back({i % 3 == 0 ? nan : static_cast<float>(i), i, i});
    }

    KOVPrivate::findpeaks(map.get(), 4, 4, 0.0F, peaks);

    EXPECT_EQ(peaks.front().value, 38.0F);
    EXPECT_TRUE(std::isnan(peaks.back().value));
}

// The edge rules, each with a greater neighbour that the search does or does not see.
struct NeighbourCase
{
    const char* name;
    int row, col;            // the candidate, level 1
    int otherRow, otherCol;  // a greater neighbour, level 2
    bool seen;
};

class FindPeaksNeighbour : public ::testing::TestWithParam<NeighbourCase>
{
};

TEST_P(FindPeaksNeighbour, IsSeenOrHiddenByTheEdgeRules)
{
    const NeighbourCase& test = GetParam();
    Map map = makeMap(10, 10);
    map->data[test.row][test.col] = 1.0F;
    map->data[test.otherRow][test.otherCol] = 2.0F;
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 10, 10, 0.5F, peaks);

    const bool found = std::any_of(peaks.begin(), peaks.end(), [&](const fpoint2d& peak) {
        return peak.row == test.row && peak.col == test.col;
    });
    EXPECT_EQ(found, !test.seen);
}

INSTANTIATE_TEST_SUITE_P(Edges, FindPeaksNeighbour,
                         ::testing::Values(NeighbourCase{"TwoRowsAbove", 5, 5, 3, 5, true},
                                           NeighbourCase{"TwoRowsBelow", 5, 5, 7, 5, true},
                                           NeighbourCase{"ThreeRowsBelow", 5, 5, 8, 5, false},
                                           NeighbourCase{"FirstRowBelowTheThirdLast", 7, 5, 8, 5, false},
                                           NeighbourCase{"SecondRowBelowTheThirdLast", 7, 5, 9, 5, false},
                                           NeighbourCase{"RowBelowTheSecondLast", 8, 5, 9, 5, true},
                                           NeighbourCase{"TwoColumnsLeft", 5, 5, 5, 3, true},
                                           NeighbourCase{"TwoColumnsRight", 5, 5, 5, 7, true},
                                           NeighbourCase{"FirstColumnRightOfTheThirdLast", 5, 7, 5, 8, true},
                                           NeighbourCase{"SecondColumnRightOfTheThirdLast", 5, 7, 5, 9,
                                                         false},
                                           NeighbourCase{"ColumnRightOfTheSecondLast", 5, 8, 5, 9, false},
                                           NeighbourCase{"TopRow", 1, 5, 0, 5, true},
                                           NeighbourCase{"LeftColumn", 5, 1, 5, 0, true},
                                           NeighbourCase{"Diagonal", 5, 5, 7, 7, true}),
                         [](const auto& instance) { return instance.param.name; });

TEST(FindPeaks, NeverFindsANegativePeakBesideAHiddenNeighbour)
{
    Map map = makeMap(10, 10);
    fill(*map, [](int, int) { return -5.0F; });
    map->data[8][5] = -1.0F;  // the row two below it is missing and counts as 0
    map->data[4][5] = -1.0F;
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 10, 10, -2.0F, peaks);

    ASSERT_EQ(peaks.size(), 1U);
    EXPECT_EQ(peaks[0].row, 4);
}

TEST(FindPeaks, WorksOnFourRowsAndFourColumns)
{
    const Map map = makeMap({{0, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 9}});
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), 4, 4, 0.0F, peaks);

    // (1, 1) hides both rows below it; (2, 2) sees (1, 1).
    ASSERT_EQ(peaks.size(), 1U);
    EXPECT_TRUE(samePoint({3, 1, 1}, peaks[0]));
}

class PeakSearch : public ::testing::TestWithParam<SearchCase>
{
};

TEST_P(PeakSearch, AgreesWithThePlainSearchOnRowPointersAndOnOneBuffer)
{
    const auto [rows, cols, seed] = GetParam();
    Map map = makeMap(rows, cols);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-1.0F, 1.0F);
    fill(*map, [&](int, int) { return level(random); });
    const FlatMap flat = flatten(*map);

    for (const float threshold : {-2.0F, 0.0F, 0.5F, 2.0F}) {
        const std::vector<fpoint2d> expected = reference::findPeaks(reference::Grid(*map), threshold);
        std::vector<fpoint2d> peaks, flatPeaks;
        KOVPrivate::findpeaks(map.get(), rows, cols, threshold, peaks);
        KOVPrivate::findpeaks(flat.get(), rows, cols, threshold, flatPeaks);

        ASSERT_EQ(peaks.size(), expected.size());
        ASSERT_EQ(flatPeaks.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_TRUE(samePoint(expected[i], peaks[i]));
            EXPECT_TRUE(samePoint(expected[i], flatPeaks[i]));
        }
    }
}

TEST_P(PeakSearch, FindsTheSameCellsOnMapsFullOfEqualLevels)
{
    const auto [rows, cols, seed] = GetParam();
    const Map map = makeRandomMap(rows, cols, seed, 2);
    // Equal levels come in any order, so both lists are put into the order of their cells.
    const auto cells = [](std::vector<fpoint2d> peaks) {
        std::vector<std::pair<int, int>> places;
        for (const fpoint2d& peak : peaks) {
            places.emplace_back(peak.row, peak.col);
        }
        std::sort(places.begin(), places.end());
        return places;
    };
    std::vector<fpoint2d> peaks;

    KOVPrivate::findpeaks(map.get(), rows, cols, -1.0F, peaks);

    EXPECT_EQ(cells(peaks), cells(reference::findPeaks(reference::Grid(*map), -1.0F)));
}

INSTANTIATE_TEST_SUITE_P(Sizes, PeakSearch,
                         ::testing::Values(SearchCase{4, 4, 1}, SearchCase{4, 40, 2}, SearchCase{40, 4, 3},
                                           SearchCase{5, 5, 4}, SearchCase{3, 9, 5}, SearchCase{48, 64, 6},
                                           SearchCase{61, 47, 7}, SearchCase{1, 9, 8}),
                         [](const auto& instance) {
                             return std::to_string(instance.param.rows) + "by" +
                                    std::to_string(instance.param.cols);
                         });
