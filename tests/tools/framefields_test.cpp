#include "tools/scene/framefields.h"

#include <KOVDoaHandle/api/results.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "tests/tools/samples.h"
#include "tools/scene/scenesimulation.h"

namespace {

using kovtools::fillFrameFields;
using kovtools::PeakMarker;
using kovtools::SceneOptions;
using kovtools::SceneSimulation;
using kovtools::SimulatedFrame;

using Record = std::unique_ptr<EngMapResult, void (*)(EngMapResult*)>;

Record newRecord(int rows, int cols)
{
    return {createResultHandle(rows, cols, 480, 640, 1024), releaseResultHandle};
}

struct Filled
{
    Filled()
    {
        SceneOptions options;
        options.frames = 1;
        options.rows = 24;
        options.cols = 32;
        SceneSimulation scene(options);
        frame = scene.nextFrames().front();
        fillFrameFields({scene.firstBandBin(), scene.lastBandBin(), 5.0F}, frame.map, frame.spectrum,
                        *record);
    }

    SimulatedFrame frame;
    Record record = newRecord(24, 32);
};

TEST(FrameFields, CopyTheMapAndTheSpectrum)
{
    const Filled filled;

    EXPECT_EQ(filled.record->ResEngMap->data[23][31], filled.frame.map.back());
    EXPECT_EQ(filled.record->PowerSpec->data[512], filled.frame.spectrum.back());
}

TEST(FrameFields, FindTheExtremesInsideAndOutsideTheRegion)
{
    const Filled filled;
    const auto [lowest, highest] = std::minmax_element(filled.frame.map.begin(), filled.frame.map.end());

    EXPECT_EQ(std::max(filled.record->maxSpl.value, filled.record->maxSplExtern.value), *highest);
    EXPECT_EQ(std::min(filled.record->minSpl.value, filled.record->minSplExtern.value), *lowest);
    const fpoint2d inside = filled.record->maxSpl;
    EXPECT_EQ(filled.record->ResEngMap->data[inside.row][inside.col], inside.value);
}

TEST(FrameFields, ShowTheExtremesAboveTheMedian)
{
    const Filled filled;
    std::vector<float> sorted = filled.frame.map;
    std::sort(sorted.begin(), sorted.end());

    EXPECT_EQ(filled.record->median, sorted[sorted.size() / 2]);
    EXPECT_EQ(filled.record->maxSplView.value, filled.record->maxSpl.value - filled.record->median);
    EXPECT_EQ(filled.record->maxSplView.row, filled.record->maxSpl.row);
    EXPECT_EQ(filled.record->firstPointInRadius,
              filled.record->maxSpl.value >= filled.record->maxSplExtern.value);
}

TEST(FrameFields, StateTheDistance)
{
    EXPECT_EQ(Filled().record->distance, 5.0F);
}

void fillHill(EngMapResult& record, int atRow, int atCol)
{
    for (int row = 0; row < 24; ++row) {
        for (int col = 0; col < 32; ++col) {
            record.ResEngMap->data[row][col] = kovtools::tests::hill(atRow, atCol, row, col);
        }
    }
    record.maxSpl.value = 1.0F;
}

TEST(PeakMarker, KeepsTheIdentityOfAPeakThatMovesALittle)
{
    const Record record = newRecord(24, 32);
    PeakMarker marker;
    fillHill(*record, 10, 10);
    marker.mark(*record);
    const TargetPoint first = record->peaks.at(0);
    fillHill(*record, 11, 12);

    marker.mark(*record);

    ASSERT_EQ(record->peaks.size(), 1U);
    EXPECT_EQ(record->peaks[0].row, 11);
    EXPECT_EQ(record->peaks[0].col, 12);
    EXPECT_EQ(record->peaks[0].id, first.id);
    EXPECT_EQ(record->peaks[0].life, 2);
    EXPECT_TRUE(record->peaks[0].matched);
}

TEST(PeakMarker, GivesAPeakFarAwayANewIdentity)
{
    const Record record = newRecord(24, 32);
    PeakMarker marker;
    fillHill(*record, 10, 10);
    marker.mark(*record);
    const int first = record->peaks.at(0).id;
    fillHill(*record, 10, 20);

    marker.mark(*record);

    EXPECT_NE(record->peaks.at(0).id, first);
    EXPECT_EQ(record->peaks.at(0).life, 1);
    EXPECT_FALSE(record->peaks.at(0).matched);
}

}  // namespace
