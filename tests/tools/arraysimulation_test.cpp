#include "tools/arrayaudio/arraysimulation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <set>

#include "tests/tools/arraysamples.h"
#include "tools/beamform/blockspectra.h"
#include "tools/scene/propagation.h"
#include "tools/support/errors.h"

namespace {

using kovtools::ArraySimulationOptions;
using kovtools::BlockSpectra;
using kovtools::checkWays;
using kovtools::Microphone;
using kovtools::parseSource;
using kovtools::StandingSource;
using kovtools::UsageError;
using kovtools::tests::simulated;

using Rows = std::vector<std::vector<float>>;

constexpr double rate = 96000.0;
constexpr double fullTurn = 6.283185307179586;

ArraySimulationOptions only(const std::string& source, const std::vector<Microphone>& array)
{
    ArraySimulationOptions options;
    options.array = array;
    options.sources = {parseSource(source)};
    options.noise = 0.0;
    return options;
}

double meanSquare(const std::vector<float>& row)
{
    double sum = 0.0;
    for (const float sample : row) {
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    }
    return sum / static_cast<double>(row.size());
}

// Mean square between 8 and 32 kHz.
double bandPower(const std::vector<float>& row)
{
    BlockSpectra spectra(1, 1024, kovtools::WindowKind::Hann);
    spectra.analyse({row}, 512, static_cast<int>(row.size()) / 512 - 1);
    double sum = 0.0;
    for (std::size_t k = 86; k <= 341; ++k) {
        sum += spectra.meanPowers()[k];
    }
    return sum;
}

TEST(ArraySimulation, DelaysATonesPhaseToAThousandthOfARadian)
{
    // 96000 samples hold whole periods, so the sums see nothing but the phase.
    const std::vector<Microphone> array{{0.0, 0.0}, {0.1, 0.0}, {-0.03, 0.07}, {0.0, -0.1, 0.02}};
    const ArraySimulationOptions options = only("tone@12,-6,0.5,0.1,20000", array);

    const Rows rows = simulated(options, 96000);

    std::vector<std::complex<double>> pointers;
    for (const std::vector<float>& row : rows) {
        std::complex<double> sum = 0.0;
        for (std::size_t i = 0; i < row.size(); ++i) {
            sum += static_cast<double>(row[i]) *
                   std::polar(1.0, -fullTurn * 20000.0 / rate * static_cast<double>(i));
        }
        pointers.push_back(sum);
    }
    const Microphone source = options.sources[0].position();
    for (std::size_t m = 0; m < array.size(); ++m) {
        const double way = std::hypot(source.x - array[m].x, source.y - array[m].y, source.z - array[m].z);
        const double expected = -fullTurn * 20000.0 * (way - 0.5) / 343.0;
        const std::complex<double> rest = pointers[m] / pointers[0] * std::polar(1.0, -expected);
        EXPECT_NEAR(std::arg(rest), 0.0, 1e-3) << "microphone " << m;
        EXPECT_NEAR(std::abs(rest), 0.5 / way, 1e-3) << "microphone " << m;
    }
}

TEST(ArraySimulation, DelaysHissByExactlyTheWay)
{
    // Positions on the line to the source, so many samples of sound nearer to it than the middle.
    constexpr double sample = 343.0 / rate;
    const ArraySimulationOptions options =
        only("leak@0,0,2",
             {{0.0, 0.0}, {0.0, 0.0, 7.0 * sample}, {0.0, 0.0, 3.25 * sample}, {0.0, 0.0, -3.75 * sample}});

    const Rows rows = simulated(options, 40000);

    const auto gain = [](double samples) { return 2.0 / (2.0 - samples * sample); };
    const double scale = std::sqrt(meanSquare(rows[0]));
    for (std::size_t i = 0; i + 7 < rows[0].size(); ++i) {
        ASSERT_NEAR(rows[1][i] / gain(7.0), rows[0][i + 7], 1e-4 * scale) << i;
        ASSERT_NEAR(rows[2][i] / gain(3.25), rows[3][i + 7] / gain(-3.75), 1e-4 * scale) << i;
    }
}

TEST(ArraySimulation, GivesEverySourceItsLevelAtOneMetreAndLessByTheDistance)
{
    for (const std::string kind : {"leak", "tone", "pulses"}) {
        const std::vector<Microphone> array{{0.0, 0.0}};
        const double near = bandPower(simulated(only(kind + "@0,0,1,0.2,21000", array), 96000)[0]);
        const double far = bandPower(simulated(only(kind + "@0,0,4,0.2,21000", array), 96000)[0]);

        // A second of hiss in 24 kHz scatters by 0.7 %.
        EXPECT_NEAR(std::sqrt(near), 0.2, 0.004) << kind;
        EXPECT_NEAR(std::sqrt(near / far), 4.0, 1e-4) << kind;
    }
}

TEST(ArraySimulation, KeepsAHissEquallyLoudAllTheTime)
{
    const std::vector<float> row = simulated(only("leak@0,0,1,0.2", {{0.0, 0.0}}), 60000)[0];

    for (std::ptrdiff_t first = 0; first + 6000 <= 60000; first += 6000) {
        const std::vector<float> part(row.begin() + first, row.begin() + first + 6000);
        EXPECT_NEAR(std::sqrt(bandPower(part)), 0.2, 0.03) << first;
    }
}

TEST(ArraySimulation, GivesEachMicrophoneItsOwnNoise)
{
    ArraySimulationOptions options;
    options.array = {{0.0, 0.0}, {0.0, 0.0}};
    options.noise = 0.02;

    const Rows rows = simulated(options, 96000);

    EXPECT_NEAR(std::sqrt(bandPower(rows[0])), 0.02, 0.0004);
    EXPECT_NEAR(std::sqrt(bandPower(rows[1])), 0.02, 0.0004);
    double product = 0.0;
    for (std::size_t i = 0; i < rows[0].size(); ++i) {
        product += static_cast<double>(rows[0][i]) * static_cast<double>(rows[1][i]);
    }
    EXPECT_LT(std::abs(product / 96000.0), 0.02 * meanSquare(rows[0]));
}

TEST(ArraySimulation, BreaksTheMicrophonesThatItIsTold)
{
    ArraySimulationOptions options = kovtools::tests::defaultArrayScene(3);
    options.array.resize(12);
    const Rows whole = simulated(options, 500);
    options.broken = {{4}, {{6, 2}}, {{1, 9}}};

    const Rows broken = simulated(options, 500);

    EXPECT_EQ(broken[6], whole[2]);
    EXPECT_EQ(broken[1], whole[9]);
    EXPECT_EQ(broken[9], whole[1]);
    EXPECT_NEAR(std::sqrt(meanSquare(broken[4])), 1e-6, 1e-7);
    for (const std::size_t untouched : {0U, 2U, 3U, 5U, 7U, 8U, 10U, 11U}) {
        EXPECT_EQ(broken[untouched], whole[untouched]);
    }
}

TEST(BrokenMicrophones, AreRefusedWhenNobodyCouldSayWhatIsMeant)
{
    EXPECT_NO_THROW((kovtools::BrokenMicrophones{{1}, {{2, 3}, {4, 3}}, {{5, 6}}}.check(8)));
    EXPECT_THROW((kovtools::BrokenMicrophones{{8}, {}, {}}.check(8)), UsageError);
    EXPECT_THROW((kovtools::BrokenMicrophones{{1, 1}, {}, {}}.check(8)), UsageError);
    EXPECT_THROW((kovtools::BrokenMicrophones{{}, {{2, 2}}, {}}.check(8)), UsageError);
    EXPECT_THROW((kovtools::BrokenMicrophones{{3}, {{2, 3}}, {}}.check(8)), UsageError);
    EXPECT_THROW((kovtools::BrokenMicrophones{{}, {}, {{1, 1}}}.check(8)), UsageError);
    EXPECT_THROW((kovtools::BrokenMicrophones{{}, {}, {{1, 2}, {2, 3}}}.check(8)), UsageError);
}

TEST(StandingSource, MayStandAtNoMicrophone)
{
    const StandingSource source = parseSource("leak@0,0,5");
    const Microphone near{0.0, 0.011, 5.0};
    const Microphone at{0.0, 0.0, 4.991};

    EXPECT_NO_THROW(checkWays({source}, {{0.0, 0.0}, near}));
    EXPECT_THROW(checkWays({source}, {{0.0, 0.0}, near, at}), UsageError);
}

TEST(StandingSource, IsReadFromItsText)
{
    const kovtools::StandingSource source = parseSource("tone@-12.5,+6,3,0.1,25000");

    EXPECT_EQ(source.kind, kovtools::SourceKind::Tone);
    EXPECT_EQ(source.azimuth, -12.5);
    EXPECT_EQ(source.elevation, 6.0);
    EXPECT_EQ(source.distance, 3.0);
    EXPECT_EQ(source.level, 0.1);
    EXPECT_EQ(source.frequency, 25000.0);
    for (const std::string text : {"", "leak", "hiss@1,2,3", "leak@", "leak@1,2", "leak@1,2,3,4,5000,6",
                                   "leak@1,2,x", "leak@1,2,3,", "leak@1,2,0", "leak@1,2,nan", "leak@1,91,3",
                                   "tone@1,2,3,1,48000", "tone@1,2,3,-1", "leak @1,2,3"}) {
        EXPECT_THROW(parseSource(text), UsageError) << text;
    }
}

}  // namespace
