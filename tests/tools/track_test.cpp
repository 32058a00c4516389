// kovdoa track and kovdoa render --track, as child processes, against the library's tracker.
#include <gtest/gtest.h>

#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/imaging/kovmapsearch.h>
#include <KOVDoaHandle/imaging/kovtargettrack.h>
#include <KOVDoaHandle/result/kovdoaresultserialize.h>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>
#include <sstream>
#include <string>
#include <vector>

#include <KOVDoaHandle/imaging/engmapresult.h>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"
#include "tools/tracking/peakfollower.h"
#include "tools/tracking/trackplot.h"
#include "tools/tracking/tracks.h"

namespace {

using kovtools::tests::hill;
using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readFile;
using kovtools::tests::readPicture;
using kovtools::tests::Sandbox;
using kovtools::tests::writeFile;
using kovtools::tests::writeRecording;
using nlohmann::json;

constexpr int rows = 24;
constexpr int cols = 32;

// Two hills: one that stays at (16, 24), one that moves along row 6, a cell every other frame, from column 4 on.
float twoHills(int frame, int row, int col)
{
    return std::max(hill(16, 24, row, col), 0.8F * hill(6, 4 + frame / 2, row, col));
}

void writeTwoHills(const Sandbox& sandbox, int frames)
{
    writeRecording(sandbox / "a.kov", frames, rows, cols, twoHills);
}

std::string csvLine(int frame, const TargetPoint& point)
{
    char line[128];
    std::snprintf(line, sizeof line, "%d,%d,%d,%d,%.9g,%d\n", frame, point.id, point.row, point.col,
                  static_cast<double>(point.value), point.life);
    return line;
}

// What the library says when it is fed with the peaks of a recording's maps.
std::string trackedByLibrary(int frames, const std::function<float(int, int, int)>& level)
{
    EngMapResult* const record = createResultHandle(rows, cols, 240, 320, 64);
    KOVTargetTrack tracker;
    std::string text = "frame,id,row,col,level,life\n";
    for (int frame = 0; frame < frames; ++frame) {
        for (int row = 0; row < rows; ++row) {
            for (int col = 0; col < cols; ++col) {
                record->ResEngMap->data[row][col] = level(frame, row, col);
            }
        }
        std::vector<fpoint2d> peaks;
        KOVPrivate::findpeaks(record->ResEngMap, rows, cols, 1e-8F, peaks);
        tracker.FeedData(peaks);
        for (const TargetPoint& point : tracker.getTargetPoints()) {
            text += csvLine(frame + 1, point);
        }
    }
    releaseResultHandle(record);
    return text;
}

// A recording of flat maps with stored peaks at (5, 7) and, but for every third frame, at (15, 20).
void writeStoredPeaks(const std::filesystem::path& file, int frames)
{
    const QTemporaryDir cache;
    KOVDoaResultSerialize writer(cache.path());
    writer.startSave(QString::fromStdString(file.string()), rows, cols, 240, 320, 64);
    EngMapResult* const record = createResultHandle(rows, cols, 240, 320, 64);
    for (int frame = 0; frame < frames; ++frame) {
        for (int row = 0; row < rows; ++row) {
            std::fill_n(record->ResEngMap->data[row], cols, 0.5F);
        }
        record->peaks.assign(1, TargetPoint{0.25F, 5, 7, 0, 0, false});
        if (frame % 3 != 2) {
            record->peaks.push_back({0.75F, 15, 20, 0, 0, false});
        }
        writer.Save(record);
    }
    releaseResultHandle(record);
}

cv::Vec3b colourAt(const std::filesystem::path& picture, cv::Point2d place)
{
    return readPicture(picture).at<cv::Vec3b>(cvRound(place.y), cvRound(place.x));
}

const cv::Vec3b firstColour(0, 159, 230);
const cv::Vec3b secondColour(233, 180, 86);

TEST(Track, FollowsThePeaksThatTheLibraryFinds)
{
    const Sandbox sandbox;
    writeTwoHills(sandbox, 40);

    const Outcome outcome = sandbox.run({"track", "a.kov"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, trackedByLibrary(40, twoHills));
    EXPECT_NE(outcome.out.find("\n17,0,16,24,1,26\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("\n40,1,6,23,"), std::string::npos) << outcome.out;
}

TEST(Track, UsesStoredPeaksAsTheyAre)
{
    const Sandbox sandbox;
    writeStoredPeaks(sandbox / "a.kov", 60);

    const Outcome outcome = sandbox.run({"track", "a.kov", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const json tracks = json::parse(outcome.out)["tracks"];
    ASSERT_EQ(tracks.size(), 2U);
    EXPECT_EQ(tracks[0]["id"], 0);
    EXPECT_EQ(tracks[0]["first_frame"], 17);
    EXPECT_EQ(tracks[0]["last_frame"], 60);
    EXPECT_EQ(tracks[0]["points"][0],
              (json{{"frame", 17}, {"row", 5}, {"col", 7}, {"level", 0.25}, {"life", 26}}));
    // Two steps up and one down: the life, 10 at first, has grown by 16 in frame 47, is below that in the next, and
    // so on.
    EXPECT_EQ(tracks[1]["id"], 1);
    EXPECT_EQ(tracks[1]["points"][0]["frame"], 47);
    EXPECT_EQ(tracks[1]["points"][1]["frame"], 49);
}

TEST(Track, FollowsTheStrongestPeaksOnlyWhenAsked)
{
    const Sandbox sandbox;
    writeTwoHills(sandbox, 30);

    const Outcome outcome = sandbox.run({"track", "a.kov", "--json", "--strongest", "1"});

    const json tracks = json::parse(outcome.out)["tracks"];
    ASSERT_EQ(tracks.size(), 1U);
    EXPECT_EQ(tracks[0]["points"][0]["row"], 16);
}

TEST(Track, KeepsTheOrderOfTheStrongestPeaks)
{
    EngMapResult* const record = createResultHandle(rows, cols, 240, 320, 64);
    for (const float value : {0.2F, 0.5F, 0.3F, 0.5F, 0.5F}) {
        record->peaks.push_back({value, static_cast<int>(record->peaks.size()), 0, 0, 0, false});
    }

    const std::vector<fpoint2d> peaks = kovtools::peaksOf(*record, {1e-8, 2});

    releaseResultHandle(record);
    ASSERT_EQ(peaks.size(), 2U);
    EXPECT_EQ(peaks[0].row, 1);
    EXPECT_EQ(peaks[1].row, 3);
}

TEST(Track, TakesALaterTrackOfAnIdentityForAnotherOne)
{
    kovtools::TrackCollector collector;
    const std::vector<TargetPoint> reported{{0.5F, 3, 4, 0, 30, true}};

    for (const int frame : {1, 2, 44, 87, 88}) {
        collector.add(frame, reported);
    }

    ASSERT_EQ(collector.tracks().size(), 2U);
    EXPECT_EQ(collector.tracks()[0].points.back().frame, 44);
    EXPECT_EQ(collector.tracks()[1].points.front().frame, 87);
}

TEST(Track, WritesItsTableAndDrawsTheTracksInTheirColours)
{
    const Sandbox sandbox;
    writeTwoHills(sandbox, 40);

    const Outcome outcome = sandbox.run({"track", "a.kov", "-o", "t.csv", "--plot", "t.png"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(readFile(sandbox / "t.csv"), trackedByLibrary(40, twoHills));
    const cv::Mat picture = readPicture(sandbox / "t.png");
    ASSERT_EQ(picture.size(), cv::Size(kovtools::trackPlotWidth, kovtools::trackPlotHeight));
    const auto place = [](int row, int col) {
        return kovtools::placeInTrackPlot(cv::Size(cols, rows), cv::Size(320, 240), row, col);
    };
    EXPECT_EQ(colourAt(sandbox / "t.png", place(16, 24)), firstColour);
    EXPECT_EQ(colourAt(sandbox / "t.png", place(6, 23)), secondColour);
    EXPECT_EQ(colourAt(sandbox / "t.png", place(6, 15)), secondColour);
    const cv::Vec3b beside = colourAt(sandbox / "t.png", place(9, 15));
    EXPECT_EQ(beside[0], beside[2]);  // grey
}

TEST(Track, TracksWhatADamagedRecordingHolds)
{
    const Sandbox sandbox;
    writeTwoHills(sandbox, 40);
    const std::string whole = readFile(sandbox / "a.kov");
    writeFile(sandbox / "a.kov", whole.substr(0, whole.size() - 100));

    const Outcome outcome = sandbox.run({"track", "a.kov"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, trackedByLibrary(39, twoHills));
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
}

TEST(Track, RefusesWhatCannotBeTracked)
{
    const Sandbox sandbox;
    writeRecording(sandbox / "empty.kov", 0, rows, cols, twoHills);
    writeRecording(sandbox / "small.kov", 2, 3, 3, twoHills);
    writeFile(sandbox / "text.kov", "hello");

    for (const char* const name : {"empty.kov", "small.kov", "text.kov", "missing.kov"}) {
        const Outcome outcome = sandbox.run({"track", name});

        EXPECT_EQ(outcome.status, 1) << name;
        EXPECT_EQ(outcome.out, "") << name;
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    }
    EXPECT_EQ(sandbox.run({"track"}).status, 2);
    EXPECT_EQ(sandbox.run({"track", "empty.kov", "--plot", "a.gif"}).status, 2);
    EXPECT_EQ(sandbox.run({"track", "empty.kov", "-o", "empty.kov"}).status, 2);
    EXPECT_EQ(sandbox.run({"track", "empty.kov", "--strongest", "-1"}).status, 2);
}

TEST(RenderTrack, PaintsARingOfTheIdentitysColourOnceATrackIsConfirmed)
{
    const Sandbox sandbox;
    writeTwoHills(sandbox, 20);
    const auto render = [&sandbox](const char* folder, bool isTracked) {
        std::vector<std::string> arguments{"render", "a.kov",     "-o",      folder,      "--frames",
                                           "16:17",  "--picture", "640x480", "--cursors", "2"};
        if (isTracked) {
            arguments.insert(arguments.end(), {"--track", "--strongest", "2"});
        }
        const Outcome outcome = sandbox.run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
    };

    render("tracked", true);
    render("plain", false);

    // Cells are 20 pixels wide; on the ring of 15 pixels, beside the cross.
    const cv::Point2d first(24.5 * 20.0 - 11.0, 16.5 * 20.0 - 11.0);
    const cv::Point2d second(12.5 * 20.0 - 11.0, 6.5 * 20.0 - 11.0);
    EXPECT_EQ(colourAt(sandbox / "tracked/frame-00017.png", first), firstColour);
    EXPECT_EQ(colourAt(sandbox / "tracked/frame-00017.png", second), secondColour);
    EXPECT_NE(colourAt(sandbox / "plain/frame-00017.png", first), firstColour);
    EXPECT_EQ(readFile(sandbox / "tracked/frame-00016.png"), readFile(sandbox / "plain/frame-00016.png"));
}

TEST(RenderTrack, DoesNotGoWithPicturesWithoutMarks)
{
    const Sandbox sandbox;

    const Outcome plain = sandbox.run({"render", "a.kov", "-o", "x", "--track", "--plain"});
    const Outcome strongest = sandbox.run({"render", "a.kov", "-o", "x", "--strongest", "2"});

    EXPECT_EQ(plain.status, 2);
    EXPECT_TRUE(isOneSentence(plain.err)) << plain.err;
    EXPECT_EQ(strongest.status, 2);
    EXPECT_TRUE(isOneSentence(strongest.err)) << strongest.err;
}

TEST(Track, FollowsMeasuredChirps)
{
    const std::string file = std::string(KOVDOA_SHARED_DATA_DIR) + "/array-chirps.kov";
    if (!std::filesystem::exists(file)) {
        GTEST_SKIP() << "shared/data is absent";
    }
    const Sandbox sandbox;

    const Outcome outcome = sandbox.run({"track", file, "-o", "t.csv", "--plot", "t.png"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(readPicture(sandbox / "t.png").size(),
              cv::Size(kovtools::trackPlotWidth, kovtools::trackPlotHeight));
    std::istringstream lines(readFile(sandbox / "t.csv"));
    std::string line;
    std::getline(lines, line);
    int count = 0;
    while (std::getline(lines, line)) {
        int frame = 0;
        int id = 0;
        int row = 0;
        int col = 0;
        float level = 0.0F;
        int life = 0;
        ASSERT_EQ(std::sscanf(line.c_str(), "%d,%d,%d,%d,%f,%d", &frame, &id, &row, &col, &level, &life), 6);
        EXPECT_TRUE(frame >= 2 && frame <= 189 && row >= 0 && row < 64 && col >= 0 && col < 48) << line;
        EXPECT_TRUE(level > 0.0F && life > 25 && life <= 50) << line;
        ++count;
    }
    EXPECT_GT(count, 0);
}

}  // namespace
