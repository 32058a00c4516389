// Measured recordings, made by another program than our writer. They lie beside the checkout where the team works.
#include <gtest/gtest.h>

#include <QtCore/QFileInfo>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "resulttesting.h"

namespace {

using ResultTesting::Folder;
using ResultTesting::Loaded;
using ResultTesting::mapValues;
using ResultTesting::Messages;
using ResultTesting::spectrumValues;

struct Measured
{
    const char* name;
    int frames;
    int rows;
    int cols;
    int imgRows;
    int imgCols;
    float distance;
};

class MeasuredRecording : public ::testing::TestWithParam<Measured>
{
protected:
    static QString dataFile(const QString& name) { return QStringLiteral(KOVDOA_SHARED_DATA_DIR "/") + name; }

    QString file() const { return dataFile(QString::fromLatin1(GetParam().name) + ".kov"); }

    void SetUp() override
    {
        if (!QFileInfo::exists(file())) {
            GTEST_SKIP() << "shared/data is absent";
        }
        loaded = std::make_unique<Loaded>(file(), folder.cache());
    }

    Messages messages;
    Folder folder;
    std::unique_ptr<Loaded> loaded;
};

float medianOf(std::vector<float> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    const float upper = *middle;
    return (upper + *std::max_element(values.begin(), middle)) / 2.0F;
}

// Texts have six digits.
void expectSameLevel(float text, float level)
{
    EXPECT_NEAR(text, level, 1e-5F * std::fabs(level));
}

TEST_P(MeasuredRecording, HasTheFramesAndSizesItWasMadeWith)
{
    const Measured& measured = GetParam();

    EXPECT_EQ(loaded->frames(), measured.frames);
    EXPECT_EQ((*loaded)->getFileVersion(), "0015");
    EXPECT_EQ((*loaded)->getResRows(), measured.rows);
    EXPECT_EQ((*loaded)->getResCols(), measured.cols);
    EXPECT_EQ((*loaded)->getImgRows(), measured.imgRows);
    EXPECT_EQ((*loaded)->getImgCols(), measured.imgCols);
    EXPECT_EQ((*loaded)->getFFTLen(), 1024);
}

TEST_P(MeasuredRecording, HasMapsAndSpectraOfPositiveLevels)
{
    for (int i = 0; i < loaded->frames(); ++i) {
        const std::vector<float> map = mapValues(loaded->frame(i));
        const std::vector<float> spectrum = spectrumValues(loaded->frame(i));
        ASSERT_EQ(map.size(), static_cast<std::size_t>(GetParam().rows * GetParam().cols));
        ASSERT_EQ(spectrum.size(), 513U);
        EXPECT_GT(*std::min_element(map.begin(), map.end()), 0.0F);
        EXPECT_GE(*std::min_element(spectrum.begin(), spectrum.end()), 0.0F);
        EXPECT_LT(*std::max_element(map.begin(), map.end()), 1.0F);
        EXPECT_TRUE(
            std::all_of(spectrum.begin(), spectrum.end(), [](float bin) { return std::isfinite(bin); }));
    }
}

TEST_P(MeasuredRecording, HasScalarsThatBelongToItsMaps)
{
    for (int i = 0; i < loaded->frames(); ++i) {
        SCOPED_TRACE(i);
        const EngMapResult& frame = loaded->frame(i);
        const float median = medianOf(mapValues(frame));
        expectSameLevel(frame.median, median);
        EXPECT_EQ(frame.distance, GetParam().distance);
        for (const fpoint2d& point : {frame.maxSpl, frame.minSpl}) {
            expectSameLevel(point.value, frame.ResEngMap->data[point.row][point.col]);
        }
        // The view values are the levels less the median.
        const float tolerance = 1e-5F * frame.maxSpl.value;
        for (const fpoint2d& point :
             {frame.maxSplView, frame.minSplView, frame.maxSplExternView, frame.minSplExternView}) {
            EXPECT_NEAR(point.value, frame.ResEngMap->data[point.row][point.col] - median, tolerance);
        }
        EXPECT_EQ(frame.maxSplExtern, frame.maxSplExternView);
        EXPECT_EQ(frame.minSplExtern, frame.minSplExternView);
    }
}

TEST_P(MeasuredRecording, TellsWhetherItsStrongestCellLiesInTheRegion)
{
    for (int i = 0; i < loaded->frames(); ++i) {
        const EngMapResult& frame = loaded->frame(i);
        const std::vector<float> map = mapValues(frame);
        const auto strongest = static_cast<int>(std::max_element(map.begin(), map.end()) - map.begin());
        const double rows = GetParam().rows;
        const double cols = GetParam().cols;
        const double down = (strongest / GetParam().cols - (rows - 1) / 2) / (rows / 4);
        const double right = (strongest % GetParam().cols - (cols - 1) / 2) / (cols / 4);

        EXPECT_EQ(frame.firstPointInRadius, down * down + right * right <= 1.0) << i;
    }
}

TEST_P(MeasuredRecording, HasPeaksOfItsMapsStrongestFirst)
{
    for (int i = 0; i < loaded->frames(); ++i) {
        SCOPED_TRACE(i);
        const EngMapResult& frame = loaded->frame(i);
        EXPECT_LE(frame.peaks.size(), 3U);
        for (std::size_t p = 0; p < frame.peaks.size(); ++p) {
            const TargetPoint& peak = frame.peaks[p];
            expectSameLevel(peak.value, frame.ResEngMap->data[peak.row][peak.col]);
            EXPECT_TRUE(p == 0 || peak.value <= frame.peaks[p - 1].value);
            EXPECT_EQ(peak.matched, peak.life > 1);
        }
    }
}

TEST_P(MeasuredRecording, IsWrittenAgainByteForByteExceptForTheExternLines)
{
    KOVDoaResultSerialize writer(folder.cache());
    writer.startSave(folder.file(), GetParam().rows, GetParam().cols, GetParam().imgRows, GetParam().imgCols,
                     1024);
    for (int i = 0; i < loaded->frames(); ++i) {
        writer.Save(&loaded->frame(i));
    }

    // Reading has overwritten the plain values by the view values, so the original is made to say the same.
    QByteArray expected = ResultTesting::readFile(file());
    for (const QByteArray& key : {QByteArray("**maxSplExtern"), QByteArray("**minSplExtern")}) {
        int at = 0;
        while ((at = expected.indexOf(key + ":", at)) >= 0) {
            const int value = at + key.size() + 1;
            const int view = expected.indexOf(key + "View:", value) + key.size() + 5;
            const QByteArray text = expected.mid(view, expected.indexOf("\r\n", view) - view);
            expected.replace(value, expected.indexOf("\r\n", value) - value, text);
            at = value;
        }
    }
    EXPECT_TRUE(ResultTesting::readFile(folder.file()) == expected);
}

INSTANTIATE_TEST_SUITE_P(File, MeasuredRecording,
                         ::testing::Values(Measured{"array-real", 109, 48, 64, 480, 640, 0.0F},
                                           Measured{"array-chirps", 189, 64, 48, 640, 480, 5.5F}),
                         [](const auto& file) { return file.index == 0 ? "Surf" : "Chirps"; });

class MeasuredSurf : public MeasuredRecording
{
};

// Counted from one.
TEST_P(MeasuredSurf, HasTheKnownMapInFrameFiftyOne)
{
    const QByteArray array = ResultTesting::readFile(dataFile("array-real-frame.npy"));
    constexpr int values = 48 * 64;
    ASSERT_GT(array.size(), values * 4);
    const QByteArray floats = array.right(values * 4);
    std::vector<float> expected(values);
    std::memcpy(expected.data(), floats.constData(), values * sizeof(float));

    EXPECT_EQ(mapValues(loaded->frame(50)), expected);
}

TEST_P(MeasuredSurf, HasNoPeaksInEveryFourthFrameOnly)
{
    for (int i = 0; i < loaded->frames(); ++i) {
        EXPECT_EQ(loaded->frame(i).peaks.empty(), i % 4 == 0) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(File, MeasuredSurf,
                         ::testing::Values(Measured{"array-real", 109, 48, 64, 480, 640, 0.0F}));

class MeasuredChirps : public MeasuredRecording
{
};

TEST_P(MeasuredChirps, HasPeaksExactlyWhereAChirpSounds)
{
    // Counted from one.
    const std::set<int> sounding{25, 26, 44, 45, 62, 63, 82, 100, 101, 118, 119, 138, 156, 157, 174, 175};

    for (int i = 0; i < loaded->frames(); ++i) {
        EXPECT_EQ(!loaded->frame(i).peaks.empty(), sounding.count(i + 1) == 1) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(File, MeasuredChirps,
                         ::testing::Values(Measured{"array-chirps", 189, 64, 48, 640, 480, 5.5F}));

}  // namespace
