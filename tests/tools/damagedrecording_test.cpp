// What the program makes of files that are not what they should be.
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::tests::countFiles;
using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using kovtools::tests::writeRecording;
using nlohmann::json;

using Names = std::vector<std::string>;

std::string fourFrames(const Sandbox& sandbox)
{
    const std::filesystem::path file = sandbox / "whole.kov";
    writeRecording(file, 4, 12, 16,
                   [](int frame, int row, int col) { return kovtools::tests::hill(6, 4 + frame, row, col); });
    std::string bytes = readFile(file);
    std::filesystem::remove(file);
    return bytes;
}

TEST(TruncatedRecording, IsRenderedAsFarAsItGoes)
{
    const Sandbox sandbox;
    const std::string whole = fourFrames(sandbox);
    writeFile(sandbox / "cut.kov", whole.substr(0, whole.size() - 20));

    const Outcome outcome = sandbox.run({"render", "cut.kov", "-o", "frames"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(countFiles(sandbox / "frames", ".png"), 3);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find(
                  "is truncated: it ends inside record 4; the 3 complete records before that are used"),
              std::string::npos)
        << outcome.err;
}

TEST(TruncatedRecording, GivesAWholeVideoOfWhatThereIs)
{
    const Sandbox sandbox;
    const std::string whole = fourFrames(sandbox);
    writeFile(sandbox / "cut.kov", whole.substr(0, whole.size() - 20));

    const Outcome outcome = sandbox.run({"render", "cut.kov", "-o", "cut.avi"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(sandbox.contents(), (Names{"cut.avi", "cut.kov"}));
}

TEST(TruncatedRecording, IsDescribedAsFarAsItGoes)
{
    const Sandbox sandbox;
    const std::string whole = fourFrames(sandbox);
    writeFile(sandbox / "cut.kov", whole.substr(0, whole.size() - 700));

    const Outcome outcome = sandbox.run({"info", "cut.kov", "--json"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    const json info = json::parse(outcome.out);
    EXPECT_EQ(info["complete"], false);
    EXPECT_EQ(info["frames"], 3);
    EXPECT_NE(info["damage"].get<std::string>().find("truncated"), std::string::npos);
}

TEST(TruncatedRecording, WithoutACompleteRecordGivesNoPictures)
{
    const Sandbox sandbox;
    const std::string whole = fourFrames(sandbox);
    writeFile(sandbox / "cut.kov", whole.substr(0, whole.find("**peaks")));

    const Outcome outcome = sandbox.run({"render", "cut.kov", "-o", "frames"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"cut.kov"});
}

TEST(DamagedRecording, IsUsedUpToTheDamage)
{
    const Sandbox sandbox;
    std::string bytes = fourFrames(sandbox);
    bytes.replace(bytes.find("--start--3"), 10, "garbage!!!");
    writeFile(sandbox / "bad.kov", bytes);

    const Outcome outcome = sandbox.run({"render", "bad.kov", "-o", "frames"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(countFiles(sandbox / "frames", ".png"), 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("damaged in record 3"), std::string::npos) << outcome.err;
}

struct BadFile
{
    std::string name;
    std::string bytes;
    std::string mentions;
};

class FilesThatAreNoRecordings : public testing::TestWithParam<BadFile>
{
};

TEST_P(FilesThatAreNoRecordings, GetOneSentenceAndStatusOneFromInfoAndRender)
{
    const Sandbox sandbox;
    writeFile(sandbox / "bad.kov", GetParam().bytes);
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"info", "bad.kov"}, {"render", "bad.kov", "-o", "x.mp4"}}) {
        const Outcome outcome = sandbox.run(arguments);

        EXPECT_EQ(outcome.status, 1);
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_NE(outcome.err.find(GetParam().mentions), std::string::npos) << outcome.err;
        EXPECT_EQ(sandbox.contents(), Names{"bad.kov"});
    }
}

constexpr const char* hugeHeader =
    "==FILE_INFO_START==\r\nVERSION:0015\r\nRESROW:2000000000\r\nRESCOL:2000000000\r\n==FILE_INFO_END==\r\n";

INSTANTIATE_TEST_SUITE_P(Files, FilesThatAreNoRecordings,
                         testing::Values(BadFile{"Empty", "", "not a recording"},
                                         BadFile{"Text", "Dear Sir,\r\n", "not a recording"},
                                         BadFile{"Zeros", std::string(5000, '\0'), "not a recording"},
                                         BadFile{"HeaderOnlyBegun", "==FILE_INFO_START==\r\nVERSION:0015\r\n",
                                                 "truncated"},
                                         BadFile{"HugeSizes", hugeHeader, "absurd size"}),
                         [](const testing::TestParamInfo<BadFile>& chosen) { return chosen.param.name; });

TEST(MissingFiles, GetOneSentenceAndStatusOne)
{
    const Sandbox sandbox;
    writeFile(sandbox / "whole.kov", fourFrames(sandbox));
    writeFile(sandbox / "text.png", "no picture");
    writeFile(sandbox / "empty.png", "");
    const std::vector<std::vector<std::string>> cases{
        {"info", "missing.kov"},
        {"info", "."},
        {"info", "/dev/null"},
        {"render", "missing.kov", "-o", "x"},
        {"render", "whole.kov", "-o", "x", "--camera", "missing.png"},
        {"render", "whole.kov", "-o", "x", "--camera", "text.png"},
        {"render", "whole.kov", "-o", "x", "--camera", "empty.png"},
        {"render", "whole.kov", "-o", "missing/x.mp4"},
        {"render", "whole.kov", "-o", "whole.kov/x"},
        {"render", "whole.kov", "-o", "x.mp4", "--contact-sheet", "missing/sheet.png"},
        {"render", "whole.kov", "-o", "x", "--log", "missing/log.txt"},
    };
    for (const std::vector<std::string>& arguments : cases) {
        const Outcome outcome = sandbox.run(arguments);

        EXPECT_EQ(outcome.status, 1) << arguments.back();
        EXPECT_EQ(outcome.out, "") << arguments.back();
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_EQ(sandbox.contents(), (Names{"empty.png", "text.png", "whole.kov"})) << arguments.back();
    }
}

TEST(TemporaryFolder, WithoutRoomIsNotBlamedOnTheRecording)
{
    const Sandbox sandbox;
    writeRecording(sandbox / "a.kov", 20, 64, 64, [](int, int, int) { return 1.0F; });

    const Outcome outcome = sandbox.runScript("ulimit -f 8; \"$0\" info a.kov --json");

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("is the temporary folder full?"), std::string::npos) << outcome.err;
    const json info = json::parse(outcome.out);
    EXPECT_EQ(info["complete"], true);
    EXPECT_EQ(info["damage"], nullptr);
    EXPECT_EQ(info["records"], 20);
    EXPECT_LT(info["frames"], 20);
}

// A small part of the files below. The address sanitizer's own map of the memory takes far more than that.
#ifdef __SANITIZE_ADDRESS__
const std::string memoryLimit;
#else
const std::string memoryLimit = "ulimit -v 4000000; ";
#endif

TEST(HugeFiles, ThatAreNoRecordingsAreGivenUpWithoutReadingThem)
{
    const Sandbox sandbox;
    writeFile(sandbox / "zeros.kov", "");
    std::filesystem::resize_file(sandbox / "zeros.kov", 16ULL << 30U);

    const Outcome outcome = sandbox.runScript(memoryLimit + "\"$0\" info zeros.kov");

    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("is not a recording"), std::string::npos) << outcome.err;
}

TEST(HugeFiles, ThatBeginLikeRecordingsAreNotReadIntoMemory)
{
    const Sandbox sandbox;
    const std::string whole = fourFrames(sandbox);
    writeFile(sandbox / "zeros.kov", whole.substr(0, whole.find("--start--1")));
    std::filesystem::resize_file(sandbox / "zeros.kov", 16ULL << 30U);

    const Outcome outcome = sandbox.runScript(memoryLimit + "\"$0\" info zeros.kov");

    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("a line has no end"), std::string::npos) << outcome.err;
}

TEST(Maps, OfLessThanFourRowsOrColumnsAreNotRendered)
{
    const Sandbox sandbox;
    writeRecording(sandbox / "rows.kov", 1, 3, 8, [](int, int, int) { return 1.0F; });
    writeRecording(sandbox / "cols.kov", 1, 8, 3, [](int, int, int) { return 1.0F; });
    writeRecording(sandbox / "none.kov", 1, 0, 0, [](int, int, int) { return 1.0F; });
    for (const char* const file : {"rows.kov", "cols.kov", "none.kov"}) {
        const Outcome outcome = sandbox.run({"render", file, "-o", "x"});

        EXPECT_EQ(outcome.status, 1) << file;
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_NE(outcome.err.find("4 x 4"), std::string::npos) << outcome.err;
        EXPECT_EQ(sandbox.run({"info", file}).status, 0) << file;
    }
}

class StrangeLevels : public testing::TestWithParam<float>
{
};

TEST_P(StrangeLevels, AreRenderedWithoutHarm)
{
    const Sandbox sandbox;
    writeRecording(sandbox / "some.kov", 1, 12, 16, [](int, int row, int col) {
        return row == 3 ? GetParam() : kovtools::tests::hill(6, 8, row, col);
    });
    writeRecording(sandbox / "all.kov", 1, 12, 16, [](int, int, int) { return GetParam(); });
    for (const char* const file : {"some.kov", "all.kov"}) {
        for (const std::vector<std::string>& more : {std::vector<std::string>{},
                                                     {"--radius", "80", "--outside"},
                                                     {"--several-cursors", "--cursors", "3"}}) {
            std::vector<std::string> arguments{"render", file, "-o", "x"};
            arguments.insert(arguments.end(), more.begin(), more.end());

            const Outcome outcome = sandbox.run(arguments);

            EXPECT_EQ(outcome.status, 0) << outcome.err;
            EXPECT_EQ(outcome.err, "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Values, StrangeLevels,
                         testing::Values(std::numeric_limits<float>::quiet_NaN(),
                                         std::numeric_limits<float>::infinity(),
                                         -std::numeric_limits<float>::infinity(), 0.0F, -1.0F, 1e-42F,
                                         3e38F));

}  // namespace
