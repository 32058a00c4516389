// What a render does to the picture and to the frame, each rule by itself, and everything against the plain
// renderer bit by bit.
#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <ostream>

#include <KOVDoaHandle/imaging/kovdoaobject.h>
#include <KOVDoaHandle/imaging/palettes_p.h>

#include "tests/imaging/referencerenderer.h"
#include "tests/support/bits.h"
#include "tests/support/maps.h"

using namespace testsupport;

namespace {

// init() switches log files on: a folder of its own, and Qt's own message handler afterwards.
class OwnFolder
{
public:
    OwnFolder() { QDir::setCurrent(m_folder.path()); }
    ~OwnFolder()
    {
        qInstallMessageHandler(nullptr);
        QDir::setCurrent(m_former);
    }
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

private:
    QString m_former = QDir::currentPath();
    QTemporaryDir m_folder;
};

struct Settings
{
    const char* name;
    int rows = 48;
    int cols = 64;
    int width = 160;
    int height = 120;
    int palette = 0;
    float dynamic = 6.0F;
    float minimum = 1e-8F;
    float radius = 0.0F;  // 0: no region
    bool outside = false;
    int cursors = 1;
    bool several = false;
    bool firstPoint = false;
    float scale = 1.0F;
    int storedPeaks = 0;  // 0: the renderer searches
    bool weakestFirst = false;
    bool quietMiddle = false;  // levels rise from the middle outwards

    friend std::ostream& operator<<(std::ostream& out, const Settings& s) { return out << s.name; }
};

void configure(KOVOFFLineDoaObject& imager, const Settings& s)
{
    imager.init(s.rows, s.cols, s.width, s.height);
    imager.setDynamic(s.dynamic);
    imager.setMinPreSdLever(s.minimum);
    imager.setCursorNum(s.cursors);
    imager.setMultCursorEnable(s.several);
    imager.setIsImagerOutSideRadiusShow(s.outside);
    imager.setPalletId(static_cast<KOVOFFLineDoaObject::DOA_PALLET_ID>(s.palette));
    imager.setRadius(s.radius, s.width, s.height);
    imager.setImageScale(s.scale);
}

reference::Imager configuredReference(const Settings& s)
{
    reference::Imager imager;
    imager.init(s.rows, s.cols, s.width, s.height);
    imager.dynamic = s.dynamic;
    imager.minPreSdLever = s.minimum;
    imager.cursorNum = s.cursors;
    imager.multCursorEnable = s.several;
    imager.outsideShown = s.outside;
    imager.palette = s.palette;
    imager.imageScale = s.scale;
    imager.setRadius(s.radius, s.width, s.height);
    return imager;
}

Frame makeSceneFrame(const Settings& s, unsigned seed)
{
    Frame frame = makeFrame(s.rows, s.cols);
    fillWithSources(*frame->ResEngMap, seed);
    if (s.quietMiddle) {
        fill(*frame->ResEngMap, [&s](int row, int col) {
            // Steeper along the rows, where the region in the picture reaches beyond the one on the map: there
            // the levels lie above the highest one inside, which is negative without the median.
            return 0.2F + 0.01F * std::hypot(static_cast<float>(4 * row - 2 * s.rows),
                                             static_cast<float>(col - s.cols / 2));
        });
    }
    frame->firstPointInRadius = s.firstPoint;
    for (int i = 0; i < s.storedPeaks; ++i) {
        frame->peaks.push_back(
            {0.9F - 0.2F * static_cast<float>(i), (7 + 11 * i) % s.rows, (5 + 17 * i) % s.cols, i, 3, true});
    }
    if (s.weakestFirst) {
        std::reverse(frame->peaks.begin(), frame->peaks.end());
    }
    return frame;
}

::testing::AssertionResult sameFrame(const EngMapResult& expected, const EngMapResult& found)
{
    for (const auto member : {&EngMapResult::maxSpl, &EngMapResult::minSpl, &EngMapResult::maxSplExtern,
                              &EngMapResult::minSplExtern}) {
        if (const auto same = samePoint(expected.*member, found.*member); !same) {
            return same;
        }
    }
    if (expected.peaks.size() != found.peaks.size()) {
        return ::testing::AssertionFailure()
               << "expected " << expected.peaks.size() << " peaks, found " << found.peaks.size();
    }
    for (std::size_t i = 0; i < expected.peaks.size(); ++i) {
        const TargetPoint& a = expected.peaks[i];
        const TargetPoint& b = found.peaks[i];
        if (!samePoint({a.value, a.row, a.col}, {b.value, b.row, b.col}) || a.id != b.id ||
            a.life != b.life || a.matched != b.matched) {
            return ::testing::AssertionFailure() << "peak " << i << " differs";
        }
    }
    return ::testing::AssertionSuccess();
}

class RenderAgainstPlain : public ::testing::TestWithParam<Settings>
{
};

}  // namespace

TEST_P(RenderAgainstPlain, GivesTheSamePictureAndTheSameFrame)
{
    const OwnFolder folder;
    const Settings& settings = GetParam();
    KOVOFFLineDoaObject imager;
    configure(imager, settings);
    const reference::Imager plain = configuredReference(settings);
    const Image image = makeImage(settings.height, settings.width);
    for (unsigned seed = 1; seed <= 3; ++seed) {
        const Frame frame = makeSceneFrame(settings, seed);
        const Frame expectedFrame = makeSceneFrame(settings, seed);

        imager.updateImagerRGB(frame.get(), image.get());
        const std::vector<std::uint8_t> expected = plain.render(*expectedFrame);

        ASSERT_TRUE(samePicture(expected, bytesOf(*image), settings.width)) << "seed " << seed;
        ASSERT_TRUE(sameFrame(*expectedFrame, *frame)) << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Settings, RenderAgainstPlain,
    ::testing::Values(
        Settings{.name = "Defaults", .width = 640, .height = 480, .dynamic = 3.0F},
        Settings{.name = "BlackRedYellowWhite", .palette = 1, .dynamic = 20.0F},
        Settings{.name = "Grey", .palette = 2, .dynamic = 12.0F},
        Settings{.name = "UnknownPalette", .palette = 7}, Settings{.name = "StoredPeaks", .storedPeaks = 3},
        Settings{.name = "HighMinimumLevel", .minimum = 0.5F},
        Settings{.name = "MinimumAboveEverything", .minimum = 100.0F, .storedPeaks = 2},
        Settings{.name = "NegativeDynamic", .dynamic = -3.0F}, Settings{.name = "NoDynamic", .dynamic = 0.0F},
        Settings{.name = "Region", .radius = 40.0F}, Settings{.name = "RegionOfTwoPixels", .radius = 2.0F},
        Settings{.name = "RegionBeyondThePicture", .radius = 500.0F},
        Settings{.name = "RegionStoredPeaks", .radius = 30.0F, .storedPeaks = 4},
        Settings{.name = "RegionOutside", .radius = 40.0F, .outside = true},
        Settings{
            .name = "RegionOutsideHot", .palette = 1, .dynamic = 15.0F, .radius = 25.0F, .outside = true},
        Settings{.name = "RegionOutsideGrey",
                 .palette = 2,
                 .minimum = 0.3F,
                 .radius = 55.0F,
                 .outside = true,
                 .storedPeaks = 2},
        Settings{.name = "RegionScaled", .radius = 50.0F, .scale = 1.7F},
        Settings{.name = "RegionScaledBeyondTwo", .radius = 50.0F, .outside = true, .scale = 3.0F},
        Settings{.name = "RegionScaledBeyondFour", .radius = 50.0F, .scale = 6.0F},
        Settings{.name = "WeakestPeakFirst", .minimum = 0.4F, .storedPeaks = 4, .weakestFirst = true},
        Settings{.name = "RegionWeakestPeakFirst",
                 .minimum = 0.4F,
                 .radius = 45.0F,
                 .outside = true,
                 .storedPeaks = 4,
                 .weakestFirst = true},
        Settings{.name = "RegionBelowTheMedian",
                 .radius = 20.0F,
                 .outside = true,
                 .storedPeaks = 2,
                 .quietMiddle = true},
        Settings{.name = "RegionBelowTheMedianAlone", .radius = 20.0F, .storedPeaks = 2, .quietMiddle = true},
        Settings{.name = "SeveralCursors", .dynamic = 30.0F, .cursors = 4, .several = true},
        Settings{.name = "SeveralCursorsFirstPoint",
                 .dynamic = 30.0F,
                 .cursors = 2,
                 .several = true,
                 .firstPoint = true,
                 .storedPeaks = 4},
        Settings{.name = "SeveralCursorsRegion", .radius = 40.0F, .cursors = 3, .several = true},
        Settings{.name = "SeveralCursorsRegionOutside",
                 .radius = 40.0F,
                 .outside = true,
                 .cursors = 3,
                 .several = true,
                 .storedPeaks = 5},
        Settings{.name = "SeveralOfNone", .cursors = 0, .several = true},
        Settings{.name = "FourRows", .rows = 4, .cols = 17, .width = 61, .height = 47},
        Settings{
            .name = "FourColumnsRegion", .rows = 19, .cols = 4, .width = 40, .height = 60, .radius = 15.0F},
        Settings{.name = "TallMap",
                 .rows = 64,
                 .cols = 48,
                 .width = 199,
                 .height = 101,
                 .radius = 30.0F,
                 .outside = true},
        Settings{.name = "PictureOfTheDoubledMap", .rows = 12, .cols = 16, .width = 32, .height = 24},
        Settings{.name = "PictureSmallerThanTheMap", .rows = 48, .cols = 64, .width = 31, .height = 17},
        Settings{.name = "PictureOfOnePixel", .rows = 8, .cols = 8, .width = 1, .height = 1},
        Settings{.name = "HighDefinition", .width = 1920, .height = 1080, .radius = 300.0F, .outside = true}),
    [](const auto& instance) { return instance.param.name; });

class Render : public ::testing::Test
{
protected:
    Render() { imager.init(8, 8, 32, 24); }

    // A frame of 8 x 8 cells whose median is `floor`, with one level at (3, 4).
    static Frame makeSpotFrame(float floor, float spot)
    {
        Frame frame = makeFrame(8, 8);
        fill(*frame->ResEngMap, [=](int row, int col) { return row == 3 && col == 4 ? spot : floor; });
        return frame;
    }

    OwnFolder folder;
    KOVOFFLineDoaObject imager;
    Image image = makeImage(24, 32);
};

TEST_F(Render, AppendsTheFoundPeaksToAFrameWithoutAny)
{
    const Frame frame = makeSpotFrame(1.0F, 3.0F);

    imager.setMinPreSdLever(2.0F);
    imager.updateImagerRGB(frame.get(), image.get());

    ASSERT_EQ(frame->peaks.size(), 1U);
    EXPECT_EQ(frame->peaks[0].value, 3.0F);
    EXPECT_EQ(frame->peaks[0].row, 3);
    EXPECT_EQ(frame->peaks[0].col, 4);
    EXPECT_EQ(frame->peaks[0].id, 0);
    EXPECT_EQ(frame->peaks[0].life, 0);
    EXPECT_FALSE(frame->peaks[0].matched);
}

TEST_F(Render, DoesNotSearchAFrameWithStoredPeaksAgain)
{
    const Frame frame = makeSpotFrame(1.0F, 3.0F);
    frame->peaks.push_back({0.5F, 1, 1, 7, 9, true});

    imager.updateImagerRGB(frame.get(), image.get());

    ASSERT_EQ(frame->peaks.size(), 1U);
    EXPECT_EQ(frame->peaks[0].id, 7);
}

TEST_F(Render, ReportsTheMaximumRelativeToTheMedian)
{
    const Frame frame = makeSpotFrame(1.0F, 3.5F);

    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_TRUE(samePoint({2.5F, 3, 4}, frame->maxSpl));
    EXPECT_TRUE(samePoint({0.0F, 0, 0}, frame->minSpl));
}

TEST_F(Render, DoesNotShiftAMapWhoseMedianIsZero)
{
    const Frame frame = makeSpotFrame(0.0F, 3.5F);

    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_TRUE(samePoint({3.5F, 3, 4}, frame->maxSpl));
}

TEST_F(Render, LeavesTheOuterExtremesAloneWithoutARegion)
{
    const Frame frame = makeSpotFrame(1.0F, 3.5F);
    frame->maxSplExtern = {42.0F, 1, 2};

    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_TRUE(samePoint({42.0F, 1, 2}, frame->maxSplExtern));
}

TEST_F(Render, LeavesTheMapAndTheProducersFieldsAlone)
{
    const Frame frame = makeSpotFrame(1.0F, 3.5F);
    frame->median = 0.25F;
    frame->maxSplView = {9.0F, 1, 1};

    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_EQ(frame->ResEngMap->data[3][4], 3.5F);
    EXPECT_EQ(frame->median, 0.25F);
    EXPECT_TRUE(samePoint({9.0F, 1, 1}, frame->maxSplView));
}

// With several cursors the map becomes a bump around each cursor, so the cursors can be counted in the picture.
struct CursorCase
{
    const char* name;
    int cursorNum;
    bool firstPoint;
    int expected;
};

class RenderCursors : public Render, public ::testing::WithParamInterface<CursorCase>
{
};

TEST_P(RenderCursors, UsesTheExpectedNumberOfPeaks)
{
    const CursorCase& test = GetParam();
    const Frame frame = makeFrame(8, 64);
    // Far enough apart that the bumps do not meet. The kernel's noise puts the sum of all cursor values on
    // every cell, and the median, taken off afterwards, is just that.
    for (int i = 0; i < 5; ++i) {
        frame->peaks.push_back({1.0F, 4, 2 + 14 * i});
    }
    frame->firstPointInRadius = test.firstPoint;
    imager.init(8, 64, 32, 24);
    imager.setMultCursorEnable(true);
    imager.setCursorNum(test.cursorNum);
    imager.setPalletId(KOVOFFLineDoaObject::DOA_PALLET_GRAY);
    imager.setDynamic(3.0F);

    imager.updateImagerRGB(frame.get(), image.get());

    // Count the bright columns of the row through the cursors: one run per cursor.
    int runs = 0;
    bool inside = false;
    for (int x = 0; x < 32; ++x) {
        const bool bright = image->data[(13 * 32 + x) * 3] > 0;
        runs += bright && !inside ? 1 : 0;
        inside = bright;
    }
    EXPECT_EQ(runs, test.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, RenderCursors,
    ::testing::Values(CursorCase{"Two", 2, false, 2}, CursorCase{"TwoAndTheFirstPoint", 2, true, 3},
                      CursorCase{"MoreThanThereAre", 9, true, 5},
                      CursorCase{"AsManyAsAnIntegerHolds", std::numeric_limits<int>::max(), true, 5}),
    [](const auto& instance) { return instance.param.name; });

TEST_F(Render, UsesOneCursorWithARegionWhenTheOutsideIsHidden)
{
    imager.setMultCursorEnable(true);
    imager.setCursorNum(3);
    imager.setRadius(500.0F, 32, 24);
    const Frame frame = makeFrame(8, 8);
    frame->peaks.push_back({1.0F, 2, 2});
    frame->peaks.push_back({5.0F, 2, 3});

    imager.updateImagerRGB(frame.get(), image.get());

    // Had the second peak been used too, the maximum would stand there and be above 5.
    EXPECT_EQ(frame->maxSpl.row, 2);
    EXPECT_EQ(frame->maxSpl.col, 2);
    EXPECT_LE(frame->maxSpl.value, 1.0F);
}

TEST_F(Render, UsesAllCursorsWithARegionWhenTheOutsideIsShown)
{
    imager.setMultCursorEnable(true);
    imager.setCursorNum(3);
    imager.setIsImagerOutSideRadiusShow(true);
    imager.setRadius(500.0F, 32, 24);
    const Frame frame = makeFrame(8, 8);
    frame->peaks.push_back({1.0F, 2, 2});
    frame->peaks.push_back({5.0F, 2, 3});

    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_EQ(frame->maxSpl.col, 3);
}

TEST_F(Render, LetsAWeakFirstPeakUseUpTheOnlyCursorPlace)
{
    imager.setMultCursorEnable(true);
    imager.setMinPreSdLever(1.0F);
    const Frame frame = makeFrame(8, 8);
    frame->peaks.push_back({0.5F, 4, 4});
    frame->peaks.push_back({5.0F, 2, 2});

    imager.updateImagerRGB(frame.get(), image.get());

    // No cursor: the regressed map is zero everywhere.
    EXPECT_TRUE(samePoint({0.0F, 0, 0}, frame->maxSpl));
}

TEST_F(Render, KeepsTheMapWithoutSeveralCursors)
{
    imager.setCursorNum(3);
    const Frame frame = makeSpotFrame(0.0F, 3.5F);
    frame->peaks.push_back({5.0F, 1, 1});

    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_TRUE(samePoint({3.5F, 3, 4}, frame->maxSpl));
}

// The picture is the doubled map's own size, so pixels can be read as levels of known cells.
class RenderRange : public ::testing::Test
{
protected:
    RenderRange() { imager.init(8, 8, 16, 16); }

    // Renders a frame with the level 1 at (3, 4) and the given one at (6, 1), on a floor of zero; returns the
    // brightness of the second spot's pixel. Grey, so that brightness rises with the level.
    int brightnessOf(float level)
    {
        const Frame frame = makeFrame(8, 8);
        frame->ResEngMap->data[3][4] = 1.0F;
        frame->ResEngMap->data[3][3] = 1.0F;
        frame->ResEngMap->data[4][4] = 1.0F;
        frame->ResEngMap->data[4][3] = 1.0F;
        for (const int row : {6, 7}) {
            for (const int col : {0, 1}) {
                frame->ResEngMap->data[row][col] = level;
            }
        }
        imager.setPalletId(KOVOFFLineDoaObject::DOA_PALLET_GRAY);
        imager.updateImagerRGB(frame.get(), image.get());
        return image->data[(14 * 16 + 1) * 3];
    }

    OwnFolder folder;
    KOVOFFLineDoaObject imager;
    Image image = makeImage(16, 16);
};

TEST_F(RenderRange, ReachesThreeDecibelsBelowTheMaximum)
{
    EXPECT_EQ(brightnessOf(0.70F), 0);
    EXPECT_GT(brightnessOf(0.72F), 0);
}

TEST_F(RenderRange, StartsAtTheMinimumLevelWhenThatIsHigher)
{
    imager.setMinPreSdLever(0.9F);

    EXPECT_EQ(brightnessOf(0.89F), 0);
    EXPECT_GT(brightnessOf(0.93F), 0);
    EXPECT_LT(brightnessOf(1.0F), 255);  // the top has moved up to 0.9 * 1.4125
}

TEST_F(RenderRange, ColoursNothingInAFlatMap)
{
    const Frame frame = makeFrame(8, 8);
    fill(*frame->ResEngMap, [](int, int) { return 0.5F; });

    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_EQ(bytesOf(*image), std::vector<unsigned char>(16 * 16 * 3, 0));
}

TEST_F(Render, GivesABlackPictureForAMapWithoutCells)
{
    const Frame frame = makeFrame(0, 8);
    std::memset(image->data, 0xAB, 24 * 32 * 3);

    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_EQ(bytesOf(*image), std::vector<unsigned char>(24 * 32 * 3, 0));
}

TEST_F(Render, SurvivesMapsFullOfSpecialValues)
{
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::array values{nan, inf, -inf, 3e38F, -3e38F, 1e-45F, 0.0F, 1.0F};
    std::mt19937 random(31);
    for (int round = 0; round < 60; ++round) {
        imager.setRadius(round % 3 == 0 ? 10.0F : 0.0F, 32, 24);
        imager.setIsImagerOutSideRadiusShow(round % 2 == 0);
        imager.setMultCursorEnable(round % 5 == 0);
        const Frame frame = makeFrame(1 + round % 5, 1 + round % 7);
        fill(*frame->ResEngMap, [&](int, int) { return values[random() % values.size()]; });

        imager.updateImagerRGB(frame.get(), image.get());
    }
    const Frame frame = makeFrame(8, 8);
    fill(*frame->ResEngMap, [=](int, int) { return nan; });

    imager.setMultCursorEnable(false);
    imager.setRadius(0.0F, 32, 24);
    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_EQ(bytesOf(*image), std::vector<unsigned char>(24 * 32 * 3, 0));
}

TEST_F(Render, FollowsAMapWhoseSizeChanges)
{
    const Settings settings{.name = "", .rows = 20, .cols = 30, .width = 32, .height = 24};
    const Frame smaller = makeFrame(8, 8);
    fillWithSources(*smaller->ResEngMap, 5U);
    imager.updateImagerRGB(smaller.get(), image.get());
    const Frame larger = makeSceneFrame(settings, 6U);
    const Frame expectedFrame = makeSceneFrame(settings, 6U);
    reference::Imager plain;
    plain.init(8, 8, 32, 24);

    imager.updateImagerRGB(larger.get(), image.get());

    EXPECT_TRUE(samePicture(plain.render(*expectedFrame), bytesOf(*image), 32));
}

TEST_F(Render, FillsAnImageThatIsSmallerThanThePictureAndNoByteMore)
{
    const Frame frame = makeSpotFrame(1.0F, 3.0F);
    imager.updateImagerRGB(frame.get(), image.get());
    const std::vector<unsigned char> whole = bytesOf(*image);
    const Image small = makeImage(10, 32);

    imager.setRadius(11.0F, 32, 24);
    imager.setRadius(0.0F, 32, 24);
    imager.updateImagerRGB(frame.get(), small.get());

    EXPECT_EQ(bytesOf(*small), std::vector<unsigned char>(whole.begin(), whole.begin() + 10 * 32 * 3));
}

TEST_F(Render, PutsZerosBehindThePictureInALargerImage)
{
    const Frame frame = makeSpotFrame(1.0F, 3.0F);
    imager.updateImagerRGB(frame.get(), image.get());
    const Image large = makeImage(30, 32);
    std::memset(large->data, 0xAB, 30 * 32 * 3);

    imager.updateImagerRGB(frame.get(), large.get());

    std::vector<unsigned char> expected = bytesOf(*image);
    expected.resize(30 * 32 * 3, 0);
    EXPECT_TRUE(samePicture(expected, bytesOf(*large), 32));
}

TEST_F(Render, AcceptsAnImageWithoutBytes)
{
    const Frame frame = makeSpotFrame(1.0F, 3.0F);
    const Frame withoutCells = makeFrame(0, 0);
    const Image empty = makeImage(0, 0);

    imager.updateImagerRGB(frame.get(), empty.get());
    imager.updateImagerRGB(withoutCells.get(), empty.get());

    EXPECT_EQ(frame->maxSpl.value, 2.0F);
}

TEST_F(Render, GivesTheSamePictureForTheSameFrameAgain)
{
    const Frame other = makeSpotFrame(0.0F, 9.0F);
    const Frame frame = makeSpotFrame(1.0F, 3.0F);
    imager.updateImagerRGB(frame.get(), image.get());
    const std::vector<unsigned char> first = bytesOf(*image);

    imager.updateImagerRGB(other.get(), image.get());
    imager.updateImagerRGB(frame.get(), image.get());

    EXPECT_TRUE(samePicture(first, bytesOf(*image), 32));
}
