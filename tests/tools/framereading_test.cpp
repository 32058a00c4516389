#include "tools/render/framereading.h"

#include <KOVDoaHandle/api/results.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace {

using kovtools::ColourRange;
using kovtools::colourRange;
using kovtools::CursorMark;
using kovtools::cursorMarks;
using kovtools::RegionEllipse;
using kovtools::RenderOptions;

class FrameReading : public testing::Test
{
protected:
    FrameReading() : frame(createResultHandle(12, 16, 480, 640, 64), releaseResultHandle)
    {
        options.picture = {640, 480};
        options.dynamicRange = 6.0;
        frame->maxSpl = {2.0F, 5, 5};
        for (int row = 0; row < 12; ++row) {
            for (int col = 0; col < 16; ++col) {
                frame->ResEngMap->data[row][col] = 1.0F;
            }
        }
    }

    std::vector<CursorMark> marks() const
    {
        return cursorMarks(*frame, options, kovtools::regionEllipse(options, 12, 16));
    }

    void addPeak(float value, int row, int col) { frame->peaks.push_back({value, row, col, 0, 0, false}); }

    std::unique_ptr<EngMapResult, void (*)(EngMapResult*)> frame;
    RenderOptions options;
};

TEST_F(FrameReading, RangesFromTheMaximumDownByTheDynamicRange)
{
    const ColourRange range = colourRange(*frame, options);

    EXPECT_TRUE(range.isUsable());
    EXPECT_NEAR(range.highDb(), 0.0, 1e-6);
    EXPECT_NEAR(range.lowDb(), -6.0, 1e-4);
}

TEST_F(FrameReading, LiftsTheRangeToAMinimumLevelWithinIt)
{
    options.minimumLevel = 1.5;

    const ColourRange range = colourRange(*frame, options);

    EXPECT_FLOAT_EQ(range.low, 1.5F);
    EXPECT_NEAR(range.highDb() - range.lowDb(), 6.0, 1e-4);
    EXPECT_GT(range.highDb(), 3.0);
}

TEST_F(FrameReading, ShiftsTheMinimumLevelAsTheMedianShiftedThePeak)
{
    // The peak stood at 4 before the median was taken off: 2.8 on the map as recorded is 1.4 now.
    addPeak(4.0F, 5, 5);
    options.minimumLevel = 2.8;

    EXPECT_NEAR(colourRange(*frame, options).low, 1.4F, 1e-5F);

    options.severalCursors = true;  // the map is not the recorded one then
    EXPECT_FLOAT_EQ(colourRange(*frame, options).low, 2.8F);
}

TEST_F(FrameReading, IsNotUsableWithoutAnythingAboveTheMedian)
{
    for (const float maximum :
         {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        frame->maxSpl.value = maximum;
        EXPECT_FALSE(colourRange(*frame, options).isUsable()) << maximum;
    }
}

TEST_F(FrameReading, MarksAsManyPeaksAsThereAreCursors)
{
    addPeak(3.0F, 2, 2);
    addPeak(2.0F, 5, 9);
    addPeak(1.0F, 8, 8);
    options.cursors = 2;

    const std::vector<CursorMark> found = marks();

    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].col, 9);
    EXPECT_EQ(found[1].level, 2.0F);
}

TEST_F(FrameReading, MarksNothingWithoutCursors)
{
    addPeak(3.0F, 2, 2);
    options.cursors = 0;

    EXPECT_TRUE(marks().empty());
}

TEST_F(FrameReading, MarksOneMoreWithSeveralCursorsAndTheFirstPointInTheRegion)
{
    addPeak(3.0F, 2, 2);
    addPeak(2.0F, 5, 9);
    options.severalCursors = true;
    frame->firstPointInRadius = true;

    EXPECT_EQ(marks().size(), 2U);
}

TEST_F(FrameReading, MarksTheHighestCellOfTheRegionWhenThePeakLiesOutside)
{
    addPeak(3.0F, 0, 0);
    options.radius = 150;
    options.cursors = 3;

    const std::vector<CursorMark> found = marks();

    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].row, 5);
    EXPECT_EQ(found[0].level, 1.0F);  // of the map as recorded
}

TEST_F(FrameReading, MarksPeaksOutsideTheRegionWhenThatIsShown)
{
    addPeak(3.0F, 0, 0);
    addPeak(2.0F, 5, 9);
    options.radius = 150;
    options.cursors = 3;
    options.outside = true;

    EXPECT_EQ(marks().size(), 2U);
}

TEST_F(FrameReading, IgnoresPeaksOutsideTheMapAndBelowTheMinimumLevel)
{
    addPeak(3.0F, 99, 2);
    addPeak(2.0F, -1, 9);
    addPeak(0.5F, 3, 3);
    frame->maxSpl = {2.0F, 77, 5};
    options.cursors = 9;
    options.minimumLevel = 0.8;

    EXPECT_TRUE(marks().empty());
}

}  // namespace
