// What kovdoa prpd train learns from, and the files it writes.
#include <gtest/gtest.h>

#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>

#include <cmath>
#include <vector>

#include "tests/tools/program.h"
#include "tools/discharge/dischargefeatures.h"
#include "tools/discharge/dischargesignal.h"
#include "tools/discharge/modelfile.h"

namespace {

using kovtools::DischargeKind;
using kovtools::DischargeSignal;
using kovtools::DischargeSignalOptions;
using kovtools::FeatureVector;
using kovtools::Mains;
using kovtools::SupportVectors;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;

// The last pattern of two seconds, and what the analyser has voted with the models of `folder`.
struct Poll
{
    std::vector<float> frame;
    PRPDResult result;
};

Poll pollOf(DischargeKind kind, Mains mains, const std::string& folder)
{
    DischargeSignalOptions options;
    options.kind = kind;
    options.mains = mains;
    options.seed = 5;
    DischargeSignal signal(options);
    std::vector<float> samples;
    signal.next(200000, samples);
    KOVPrpdProcess analyser(folder.c_str());
    analyser.setPddMode(kovtools::modeOf(mains));
    analyser.FeedAudio(samples.data(), static_cast<int>(samples.size()));
    for (int i = 0; i < 26; ++i) {
        analyser.updatePdd();
    }
    Poll poll;
    poll.frame.resize(static_cast<std::size_t>(analyser.pageLength() * analyser.pageNumber()));
    poll.result = analyser.getPddFrameData(poll.frame.data(), static_cast<int>(poll.frame.size()));
    return poll;
}

class LibraryFeatures : public testing::TestWithParam<Mains>
{
};

// A model with a single vector, the features computed here, and a width so narrow that the decision is above zero
// only where the library computes the very same numbers. Both runs poll the same samples as often, so both end with
// the same pattern.
TEST_P(LibraryFeatures, AreTheOnesComputedHere)
{
    const Sandbox sandbox;
    const Poll poll = pollOf(DischargeKind::Surface, GetParam(), sandbox.path().string());
    const FeatureVector features = kovtools::featuresOf(poll.frame).variance;
    SupportVectors exact;
    exact.gamma = 1e12F;
    exact.rho = 0.999F;
    exact.coefficients = {1.0F};
    exact.vectors = {features};
    SupportVectors beside = exact;
    beside.vectors[0][1] = std::nextafter(features[1], 1e9F) * 1.0001F;

    writeFile(sandbox / kovtools::varianceModelName, kovtools::modelText(exact));
    const PRPDResult same = pollOf(DischargeKind::Surface, GetParam(), sandbox.path().string()).result;
    writeFile(sandbox / kovtools::varianceModelName, kovtools::modelText(beside));
    const PRPDResult other = pollOf(DischargeKind::Surface, GetParam(), sandbox.path().string()).result;

    EXPECT_GT(same.suspensionPercent, 0.0F);
    EXPECT_EQ(other.suspensionPercent, 0.0F);
}

TEST_P(LibraryFeatures, AreAskedForWhenTheLibraryAsks)
{
    const Sandbox sandbox;

    EXPECT_TRUE(
        kovtools::isClassified(pollOf(DischargeKind::Surface, GetParam(), sandbox.path().string()).frame));
    EXPECT_TRUE(
        kovtools::isClassified(pollOf(DischargeKind::Suspension, GetParam(), sandbox.path().string()).frame));
    EXPECT_FALSE(
        kovtools::isClassified(pollOf(DischargeKind::Corona, GetParam(), sandbox.path().string()).frame));
    EXPECT_FALSE(
        kovtools::isClassified(pollOf(DischargeKind::Noise, GetParam(), sandbox.path().string()).frame));
}

INSTANTIATE_TEST_SUITE_P(Mains, LibraryFeatures, testing::Values(Mains::Hz50, Mains::Hz60));

TEST(ModelText, HoldsTheNumbersInTheOrderOfTheLibrary)
{
    SupportVectors model;
    model.gamma = 0.5F;
    model.rho = -0.25F;
    model.coefficients = {2.0F, -3.0F};
    model.vectors = {FeatureVector{1.0F, 2.0F, 3.0F, 4.0F}, FeatureVector{5.0F, 6.0F, 7.0F, 8.0F}};

    EXPECT_EQ(kovtools::modelText(model), "4\n2\n0.5\n-0.25\n2\n-3\n1 2 3 4\n5 6 7 8\n");
}

}  // namespace
