// The verdict of the analyser: votes, models, shares, reset.
#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "prpdfixture.h"
#include "tests/support/bits.h"

namespace {

using namespace prpdfixture;
using testsupport::sameBits;

class PrpdVerdict : public PrpdFixture
{
};

TEST_F(PrpdVerdict, PublishesTheSharesWithTheTwentySixthVote)
{
    store(swelling(1, 200000));

    poll(25);
    EXPECT_EQ(result().coronaPercent, 0.0F);

    poll(1);
    EXPECT_EQ(result().coronaPercent, 100.0F);
}

TEST_F(PrpdVerdict, CountsVotesForNoiseInTheDenominator)
{
    store(200000, 0.0F);
    poll(13);
    store(swelling(1, 200000));
    poll(13);

    const PRPDResult found = result();
    EXPECT_EQ(found.coronaPercent, 50.0F);
    EXPECT_EQ(found.alongSurfacePercent, 0.0F);
    EXPECT_EQ(found.suspensionPercent, 0.0F);
}

TEST_F(PrpdVerdict, CallsAPatternThatRepeatsWithTheMainsCoronaWithoutAskingTheModel)
{
    useModel("4 0 1 -1");  // always suspension
    store(swelling(1, 200000));

    poll(26);

    EXPECT_EQ(result().coronaPercent, 100.0F);
    EXPECT_GT(result().F1, 10.0F * result().F2);
}

TEST_F(PrpdVerdict, CallsEverythingElseAlongSurfaceWithoutAModel)
{
    store(swelling(2, 200000));

    poll(26);

    EXPECT_EQ(result().alongSurfacePercent, 100.0F);
    EXPECT_GT(result().F2, 10.0F * result().F1);
}

struct EmptyModel
{
    const char* rho;
    float suspension;
    const char* name;
};

class PrpdEmptyModels : public PrpdVerdict, public ::testing::WithParamInterface<EmptyModel>
{
};

TEST_P(PrpdEmptyModels, DecideByTheSignOfTheirOffsetAlone)
{
    useModel(std::string("4 0 1 ") + GetParam().rho);
    store(swelling(2, 200000));

    poll(26);

    EXPECT_EQ(result().suspensionPercent, GetParam().suspension);
    EXPECT_EQ(result().alongSurfacePercent, 100.0F - GetParam().suspension);
}

INSTANTIATE_TEST_SUITE_P(Offsets, PrpdEmptyModels,
                         ::testing::Values(EmptyModel{"0.5", 0.0F, "Positive"}, EmptyModel{"0", 0.0F, "Zero"},
                                           EmptyModel{"-0.5", 100.0F, "Negative"}),
                         [](const auto& model) { return model.param.name; });

TEST_F(PrpdVerdict, DecidesByTheSecondModelOnly)
{
    const ModelFolder models("4 0 1 1", "4 0 1 -1");
    process = std::make_unique<KOVPrpdProcess>(models.path().c_str());
    store(swelling(2, 200000));

    poll(26);

    EXPECT_EQ(result().alongSurfacePercent, 100.0F);
}

TEST_F(PrpdVerdict, CountsVotesThatAreCastStepByStep)
{
    useModel("4 0 1 -1");
    for (int i = 0; i < 39; ++i) {
        process->calculateFeatures();
        process->checkPddType();
    }
    store(200000, 0.0F);

    poll(1);

    EXPECT_EQ(result().suspensionPercent, 97.5F);
}

TEST_F(PrpdVerdict, KeepsTheVotesWhenTheMainsChange)
{
    store(swelling(1, 200000));
    poll(26);

    process->setPddMode(PDD_MODE_60HZ);
    EXPECT_EQ(result().coronaPercent, 100.0F);

    store(200000, 0.0F);
    poll(26);
    EXPECT_EQ(result().coronaPercent, 50.0F);
}

TEST_F(PrpdVerdict, ForgetsVotesLevelsAndPhaseWhenReset)
{
    store(swelling(1, 200000));
    poll(26);
    ASSERT_EQ(result().coronaPercent, 100.0F);

    process->resetResult();

    const PRPDResult found = result();
    for (const float value : {found.F1, found.F2, found.RMS, found.peak, found.coronaPercent,
                              found.alongSurfacePercent, found.suspensionPercent}) {
        EXPECT_EQ(value, 0.0F);
    }
    EXPECT_EQ(found.coronaType, 1);
    EXPECT_EQ(found.alongSurfaceType, 2);
    EXPECT_EQ(found.suspensionType, 3);
    store(swelling(1, 200000));
    poll(25);
    EXPECT_EQ(result().coronaPercent, 0.0F);
}

TEST_F(PrpdVerdict, KeepsThePatternThroughAResetAndItsLinesComeBack)
{
    store(swelling(1, 200000));
    poll(1);
    const float line = result().F1;
    ASSERT_GT(line, 0.0F);

    process->resetResult();
    EXPECT_EQ(result().F1, 0.0F);

    EXPECT_FALSE(process->updatePdd());
    EXPECT_TRUE(sameBits(result().F1, line));
}

TEST_F(PrpdVerdict, CallsAStreamWithoutNumbersNoiseAndRecoversByAReset)
{
    std::vector<float> bad(200000, 0.1F);
    bad[150000] = notANumber;
    bad[150001] = -infinity;
    process->FeedAudio(bad.data(), 200000);
    store(swelling(2, 60000));
    store(200000, infinity);
    poll(30);
    EXPECT_EQ(result().coronaPercent, 0.0F);
    EXPECT_EQ(result().alongSurfacePercent, 0.0F);

    process->resetResult();
    store(swelling(1, 200000));
    poll(26);

    EXPECT_EQ(result().coronaPercent, 100.0F);
}

TEST_F(PrpdVerdict, GivesOneForARadialFunctionWithoutDistanceAndFallsWithIt)
{
    std::vector<float> x{1, 2, 3, 4};
    std::vector<float> sv{1, 2, 3, 6};

    EXPECT_EQ(process->RBF(x.data(), x.data(), 0.5F, 4), 1.0F);
    EXPECT_EQ(process->RBF(x.data(), sv.data(), 0.5F, 3), 1.0F);
    EXPECT_EQ(process->RBF(x.data(), sv.data(), 0.5F, 4), static_cast<float>(std::exp(-2.0)));
    EXPECT_EQ(process->RBF(x.data(), sv.data(), 0.5F, 0), 1.0F);
    EXPECT_EQ(process->RBF(x.data(), sv.data(), 0.5F, -3), 1.0F);
}

}  // namespace
