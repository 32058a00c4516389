// The imager as a handle: what the plain exports add to the class, which has tests of its own.
#include <KOVDoaHandle/api/imager.h>

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <memory>

#include <KOVDoaHandle/api/containers.h>
#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/imaging/engmapresult.h>
#include <KOVDoaHandle/imaging/kovdoaobject.h>

namespace {

struct Release
{
    void operator()(KOVOFFLineDoaObject* imager) const { ReleaseDoaObject(imager); }
    void operator()(EngMapResult* frame) const { releaseResultHandle(frame); }
    void operator()(mat1d_uint8* image) const { destroyMat1dUint8(image); }
};

// DoaObjectInit() switches the log files on, which lie below the working directory.
class ImagerHandle : public ::testing::Test
{
protected:
    ImagerHandle()
    {
        QDir::setCurrent(folder.path());
        previous = qInstallMessageHandler(nullptr);
    }
    ~ImagerHandle() override
    {
        qInstallMessageHandler(previous);
        QDir::setCurrent(QDir::rootPath());
    }

    KOVOFFLineDoaObject* handle() const { return imager.get(); }

    QTemporaryDir folder;
    QtMessageHandler previous = nullptr;
    std::unique_ptr<KOVOFFLineDoaObject, Release> imager{CreateDoaObject()};
};

TEST_F(ImagerHandle, StartsWithTheDefaultsOfTheClass)
{
    EXPECT_EQ(DoaObjectGetDynamic(handle()), 3.0F);
    EXPECT_EQ(DoaObjectGetMinPreSdLever(handle()), 1e-8F);
    EXPECT_EQ(DoaObjectGetRadius(handle()), -1);
    EXPECT_EQ(DoaObjectGetPalletId(handle()), 0);
    EXPECT_EQ(DoaObjectGetCursorNum(handle()), 1);
    EXPECT_EQ(DoaObjectGetMultCursorEnable(handle()), 0);
    EXPECT_EQ(DoaObjectGetIsImagerOutSideRadiusShow(handle()), 0);
    EXPECT_EQ(DoaObjectGetImageScale(handle()), 1.0F);
}

TEST_F(ImagerHandle, IsReadyAfterInit)
{
    EXPECT_EQ(DoaObjectInit(handle(), 48, 64, 640, 480), 1);
    EXPECT_EQ(DoaObjectInit(handle(), 0, -1, 0, -5), 1);
}

TEST_F(ImagerHandle, SwitchesTheLogFilesOnAtInit)
{
    DoaObjectInit(handle(), 48, 64, 640, 480);

    EXPECT_TRUE(QDir(folder.path()).exists("log"));
}

TEST_F(ImagerHandle, ReturnsTheNumbersThatWereSet)
{
    DoaObjectSetDynamic(handle(), 7.5F);
    DoaObjectSetMinPreSdLever(handle(), 0.25F);
    DoaObjectSetPalletId(handle(), 2);
    DoaObjectSetCursorNum(handle(), 4);

    EXPECT_EQ(DoaObjectGetDynamic(handle()), 7.5F);
    EXPECT_EQ(DoaObjectGetMinPreSdLever(handle()), 0.25F);
    EXPECT_EQ(DoaObjectGetPalletId(handle()), 2);
    EXPECT_EQ(DoaObjectGetCursorNum(handle()), 4);
}

TEST_F(ImagerHandle, SwitchesOnForExactlyOne)
{
    for (const int off : {0, 2, -1, 256, 257}) {
        DoaObjectSetMultCursorEnable(handle(), 1);
        DoaObjectSetIsImagerOutSideRadiusShow(handle(), 1);
        EXPECT_EQ(DoaObjectGetMultCursorEnable(handle()), 1);
        EXPECT_EQ(DoaObjectGetIsImagerOutSideRadiusShow(handle()), 1);

        DoaObjectSetMultCursorEnable(handle(), off);
        DoaObjectSetIsImagerOutSideRadiusShow(handle(), off);
        EXPECT_EQ(DoaObjectGetMultCursorEnable(handle()), 0) << off;
        EXPECT_EQ(DoaObjectGetIsImagerOutSideRadiusShow(handle()), 0) << off;
    }
}

TEST_F(ImagerHandle, SetsTheRadiusInWholePixelsAndReadsItWithoutItsFraction)
{
    DoaObjectInit(handle(), 48, 64, 640, 480);

    DoaObjectSetRadius(handle(), 150, 640, 480);
    EXPECT_EQ(DoaObjectGetRadius(handle()), 150);

    handle()->setRadius(99.75F, 640, 480);
    EXPECT_EQ(DoaObjectGetRadius(handle()), 99);
}

TEST_F(ImagerHandle, HasNoRegionForARadiusOfZeroOrLess)
{
    DoaObjectInit(handle(), 48, 64, 640, 480);
    DoaObjectSetRadius(handle(), 150, 640, 480);

    DoaObjectSetRadius(handle(), 0, 640, 480);

    EXPECT_EQ(DoaObjectGetRadius(handle()), -1);
}

TEST_F(ImagerHandle, KeepsTheImageScale)
{
    DoaObjectInit(handle(), 48, 64, 640, 480);

    DoaObjectSetImageScale(handle(), 2.5F);

    EXPECT_EQ(DoaObjectGetImageScale(handle()), 2.5F);
}

TEST_F(ImagerHandle, PaintsWhereTheSourceIsAndNowhereElse)
{
    const int width = 32;
    const int height = 24;
    DoaObjectInit(handle(), 6, 8, width, height);
    DoaObjectSetDynamic(handle(), 10.0F);  // enlarging flattens a source of one cell by about 5 dB
    const std::unique_ptr<EngMapResult, Release> frame(createResultHandle(6, 8, height, width, 16));
    for (int i = 0; i < 6 * 8; ++i) {
        setMat2dFp32Value(getResEngMap(frame.get()), i / 8, i % 8, 0.01F);
    }
    setMat2dFp32Value(getResEngMap(frame.get()), 3, 5, 1.0F);
    const std::unique_ptr<mat1d_uint8, Release> image(createMat1dUint8(height, width * 3));

    DoaObjectUpdateImagerRGB(handle(), frame.get(), image.get());

    // The cell's centre lies between the pixels (21, 13) and (22, 14); nothing is shown in the far corner.
    const auto pixel = [&](int x, int y) { return getMat1dUint8Data(image.get()) + (y * width + x) * 3; };
    EXPECT_TRUE(std::any_of(pixel(22, 14), pixel(23, 14), [](int byte) { return byte != 0; }));
    EXPECT_TRUE(std::all_of(pixel(0, 0), pixel(1, 0), [](int byte) { return byte == 0; }));
    EXPECT_EQ(getMaxSpl(frame.get()).row, 3);
    EXPECT_EQ(getMaxSpl(frame.get()).col, 5);
}

TEST(ImagerRelease, IgnoresANullHandle)
{
    ReleaseDoaObject(nullptr);
}

}  // namespace
