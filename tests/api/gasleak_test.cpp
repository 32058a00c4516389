#include <KOVDoaHandle/api/gasleak.h>

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/gasleak.h"

namespace {

class GasLeakExports : public testsupport::GasLeakProcessOfItsOwn
{
};

TEST_F(GasLeakExports, TurnAMeasurementIntoALeakRate)
{
    KOVGasleakProcess* const gasLeak = CreateGasLeakHandle(table("60 1.5 0.5\n").c_str());
    waitForTable();

    GasLeakSetGasLeakMode(gasLeak, 2);
    GasLeakFeedData(gasLeak, 1.5F, 0.0F, pressureLevel(60.0F, 1.5F));

    EXPECT_EQ(GasLeakGetLRQ(gasLeak), 2.0F);
    EXPECT_EQ(GasLeakGetGetLeak(gasLeak), std::log10(2.0F) - 1.0F);
    ReleaseGasLeakHandle(gasLeak);
}

TEST_F(GasLeakExports, KeepAnyMode)
{
    KOVGasleakProcess* const gasLeak = CreateGasLeakHandle(nullptr);

    EXPECT_EQ(GasLeakGetGasLeakMode(gasLeak), 5);
    for (const int mode : {0, 3, 7, -1, 2147483647}) {
        GasLeakSetGasLeakMode(gasLeak, mode);
        EXPECT_EQ(GasLeakGetGasLeakMode(gasLeak), mode);
    }
    waitForTable();
    ReleaseGasLeakHandle(gasLeak);
}

TEST_F(GasLeakExports, ShareTheTableOfTheFirstHandle)
{
    KOVGasleakProcess* const first = CreateGasLeakHandle(table("60 1 0.5\n", "first.txt").c_str());
    KOVGasleakProcess* const second = CreateGasLeakHandle(table("60 1 0.75\n", "second.txt").c_str());
    waitForTable();
    ReleaseGasLeakHandle(first);

    GasLeakFeedData(second, 1.0F, 0.0F, pressureLevel(60.0F, 1.0F));

    EXPECT_EQ(GasLeakGetLRQ(second), 0.5F);
    ReleaseGasLeakHandle(second);
}

TEST_F(GasLeakExports, IgnoreTheReleaseOfNothing)
{
    ReleaseGasLeakHandle(nullptr);

    EXPECT_FALSE(KOVGasleakProcessPrivate::g_isIniting);
}

}  // namespace
