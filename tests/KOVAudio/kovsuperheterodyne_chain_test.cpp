// What the listener hears, sample by sample against the plain chain.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "plainlistening.h"

using namespace listening;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

// A signal with something to hear at every base frequency, and an answer that is not silence.
bool isHeard(const Sound& sound)
{
    return std::any_of(sound.begin(), sound.end(), [](short value) { return value > 50; });
}

struct Listening
{
    const char* name;
    float base;
    float volume;
    float amplitude;
    int largestPiece;
};

void PrintTo(const Listening& listening, std::ostream* out)
{
    *out << listening.name;
}

class ListeningReadings : public ::testing::TestWithParam<Listening>
{
};

TEST_P(ListeningReadings, GiveTheSamplesOfThePlainChainHoweverLongTheyAre)
{
    const Listening& listening = GetParam();
    const Samples signal = noise(50'000, listening.amplitude, 11);
    const auto monitor = startedMonitor(listening.base, listening.volume);
    PlainChain plain(listening.base, listening.volume);

    bool heard = false;
    for (const Samples& piece : cut(signal, listening.largestPiece, 12)) {
        feed(*monitor, piece);
        const Sound found = readFrom(*monitor);
        ASSERT_EQ(plain.read(piece), found) << "piece of " << piece.size();
        heard = heard || isHeard(found);
    }
    EXPECT_TRUE(heard);
}

INSTANTIATE_TEST_SUITE_P(All, ListeningReadings,
                         ::testing::Values(Listening{"DefaultLoud", 38600.0F, 0.0F, 0.8F, 2100},
                                           Listening{"DefaultQuiet", 38600.0F, 0.0F, 0.0005F, 2100},
                                           Listening{"DefaultLouderByTwentyDecibels", 38600.0F, 20.0F, 0.01F,
                                                     4000},
                                           Listening{"SingleSamples", 38600.0F, -3.0F, 0.8F, 9},
                                           Listening{"LongReadings", 38600.0F, 6.0F, 0.8F, 40'000},
                                           Listening{"LowBase", 20000.0F, 0.0F, 0.5F, 3000},
                                           Listening{"NarrowBand", 43400.0F, 10.0F, 0.5F, 3000},
                                           // The first low-pass has a corner below 0 Hz.
                                           Listening{"NoBand", 44000.0F, 10.0F, 0.5F, 3000}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(ListeningPhase, RunsOnOverReadingsAndComesBackAfterTwoSeconds)
{
    // Readings of an odd size, so that the phase meets the end of its cycle nowhere near a reading's
    // beginning.
    const Samples signal = noise(7 * 71'001, 0.3F, 21);
    const auto monitor = startedMonitor();
    PlainChain plain(38600.0F);

    int wraps = 0;
    for (std::ptrdiff_t first = 0; first < std::ssize(signal); first += 71'001) {
        const Samples piece(signal.begin() + first, signal.begin() + first + 71'001);
        const int phaseBefore = plain.phase();
        feed(*monitor, piece);
        ASSERT_EQ(plain.read(piece), readFrom(*monitor)) << "from sample " << first;
        wraps += plain.phase() < phaseBefore ? 1 : 0;
    }
    EXPECT_EQ(wraps, 2);
}

TEST(ListeningReading, DropsTheLastSampleOfAnOddNumber)
{
    const auto monitor = startedMonitor();
    int count = 0;

    for (const int fed : {0, 1, 2, 3, 1023, 1024}) {
        feed(*monitor, noise(static_cast<std::size_t>(fed), 0.1F, 31));
        monitor->readAll(count);
        EXPECT_EQ(count, fed / 2) << fed << " samples fed";
    }
}

TEST(ListeningReading, DependsOnHowTheInputIsCutIntoReadingsButNotIntoFeeds)
{
    const Samples signal = noise(2048, 0.5F, 41);
    const auto whole = startedMonitor();
    const auto feeds = startedMonitor();
    const auto readings = startedMonitor();

    feed(*whole, signal);
    const Sound inOne = readFrom(*whole);
    for (const Samples& piece : cut(signal, 100, 42)) {
        feed(*feeds, piece);
    }
    const Sound inFeeds = readFrom(*feeds);
    feed(*readings, std::span(signal).first(1024));
    Sound inReadings = readFrom(*readings);
    feed(*readings, std::span(signal).last(1024));
    const Sound second = readFrom(*readings);
    inReadings.insert(inReadings.end(), second.begin(), second.end());

    EXPECT_EQ(inOne, inFeeds);
    EXPECT_EQ(inOne.size(), inReadings.size());
    EXPECT_NE(inOne, inReadings);
}

TEST(ListeningReading, KeepsItsSamplesWhileMoreAreFed)
{
    const auto monitor = startedMonitor();
    feed(*monitor, noise(4096, 0.5F, 51));
    int count = 0;
    const short* sound = monitor->readAll(count);
    const Sound before(sound, sound + count);

    feed(*monitor, noise(50'000, 0.5F, 52));

    EXPECT_EQ(before, Sound(sound, sound + count));
}

TEST(ListeningFeeds, DivideSixteenBitSamplesBy36727)
{
    Samples asFloats;
    Sound asShorts;
    for (const float sample : noise(1000, 32767.0F, 61)) {
        asShorts.push_back(static_cast<short>(sample));
    }
    asShorts.front() = 32767;
    asShorts.back() = -32768;
    for (const short sample : asShorts) {
        asFloats.push_back(static_cast<float>(static_cast<double>(sample) / 36727.0));
    }
    EXPECT_NEAR(asFloats.front(), 0.8922F, 0.00005F);
    const auto monitor = startedMonitor();
    PlainChain plain(38600.0F);

    monitor->feedSignal(asShorts.data(), static_cast<int>(asShorts.size()));

    const Sound found = readFrom(*monitor);
    EXPECT_EQ(plain.read(asFloats), found);
    EXPECT_TRUE(isHeard(found));
}

TEST(ListeningFeeds, MultiplyBySinglePrecisionGain)
{
    constexpr float gain = 0.0123F;
    Samples signal = noise(1000, 1.0F, 71);
    Samples amplified = signal;
    for (float& sample : amplified) {
        sample = sample * gain;
    }
    const auto monitor = startedMonitor();
    PlainChain plain(38600.0F);

    monitor->feedSignal(signal.data(), static_cast<int>(signal.size()), gain);

    const Sound found = readFrom(*monitor);
    EXPECT_EQ(plain.read(amplified), found);
    EXPECT_TRUE(isHeard(found));
}

double deviationOf(const Sound& sound)
{
    double squares = 0.0;
    for (const double value : sound) {
        squares += value * value;
    }
    return std::sqrt(squares / static_cast<double>(sound.size()));
}

// One second of a tone at 40,600 Hz, heard at 2 kHz, after the filters have settled.
double heardLevel(double amplitude)
{
    const auto monitor = startedMonitor();
    const Samples signal = tone(101'000, 40'600.0, amplitude);
    feed(*monitor, std::span(signal).first(5'000));
    readFrom(*monitor);
    feed(*monitor, std::span(signal).subspan(5'000));
    return deviationOf(readFrom(*monitor));
}

TEST(ListeningLimiter, BringsEverythingAboveSixtyDecibelsDownToSixty)
{
    // 60 dB on the scale of getDecibel() is a deviation of a thousandth.
    const double sixtyDecibels = 0.001 * 32767.0 * 29.54242509;

    EXPECT_NEAR(heardLevel(0.01), sixtyDecibels, 1.0);
    EXPECT_NEAR(heardLevel(0.9), sixtyDecibels, 1.0);
}

TEST(ListeningLimiter, DoesNotRaiseWhatIsQuieter)
{
    const double quiet = heardLevel(0.0005);
    const double halfAsLoud = heardLevel(0.00025);

    EXPECT_LT(quiet, 900.0);
    EXPECT_GT(quiet, 100.0);
    EXPECT_NEAR(quiet / halfAsLoud, 2.0, 0.02);
}

TEST(ListeningOutput, WrapsAroundBeyondSixteenBits)
{
    // The limiter leaves 968, 40 dB more is 96,800.
    const Samples signal = noise(4000, 0.5F, 81);
    const auto monitor = startedMonitor(38600.0F, 40.0F);
    PlainChain plain(38600.0F, 40.0F);

    feed(*monitor, signal);
    const Sound found = readFrom(*monitor);

    EXPECT_EQ(plain.read(signal), found);
    EXPECT_GT(std::count_if(found.begin(), found.end(), [](short value) { return value < -20'000; }), 100);
}

TEST(ListeningOutput, IsZeroWhereAValueDoesNotFitIntoThirtyTwoBits)
{
    const Samples signal = noise(4000, 0.5F, 91);
    const auto monitor = startedMonitor(38600.0F, 400.0F);

    feed(*monitor, signal);
    const Sound found = readFrom(*monitor);

    // 20 decades above 968: only an exact 0 fits, and that gives 0 too.
    EXPECT_EQ(found, Sound(2000, 0));
}

class ListeningToBadSamples : public ::testing::TestWithParam<float>
{
};

TEST_P(ListeningToBadSamples, IsSilentFromThereOnAndRecoversAtTheNextStart)
{
    const Samples signal = noise(2000, 0.5F, 101);
    Samples spoiled = signal;
    spoiled[500] = GetParam();
    const auto monitor = startedMonitor();

    feed(*monitor, spoiled);
    const Sound during = readFrom(*monitor);
    feed(*monitor, signal);
    const Sound after = readFrom(*monitor);
    monitor->start();
    feed(*monitor, signal);
    const Sound again = readFrom(*monitor);

    EXPECT_EQ(PlainChain(38600.0F).read(spoiled), during);
    EXPECT_TRUE(std::all_of(during.begin() + 250, during.end(), [](short value) { return value == 0; }));
    EXPECT_EQ(after, Sound(1000, 0));
    EXPECT_EQ(PlainChain(38600.0F).read(signal), again);
    EXPECT_TRUE(isHeard(again));
}

INSTANTIATE_TEST_SUITE_P(All, ListeningToBadSamples, ::testing::Values(notANumber, infinity, -infinity),
                         [](const auto& test) {
                             return std::isnan(test.param) ? std::string("NaN")
                                    : test.param > 0       ? std::string("Infinity")
                                                           : std::string("MinusInfinity");
                         });

}  // namespace
