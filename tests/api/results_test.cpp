// Frames as handles.
#include <KOVDoaHandle/api/results.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>

#include <KOVDoaHandle/imaging/engmapresult.h>

#include "tests/support/bits.h"

namespace {

using testsupport::samePoint;

struct Release
{
    void operator()(EngMapResult* frame) const { releaseResultHandle(frame); }
};
using Frame = std::unique_ptr<EngMapResult, Release>;

Frame makeFrame(int fftLength = 1024)
{
    return Frame(createResultHandle(6, 8, 480, 640, fftLength));
}

TEST(ResultHandle, HasAMapOfTheAskedSize)
{
    const Frame frame = makeFrame();

    EXPECT_EQ(getResEngMap(frame.get())->rows, 6);
    EXPECT_EQ(getResEngMap(frame.get())->cols, 8);
    EXPECT_EQ(getResEngMap(frame.get()), frame->ResEngMap);
}

TEST(ResultHandle, IgnoresThePictureSize)
{
    const Frame frame(createResultHandle(6, 8, -1, 1 << 30, 16));

    EXPECT_EQ(getResEngMap(frame.get())->rows, 6);
    EXPECT_EQ(getResEngMap(frame.get())->cols, 8);
    EXPECT_EQ(getPowerSpec(frame.get())->len, 9);
}

struct SpectrumSize
{
    int fftLength;
    int bins;
};

void PrintTo(const SpectrumSize& size, std::ostream* out)
{
    *out << "FFT length " << size.fftLength << " gives " << size.bins << " bins";
}

class SpectrumOfAFrame : public ::testing::TestWithParam<SpectrumSize>
{
};

TEST_P(SpectrumOfAFrame, HasHalfTheFftLengthAndOneBins)
{
    const Frame frame = makeFrame(GetParam().fftLength);

    EXPECT_EQ(getPowerSpec(frame.get())->len, GetParam().bins);
    EXPECT_EQ(getPowerSpec(frame.get()), frame->PowerSpec);
}

// The halving is an arithmetic shift, so it rounds down below zero too.
INSTANTIATE_TEST_SUITE_P(FftLengths, SpectrumOfAFrame,
                         ::testing::Values(SpectrumSize{1024, 513}, SpectrumSize{1023, 512},
                                           SpectrumSize{0, 1}, SpectrumSize{1, 1}, SpectrumSize{2, 2},
                                           SpectrumSize{-1, 0}, SpectrumSize{-2, 0}, SpectrumSize{-3, -1},
                                           SpectrumSize{-1024, -511}));

TEST(ResultHandle, StartsWithEverythingZero)
{
    const Frame frame = makeFrame();
    const fpoint2d zero{};

    EXPECT_EQ(frame->PowerBandsFFTSpec, 0.0F);
    for (const fpoint2d& point :
         {frame->maxSpl, frame->minSpl, frame->maxSplExtern, frame->minSplExtern, frame->maxSplView,
          frame->minSplView, frame->maxSplExternView, frame->minSplExternView}) {
        EXPECT_TRUE(samePoint(zero, point));
    }
    EXPECT_FALSE(frame->firstPointInRadius);
    EXPECT_EQ(getMedian(frame.get()), 0.0F);
    EXPECT_EQ(getDistance(frame.get()), 0.0F);
    EXPECT_TRUE(frame->peaks.empty());
    const float* spectrum = getPowerSpec(frame.get())->data;
    EXPECT_TRUE(std::all_of(spectrum, spectrum + 513, [](float bin) { return bin == 0.0F; }));
}

TEST(ResultHandle, StartsWithoutPeaks)
{
    const Frame frame = makeFrame();

    EXPECT_EQ(getPeaksNum(frame.get()), 0);
    EXPECT_TRUE(samePoint({}, getPeaksValue(frame.get(), -1)));
    EXPECT_TRUE(samePoint({}, getPeaksValue(frame.get(), 1)));
}

TEST(ResultHandle, ReturnsItsExtremesEachWithItsOwnPosition)
{
    const Frame frame = makeFrame();
    frame->maxSpl = {1.0F, 2, 3};
    frame->minSpl = {4.0F, 5, 6};
    frame->maxSplExtern = {7.0F, 8, 9};
    frame->minSplExtern = {10.0F, 11, 12};
    frame->maxSplView = {-1.0F, -1, -1};

    EXPECT_TRUE(samePoint({1.0F, 2, 3}, getMaxSpl(frame.get())));
    EXPECT_TRUE(samePoint({4.0F, 5, 6}, getMinSpl(frame.get())));
    EXPECT_TRUE(samePoint({7.0F, 8, 9}, getMaxSplExtern(frame.get())));
    EXPECT_TRUE(samePoint({10.0F, 11, 12}, getMinSplExtern(frame.get())));
}

TEST(ResultHandle, ReturnsMedianAndDistance)
{
    const Frame frame = makeFrame();
    frame->median = 0.25F;
    frame->distance = 3.5F;

    EXPECT_EQ(getMedian(frame.get()), 0.25F);
    EXPECT_EQ(getDistance(frame.get()), 3.5F);
}

class PeaksOfAFrame : public ::testing::Test
{
protected:
    PeaksOfAFrame()
    {
        // Three elements, of which the frame counts two: the third stays in memory that the vector owns.
        frame->peaks = {
            {0.5F, 1, 2, 10, 20, true}, {0.25F, 3, 4, 11, 21, false}, {0.125F, 5, 6, 12, 22, true}};
        frame->peaks.pop_back();
    }

    Frame frame = makeFrame();
};

TEST_F(PeaksOfAFrame, AreCounted)
{
    EXPECT_EQ(getPeaksNum(frame.get()), 2);
}

TEST_F(PeaksOfAFrame, AreReturnedWithLevelAndPosition)
{
    EXPECT_TRUE(samePoint({0.5F, 1, 2}, getPeaksValue(frame.get(), 0)));
    EXPECT_TRUE(samePoint({0.25F, 3, 4}, getPeaksValue(frame.get(), 1)));
}

TEST_F(PeaksOfAFrame, AreZeroBelowTheFirst)
{
    EXPECT_TRUE(samePoint({}, getPeaksValue(frame.get(), -1)));
    EXPECT_TRUE(samePoint({}, getPeaksValue(frame.get(), -1000)));
}

TEST_F(PeaksOfAFrame, AreZeroFromTheSecondIndexBehindTheLast)
{
    EXPECT_TRUE(samePoint({}, getPeaksValue(frame.get(), 3)));
    EXPECT_TRUE(samePoint({}, getPeaksValue(frame.get(), 1000)));
}

// Hosts rely on the exact bound. The element is within the vector's memory here; under AddressSanitizer the frame's
// peaks are not annotated, so that the read is allowed there too.
TEST_F(PeaksOfAFrame, AreReadOneBehindTheLastForAnIndexEqualToTheCount)
{
    ASSERT_GE(frame->peaks.capacity(), 3U);

    EXPECT_TRUE(samePoint({0.125F, 5, 6}, getPeaksValue(frame.get(), 2)));
}

}  // namespace
