// kovdoa prpd train, as a child process.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <vector>

#include "tests/tools/program.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::Sandbox;
using nlohmann::json;

using Arguments = std::vector<std::string>;

void simulate(const Sandbox& sandbox, const std::string& file, const std::string& type, int seed)
{
    ASSERT_EQ(
        sandbox
            .run({"simulate", "pd", file, "--type", type, "--seconds", "2.2", "--seed", std::to_string(seed)})
            .status,
        0);
}

TEST(PrpdTrain, LearnsModelsThatGiveTheRightVerdicts)
{
    const Sandbox sandbox;
    for (const int seed : {301, 302, 303}) {
        simulate(sandbox, "surface" + std::to_string(seed) + ".wav", "surface", seed);
        simulate(sandbox, "suspension" + std::to_string(seed) + ".wav", "suspension", seed);
    }
    simulate(sandbox, "a.wav", "surface", 310);
    simulate(sandbox, "b.wav", "suspension", 310);

    const Outcome outcome = sandbox.run({"prpd", "train", "--surface", "surface301.wav", "surface302.wav",
                                         "surface303.wav", "--suspension", "suspension301.wav",
                                         "suspension302.wav", "suspension303.wav", "-o", "models"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("SVM2.txt"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("cross-validated accuracy"), std::string::npos) << outcome.out;
    EXPECT_EQ(json::parse(sandbox.run({"prpd", "a.wav", "--models", "models", "--json"}).out)["verdict"],
              "along_surface");
    EXPECT_EQ(json::parse(sandbox.run({"prpd", "b.wav", "--models", "models", "--json"}).out)["verdict"],
              "suspension");
}

TEST(PrpdTrain, NeedsTwoUsableRecordingsOfEachKind)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "surface", 301);
    simulate(sandbox, "b.wav", "suspension", 301);
    simulate(sandbox, "c.wav", "noise", 301);

    const Outcome outcome = sandbox.run(
        {"prpd", "train", "--surface", "a.wav", "c.wav", "--suspension", "b.wav", "-o", "models"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(kovtools::tests::countFiles(sandbox / "models", ".txt"), 0);
}

TEST(PrpdTrain, NamesARecordingThatIsMissing)
{
    const Sandbox sandbox;

    const Outcome outcome =
        sandbox.run({"prpd", "train", "--surface", "a.wav", "--suspension", "b.wav", "-o", "models"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("a.wav"), std::string::npos) << outcome.err;
}

}  // namespace
