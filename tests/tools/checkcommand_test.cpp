// kovdoa check and kovdoa recover, as child processes; what they say of which damage is in conformance_test.cpp.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using nlohmann::json;

using Names = std::vector<std::string>;

// "a.kov" with frames of 12 x 16 cells.
std::string writeFrames(const Sandbox& sandbox, int frames)
{
    kovtools::tests::writeRecording(sandbox / "a.kov", frames, 12, 16, [](int frame, int row, int col) {
        return kovtools::tests::hill(6, 4 + frame, row, col);
    });
    return readFile(sandbox / "a.kov");
}

// "bad.kov", in which the second of four records is torn and the third malformed.
void writeDamaged(const Sandbox& sandbox)
{
    std::string bytes = writeFrames(sandbox, 4);
    std::filesystem::remove(sandbox / "a.kov");
    bytes.replace(bytes.find("**peaks:0", bytes.find("--start--3")), 9, "**peaks:x");
    const std::size_t third = bytes.find("--start--3");
    bytes.erase(third - 100, 100);
    writeFile(sandbox / "bad.kov", bytes);
}

TEST(Check, TellsPeopleInATableWithASummary)
{
    const Sandbox sandbox;
    writeDamaged(sandbox);

    const Outcome outcome = sandbox.run({"check", "bad.kov"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("is damaged: 2 of its 4 records are not complete"), std::string::npos)
        << outcome.err;
    EXPECT_NE(
        outcome.out.find("header     complete, version 0015, maps of 12 x 16 cells, spectra of 33 bins\n"),
        std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("  complete\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("  torn: another record begins before its end\n"), std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("  malformed: its number of peaks is no number\n"), std::string::npos)
        << outcome.out;
    EXPECT_NE(
        outcome.out.find("summary    2 complete, 1 torn, 1 malformed, 0 header disagreeing; 1 before the "
                         "first fault\n"),
        std::string::npos)
        << outcome.out;
}

TEST(Check, ListsOnlyTheFaultsWhenAsked)
{
    const Sandbox sandbox;
    writeDamaged(sandbox);

    const Outcome outcome = sandbox.run({"check", "bad.kov", "--faults", "--json"});

    const json verdicts = json::parse(outcome.out);
    ASSERT_EQ(verdicts["records"].size(), 2U);
    EXPECT_EQ(verdicts["records"][0]["number"], 2);
    EXPECT_EQ(verdicts["records"][1]["number"], 3);
    EXPECT_EQ(verdicts["complete"], 2);
}

TEST(Check, FindsNothingWrongWithAWholeRecording)
{
    const Sandbox sandbox;
    writeFrames(sandbox, 3);

    const Outcome outcome = sandbox.run({"check", "a.kov", "--faults"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(outcome.out.ends_with("summary    3 complete, 0 torn, 0 malformed, 0 header disagreeing\n"))
        << outcome.out;
}

TEST(Check, SpellsOutControlCharactersOfTheFile)
{
    const Sandbox sandbox;
    std::string bytes = writeFrames(sandbox, 1);
    bytes.replace(bytes.find("VERSION:0015"), 12, "VERSION:\x1B[2J");
    writeFile(sandbox / "a\nb.kov", bytes);

    const Outcome outcome = sandbox.run({"check", "a\nb.kov"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("a\\nb.kov\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("version \\x1B[2J,"), std::string::npos) << outcome.out;
}

TEST(Check, WritesJsonOfNamesAndVersionsInAnyBytes)
{
    const Sandbox sandbox;
    std::string bytes = writeFrames(sandbox, 1);
    bytes.replace(bytes.find("VERSION:0015"), 12, "VERSION:\xFF\"\\");
    writeFile(sandbox / "\xFF\".kov", bytes);

    const Outcome outcome = sandbox.run({"check", "\xFF\".kov", "--json"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(json::parse(outcome.out)["header"]["version"], "\xEF\xBF\xBD\"\\");
}

TEST(Check, SaysThatItsAnswerCouldNotBeWritten)
{
    const Sandbox sandbox;
    writeFrames(sandbox, 1);

    EXPECT_EQ(sandbox.runInto("/dev/full", {"check", "a.kov"}).status, 1);
}

// The address sanitizer's own map of the memory takes far more than the limit.
#ifdef __SANITIZE_ADDRESS__
const std::string memoryLimit;
#else
const std::string memoryLimit = "ulimit -v 1000000; ";
#endif

TEST(HugeRecordings, AreCheckedAndRecoveredWithoutBeingReadIntoMemory)
{
    const Sandbox sandbox;
    const std::string whole = writeFrames(sandbox, 2);
    constexpr std::uint64_t hole = 1ULL << 30U;
    std::filesystem::resize_file(sandbox / "a.kov", hole);
    std::ofstream(sandbox / "a.kov", std::ios::binary | std::ios::app)
        << whole.substr(whole.find("--start--2"));

    const Outcome check = sandbox.runScript(memoryLimit + "\"$0\" check a.kov --json");
    const Outcome recovery = sandbox.runScript(memoryLimit + "\"$0\" recover a.kov -o b.kov");

    EXPECT_EQ(json::parse(check.out)["complete"], 3) << check.err;
    EXPECT_EQ(json::parse(check.out)["records"][2]["bytes"], hole - whole.size());
    EXPECT_EQ(recovery.status, 1);
    EXPECT_EQ(readFile(sandbox / "b.kov"), whole + whole.substr(whole.find("--start--2")));
}

TEST(Recover, SaysWhatWasLostAndWhere)
{
    const Sandbox sandbox;
    writeDamaged(sandbox);
    const std::string bytes = readFile(sandbox / "bad.kov");

    const Outcome outcome = sandbox.run({"recover", "bad.kov", "-o", "good.kov"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("was damaged: recovered 2 complete records, left out 2"), std::string::npos)
        << outcome.err;
    const std::string place = "from byte " + std::to_string(bytes.find("--start--2")) + " on";
    EXPECT_NE(outcome.out.find("left out record 2, "), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find(place + ", which is torn: another record begins before its end.\n"),
              std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("which is malformed: its number of peaks is no number.\n"), std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("good.kov: 2 complete records\n"), std::string::npos) << outcome.out;
    EXPECT_EQ(sandbox.contents(), (Names{"bad.kov", "good.kov"}));
}

TEST(Recover, CopiesAWholeRecordingAsItIs)
{
    const Sandbox sandbox;
    const std::string bytes = writeFrames(sandbox, 3);

    const Outcome outcome = sandbox.run({"recover", "a.kov", "-o", "b.kov"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(readFile(sandbox / "b.kov"), bytes);
}

TEST(Recover, NeverReplacesItsInput)
{
    const Sandbox sandbox;
    writeDamaged(sandbox);
    const std::string bytes = readFile(sandbox / "bad.kov");
    std::filesystem::create_symlink("bad.kov", sandbox / "link.kov");
    std::filesystem::create_hard_link(sandbox / "bad.kov", sandbox / "same.kov");
    for (const char* const output : {"bad.kov", "./bad.kov", "link.kov", "same.kov"}) {
        const Outcome outcome = sandbox.run({"recover", "bad.kov", "-o", output});

        EXPECT_EQ(outcome.status, 2) << output;
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_EQ(readFile(sandbox / "bad.kov"), bytes) << output;
    }
}

TEST(Recover, LeavesWhatStandsAtItsOutputWhenItFails)
{
    const Sandbox sandbox;
    const std::string bytes = writeFrames(sandbox, 1);
    writeFile(sandbox / "bad.kov", bytes.substr(0, bytes.size() - 9));
    writeFile(sandbox / "out.kov", "precious");

    const Outcome nothing = sandbox.run({"recover", "bad.kov", "-o", "out.kov"});
    const Outcome noRoom = sandbox.runScript("ulimit -f 1; \"$0\" recover a.kov -o out.kov");

    EXPECT_EQ(nothing.status, 1);
    EXPECT_NE(nothing.err.find("because no record of '"), std::string::npos) << nothing.err;
    EXPECT_EQ(noRoom.status, 1);
    EXPECT_NE(noRoom.err.find("is the disk full?"), std::string::npos) << noRoom.err;
    EXPECT_EQ(readFile(sandbox / "out.kov"), "precious");
    EXPECT_EQ(sandbox.contents(), (Names{"a.kov", "bad.kov", "out.kov"}));
}

TEST(CheckAndRecover, GiveOneSentenceForFilesThatAreNotThere)
{
    const Sandbox sandbox;
    std::filesystem::create_directory(sandbox / "folder");
    writeFrames(sandbox, 1);
    const std::vector<std::vector<std::string>> cases{{"check", "missing.kov"},
                                                      {"check", "folder"},
                                                      {"check", "/dev/null"},
                                                      {"recover", "missing.kov", "-o", "x.kov"},
                                                      {"recover", "folder", "-o", "x.kov"},
                                                      {"recover", "/dev/null", "-o", "x.kov"},
                                                      {"recover", "a.kov", "-o", "folder"},
                                                      {"recover", "a.kov", "-o", "missing/x.kov"}};
    for (const std::vector<std::string>& arguments : cases) {
        const Outcome outcome = sandbox.run(arguments);

        EXPECT_EQ(outcome.status, 1) << arguments[1];
        EXPECT_EQ(outcome.out, "") << arguments[1];
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
        EXPECT_EQ(sandbox.contents(), (Names{"a.kov", "folder"}));
    }
}

}  // namespace
