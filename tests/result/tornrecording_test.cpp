// A two-frame file cut at every byte. What must survive is worked out from the places of the pieces in the file,
// without the reader.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "resulttesting.h"

namespace {

using ResultTesting::floatBytes;
using ResultTesting::Folder;
using ResultTesting::header;
using ResultTesting::Loaded;
using ResultTesting::mapValues;
using ResultTesting::Messages;
using ResultTesting::spectrumValues;

constexpr int rows = 2;
constexpr int cols = 3;
constexpr int fftLen = 4;
constexpr int bins = 3;

// What a frame is to contain.
struct Expected
{
    EngMapResult scalars;
    std::vector<float> spectrum = std::vector<float>(bins);
    std::vector<float> map = std::vector<float>(rows * cols);
};

// A stretch of the file: a fixed beginning, which has to be there as a whole for the piece to count at all, and a
// content, which counts as far as it goes.
struct Piece
{
    int frame;
    QByteArray beginning;
    QByteArray content;
    std::function<void(Expected&, const QByteArray&)> apply;
};

float number(const QByteArray& text, int part)
{
    return text.simplified().split(' ').value(part).toFloat();
}

int integer(const QByteArray& text, int part)
{
    return text.simplified().split(' ').value(part).toInt();
}

fpoint2d point(const QByteArray& text)
{
    return {number(text, 0), integer(text, 1), integer(text, 2)};
}

void copyBytes(std::vector<float>& target, std::size_t first, const QByteArray& bytes)
{
    std::memcpy(target.data() + first, bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

class TwoFrameFile
{
public:
    TwoFrameFile()
    {
        bytes = header(rows, cols, fftLen);
        headerEnd = bytes.size();
        addFrame(0);
        addFrame(1);
    }

    // The frames of the file's first `size` bytes.
    std::vector<Expected> framesOf(int size) const
    {
        std::vector<Expected> frames;
        int offset = headerEnd;
        for (const Piece& piece : pieces) {
            const int contentStart = offset + piece.beginning.size();
            if (size >= contentStart) {
                if (piece.beginning == "--start--") {
                    frames.emplace_back();
                }
                // What a line shows of a cut line end is a CR at most, which no number minds.
                const int contentSize = std::min(size - contentStart, piece.content.size());
                const bool isThere = contentSize > 0 || !piece.beginning.isEmpty();
                if (piece.apply && isThere) {
                    piece.apply(frames.back(), piece.content.left(contentSize));
                }
            }
            offset = contentStart + piece.content.size() + 2;
        }
        return frames;
    }

    QByteArray bytes;
    int headerEnd = 0;

private:
    void add(const Piece& piece)
    {
        bytes += piece.beginning + piece.content + "\r\n";
        pieces.push_back(piece);
    }

    void addPoint(const char* key, const char* content, fpoint2d EngMapResult::*field,
                  fpoint2d EngMapResult::*overwritten = nullptr)
    {
        add({0, QByteArray("**") + key + ":", content,
             [field, overwritten](Expected& frame, const QByteArray& text) {
                 frame.scalars.*field = point(text);
                 if (overwritten != nullptr) {
                     frame.scalars.*overwritten = point(text);
                 }
             }});
    }

    void addLevel(const char* key, const char* content, float EngMapResult::*field)
    {
        add({0, QByteArray("**") + key + ":", content,
             [field](Expected& frame, const QByteArray& text) { frame.scalars.*field = number(text, 0); }});
    }

    void addPeak(const char* content)
    {
        add({0, "", content, [](Expected& frame, const QByteArray& text) {
                 frame.scalars.peaks.push_back({number(text, 0), integer(text, 1), integer(text, 2),
                                                integer(text, 3), integer(text, 4), integer(text, 5) != 0});
             }});
    }

    void addFrame(int frame)
    {
        add({frame, "--start--", QByteArray::number(frame + 1), nullptr});
        addLevel("PowerBandsFFTSpec", "71.25", &EngMapResult::PowerBandsFFTSpec);
        addPoint("maxSpl", "0.5 11 22", &EngMapResult::maxSpl);
        addPoint("minSpl", "0.25 13 24", &EngMapResult::minSpl);
        addPoint("maxSplExtern", "1.5 35 46", &EngMapResult::maxSplExtern);
        addPoint("minSplExtern", "1e-05 37 48", &EngMapResult::minSplExtern);
        addPoint("maxSplView", "2.5 59 60", &EngMapResult::maxSplView);
        addPoint("minSplView", "-2.25 51 62", &EngMapResult::minSplView);
        addPoint("maxSplExternView", "3.5 73 84", &EngMapResult::maxSplExternView,
                 &EngMapResult::maxSplExtern);
        addPoint("minSplExternView", "3.25 75 86", &EngMapResult::minSplExternView,
                 &EngMapResult::minSplExtern);
        add({frame, "**firstPointInRadius:", "true", [](Expected& expected, const QByteArray& text) {
                 expected.scalars.firstPointInRadius = text == "true";
             }});
        addLevel("median", "0.0456789", &EngMapResult::median);
        addLevel("distance", "5.5", &EngMapResult::distance);
        add({frame, "**peaks:", "2", nullptr});
        addPeak("0.75 1 12 103 14 1");
        addPeak("0.5 21 32 203 34 1");
        add({frame, "**PowerSpec:", "3", nullptr});
        add({frame, "", floatBytes({1.25F, 2.25F, 3.25F}),
             [](Expected& expected, const QByteArray& block) { copyBytes(expected.spectrum, 0, block); }});
        add({frame, "**ResEngMap:", "2x3", nullptr});
        for (int row = 0; row < rows; ++row) {
            const auto base = static_cast<float>(10 * row) + 0.1F;
            add({frame, "", floatBytes({base, base + 1.0F, base + 2.0F}),
                 [row](Expected& expected, const QByteArray& block) {
                     copyBytes(expected.map, static_cast<std::size_t>(row * cols), block);
                 }});
        }
        add({frame, "--end--", "", nullptr});
    }

    std::vector<Piece> pieces;
};

void expectFrame(const EngMapResult& frame, const Expected& expected)
{
    EXPECT_EQ(frame.PowerBandsFFTSpec, expected.scalars.PowerBandsFFTSpec);
    for (const auto field :
         {&EngMapResult::maxSpl, &EngMapResult::minSpl, &EngMapResult::maxSplExtern,
          &EngMapResult::minSplExtern, &EngMapResult::maxSplView, &EngMapResult::minSplView,
          &EngMapResult::maxSplExternView, &EngMapResult::minSplExternView}) {
        EXPECT_EQ(frame.*field, expected.scalars.*field);
    }
    EXPECT_EQ(frame.firstPointInRadius, expected.scalars.firstPointInRadius);
    EXPECT_EQ(frame.median, expected.scalars.median);
    EXPECT_EQ(frame.distance, expected.scalars.distance);
    EXPECT_EQ(frame.peaks, expected.scalars.peaks);
    EXPECT_EQ(spectrumValues(frame), expected.spectrum);
    EXPECT_EQ(mapValues(frame), expected.map);
}

TEST(TornRecording, KeepsWhatIsThereWhereverTheFileEnds)
{
    const Messages messages;
    const Folder folder;
    const TwoFrameFile file;

    for (int size = 0; size <= file.bytes.size(); ++size) {
        SCOPED_TRACE(::testing::Message()
                     << "cut after " << size << " of " << file.bytes.size() << " bytes: ..."
                     << file.bytes.left(size).right(20).toPercentEncoding().constData());
        const std::vector<Expected> expected = file.framesOf(size);

        Loaded loaded = ResultTesting::loadBytes(folder, file.bytes.left(size));

        ASSERT_EQ(loaded.frames(), static_cast<int>(expected.size()));
        for (std::size_t i = 0; i < expected.size(); ++i) {
            expectFrame(loaded.frame(static_cast<int>(i)), expected[i]);
        }
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

TEST(TornRecording, ReadsTheWholeFileAsTwoFullFrames)
{
    const Messages messages;
    const Folder folder;
    const TwoFrameFile file;

    Loaded loaded = ResultTesting::loadBytes(folder, file.bytes);

    ASSERT_EQ(loaded.frames(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(loaded.frame(i).maxSpl, (fpoint2d{0.5F, 11, 22}));
        EXPECT_EQ(loaded.frame(i).maxSplExtern, (fpoint2d{3.5F, 73, 84}));
        EXPECT_EQ(loaded.frame(i).peaks.size(), 2U);
        EXPECT_EQ(mapValues(loaded.frame(i)), (std::vector<float>{0.1F, 1.1F, 2.1F, 10.1F, 11.1F, 12.1F}));
    }
}

TEST(TornRecording, ReportsTheHeaderAsFarAsItGoes)
{
    const Messages messages;
    const Folder folder;
    const QByteArray bytes = header(rows, cols, fftLen);
    const QByteArray untilColumns = bytes.left(bytes.indexOf("RESCOL:") + 7);

    Loaded withoutValue = ResultTesting::loadBytes(folder, untilColumns);
    Loaded withoutColon = ResultTesting::loadBytes(folder, untilColumns.chopped(1));

    EXPECT_EQ(withoutValue->getResRows(), rows);
    EXPECT_EQ(withoutValue->getResCols(), 0);
    EXPECT_EQ(withoutValue->getFFTLen(), 1024);
    EXPECT_EQ(withoutColon->getResCols(), 48);
}

}  // namespace
