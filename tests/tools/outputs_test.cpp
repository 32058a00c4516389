// Outputs that would replace something, and paths that lead astray.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <ostream>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"
#include "tools/render/framesink.h"

namespace {

using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using kovtools::tests::writeRecording;

using Arguments = std::vector<std::string>;
using Names = std::vector<std::string>;

void writeSample(const std::filesystem::path& file)
{
    writeRecording(file, 2, 12, 16,
                   [](int frame, int row, int col) { return kovtools::tests::hill(6, 4 + frame, row, col); });
}

struct Clash
{
    Arguments arguments;
    std::string first;
    std::string second;
};

void PrintTo(const Clash& clash, std::ostream* out)
{
    *out << "kovdoa";
    for (const std::string& argument : clash.arguments) {
        *out << ' ' << argument;
    }
}

class OneFileInTwoRoles : public testing::TestWithParam<Clash>
{
};

TEST_P(OneFileInTwoRoles, IsRefusedAndNothingIsTouched)
{
    const Sandbox sandbox;
    writeSample(sandbox / "a.kov");
    writeSample(sandbox / "rec.mp4");
    std::filesystem::create_directory(sandbox / "fr");
    std::filesystem::create_symlink("a.kov", sandbox / "link.png");
    kovtools::writePng(sandbox / "cam.png", cv::Mat(64, 64, CV_8UC3, cv::Scalar(1, 2, 3)));
    kovtools::writePng(sandbox / "fr/frame-00001.png", cv::Mat(64, 64, CV_8UC3, cv::Scalar(1, 2, 3)));
    const Names before = sandbox.contents();
    const std::string recording = readFile(sandbox / "a.kov");
    const std::string video = readFile(sandbox / "rec.mp4");
    const std::string camera = readFile(sandbox / "cam.png");
    const std::string frame = readFile(sandbox / "fr/frame-00001.png");

    const Outcome outcome = sandbox.run(GetParam().arguments);

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find(" is both "), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().first), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().second), std::string::npos) << outcome.err;
    EXPECT_EQ(sandbox.contents(), before);
    EXPECT_EQ(readFile(sandbox / "a.kov"), recording);
    EXPECT_EQ(readFile(sandbox / "rec.mp4"), video);
    EXPECT_EQ(readFile(sandbox / "cam.png"), camera);
    EXPECT_EQ(readFile(sandbox / "fr/frame-00001.png"), frame);
}

INSTANTIATE_TEST_SUITE_P(OfInfo, OneFileInTwoRoles,
                         testing::Values(Clash{{"info", "a.kov", "--log", "a.kov"}, "FILE", "--log"},
                                         Clash{{"info", "a.kov", "--log", "fr/../a.kov"}, "FILE", "--log"},
                                         Clash{{"info", "link.png", "--log", "a.kov"}, "FILE", "--log"}));

INSTANTIATE_TEST_SUITE_P(
    OfRender, OneFileInTwoRoles,
    testing::Values(
        Clash{{"render", "a.kov", "-o", "fr", "--contact-sheet", "a.kov"}, "FILE", "--contact-sheet"},
        Clash{{"render", "a.kov", "-o", "fr", "--contact-sheet", "link.png"}, "FILE", "--contact-sheet"},
        Clash{{"render", "a.kov", "-o", "x.mp4", "--contact-sheet", "x.mp4"}, "-o", "--contact-sheet"},
        Clash{{"render", "rec.mp4", "-o", "rec.mp4"}, "FILE", "-o"},
        Clash{{"render", "a.kov", "-o", "a.kov"}, "FILE", "-o"},
        Clash{{"render", "a.kov", "-o", "v.avi", "--camera", "cam.png", "--contact-sheet", "cam.png"},
              "--camera",
              "--contact-sheet"},
        Clash{{"render", "a.kov", "-o", "new/", "--contact-sheet", "new"}, "/new'", "-o"},
        Clash{{"render", "a.kov", "-o", "x.mp4", "--log", "x.mp4"}, "-o", "--log"},
        Clash{{"render", "a.kov", "-o", "fr", "--camera", "fr/frame-00001.png"}, "--camera", "folder -o"},
        Clash{{"render", "a.kov", "-o", "fr", "--contact-sheet", "fr/frame-00002.png"},
              "--contact-sheet",
              "folder -o"}));

INSTANTIATE_TEST_SUITE_P(
    OfSimulate, OneFileInTwoRoles,
    testing::Values(
        Clash{{"simulate", "scene", "s.png", "--camera-picture", "s.png"}, "OUT", "--camera-picture"},
        Clash{{"simulate", "scene", "s.kov", "--camera-picture", "s.kov"}, "OUT", "--camera-picture"},
        Clash{{"simulate", "scene", "s.kov", "--truth", "s.kov"}, "OUT", "--truth"},
        Clash{{"simulate", "scene", "s.kov", "--truth", "q.png", "--camera-picture", "q.png"},
              "--truth",
              "--camera-picture"},
        Clash{{"simulate", "scene", "s.kov", "--log", "./s.kov"}, "OUT", "--log"}));

TEST(Outputs, SayThatAFileStandsWhereAFolderIsNeeded)
{
    const Sandbox sandbox;
    writeSample(sandbox / "a.kov");
    kovtools::tests::writeFile(sandbox / "taken", "");

    const Outcome outcome = sandbox.run({"render", "a.kov", "-o", "taken"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("a file of the name"), std::string::npos) << outcome.err;
}

TEST(Outputs, KeepTheLogOfACommandThatFails)
{
    const Sandbox sandbox;
    writeSample(sandbox / "a.kov");

    const Outcome outcome = sandbox.run({"render", "a.kov", "-o", "x", "--frames", "9:", "--log", "log.txt"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(sandbox.contents(), (Names{"a.kov", "log.txt"}));
    EXPECT_NE(readFile(sandbox / "log.txt"), "");
}

TEST(Names, WithControlCharactersAreSpelledOut)
{
    const Sandbox sandbox;
    const std::string name = "a\n\x1B[31m.kov";
    writeSample(sandbox / name);

    const Outcome good = sandbox.run({"info", name});
    const Outcome bad = sandbox.run({"info", "missing" + name});

    EXPECT_EQ(good.status, 0);
    EXPECT_NE(good.out.find("a\\n\\x1B[31m.kov\n"), std::string::npos) << good.out;
    EXPECT_EQ(bad.status, 1);
    EXPECT_TRUE(isOneSentence(bad.err)) << bad.err;
    EXPECT_NE(bad.err.find("a\\n\\x1B[31m.kov"), std::string::npos) << bad.err;
}

TEST(Versions, WithControlCharactersAreSpelledOut)
{
    const Sandbox sandbox;
    writeSample(sandbox / "a.kov");
    std::string bytes = readFile(sandbox / "a.kov");
    bytes.replace(bytes.find("VERSION:0015") + 8, 4, "\x1B[2J");
    kovtools::tests::writeFile(sandbox / "a.kov", bytes);

    EXPECT_NE(sandbox.run({"info", "a.kov"}).out.find("version    \\x1B[2J\n"), std::string::npos);
}

TEST(Outputs, MayBeStandardOutputByItsName)
{
    const Sandbox sandbox;
    writeSample(sandbox / "a.kov");
    ASSERT_EQ(sandbox.run({"track", "a.kov", "-o", "tracks.csv"}).status, 0);

    const Outcome outcome = sandbox.runScript("\"$0\" track a.kov -o /dev/stdout | cat > copy");

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(readFile(sandbox / "copy").starts_with(readFile(sandbox / "tracks.csv")));
}

TEST(Outputs, MayBeThrownAway)
{
    const Sandbox sandbox;
    writeSample(sandbox / "a.kov");

    const Outcome outcome = sandbox.run({"track", "a.kov", "-o", "/dev/null", "--log", "/dev/null"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"a.kov"});
}

TEST(Outputs, WaitForTheReaderOfAPipeUntilTheyAreInterrupted)
{
    const Sandbox sandbox;
    writeSample(sandbox / "a.kov");
    ASSERT_EQ(mkfifo((sandbox / "pipe").c_str(), 0600), 0);

    // In the foreground it signals once; the second of two signals would end the program at once.
    const Outcome outcome =
        sandbox.runScript("timeout --foreground --signal=INT 2 \"$0\" track a.kov -o pipe --plot out.png");

    EXPECT_EQ(outcome.status, 124);  // of timeout, whose signal ended it
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("interrupted"), std::string::npos) << outcome.err;
    EXPECT_EQ(sandbox.contents(), (Names{"a.kov", "pipe"}));
}

TEST(Paths, FollowALinkBeforeTheStepBack)
{
    const Sandbox sandbox;
    std::filesystem::create_directories(sandbox / "there/inside");
    std::filesystem::create_symlink("there/inside", sandbox / "link");
    writeRecording(sandbox / "there/a.kov", 2, 12, 16, [](int, int, int) { return 1.0F; });
    writeRecording(sandbox / "a.kov", 7, 12, 16, [](int, int, int) { return 1.0F; });

    const Outcome outcome = sandbox.run({"info", "link/../a.kov", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(nlohmann::json::parse(outcome.out)["frames"], 2);
}

TEST(Paths, MayEndInASlash)
{
    const Sandbox sandbox;
    writeSample(sandbox / "a.kov");

    const Outcome outcome = sandbox.run({"render", "./a.kov", "-o", "frames/./"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out.find("/./"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("/frames: "), std::string::npos) << outcome.out;
}

class PathsFromAFolderThatIsGone : public testing::TestWithParam<std::string>
{
};

TEST_P(PathsFromAFolderThatIsGone, AreRefused)
{
    const Sandbox sandbox;

    const Outcome outcome =
        sandbox.runScript("mkdir gone && cd gone && rmdir ../gone && \"$0\" " + GetParam());

    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("working directory"), std::string::npos) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(Of, PathsFromAFolderThatIsGone,
                         testing::Values("info a.kov", "mix a.wav b.wav -o /dev/null",
                                         "gasleak --table /dev/null measurements.csv",
                                         "prpd train --surface a.wav --suspension b.wav -o /dev/null"));

}  // namespace
