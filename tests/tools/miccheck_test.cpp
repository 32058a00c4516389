// kovdoa miccheck, as a child process, and what it makes of the tests' answers.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>

#include "tests/tools/arraysamples.h"
#include "tests/tools/program.h"
#include "tests/tools/samples.h"
#include "tests/tools/sounds.h"
#include "tools/audio/arraypicture.h"
#include "tools/audio/microphonecheck.h"
#include "tools/scene/arraygeometry.h"

namespace {

using namespace kovtools::tests;
using kovtools::Fault;
using kovtools::MicrophoneResult;
using kovtools::TestResult;
using nlohmann::json;

using Microphones = std::vector<MicrophoneResult>;
using Numbers = std::vector<int>;

constexpr int microphones = kovtools::arrayMicrophones;

// The least that can be checked, half a second.
std::vector<Samples> heard()
{
    return simulated(defaultArrayScene(1), 48000);
}

class MicCheck : public testing::Test
{
protected:
    void record(const std::vector<Samples>& array) { writeArray(sandbox / "array", array); }

    Sandbox sandbox;
};

TEST_F(MicCheck, PassesAnArrayThatWorks)
{
    record(heard());

    const Outcome outcome = sandbox.run({"miccheck", "array"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1 + microphones + 1);
    EXPECT_TRUE(outcome.out.ends_with("\nall 208 microphones pass\n")) << outcome.out;
    EXPECT_EQ(outcome.out.find("FAIL"), std::string::npos) << outcome.out;
}

TEST_F(MicCheck, FindsExactlyTheMicrophonesThatAreBroken)
{
    ASSERT_EQ(sandbox
                  .run({"simulate", "array", "array", "--seconds", "0.75", "--dead", "5", "--dead", "40",
                        "--duplicate", "17=16", "--duplicate", "60=150", "--swap", "30:170"})
                  .status,
              0);

    const Outcome outcome = sandbox.run({"miccheck", "array", "--json", "--plot", "array.png"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find(
                  "6 of 208 microphones fail: 5 (silent), 17 (copy of 16), 30 (misplaced), 40 (silent), "
                  "60 (copy of 150), 170 (misplaced)"),
              std::string::npos)
        << outcome.err;
    const json check = json::parse(outcome.out);
    EXPECT_EQ(check["failing"].get<Numbers>(), (Numbers{5, 17, 30, 40, 60, 170}));
    EXPECT_EQ(check["passed"], false);
    EXPECT_EQ(check["samples"], 72000);
    EXPECT_EQ(check["sample_rate_hz"], 96000);
    ASSERT_EQ(check["microphones"].size(), 208U);
    const json& silent = check["microphones"][5];
    EXPECT_EQ(silent["microphone"], 5);
    EXPECT_LT(silent["level_db"]["value"], 30.0);
    EXPECT_EQ(silent["level_db"]["passed"], false);
    EXPECT_EQ(silent["fault"], "silent");
    EXPECT_EQ(check["microphones"][17]["copy_of"], 16);
    EXPECT_EQ(check["microphones"][17]["distinct"]["passed"], false);
    EXPECT_EQ(check["microphones"][16]["distinct"]["passed"], false);
    EXPECT_EQ(check["microphones"][16]["fault"], nullptr);
    EXPECT_EQ(check["microphones"][30]["placement"]["passed"], false);
    EXPECT_EQ(check["microphones"][8]["lag_samples"], nullptr);
    EXPECT_EQ(check["microphones"][7]["lag_samples"]["passed"], true);

    const cv::Mat picture = readPicture(sandbox / "array.png");
    ASSERT_EQ(picture.size(), cv::Size(kovtools::arrayPictureWidth, kovtools::arrayPictureHeight));
    EXPECT_EQ(sandbox.contents(), (std::vector<std::string>{"array", "array.png"}));
}

TEST_F(MicCheck, DoesNotJudgePlacesWhenAskedNotTo)
{
    std::vector<Samples> array = heard();
    std::swap(array[30], array[170]);
    record(array);

    const Outcome outcome = sandbox.run({"miccheck", "array", "--no-placement"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("placement not checked: "), std::string::npos) << outcome.out;
}

TEST_F(MicCheck, FindsAMicrophoneThatLagsTooFar)
{
    std::vector<Samples> array = heard();
    std::rotate(array[4].begin(), array[4].end() - 300, array[4].end());
    record(array);

    const Outcome outcome = sandbox.run({"miccheck", "array", "--no-placement", "--json"});

    EXPECT_EQ(outcome.status, 1);
    const json check = json::parse(outcome.out);
    EXPECT_EQ(check["failing"].get<Numbers>(), Numbers{4});
    EXPECT_EQ(check["microphones"][4]["fault"], "misaligned");
    EXPECT_NEAR(check["microphones"][4]["lag_samples"]["value"], -300.0, 30.0);
}

TEST_F(MicCheck, NeedsHalfASecond)
{
    record(std::vector<Samples>(microphones, Samples(47999, 0.1F)));

    const Outcome outcome = sandbox.run({"miccheck", "array", "--plot", "array.png"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("holds 47999 samples of each microphone; the check needs 48000"),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(sandbox.contents(), std::vector<std::string>{"array"});
}

TEST_F(MicCheck, NamesTheFileThatIsMissing)
{
    writeArray(sandbox / "array", std::vector<Samples>(200, Samples(64, 0.1F)));

    const Outcome outcome = sandbox.run({"miccheck", "array"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("data-25.wav' does not exist"), std::string::npos) << outcome.err;
}

// Microphones that pass everything.
Microphones healthy()
{
    Microphones array(microphones);
    for (std::size_t i = 0; i < array.size(); ++i) {
        array[i].level = {80.0F, true};
        array[i].distinct = {1.0F, true};
        array[i].placement = TestResult{0.98F, true};
        if (i < 8) {
            array[i].alignment = TestResult{3.0F, true};
        }
    }
    return array;
}

Numbers failing(const Microphones& array)
{
    kovtools::ArrayCheck check;
    check.microphones = array;
    return check.failing();
}

TEST(Faults, OfASilentMicrophoneAreNotItsNeighbours)
{
    Microphones array = healthy();
    array[6].level = {-20.0F, false};
    array[6].distinct.passed = array[7].distinct.passed = false;
    array[6].alignment = array[3].alignment = TestResult{4000.0F, false};

    kovtools::findFaults(array);

    EXPECT_EQ(failing(array), Numbers{6});
    EXPECT_EQ(array[6].fault, Fault::Silent);
}

TEST(Faults, OfACopyAreThoseOfTheOneOutOfItsPlace)
{
    Microphones array = healthy();
    array[20].copyOf = 90;
    array[90].copyOf = 20;
    array[90].placement = TestResult{0.1F, false};

    kovtools::findFaults(array);

    EXPECT_EQ(failing(array), Numbers{90});
    EXPECT_EQ(array[90].fault, Fault::Copy);
    EXPECT_EQ(array[90].copyOf, 20);
}

TEST(Faults, OfACopyAreThoseOfBothWhenThePlacesDoNotTell)
{
    Microphones array = healthy();
    for (MicrophoneResult& microphone : array) {
        microphone.placement.reset();
    }
    array[20].copyOf = 90;
    array[90].copyOf = 20;

    kovtools::findFaults(array);

    EXPECT_EQ(failing(array), (Numbers{20, 90}));
}

TEST(Faults, IncludeNeighboursThatAreEachOthersInverse)
{
    Microphones array = healthy();
    array[50].distinct.passed = array[51].distinct.passed = false;
    array[51].placement = TestResult{-0.97F, false};

    kovtools::findFaults(array);

    EXPECT_EQ(failing(array), Numbers{51});
    EXPECT_EQ(array[51].copyOf, 50);
}

TEST(Faults, OfAPairThatLagsAreThoseOfBothUnlessOneHasAnother)
{
    Microphones array = healthy();
    array[1].alignment = array[5].alignment = TestResult{500.0F, false};
    array[2].alignment = array[7].alignment = TestResult{500.0F, false};
    array[7].placement = TestResult{0.0F, false};

    kovtools::findFaults(array);

    EXPECT_EQ(failing(array), (Numbers{1, 5, 7}));
    EXPECT_EQ(array[1].fault, Fault::Misaligned);
    EXPECT_EQ(array[7].fault, Fault::Misplaced);
}

TEST(ArrayPicture, MarksWhatFailsInTheColourOfItsFault)
{
    kovtools::ArrayCheck check;
    check.microphones = healthy();
    check.microphones[5].fault = Fault::Silent;
    check.microphones[60].fault = Fault::Copy;
    check.microphones[120].fault = Fault::Misplaced;
    check.microphones[3].fault = Fault::Misaligned;

    const cv::Mat picture = kovtools::drawArray(check);

    ASSERT_EQ(picture.size(), cv::Size(kovtools::arrayPictureWidth, kovtools::arrayPictureHeight));
    int quiet = 0;
    for (int i = 0; i < microphones; ++i) {
        const Fault fault = check.microphones[static_cast<std::size_t>(i)].fault;
        const cv::Scalar colour = kovtools::faultColour(fault);
        const cv::Vec3b wanted(static_cast<unsigned char>(colour[0]), static_cast<unsigned char>(colour[1]),
                               static_cast<unsigned char>(colour[2]));
        const cv::Vec3b found = picture.at<cv::Vec3b>(kovtools::microphonePlace(i));
        if (fault != Fault::None) {
            EXPECT_EQ(found, wanted) << i;
        }
        quiet += fault == Fault::None && found == wanted ? 1 : 0;
    }
    EXPECT_GE(quiet, microphones - 4 - 8);  // the numbers beside the four marks cover a few dots
}

TEST(ArrayPicture, ShowsEveryFaultInAColourOfItsOwn)
{
    for (const Fault one : kovtools::everyFault) {
        EXPECT_NE(kovtools::faultColour(one), kovtools::faultColour(Fault::None));
        for (const Fault other : kovtools::everyFault) {
            EXPECT_EQ(kovtools::faultColour(one) == kovtools::faultColour(other), one == other);
        }
    }
}

}  // namespace
