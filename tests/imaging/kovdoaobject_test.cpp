// The imager's settings, through the class and through the plain exports.
#include <KOVDoaHandle/imaging/kovdoaobject.h>

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <QtCore/QDir>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include <KOVDoaHandle/api/imager.h>

#include "tests/support/bits.h"
#include "tests/support/maps.h"

using namespace testsupport;

namespace {

struct ReleaseImager
{
    void operator()(KOVOFFLineDoaObject* imager) const { ReleaseDoaObject(imager); }
};
using Imager = std::unique_ptr<KOVOFFLineDoaObject, ReleaseImager>;

// init() creates "./log/", so every test runs in a folder of its own and without the library's message
// handler.
class ImagerSettings : public ::testing::Test
{
protected:
    ImagerSettings() { QDir::setCurrent(m_folder.path()); }
    ~ImagerSettings() override
    {
        qInstallMessageHandler(nullptr);
        QDir::setCurrent(m_formerFolder);
    }

    // Renders a frame and returns which pixels are not black.
    std::vector<bool> coloured(EngMapResult& frame, int width, int height)
    {
        const Image image = makeImage(height, width);
        imager->updateImagerRGB(&frame, image.get());
        std::vector<bool> pixels;
        for (int i = 0; i < width * height; ++i) {
            pixels.push_back(image->data[3 * i] + image->data[3 * i + 1] + image->data[3 * i + 2] != 0);
        }
        return pixels;
    }

    QString m_formerFolder = QDir::currentPath();
    QTemporaryDir m_folder;
    Imager imager{CreateDoaObject()};
};

// A frame that is coloured everywhere: levels from 1 at the left to 2 at the right, none below the median by
// more than the dynamic range set in the test.
Frame makeBrightFrame()
{
    Frame frame = makeFrame(8, 8);
    fill(*frame->ResEngMap,
         [](int, int col) { return col == 0 ? 1.0F : 2.0F + static_cast<float>(col) * 0.1F; });
    frame->peaks.push_back({2.7F, 4, 7});
    return frame;
}

std::vector<QString> messages;

}  // namespace

TEST_F(ImagerSettings, StartWithTheDocumentedDefaults)
{
    EXPECT_EQ(imager->getRadius(), -1.0F);
    EXPECT_EQ(DoaObjectGetRadius(imager.get()), -1);
    EXPECT_EQ(DoaObjectGetDynamic(imager.get()), 3.0F);
    EXPECT_EQ(DoaObjectGetMinPreSdLever(imager.get()), 1e-8F);
    EXPECT_EQ(DoaObjectGetCursorNum(imager.get()), 1);
    EXPECT_EQ(DoaObjectGetMultCursorEnable(imager.get()), 0);
    EXPECT_EQ(DoaObjectGetIsImagerOutSideRadiusShow(imager.get()), 0);
    EXPECT_EQ(DoaObjectGetImageScale(imager.get()), 1.0F);
    EXPECT_EQ(DoaObjectGetPalletId(imager.get()), 0);
}

TEST_F(ImagerSettings, ReadBackWhatWasSet)
{
    DoaObjectSetDynamic(imager.get(), -4.5F);
    DoaObjectSetMinPreSdLever(imager.get(), 0.25F);
    DoaObjectSetCursorNum(imager.get(), -3);
    DoaObjectSetPalletId(imager.get(), 7);
    DoaObjectSetImageScale(imager.get(), 2.5F);
    DoaObjectSetRadius(imager.get(), 100, 640, 480);

    EXPECT_EQ(DoaObjectGetDynamic(imager.get()), -4.5F);
    EXPECT_EQ(DoaObjectGetMinPreSdLever(imager.get()), 0.25F);
    EXPECT_EQ(DoaObjectGetCursorNum(imager.get()), -3);
    EXPECT_EQ(DoaObjectGetPalletId(imager.get()), 7);
    EXPECT_EQ(DoaObjectGetImageScale(imager.get()), 2.5F);
    EXPECT_EQ(DoaObjectGetRadius(imager.get()), 100);
}

TEST_F(ImagerSettings, DropTheRadiusFractionAtThePlainBoundary)
{
    imager->setRadius(99.9F, 640, 480);

    EXPECT_EQ(imager->getRadius(), 99.9F);
    EXPECT_EQ(DoaObjectGetRadius(imager.get()), 99);
}

class ImagerSwitch : public ImagerSettings, public ::testing::WithParamInterface<int>
{
};

TEST_P(ImagerSwitch, IsOnForExactlyOne)
{
    DoaObjectSetMultCursorEnable(imager.get(), 1);
    DoaObjectSetMultCursorEnable(imager.get(), GetParam());
    DoaObjectSetIsImagerOutSideRadiusShow(imager.get(), 1);
    DoaObjectSetIsImagerOutSideRadiusShow(imager.get(), GetParam());

    EXPECT_EQ(DoaObjectGetMultCursorEnable(imager.get()), GetParam() == 1 ? 1 : 0);
    EXPECT_EQ(DoaObjectGetIsImagerOutSideRadiusShow(imager.get()), GetParam() == 1 ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(Values, ImagerSwitch, ::testing::Values(0, 1, 2, 257),
                         [](const auto& instance) { return "Value" + std::to_string(instance.param); });

TEST_F(ImagerSettings, TreatARadiusOfZeroAsNoRegion)
{
    imager->setRadius(50.0F, 640, 480);
    imager->setRadius(0.0F, 640, 480);

    EXPECT_EQ(imager->getRadius(), -1.0F);
}

TEST_F(ImagerSettings, IgnoreANullHandleOnRelease)
{
    ReleaseDoaObject(nullptr);
}

TEST_F(ImagerSettings, ReturnOneFromInitAndSwitchTheLogFilesOn)
{
    EXPECT_EQ(DoaObjectInit(imager.get(), 8, 8, 32, 24), 1);

    EXPECT_TRUE(QDir(QStringLiteral("log")).exists());
}

TEST_F(ImagerSettings, KeepThePictureSizeWhenInitIsGivenNone)
{
    imager->init(0, 0, 0, 0);
    const Frame frame = makeBrightFrame();
    const Image image = makeImage(480, 640);
    const Image smaller = makeImage(24, 32);

    imager->updateImagerRGB(frame.get(), image.get());
    imager->init(-1, -1, 32, 24);
    imager->updateImagerRGB(frame.get(), smaller.get());
    imager->init(0, 0, -1, 0);
    const Image again = makeImage(24, 32);
    imager->updateImagerRGB(frame.get(), again.get());

    const auto last = bytesOf(*image);
    EXPECT_NE(last[last.size() - 1] + last[last.size() - 2] + last[last.size() - 3], 0);
    EXPECT_TRUE(samePicture(bytesOf(*smaller), bytesOf(*again), 32));
}

TEST_F(ImagerSettings, DoNothingForAnUnchangedRadius)
{
    imager->init(8, 8, 32, 24);
    imager->setDynamic(60.0F);
    imager->setRadius(10.0F, 32, 24);
    const Frame frame = makeBrightFrame();
    const std::vector<bool> before = coloured(*frame, 32, 24);

    imager->setRadius(10.0F, 64, 48);  // another size, but the same radius

    EXPECT_EQ(coloured(*frame, 32, 24), before);
}

TEST_F(ImagerSettings, LeaveTheRegionEmptyWhenInitIsCalledAfterwards)
{
    imager->init(8, 8, 32, 24);
    imager->setDynamic(60.0F);
    imager->setRadius(10.0F, 32, 24);
    imager->init(8, 8, 32, 24);
    imager->setRadius(10.0F, 32, 24);  // unchanged, so it does not draw the region again
    const Frame frame = makeBrightFrame();

    EXPECT_EQ(coloured(*frame, 32, 24), std::vector<bool>(32 * 24, false));
}

TEST_F(ImagerSettings, RecomputeTheRegionOnceForAnImageScale)
{
    imager->init(8, 8, 32, 24);
    imager->setDynamic(60.0F);
    imager->setRadius(11.0F, 32, 24);
    const Frame frame = makeBrightFrame();
    const std::vector<bool> before = coloured(*frame, 32, 24);

    imager->setImageScale(1.9F);
    const std::vector<bool> scaled = coloured(*frame, 32, 24);
    imager->setRadius(11.0F, 8, 6);  // the force is spent: nothing happens
    const std::vector<bool> after = coloured(*frame, 32, 24);

    EXPECT_LT(std::count(scaled.begin(), scaled.end(), true), std::count(before.begin(), before.end(), true));
    EXPECT_EQ(after, scaled);
}

TEST_F(ImagerSettings, StepBackToTheFullRegionAtScalesTwoAndFour)
{
    imager->init(8, 8, 32, 24);
    imager->setDynamic(60.0F);
    imager->setRadius(11.0F, 32, 24);
    const Frame frame = makeBrightFrame();
    const std::vector<bool> atOne = coloured(*frame, 32, 24);

    imager->setImageScale(2.0F);
    EXPECT_EQ(coloured(*frame, 32, 24), atOne);
    imager->setImageScale(4.0F);
    EXPECT_EQ(coloured(*frame, 32, 24), atOne);
    imager->setImageScale(3.9F);
    EXPECT_NE(coloured(*frame, 32, 24), atOne);
}

TEST_F(ImagerSettings, LetTheDrawingRefuseARegionBelowOnePixel)
{
    imager->init(8, 8, 32, 24);

    EXPECT_THROW(imager->setRadius(0.5F, 32, 24), cv::Exception);

    EXPECT_EQ(imager->getRadius(), 0.5F);
}

TEST_F(ImagerSettings, LetTheDrawingRefuseAHalfAxisOfExactlyOnePixel)
{
    imager->init(8, 8, 32, 24);

    EXPECT_THROW(imager->setRadius(1.0F, 32, 24), cv::Exception);
    EXPECT_NO_THROW(imager->setRadius(std::nextafter(1.0F, 2.0F), 32, 24));
}

TEST_F(ImagerSettings, StoreAnImageScaleThatLeavesNoRegionToDraw)
{
    imager->init(8, 8, 32, 24);
    imager->setRadius(10.0F, 32, 24);

    EXPECT_THROW(imager->setImageScale(-1.0F), cv::Exception);

    EXPECT_EQ(imager->getImageScale(), -1.0F);
}

// The second size pair shows in the region on the map: which cell is the highest inside it.
struct SizePairCase
{
    const char* name;
    int firstA, firstB;    // given to a first init()
    int secondA, secondB;  // and to a second one
    int effectiveA, effectiveB;
};

class ImagerSizePair : public ImagerSettings, public ::testing::WithParamInterface<SizePairCase>
{
protected:
    static fpoint2d highestInside(KOVOFFLineDoaObject& object)
    {
        const Frame frame = makeFrame(64, 64);
        // Levels rise away from the middle, faster along the rows: the highest cell tells both semi-axes.
        fill(*frame->ResEngMap, [](int row, int col) {
            return 1.0F + 0.01F * static_cast<float>(std::abs(2 * row - 63)) +
                   0.003F * static_cast<float>(std::abs(2 * col - 63));
        });
        const Image image = makeImage(48, 64);
        object.updateImagerRGB(frame.get(), image.get());
        return frame->maxSpl;
    }
};

TEST_P(ImagerSizePair, IsReplacedByPositiveValuesOnly)
{
    const SizePairCase& test = GetParam();
    KOVOFFLineDoaObject expected;
    expected.init(test.effectiveA, test.effectiveB, 64, 48);
    expected.setRadius(2.5F, 64, 48);

    imager->init(test.firstA, test.firstB, 64, 48);
    imager->init(test.secondA, test.secondB, 64, 48);
    imager->setRadius(2.5F, 64, 48);

    EXPECT_TRUE(samePoint(highestInside(expected), highestInside(*imager)));
}

INSTANTIATE_TEST_SUITE_P(Pairs, ImagerSizePair,
                         ::testing::Values(SizePairCase{"Given", 300, 200, 300, 200, 300, 200},
                                           SizePairCase{"KeptDefaults", 0, -1, 0, 0, 640, 480},
                                           SizePairCase{"KeptFirst", 300, 200, 0, 400, 300, 400},
                                           SizePairCase{"KeptSecond", 300, 200, 400, -7, 400, 200}),
                         [](const auto& instance) { return instance.param.name; });

TEST_F(ImagerSettings, LogEveryImageScale)
{
    messages.clear();
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& text) {
        messages.push_back(QStringLiteral("%1|%2|%3|%4")
                               .arg(QString::number(type), QString::fromUtf8(context.file),
                                    QString::fromUtf8(context.function), text));
    });

    imager->setImageScale(2.5F);

    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].toStdString(),
              "0|kovdoaobject|void "
              "KOVOFFLineDoaObject::setImageScale(float)|KOVOFFLineDoaObject::setImageScale 2.5");
}

TEST_F(ImagerSettings, CopyMapsRowByRow)
{
    const Map source = makeMap({{1, 2, 3}, {4, 5, 6}});
    const Map copy = makeMap(2, 3);

    imager->matcopy(source.get(), copy.get());

    EXPECT_EQ(copy->data[1][2], 6.0F);
    EXPECT_EQ(copy->data[0][1], 2.0F);
}
