// kovdoa prpd, as a child process.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"
#include "tests/tools/sounds.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::noise;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::readPicture;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using nlohmann::json;

using Arguments = std::vector<std::string>;

// A little more than 26 votes take at 50 Hz.
constexpr const char* enough = "2.2";

void simulate(const Sandbox& sandbox, const std::string& file, const std::string& type,
              const Arguments& more = {})
{
    Arguments arguments{"simulate", "pd", file, "--type", type, "--seed", "201"};
    if (std::find(more.begin(), more.end(), "--seconds") == more.end()) {
        arguments.insert(arguments.end(), {"--seconds", enough});
    }
    arguments.insert(arguments.end(), more.begin(), more.end());
    ASSERT_EQ(sandbox.run(arguments).status, 0);
}

json analysed(const Sandbox& sandbox, const Arguments& more)
{
    Arguments arguments{"prpd", "a.wav", "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return json::parse(sandbox.run(arguments).out);
}

struct Signal
{
    const char* type;
    const char* verdict;
};

class PrpdVerdicts : public testing::TestWithParam<std::tuple<Signal, const char*, const char*>>
{
};

// The shipped models were trained with seeds 1 ... 12.
TEST_P(PrpdVerdicts, AreRightForSignalsOfOtherSeeds)
{
    const auto& [signal, mains, seed] = GetParam();
    const Sandbox sandbox;
    ASSERT_EQ(sandbox
                  .run({"simulate", "pd", "a.wav", "--type", signal.type, "--seconds", enough, "--mains",
                        mains, "--seed", seed})
                  .status,
              0);

    const json answer = analysed(sandbox, {"--mains", mains});

    EXPECT_EQ(answer["verdict"], signal.verdict) << answer;
    EXPECT_EQ(answer["mains_hz"], std::stoi(mains));
}

INSTANTIATE_TEST_SUITE_P(
    Signals, PrpdVerdicts,
    testing::Combine(testing::Values(Signal{"corona", "corona"}, Signal{"surface", "along_surface"},
                                     Signal{"suspension", "suspension"}, Signal{"noise", "no_discharge"}),
                     testing::Values("50", "60"), testing::Values("201", "202")));

TEST(Prpd, AnswersInWords)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "corona");

    const Outcome outcome = sandbox.run({"prpd", "a.wav"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("votes          26\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("corona         100.0 %\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("verdict        corona discharge\n"), std::string::npos) << outcome.out;
    EXPECT_EQ(sandbox.contents(), Arguments{"a.wav"});
}

TEST(Prpd, AnswersInJson)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "corona", {"--level", "0.2", "--noise", "0.001"});

    const json answer = analysed(sandbox, {});

    EXPECT_EQ(answer["votes"], 26);
    EXPECT_EQ(answer["percent"], (json{{"corona", 100.0}, {"along_surface", 0.0}, {"suspension", 0.0}}));
    EXPECT_GT(answer["f1"], answer["f2"]);
    EXPECT_GT(answer["peak"], 0.1);
    EXPECT_LT(answer["peak"], 1.0);
    EXPECT_GT(answer["floor"], 0.0005);
    EXPECT_LT(answer["floor"], answer["peak"]);
}

TEST(Prpd, CastsItsFirst26VotesInTheShortestRecordingItTakes)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "corona", {"--seconds", "2.16"});

    EXPECT_EQ(analysed(sandbox, {})["votes"], 26);
}

TEST(Prpd, SaysHowLongARecordingMustBe)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "corona", {"--seconds", "2.159"});

    const Outcome outcome = sandbox.run({"prpd", "a.wav"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("26 votes"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("2.16 s"), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.out, "");
}

TEST(Prpd, NamesASampleRateThatItCannotUse)
{
    const Sandbox sandbox;
    writeFile(sandbox / "a.wav", kovtools::tests::floatWav(noise(200000, 0.1, 1), 1, 48000));

    const Outcome outcome = sandbox.run({"prpd", "a.wav"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("48000"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("96000"), std::string::npos) << outcome.err;
}

TEST(Prpd, FindsNoDischargeInSilence)
{
    const Sandbox sandbox;
    writeFile(sandbox / "a.wav", kovtools::tests::floatWav(std::vector<float>(220000), 1, 96000));

    const json answer = analysed(sandbox, {"--plot", "p.png"});

    EXPECT_EQ(answer["verdict"], "no_discharge");
    EXPECT_FALSE(readPicture(sandbox / "p.png").empty());
}

TEST(Prpd, ListensToTheChannelAskedFor)
{
    const Sandbox sandbox;
    simulate(sandbox, "corona.wav", "corona");
    const std::vector<float> corona = kovtools::tests::readWav(sandbox / "corona.wav").values;
    const std::vector<float> other = noise(static_cast<int>(corona.size()), 0.01, 3);
    writeFile(sandbox / "a.wav",
              kovtools::tests::floatWav(kovtools::tests::interleaved({other, corona}), 2, 96000));

    EXPECT_EQ(analysed(sandbox, {})["verdict"], "no_discharge");
    EXPECT_EQ(analysed(sandbox, {"--channel", "2"})["verdict"], "corona");
    EXPECT_EQ(sandbox.run({"prpd", "a.wav", "--channel", "3"}).status, 2);
}

// Mean brightness of the left, the middle and the right third of the panel of levels, above its middle.
cv::Vec3d brightness(const cv::Mat& picture)
{
    cv::Vec3d thirds;
    for (int i = 0; i < 3; ++i) {
        thirds[i] = cv::mean(picture(cv::Rect(94 + 240 * i, 110, 236, 130)))[2];
    }
    return thirds;
}

TEST(Prpd, DrawsCoronaInOneHalfOfTheCycle)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "corona");

    ASSERT_EQ(sandbox.run({"prpd", "a.wav", "--plot", "p.png"}).status, 0);

    const cv::Mat picture = readPicture(sandbox / "p.png");
    ASSERT_EQ(picture.size(), cv::Size(900, 840));
    const cv::Vec3d bright = brightness(picture);
    EXPECT_GT(bright[0], 1.3 * bright[2]);
}

class BadModels : public testing::TestWithParam<const char*>
{
};

TEST_P(BadModels, AreNamedInOneSentence)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "corona");
    std::filesystem::create_directory(sandbox / "models");
    writeFile(sandbox / "models/SVM2.txt", GetParam());

    const Outcome outcome = sandbox.run({"prpd", "a.wav", "--models", "models"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("SVM2.txt"), std::string::npos) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(Texts, BadModels,
                         testing::Values("", "hello", "5 1 1 1 1 1 1 1 1 1", "4 -1 1 1", "4 2000 1 1",
                                         "4 1e30 1 1", "4 1 1 1 1 1 1 1", "4 1 nan 1 1 1 1 1 1", "4 0 1 1"));

TEST(Prpd, SaysWhenAFolderHasNoModels)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "corona");

    const Outcome outcome = sandbox.run({"prpd", "a.wav", "--models", "nowhere"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
}

TEST(Prpd, NeverReplacesItsInput)
{
    const Sandbox sandbox;
    simulate(sandbox, "a.wav", "corona");
    std::filesystem::create_symlink("a.wav", sandbox / "p.png");
    const std::string before = readFile(sandbox / "a.wav");

    EXPECT_EQ(sandbox.run({"prpd", "a.wav", "--plot", "p.png"}).status, 2);
    EXPECT_EQ(readFile(sandbox / "a.wav"), before);
}

TEST(Prpd, RefusesOptionsBeforeTheNameOfTheTraining)
{
    const Sandbox sandbox;
    for (const Arguments& before : {Arguments{"--mains", "60"}, Arguments{"a.wav"}, Arguments{"--json"}}) {
        Arguments arguments{"prpd"};
        arguments.insert(arguments.end(), before.begin(), before.end());
        for (const char* const more : {"train", "--surface", "s.wav", "--suspension", "f.wav", "-o", "m"}) {
            arguments.emplace_back(more);
        }

        const Outcome outcome = sandbox.run(arguments);

        EXPECT_EQ(outcome.status, 2);
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_NE(outcome.err.find("behind 'train'"), std::string::npos) << outcome.err;
        EXPECT_EQ(sandbox.contents(), Arguments{});
    }
}

class BadPrpd : public testing::TestWithParam<Arguments>
{
};

TEST_P(BadPrpd, IsBadUsageInOneSentence)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run(GetParam());

    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Arguments{});
}

INSTANTIATE_TEST_SUITE_P(Arguments, BadPrpd,
                         testing::Values(Arguments{"prpd"}, Arguments{"prpd", "a.wav", "--mains", "40"},
                                         Arguments{"prpd", "a.wav", "--channel", "0"},
                                         Arguments{"prpd", "a.wav", "--plot", "a.jpg"},
                                         Arguments{"prpd", "train", "--surface", "a.wav", "-o", "m"},
                                         Arguments{"prpd", "train", "--suspension", "a.wav", "-o", "m"},
                                         Arguments{"prpd", "train", "--surface", "a.wav", "--suspension",
                                                   "b.wav"}));

}  // namespace
