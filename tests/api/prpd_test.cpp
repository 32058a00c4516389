// The plain exports of the discharge analyser.
#include <KOVDoaHandle/api/prpd.h>

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <type_traits>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

namespace {

struct Release
{
    void operator()(KOVPrpdProcess* prpd) const { ReleasePRPDHandle(prpd); }
};
using Handle = std::unique_ptr<KOVPrpdProcess, Release>;

class PrpdExports : public ::testing::Test
{
protected:
    Handle create() const { return Handle(CreatePRPDHandle(m_folder.path().toUtf8().constData())); }

    // A tone of 35 kHz that swells and falls so many times a mains cycle.
    static std::vector<float> swelling(int timesACycle, std::size_t n)
    {
        std::vector<float> samples(n);
        for (std::size_t i = 0; i < n; ++i) {
            const double time = static_cast<double>(i);
            const double level = 0.1 * (1.0 + std::cos(2.0 * std::numbers::pi * timesACycle * time / 1920.0));
            samples[i] = static_cast<float>(level * std::sin(2.0 * std::numbers::pi * 35.0 * time / 96.0));
        }
        return samples;
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(PrpdExports, ReleaseANullHandleWithoutHarm)
{
    ReleasePRPDHandle(nullptr);
}

TEST_F(PrpdExports, TakeAFolderThatIsNullAsTheDefaultOne)
{
    const Handle prpd(CreatePRPDHandle(nullptr));

    EXPECT_EQ(PRPDGetPddMode(prpd.get()), 0);
}

TEST_F(PrpdExports, HaveTenPagesInBothModes)
{
    const Handle prpd = create();
    EXPECT_EQ(PRPDGetPddMode(prpd.get()), 0);
    EXPECT_EQ(PRPDPageLength(prpd.get()), 240);

    PRPDSetPddMode(prpd.get(), 1);

    EXPECT_EQ(PRPDGetPddMode(prpd.get()), 1);
    EXPECT_EQ(PRPDPageLength(prpd.get()), 200);
    EXPECT_EQ(PRPDPageNumber(), 10);
}

TEST_F(PrpdExports, KeepAnyNumberAsTheMode)
{
    const Handle prpd = create();

    PRPDSetPddMode(prpd.get(), 1234567);

    EXPECT_EQ(PRPDGetPddMode(prpd.get()), 1234567);
}

TEST_F(PrpdExports, ReturnAPlainBool)
{
    static_assert(std::is_same_v<decltype(PRPDUpdatePdd(nullptr)), bool>);
    const Handle prpd = create();
    std::vector<float> samples = swelling(1, 60544);

    EXPECT_FALSE(PRPDUpdatePdd(prpd.get()));
    PRPDFeedAudio(prpd.get(), samples.data(), 60544);
    EXPECT_TRUE(PRPDUpdatePdd(prpd.get()));
    PRPDReset(prpd.get());
    EXPECT_FALSE(PRPDUpdatePdd(prpd.get()));
}

TEST_F(PrpdExports, ReadThePatternTheLevelsAndTheShares)
{
    const Handle prpd = create();
    std::vector<float> samples = swelling(1, 200000);
    PRPDFeedAudio(prpd.get(), samples.data(), 200000);
    for (int i = 0; i < 26; ++i) {
        ASSERT_TRUE(PRPDUpdatePdd(prpd.get()));
    }
    std::vector<float> pattern(2400, -1.0F);

    PRPDResult* const result = PRPDFrameData(prpd.get(), pattern.data(), 2400);

    EXPECT_EQ(PRPDResultGetCoronaPercent(result), 100.0F);
    EXPECT_EQ(PRPDResultGetAlongSurfacePercent(result), 0.0F);
    EXPECT_EQ(PRPDResultGetSuspensionPercent(result), 0.0F);
    EXPECT_GT(PRPDResultGetF1(result), 10.0F * PRPDResultGetF2(result));
    EXPECT_NEAR(PRPDResultGetPeak(result), 0.19F, 0.02F);
    EXPECT_GT(PRPDResultGetRMS(result), 0.05F);
    EXPECT_LT(PRPDResultGetRMS(result), 0.1F);
    for (const float bin : pattern) {
        ASSERT_GE(bin, 0.0F);
    }
}

TEST_F(PrpdExports, ReadTheSlotsOfTheRecordByName)
{
    PRPDResult result{1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 1, 6.0F, 2, 7.0F, 3};

    EXPECT_EQ(PRPDResultGetF1(&result), 1.0F);
    EXPECT_EQ(PRPDResultGetF2(&result), 2.0F);
    EXPECT_EQ(PRPDResultGetRMS(&result), 3.0F);
    EXPECT_EQ(PRPDResultGetPeak(&result), 4.0F);
    EXPECT_EQ(PRPDResultGetCoronaPercent(&result), 5.0F);
    EXPECT_EQ(PRPDResultGetAlongSurfacePercent(&result), 6.0F);
    EXPECT_EQ(PRPDResultGetSuspensionPercent(&result), 7.0F);
}

TEST_F(PrpdExports, HandOutOneRecordForAllHandles)
{
    const Handle loud = create();
    const Handle silent = create();
    std::vector<float> samples = swelling(1, 100000);
    PRPDFeedAudio(loud.get(), samples.data(), 100000);
    PRPDUpdatePdd(loud.get());

    PRPDResult* const first = PRPDFrameData(loud.get(), nullptr, 0);
    EXPECT_GT(PRPDResultGetPeak(first), 0.0F);
    PRPDResult* const second = PRPDFrameData(silent.get(), nullptr, 0);

    EXPECT_EQ(first, second);
    EXPECT_EQ(PRPDResultGetPeak(first), 0.0F);
    EXPECT_EQ(first->coronaType, 1);
    EXPECT_EQ(first->alongSurfaceType, 2);
    EXPECT_EQ(first->suspensionType, 3);
}

}  // namespace
