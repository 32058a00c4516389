// kovdoa gasleak and kovdoa simulate gastable, as child processes, against direct calls of the library.
#include <gtest/gtest.h>

#include <KOVDoaHandle/api/gasleak.h>
#include <KOVDoaHandle/diagnostics/kovgasleakprocess.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"
#include "tools/gasleak/leakplot.h"
#include "tools/gasleak/leaktablefile.h"
#include "tools/gasleak/leaktablesimulation.h"
#include "tools/support/errors.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::readPicture;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using nlohmann::json;

using Arguments = std::vector<std::string>;

// Sound power level less sound pressure level at a distance, dB.
double spreading(double distance)
{
    return 10.0 * std::log10(4.0 * 3.141592653589793 * distance * distance);
}

// The level at which the power level lies in the middle of the tenth that begins with `powerLevel`.
std::string levelFor(double powerLevel, double distance)
{
    return std::to_string(powerLevel + 0.05 - spreading(distance));
}

json measure(const Sandbox& sandbox, const Arguments& more)
{
    Arguments arguments{"gasleak", "--table", "table.txt", "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const Outcome outcome = sandbox.run(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    return json::parse(outcome.out, nullptr, false);
}

struct ModeFactor
{
    int mode;
    double factor;
};

class GasLeakModes : public testing::TestWithParam<ModeFactor>
{
};

TEST_P(GasLeakModes, MultiplyTheTablesRate)
{
    const Sandbox sandbox;
    writeFile(sandbox / "table.txt", "60 1.5 0.5\n");

    const json answer = measure(sandbox, {"--mode", std::to_string(GetParam().mode), "--distance", "1.5",
                                          "--level", levelFor(60.0, 1.5)});

    EXPECT_EQ(answer["entry"], "exact");
    EXPECT_DOUBLE_EQ(answer["lrq"], 0.5 * GetParam().factor);
    EXPECT_NEAR(answer["leak"], std::log10(0.5 * GetParam().factor) - 1.0, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(AllSix, GasLeakModes,
                         testing::Values(ModeFactor{0, 1.0}, ModeFactor{1, 1.0}, ModeFactor{2, 4.0},
                                         ModeFactor{3, 2.0}, ModeFactor{4, 3.0}, ModeFactor{5, 1.0}),
                         [](const auto& one) { return "Mode" + std::to_string(one.param.mode); });

// A table from 1 m, 60 dB to 2 m, 70 dB. Raw metres and decibels are compared with bounds in tenths.
struct Clamping
{
    std::string name;
    std::string distance;
    std::string level;
    std::string entry;
    double rate;  // below 0: none
};

void PrintTo(const Clamping& clamping, std::ostream* out)
{
    *out << clamping.name;
}

class GasLeakClamping : public testing::TestWithParam<Clamping>
{
};

TEST_P(GasLeakClamping, FollowsTheLibrarysRules)
{
    const Sandbox sandbox;
    writeFile(sandbox / "table.txt", "60 1 0.1\n70 1 0.2\n60 2 0.3\n70 2 0.4\n");

    const json answer = measure(sandbox, {"--distance", GetParam().distance, "--level", GetParam().level});

    EXPECT_EQ(answer["entry"], GetParam().entry);
    if (GetParam().rate < 0.0) {
        EXPECT_EQ(answer["lrq"], nullptr);
        EXPECT_EQ(answer["leak"], nullptr);
    } else {
        EXPECT_DOUBLE_EQ(answer["lrq"], GetParam().rate);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, GasLeakClamping,
    testing::Values(Clamping{"Exact", "2", levelFor(70.0, 2.0), "exact", 0.4},
                    Clamping{"ADistanceBetweenEntriesIsTheShortest", "1.5", levelFor(70.0, 1.5), "clamped",
                             0.2},
                    Clamping{"ADistanceBelowTenTimesTheShortestIsTheShortest", "9.9", levelFor(70.0, 9.9),
                             "clamped", 0.2},
                    Clamping{"ADistanceBetweenTheLimitsHasNone", "15", levelFor(70.0, 15.0), "none", -1.0},
                    Clamping{"ADistanceBeyondTenTimesTheLongestIsTheLongest", "20.5", levelFor(70.0, 20.5),
                             "clamped", 0.4},
                    Clamping{"ALevelBetweenEntriesIsTheLowest", "2", levelFor(65.0, 2.0), "clamped", 0.3},
                    Clamping{"ALevelBelowTenTimesTheLowestIsTheLowest", "2", "599", "clamped", 0.3},
                    Clamping{"ALevelBetweenTheLimitsHasNone", "2", "650", "none", -1.0},
                    Clamping{"ALevelBeyondTenTimesTheHighestIsTheHighest", "2", "701", "clamped", 0.4}),
    [](const auto& one) { return one.param.name; });

TEST(GasLeak, AnswersAStreamAsTheLibraryDoes)
{
    const Sandbox sandbox;
    const std::string table = kovtools::simulateLeakTable({60.0, 62.0, 1.0, 1.3, 80.7, 1.0});
    writeFile(sandbox / "table.txt", table);
    std::string stream;
    std::vector<std::pair<float, float>> measurements;
    for (int i = 0; i < 40; ++i) {
        measurements.emplace_back(0.9F + 0.013F * static_cast<float>(i),
                                  45.0F + 0.17F * static_cast<float>(i));
        stream += std::to_string(measurements.back().first) + ", " +
                  std::to_string(measurements.back().second) + "\r\n";
    }
    writeFile(sandbox / "m.csv", stream);

    const Outcome outcome =
        sandbox.run({"gasleak", "--table", "table.txt", "--json", "--mode", "3", "m.csv"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    // The library's table is the process's; no other test here loads one.
    ReleaseGasLeakHandle(CreateGasLeakHandle((sandbox / "table.txt").c_str()));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!KOVGasleakProcessPrivate::g_isInited && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    std::istringstream lines(outcome.out);
    std::string line;
    for (const auto& [distance, level] : measurements) {
        ASSERT_TRUE(std::getline(lines, line));
        const json answer = json::parse(line);
        KOVGasleakProcess* const handle = CreateGasLeakHandle(nullptr);
        GasLeakSetGasLeakMode(handle, 3);
        GasLeakFeedData(handle, std::stof(std::to_string(distance)), 0.0F, std::stof(std::to_string(level)));
        if (answer["entry"] == "none") {
            EXPECT_EQ(GasLeakGetLRQ(handle), 0.0F);
        } else {
            EXPECT_EQ(answer["lrq"].get<float>(), GasLeakGetLRQ(handle));
            EXPECT_EQ(answer["leak"].get<float>(), GasLeakGetGetLeak(handle));
        }
        ReleaseGasLeakHandle(handle);
    }
    EXPECT_FALSE(std::getline(lines, line));
}

TEST(GasLeak, DoesNotRepeatTheAnswerBefore)
{
    const Sandbox sandbox;
    writeFile(sandbox / "table.txt", "60 1.5 0.5\n");
    writeFile(sandbox / "m.csv", "1.5," + levelFor(60.0, 1.5) + "\n12,50\n");

    const Outcome outcome = sandbox.run({"gasleak", "--table", "table.txt", "m.csv"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(outcome.out.starts_with("line,distance_m,level_db,power_level_db,entry,lrq,leak\n1,1.5,"));
    EXPECT_NE(outcome.out.find(",exact,0.5,"), std::string::npos) << outcome.out;
    EXPECT_TRUE(outcome.out.ends_with(",none,,\n")) << outcome.out;
}

TEST(GasLeak, NamesTheLinesThatDoNotParseAndAnswersTheRest)
{
    const Sandbox sandbox;
    writeFile(sandbox / "table.txt", "60 1.5 0.5\n");
    const std::string stream = "distance,level\n1.5,60\n\nx,60\n1.5\n1.5,60,7\n-1,60\n1.5,nan\n1.5,61";
    writeFile(sandbox / "m.csv", stream);

    const Outcome file = sandbox.run({"gasleak", "--table", "table.txt", "m.csv"});
    const Outcome piped = sandbox.runScript("\"$0\" gasleak --table table.txt - < m.csv");

    EXPECT_EQ(file.status, 1);
    EXPECT_TRUE(isOneSentence(file.err)) << file.err;
    EXPECT_NE(file.err.find("lines 4, 5, 6, 7 and 8 of"), std::string::npos) << file.err;
    EXPECT_NE(file.out.find("\n2,1.5,60,"), std::string::npos);
    EXPECT_NE(file.out.find("\n9,1.5,61,"), std::string::npos);
    EXPECT_EQ(piped.status, 1);
    EXPECT_EQ(piped.out, file.out);
}

TEST(GasLeak, PassesOverAFirstLineThatNamesTheColumns)
{
    const Sandbox sandbox;
    writeFile(sandbox / "table.txt", "60 1.5 0.5\n");
    for (const char* const names : {"distance,level", "distance_m,level_db",
                                    "\xEF\xBB\xBF"
                                    "Distance (m), Level (dB)\r"}) {
        writeFile(sandbox / "m.csv", std::string(names) + "\n1.5,40\n");

        const Outcome outcome = sandbox.run({"gasleak", "--table", "table.txt", "m.csv"});

        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_NE(outcome.out.find("\n2,1.5,40,"), std::string::npos) << outcome.out;
    }
}

TEST(GasLeak, HasNoLeakValueWhereTheRateHasNoLogarithm)
{
    const Sandbox sandbox;
    const std::string level = levelFor(60.0, 1.5);
    writeFile(sandbox / "m.csv", "1.5," + level + "\n");
    for (const std::string rate : {"0", "-2"}) {
        writeFile(sandbox / "table.txt", "60 1.5 " + rate + "\n");

        const Outcome csv = sandbox.run({"gasleak", "--table", "table.txt", "m.csv"});
        const Outcome one =
            sandbox.run({"gasleak", "--table", "table.txt", "--distance", "1.5", "--level", level});

        EXPECT_TRUE(csv.out.ends_with(",exact," + rate + ",\n")) << csv.out;
        EXPECT_NE(one.out.find("leak rate " + rate + ", no leak value\n"), std::string::npos) << one.out;
    }
}

TEST(GasLeak, LeavesGarbageOutOfTheTableAndNamesIt)
{
    // With the library alone the third line would be a rate of 0.
    const Sandbox sandbox;
    writeFile(sandbox / "table.txt",
              "level distance rate\r\n60 1.5 0.5\r\n61 1.5 0,7\r\n62 1.5\r\n\r\n  62  1.5  0.9 ");

    const Outcome outcome =
        sandbox.run({"gasleak", "--table", "table.txt", "--distance", "1.5", "--level", levelFor(62.0, 1.5)});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("leak rate 0.9,"), std::string::npos) << outcome.out;
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("lines 1, 3 and 4 of"), std::string::npos) << outcome.err;
}

TEST(GasLeak, RefusesATableWithoutALineThatParses)
{
    const Sandbox sandbox;
    for (const char* const text : {"", "\n\n", "60\t1.5\t0.5\n", "a b c\n"}) {
        writeFile(sandbox / "table.txt", text);

        const Outcome outcome =
            sandbox.run({"gasleak", "--table", "table.txt", "--distance", "1.5", "--level", "60"});

        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find("is no calibration table"), std::string::npos) << outcome.err;
    }
}

TEST(GasLeak, PlotsTheTablesRatesWithTheMeasurement)
{
    const Sandbox sandbox;
    const std::string table = kovtools::simulateLeakTable({60.0, 80.0, 1.0, 1.0, 80.7, 1.0});
    writeFile(sandbox / "table.txt", table);

    const Outcome outcome = sandbox.run({"gasleak", "--table", "table.txt", "--distance", "1", "--level",
                                         levelFor(65.0, 1.0), "--plot", "plot.png"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const cv::Mat picture = readPicture(sandbox / "plot.png");
    ASSERT_EQ(picture.size(), cv::Size(kovtools::leakPlotWidth, kovtools::leakPlotHeight));
    const auto point = [](double powerLevel) {
        kovtools::LeakPoint result{static_cast<float>(powerLevel - spreading(1.0)), {}};
        result.answer.entry = kovtools::LeakEntry::Exact;
        result.answer.rate = static_cast<float>(kovtools::leakRate({}, powerLevel, 1.0));
        return result;
    };
    const std::vector<kovtools::LeakPoint> curve{point(60.0), point(80.0)};
    const auto colourAt = [&](double powerLevel) {
        const cv::Point2d place = kovtools::placeInLeakPlot(curve, point(powerLevel));
        return picture.at<cv::Vec3b>(cvRound(place.y), cvRound(place.x));
    };
    EXPECT_EQ(colourAt(75.0), cv::Vec3b(0, 159, 230));
    EXPECT_EQ(colourAt(65.0), cv::Vec3b(233, 180, 86));
    EXPECT_EQ(picture.at<cv::Vec3b>(5, kovtools::leakPlotWidth - 5), cv::Vec3b(24, 24, 24));
}

TEST(GasLeak, PlotsEntriesThatStandAloneAsDotsThatAreSeen)
{
    const Sandbox sandbox;
    writeFile(sandbox / "table.txt", "60 1 0.2\n70 1 2\n80 1 20\n");

    const Outcome outcome =
        sandbox.run({"gasleak", "--table", "table.txt", "--distance", "1", "--plot", "plot.png"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const cv::Mat picture = readPicture(sandbox / "plot.png");
    const auto point = [](double powerLevel, float rate) {
        kovtools::LeakPoint result{static_cast<float>(powerLevel + 0.05 - spreading(1.0)), {}};
        result.answer.entry = kovtools::LeakEntry::Exact;
        result.answer.rate = rate;
        return result;
    };
    const cv::Point2d place =
        kovtools::placeInLeakPlot({point(60.0, 0.2F), point(80.0, 20.0F)}, point(70.0, 2.0F));
    for (const int offset : {-4, 0, 4}) {
        EXPECT_EQ(picture.at<cv::Vec3b>(cvRound(place.y), cvRound(place.x) + offset), cv::Vec3b(0, 159, 230));
    }
}

TEST(GasLeak, PlotsASingleEntryInTheMiddle)
{
    const Sandbox sandbox;
    writeFile(sandbox / "table.txt", "60 1 0.2\n");

    const Outcome outcome =
        sandbox.run({"gasleak", "--table", "table.txt", "--distance", "1", "--plot", "plot.png"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const cv::Mat picture = readPicture(sandbox / "plot.png");
    int right = 0;
    int left = picture.cols;
    for (int row = 0; row < picture.rows; ++row) {
        for (int col = 0; col < picture.cols; ++col) {
            if (picture.at<cv::Vec3b>(row, col) == cv::Vec3b(0, 159, 230)) {
                left = std::min(left, col);
                right = std::max(right, col);
            }
        }
    }
    EXPECT_GE(right - left, 8);
    EXPECT_GT(left, kovtools::leakPlotWidth / 3);
    EXPECT_LT(right, 2 * kovtools::leakPlotWidth / 3);
}

struct WrongUse
{
    Arguments arguments;
    std::string mentions;
};

void PrintTo(const WrongUse& wrong, std::ostream* out)
{
    *out << wrong.mentions;
}

class WrongGasLeakArguments : public testing::TestWithParam<WrongUse>
{
};

TEST_P(WrongGasLeakArguments, GetOneSentenceAndStatusTwo)
{
    const Sandbox sandbox;
    Arguments arguments{"gasleak"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());

    const Outcome outcome = sandbox.run(arguments);

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().mentions), std::string::npos) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WrongGasLeakArguments,
    testing::Values(WrongUse{{}, "--table is required"}, WrongUse{{"--table", "t"}, "nothing to do"},
                    WrongUse{{"--table", "t", "--level", "60"}, "--distance"},
                    WrongUse{{"--table", "t", "--distance", "2"}, "nothing to do"},
                    WrongUse{{"--table", "t", "--distance", "0", "--level", "60"}, "--distance"},
                    WrongUse{{"--table", "t", "--distance", "2", "--level", "nan"}, "--level"},
                    WrongUse{{"--table", "t", "m.csv", "--mode", "6"}, "--mode"},
                    WrongUse{{"--table", "t", "m.csv", "--distance", "2", "--level", "60"}, "MEASUREMENTS"},
                    WrongUse{{"--table", "t", "m.csv", "--plot", "p.png"}, "--distance"},
                    WrongUse{{"--table", "t", "--distance", "2", "--plot", "p.jpg"}, ".png"},
                    WrongUse{{"--table", "t.png", "--distance", "2", "--plot", "t.png"}, "t.png"}));

TEST(GasLeakTables, HaveEveryTenthOnceAndGrowWithTheLevelAndTheDistance)
{
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run({"simulate", "gastable", "a.txt", "--farthest", "3"});
    sandbox.run({"simulate", "gastable", "b.txt", "--farthest", "3"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(readFile(sandbox / "a.txt"), readFile(sandbox / "b.txt"));
    std::istringstream lines(readFile(sandbox / "a.txt"));
    std::vector<std::vector<double>> rates(26, std::vector<double>(701, 0.0));
    float level = 0.0F;
    float distance = 0.0F;
    double rate = 0.0;
    int count = 0;
    while (lines >> level >> distance >> rate) {
        // As the library forms its keys.
        double& cell = rates.at(static_cast<std::size_t>(static_cast<int>(distance * 10.0F) - 5))
                           .at(static_cast<std::size_t>(static_cast<int>(level * 10.0F) - 400));
        EXPECT_EQ(cell, 0.0);
        cell = rate;
        ++count;
    }
    EXPECT_EQ(count, 26 * 701);
    for (std::size_t d = 0; d < rates.size(); ++d) {
        for (std::size_t l = 1; l < rates[d].size(); ++l) {
            ASSERT_GT(rates[d][l], rates[d][l - 1]);
            ASSERT_TRUE(d == 0 || rates[d][l] > rates[d - 1][l]);
        }
    }
    // 80.7 dB at the source is a leak of one litre; the air takes 1 dB on the first metre.
    EXPECT_NEAR(rates[5][397], 1.0, 1e-5);
}

TEST(GasLeakTables, AreRefusedWhenTheirRangesAreTurnedRound)
{
    const Sandbox sandbox;

    EXPECT_EQ(sandbox.run({"simulate", "gastable", "a.txt", "--lowest", "90", "--highest", "80"}).status, 2);
    EXPECT_EQ(sandbox.run({"simulate", "gastable", "a.txt", "--nearest", "9", "--farthest", "8"}).status, 2);
    EXPECT_EQ(sandbox.run({"simulate", "gastable", "a.txt", "--farthest", "1000"}).status, 2);
    EXPECT_TRUE(sandbox.contents().empty());
}

}  // namespace
