#include "tools/recording/recordingpieces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <vector>

#include "tests/tools/program.h"
#include "tests/tools/samples.h"
#include "tools/recording/recordingscan.h"

namespace {

using kovtools::RecordingPiece;
using kovtools::RecordingPieces;
using kovtools::Verdict;

std::vector<RecordingPiece> piecesOf(const std::string& bytes)
{
    std::istringstream stream(bytes);
    RecordingPieces pieces(stream);
    std::vector<RecordingPiece> all;
    while (const std::optional<RecordingPiece> piece = pieces.next()) {
        all.push_back(*piece);
    }
    return all;
}

// Frames of 4 x 5 cells.
std::string recording(int frames)
{
    const kovtools::tests::Sandbox sandbox;
    kovtools::tests::writeRecording(sandbox / "a.kov", frames, 4, 5, [](int frame, int row, int col) {
        return static_cast<float>(1 + frame + row + col);
    });
    return kovtools::tests::readFile(sandbox / "a.kov");
}

std::size_t headerSize(const std::string& bytes)
{
    return bytes.find("--start--1");
}

std::string verdicts(const std::vector<RecordingPiece>& pieces)
{
    std::string letters;
    for (const RecordingPiece& piece : pieces) {
        letters += "CTMH"[static_cast<int>(piece.verdict)];
    }
    return letters;
}

TEST(RecordingPieces, AreTheRecordsOfAWholeRecording)
{
    const std::string bytes = recording(3);

    const std::vector<RecordingPiece> pieces = piecesOf(bytes);

    EXPECT_EQ(verdicts(pieces), "CCC");
    EXPECT_EQ(pieces.at(1).number, 2);
    EXPECT_EQ(pieces.at(1).offset, bytes.find("--start--2"));
    EXPECT_EQ(pieces.at(1).offset + pieces.at(1).bytes, bytes.find("--start--3"));
    EXPECT_EQ(pieces.at(1).reason, "");
}

TEST(RecordingPieces, EndWithATornOneWhereverTheFileIsCut)
{
    const std::string whole = recording(2);
    const std::size_t second = whole.find("--start--2");
    for (std::size_t length = headerSize(whole) + 1; length < whole.size(); ++length) {
        const std::string expected = length < second ? "T" : length == second ? "C" : "CT";

        ASSERT_EQ(verdicts(piecesOf(whole.substr(0, length))), expected) << length;
    }
}

TEST(RecordingPieces, GoOnWithTheNextRecordWhereverOneIsCut)
{
    const std::string whole = recording(3);
    const std::size_t second = whole.find("--start--2");
    const std::size_t third = whole.find("--start--3");
    const std::size_t headLine = std::string("--start--2\r\n").size();
    for (std::size_t kept = headLine; kept < third - second; ++kept) {
        const std::string bytes = whole.substr(0, second + kept) + whole.substr(third);

        const std::vector<RecordingPiece> pieces = piecesOf(bytes);

        ASSERT_EQ(verdicts(pieces), "CTC") << kept;
        ASSERT_EQ(pieces.at(2).offset, second + kept);
        ASSERT_EQ(pieces.at(2).number, 3);
    }
}

TEST(RecordingPieces, FindTheNextRecordHoweverMuchGarbageLiesBetween)
{
    // The lengths move the record over the ends of the windows through which the file is read.
    const std::string whole = recording(2);
    const std::size_t second = whole.find("--start--2");
    for (std::size_t length = 16 * 1024 - 1500; length < 16 * 1024 + 20; ++length) {
        std::string bytes = whole;
        bytes.insert(second, std::string(length, '-'));

        const std::vector<RecordingPiece> pieces = piecesOf(bytes);

        ASSERT_EQ(verdicts(pieces), "CMC") << length;
        ASSERT_EQ(pieces.at(1).bytes, length);
    }
}

TEST(RecordingPieces, CoverTheFileWithoutAGapWhateverIsDoneToIt)
{
    const std::string whole = recording(5);
    std::mt19937 random(3);
    for (int i = 0; i < 3000; ++i) {
        std::string bytes = whole;
        for (std::size_t damages = 1 + random() % 4; damages > 0; --damages) {
            const std::size_t place = headerSize(whole) + random() % (bytes.size() - headerSize(whole));
            const std::size_t length = 1 + random() % 40;
            switch (random() % 3) {
                case 0:
                    bytes.erase(place, length);
                    break;
                case 1:
                    bytes.insert(place, length, static_cast<char>(random()));
                    break;
                default:
                    bytes[place] = static_cast<char>(random());
            }
        }
        std::uint64_t end = headerSize(whole);

        const std::vector<RecordingPiece> pieces = piecesOf(bytes);

        std::string complete = bytes.substr(0, end);
        for (const RecordingPiece& piece : pieces) {
            ASSERT_EQ(piece.offset, end) << i;
            ASSERT_GT(piece.bytes, 0U) << i;
            ASSERT_EQ(piece.reason.empty(), piece.verdict == Verdict::Complete) << i;
            end += piece.bytes;
            complete += piece.verdict == Verdict::Complete ? bytes.substr(piece.offset, piece.bytes) : "";
        }
        ASSERT_EQ(end, bytes.size()) << i;
        const std::string letters = verdicts(pieces);
        ASSERT_EQ(
            verdicts(piecesOf(complete)),
            std::string(static_cast<std::size_t>(std::count(letters.begin(), letters.end(), 'C')), 'C'));
    }
}

TEST(RecordingPieces, AgreeWithTheScanOnHowFarARecordingIsWhole)
{
    const std::string whole = recording(4);
    std::mt19937 random(5);
    for (int i = 0; i < 1000; ++i) {
        std::string bytes = whole;
        bytes[random() % bytes.size()] = static_cast<char>(random());
        std::istringstream stream(bytes);

        const kovtools::RecordingScan scan = kovtools::scanRecording(stream);

        const std::string letters = verdicts(piecesOf(bytes));
        const std::size_t used = std::min(letters.find_first_not_of('C'), letters.size());
        ASSERT_EQ(static_cast<std::size_t>(scan.completeRecords), used) << i;
        ASSERT_EQ(!scan.isWhole(), scan.damage != "") << i;
    }
}

TEST(RecordingPieces, AreFoundInTimeProportionalToTheFileWhenEveryRecordIsBroken)
{
    // Each record claims a map that reaches over many others.
    const std::string header = recording(0);
    std::string bytes = header;
    bytes.replace(bytes.find("RESROW:4"), 8, "RESROW:1");
    bytes.replace(bytes.find("RESCOL:5"), 8, "RESCOL:4000000");
    constexpr std::size_t records = 20'000;
    for (std::size_t i = 0; i < records; ++i) {
        bytes += "--start--1\r\n**ResEngMap:1x4000000\r\n";
    }

    EXPECT_EQ(piecesOf(bytes).size(), records);
}

TEST(RecordingPieces, AreNoneBehindAHeaderThatIsNotComplete)
{
    std::string bytes = recording(2);
    bytes.replace(bytes.find("RESROW:4"), 8, "RESROW:x");
    std::istringstream stream(bytes);
    RecordingPieces pieces(stream);

    EXPECT_EQ(pieces.header().verdict, Verdict::Malformed);
    EXPECT_EQ(pieces.header().reason, "its header gives no usable RESROW");
    EXPECT_FALSE(pieces.next());
}

}  // namespace
