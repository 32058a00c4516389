// kovdoa calibrate, as a child process, against a direct call of the library.
#include <gtest/gtest.h>

#include <KOVDoaHandle/diagnostics/kovcalibration.h>

#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "tests/tools/program.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using nlohmann::json;

constexpr int pairCount = 16;
using Pair = std::array<unsigned, 4>;
using Pairs = std::array<Pair, pairCount>;

// A grid over the picture, turned, stretched and shifted, with a deviation of up to 2 pixels.
Pairs samplePairs()
{
    Pairs pairs{};
    for (unsigned i = 0; i < pairCount; ++i) {
        const unsigned x = 20 + 150 * (i % 4);
        const unsigned y = 30 + 110 * (i / 4);
        pairs[i] = {x, y, 40 + x + y / 10 + (i * 7) % 3, 90 - x / 10 + y + (i * 5) % 3};
    }
    return pairs;
}

std::string lineOf(const Pair& pair)
{
    return std::to_string(pair[0]) + "," + std::to_string(pair[1]) + "," + std::to_string(pair[2]) + "," +
           std::to_string(pair[3]) + "\n";
}

std::string textOf(const Pairs& pairs)
{
    std::string text;
    for (const Pair& pair : pairs) {
        text += lineOf(pair);
    }
    return text;
}

Outcome calibrate(const Sandbox& sandbox, const std::string& text)
{
    writeFile(sandbox / "pairs.csv", text);
    return sandbox.run({"calibrate", "pairs.csv", "--json"});
}

TEST(Calibrate, GivesTheLibrarysMappingAndWhatIsLeftOfEachPair)
{
    const Sandbox sandbox;
    const Pairs pairs = samplePairs();
    unsigned source[pairCount][2];
    unsigned target[pairCount][2];
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        source[i][0] = pairs[i][0];
        source[i][1] = pairs[i][1];
        target[i][0] = pairs[i][2];
        target[i][1] = pairs[i][3];
    }
    double mapping[3][2];
    KOVCalibration::GenConvMat(source, target, mapping);

    const Outcome outcome = calibrate(sandbox, textOf(pairs));

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const json answer = json::parse(outcome.out);
    double squares = 0.0;
    for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_EQ(answer["mapping"][row][0], mapping[row][0]);
        EXPECT_EQ(answer["mapping"][row][1], mapping[row][1]);
    }
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const double x = mapping[0][0] + mapping[1][0] * source[i][1] + mapping[2][0] * source[i][0];
        const double y = mapping[0][1] + mapping[1][1] * source[i][1] + mapping[2][1] * source[i][0];
        EXPECT_NEAR(answer["pairs"][i]["residual"]["x"], x - target[i][0], 1e-9);
        EXPECT_NEAR(answer["pairs"][i]["residual"]["y"], y - target[i][1], 1e-9);
        EXPECT_EQ(answer["pairs"][i]["line"], i + 1);
        squares += (x - target[i][0]) * (x - target[i][0]) + (y - target[i][1]) * (y - target[i][1]);
    }
    EXPECT_NEAR(answer["rms_px"], std::sqrt(squares / pairCount), 1e-9);
    EXPECT_GT(answer["rms_px"], 0.1);
}

TEST(Calibrate, FindsAShift)
{
    const Sandbox sandbox;
    Pairs pairs = samplePairs();
    for (Pair& pair : pairs) {
        pair[2] = pair[0] + 5;
        pair[3] = pair[1] + 3;
    }

    const json answer = json::parse(calibrate(sandbox, "sx,sy,dx,dy\n\n" + textOf(pairs)).out);

    EXPECT_NEAR(answer["mapping"][0][0], 5.0, 1e-6);
    EXPECT_NEAR(answer["mapping"][0][1], 3.0, 1e-6);
    EXPECT_NEAR(answer["mapping"][1][0], 0.0, 1e-9);
    EXPECT_NEAR(answer["mapping"][1][1], 1.0, 1e-9);
    EXPECT_NEAR(answer["mapping"][2][0], 1.0, 1e-9);
    EXPECT_NEAR(answer["mapping"][2][1], 0.0, 1e-9);
    EXPECT_NEAR(answer["rms_px"], 0.0, 1e-6);
    EXPECT_EQ(answer["pairs"][0]["line"], 3);
}

TEST(Calibrate, NamesTheWorstPairInItsTable)
{
    const Sandbox sandbox;
    Pairs pairs = samplePairs();
    pairs[9][2] += 40;
    writeFile(sandbox / "pairs.csv", textOf(pairs));

    const Outcome outcome = sandbox.run({"calibrate", "pairs.csv"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_TRUE(outcome.out.starts_with("x' = ")) << outcome.out;
    EXPECT_TRUE(outcome.out.ends_with(" in line 10\n")) << outcome.out;
}

TEST(Calibrate, RefusesPointsThatDetermineNoMapping)
{
    const Sandbox sandbox;
    Pairs line = samplePairs();
    Pairs place = samplePairs();
    Pairs nearlyLine = samplePairs();
    for (unsigned i = 0; i < pairCount; ++i) {
        line[i][0] = 7 + 3 * i;
        line[i][1] = 900 - 5 * i;
        place[i][0] = 320;
        place[i][1] = 240;
        nearlyLine[i][0] = 4096 * i;
        nearlyLine[i][1] = 4095 * i + (i == 7 ? 1 : 0);
    }

    for (const auto& [pairs, mentions] : {std::pair(line, "on one line"), std::pair(place, "same one"),
                                          std::pair(nearlyLine, "nearly on one")}) {
        const Outcome outcome = calibrate(sandbox, textOf(pairs));

        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_NE(outcome.err.find(mentions), std::string::npos) << outcome.err;
    }
}

struct BadLine
{
    std::string name;
    std::string line;
    std::string mentions;
};

void PrintTo(const BadLine& bad, std::ostream* out)
{
    *out << bad.name;
}

class BadPairs : public testing::TestWithParam<BadLine>
{
};

TEST_P(BadPairs, AreNamedByTheirLine)
{
    const Sandbox sandbox;
    const Pairs pairs = samplePairs();
    std::string text;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        text += i == 4 ? GetParam().line + "\n" : lineOf(pairs[i]);
    }

    const Outcome outcome = calibrate(sandbox, text);

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("line 5 of"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().mentions), std::string::npos) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(Lines, BadPairs,
                         testing::Values(BadLine{"Negative", "-1,2,3,4", "'-1'"},
                                         BadLine{"Fraction", "1,2.5,3,4", "'2.5'"},
                                         BadLine{"Word", "1,2,x,4", "'x'"}, BadLine{"Empty", "1,2,3,", "''"},
                                         BadLine{"TooLarge", "1,2,3,65536", "65535"},
                                         BadLine{"TooFew", "1,2,3", "four whole numbers"},
                                         BadLine{"TooMany", "1,2,3,4,5", "four whole numbers"}),
                         [](const auto& one) { return one.param.name; });

TEST(Calibrate, WantsSixteenPairs)
{
    const Sandbox sandbox;
    const std::string text = textOf(samplePairs());

    const Outcome more = calibrate(sandbox, text + "1,2,3,4\n");
    const Outcome fewer = calibrate(sandbox, text.substr(0, text.rfind('\n', text.size() - 2) + 1));
    const Outcome none = calibrate(sandbox, "");

    EXPECT_EQ(more.status, 1);
    EXPECT_NE(more.err.find("line 17 of"), std::string::npos) << more.err;
    EXPECT_EQ(none.status, 1);
    EXPECT_NE(none.err.find("holds no pairs of points"), std::string::npos) << none.err;
    EXPECT_EQ(fewer.status, 1);
    EXPECT_NE(fewer.err.find("ends at line 15 with 15 of the 16"), std::string::npos) << fewer.err;
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(isOneSentence(none.err)) << none.err;
}

TEST(Calibrate, NeedsAFileThatExists)
{
    const Sandbox sandbox;

    EXPECT_EQ(sandbox.run({"calibrate"}).status, 2);
    EXPECT_EQ(sandbox.run({"calibrate", "missing.csv"}).status, 1);
}

}  // namespace
