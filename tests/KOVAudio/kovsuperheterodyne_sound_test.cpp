// What the listener does to sound: tones, delay, memory, and bats.
#include <gtest/gtest.h>

#include <malloc.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <span>
#include <string>

#include "plainlistening.h"

using namespace listening;

namespace {

using std::numbers::pi;

// Mean power of the part of 48 kHz sound between two frequencies in Hz, by the transform's definition behind
// a Hann window; bins are 48000 / size apart.
double powerBetween(std::span<const short> sound, double lowest, double highest)
{
    const auto size = static_cast<double>(sound.size());
    double power = 0.0;
    for (double bin = std::ceil(lowest * size / 48000.0); bin <= highest * size / 48000.0; ++bin) {
        double re = 0.0;
        double im = 0.0;
        for (std::size_t i = 0; i < sound.size(); ++i) {
            const double position = static_cast<double>(i);
            const double window = 0.5 - 0.5 * std::cos(2.0 * pi * position / size);
            re += sound[i] * window * std::cos(2.0 * pi * bin * position / size);
            im += sound[i] * window * std::sin(2.0 * pi * bin * position / size);
        }
        power += re * re + im * im;
    }
    // Both halves of the spectrum, over the window's mean square.
    return 2.0 * power / (size * size) / 0.375;
}

double power(std::span<const short> sound)
{
    return powerBetween(sound, 0.0, 24000.0);
}

// What is heard of a tone once the filters have settled; 480 samples, so bins are 100 Hz apart.
Sound heard(float base, double frequency, double amplitude)
{
    const auto monitor = startedMonitor(base);
    feed(*monitor, tone(20'000, frequency, amplitude));
    const Sound sound = readFrom(*monitor);
    return Sound(sound.end() - 480, sound.end());
}

struct Tone
{
    float base;
    double frequency;
};

class ListeningTone : public ::testing::TestWithParam<Tone>
{
};

TEST_P(ListeningTone, IsHeardAtItsDistanceFromTheBase)
{
    const auto [base, frequency] = GetParam();

    const Sound sound = heard(base, base + frequency, 0.1);

    // A Hann window spreads a tone over its bin and the two beside it.
    const double atTone = powerBetween(sound, frequency - 150.0, frequency + 150.0);
    EXPECT_GT(power(sound), 500.0 * 500.0);
    EXPECT_GT(atTone / power(sound), 0.99);
}

INSTANTIATE_TEST_SUITE_P(All, ListeningTone,
                         ::testing::Values(Tone{20000.0F, 500.0}, Tone{20000.0F, 2000.0},
                                           Tone{20000.0F, 5000.0}, Tone{30000.0F, 1000.0},
                                           Tone{30000.0F, 6000.0}, Tone{38600.0F, 500.0},
                                           Tone{38600.0F, 2000.0}, Tone{38600.0F, 4000.0}));

TEST(ListeningTone, AtTheBaseItselfIsTakenOutAsRumble)
{
    // Quiet, so that the limiter leaves both alone.
    const Sound atBase = heard(38600.0F, 38600.0, 0.0005);
    const Sound above = heard(38600.0F, 40600.0, 0.0005);

    EXPECT_LT(power(atBase), 0.02 * power(above));
}

TEST(ListeningTone, BelowTheBandIsMuchQuieter)
{
    const Sound audible = heard(38600.0F, 3000.0, 0.0005);
    const Sound ultrasonic = heard(38600.0F, 40600.0, 0.0005);

    EXPECT_LT(power(audible), 1e-3 * power(ultrasonic));
}

struct Delay
{
    float base;
    double frequency;  // as heard
    double samples;    // at 96 kHz, as the header promises
};

void PrintTo(const Delay& delay, std::ostream* out)
{
    *out << delay.frequency << " Hz above " << delay.base << " Hz";
}

class ListeningDelay : public ::testing::TestWithParam<Delay>
{
};

// A burst so long that its spectrum is narrow; the delay of its energy's centre is then the group delay.
TEST_P(ListeningDelay, IsTheOnePromised)
{
    constexpr double middle = 20'000.0;
    constexpr double width = 2'000.0;
    const Delay& delay = GetParam();
    Samples burst = tone(40'000, delay.base + delay.frequency, 0.3);
    for (std::size_t i = 0; i < burst.size(); ++i) {
        const double distance = (static_cast<double>(i) - middle) / width;
        burst[i] *= static_cast<float>(std::exp(-0.5 * distance * distance));
    }
    const auto monitor = startedMonitor(delay.base);

    feed(*monitor, burst);
    const Sound sound = readFrom(*monitor);

    double energy = 0.0;
    double moment = 0.0;
    for (std::size_t k = 0; k < sound.size(); ++k) {
        const double square = double(sound[k]) * double(sound[k]);
        energy += square;
        moment += square * 2.0 * static_cast<double>(k);
    }
    // The table has one decimal; the sound is in whole numbers.
    EXPECT_NEAR(moment / energy - middle, delay.samples, 0.15);
}

INSTANTIATE_TEST_SUITE_P(All, ListeningDelay,
                         ::testing::Values(Delay{20000.0F, 500.0, 10.1}, Delay{20000.0F, 1000.0, 5.0},
                                           Delay{20000.0F, 2000.0, 3.7}, Delay{20000.0F, 4000.0, 3.2},
                                           Delay{30000.0F, 500.0, 11.7}, Delay{30000.0F, 1000.0, 6.7},
                                           Delay{30000.0F, 2000.0, 5.5}, Delay{30000.0F, 4000.0, 5.2},
                                           Delay{38600.0F, 500.0, 17.5}, Delay{38600.0F, 1000.0, 12.7},
                                           Delay{38600.0F, 2000.0, 12.0}, Delay{38600.0F, 4000.0, 11.7},
                                           Delay{42000.0F, 500.0, 32.8}, Delay{42000.0F, 1000.0, 29.2},
                                           Delay{42000.0F, 2000.0, 19.6}));

// Sanitizers bring an allocator of their own, which does not answer mallinfo2().
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool canMeasure = false;
#else
constexpr bool canMeasure = true;
#endif

TEST(ListeningMemory, IsAllTakenByInit)
{
    if (!canMeasure) {
        GTEST_SKIP() << "another allocator is in place";
    }
    const auto monitor = startedMonitor();
    Samples block = noise(1024, 0.5F, 1);
    const struct mallinfo2 before = mallinfo2();

    int heardSamples = 0;
    std::size_t mostTaken = 0;
    for (const int n : {1, 1023, 1024, 17, 512, 3, 1024}) {
        monitor->feedSignal(block.data(), n);
        int count = 0;
        const short* sound = monitor->readAll(count);
        heardSamples += sound != nullptr ? count : 0;
        const struct mallinfo2 after = mallinfo2();
        mostTaken = std::max(mostTaken, after.uordblks + after.hblkhd);
    }

    EXPECT_EQ(heardSamples, 511 + 512 + 8 + 256 + 1 + 512);
    EXPECT_EQ(mostTaken, before.uordblks + before.hblkhd);
}

// The samples behind a canonical header of 44 bytes.
Samples samplesOf(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    Samples samples((bytes.size() - 44) / sizeof(float));
    std::memcpy(samples.data(), bytes.data() + 44, samples.size() * sizeof(float));
    return samples;
}

TEST(MeasuredUltrasound, BringsBatCallsIntoTheAudibleBand)
{
    const std::string file = KOVDOA_SHARED_DATA_DIR "/ultrasound-bat-96k.wav";
    if (!std::filesystem::exists(file)) {
        GTEST_SKIP() << "shared/data is absent";
    }
    const Samples recording = samplesOf(file);
    ASSERT_EQ(recording.size(), 36'865U);
    const auto monitor = startedMonitor(20000.0F);

    feed(*monitor, recording);
    const Sound sound = readFrom(*monitor);

    // Where the three calls are, in samples at 48 kHz, and a pause between two of them. The calls sweep
    // through 27 to 23 kHz.
    constexpr std::size_t length = 512;
    const auto part = [&](std::size_t first) { return std::span(sound).subspan(first, length); };
    const double pause = power(part(10'800));
    for (const std::size_t call : {std::size_t{2'100}, std::size_t{8'250}, std::size_t{12'850}}) {
        const double all = power(part(call));
        EXPECT_GT(powerBetween(part(call), 2'500.0, 8'000.0) / all, 0.9) << "call at " << call;
        EXPECT_GT(all, 10.0 * pause) << "call at " << call;
    }
}

}  // namespace
