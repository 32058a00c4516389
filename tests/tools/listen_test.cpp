// kovdoa listen, as a child process, and the monitor that it feeds.
#include <KOVDoaHandle/KOVAudio/kovsuperheterodyne.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/tools/arraysamples.h"
#include "tests/tools/program.h"
#include "tests/tools/sounds.h"
#include "tools/audio/listening.h"

namespace {

using namespace kovtools::tests;

using Integers = std::vector<std::int32_t>;
using Names = std::vector<std::string>;

// What a host gets that feeds blocks of 1024 samples and reads after each.
Integers heard(Samples samples, float base = 38600.0F, float volume = 0.0F)
{
    KOVSuperHeterodyne monitor;
    monitor.init();
    monitor.setBaseFrequency(base);
    monitor.setVolume(volume);
    monitor.start();
    Integers result;
    for (std::size_t at = 0; at < samples.size(); at += 1024) {
        int count = 0;
        monitor.feedSignal(samples.data() + at,
                           static_cast<int>(std::min<std::size_t>(1024, samples.size() - at)));
        const short* const output = monitor.readAll(count);
        result.insert(result.end(), output, output + count);
    }
    return result;
}

// Power of a frequency among the samples of one channel.
template <typename Sample>
double powerAt(const std::vector<Sample>& samples, double frequency, double sampleRate)
{
    double real = 0.0;
    double imaginary = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double angle = 2.0 * std::numbers::pi * frequency * static_cast<double>(i) / sampleRate;
        real += samples[i] * std::cos(angle);
        imaginary += samples[i] * std::sin(angle);
    }
    return (real * real + imaginary * imaginary) / static_cast<double>(samples.size());
}

// The strongest frequency of a block, and the share of the block's power that lies within 1 kHz of it.
struct Peak
{
    double frequency = 0.0;
    double share = 0.0;
};

// Looks from `low` Hz up, in block `index` of `length` samples.
template <typename Sample>
Peak peakOf(const std::vector<Sample>& sound, int index, int length, double low, double sampleRate)
{
    const auto begin = sound.begin() + static_cast<std::ptrdiff_t>(index) * length;
    const std::vector<Sample> block(begin, begin + length);
    const double step = sampleRate / length;
    std::vector<double> powers;
    for (double frequency = low; frequency < sampleRate / 2.0; frequency += step) {
        powers.push_back(powerAt(block, frequency, sampleRate));
    }
    const auto highest = std::max_element(powers.begin(), powers.end()) - powers.begin();
    double near = 0.0;
    double total = 0.0;
    for (std::size_t i = 0; i < powers.size(); ++i) {
        const double away = std::abs(static_cast<double>(static_cast<std::ptrdiff_t>(i) - highest)) * step;
        near += away < 1000.0 ? powers[i] : 0.0;
        total += powers[i];
    }
    return {low + static_cast<double>(highest) * step, near / total};
}

void write(const std::filesystem::path& file, const Samples& samples, int channels = 1,
           int sampleRate = 96000)
{
    writeFile(file, floatWav(samples, channels, sampleRate));
}

TEST(Listen, WritesWhatTheMonitorMakesOfBlocksOf1024)
{
    const Sandbox sandbox;
    const Samples sound = noise(5001, 0.3, 1);
    write(sandbox / "in.wav", sound);

    const Outcome outcome = sandbox.run({"listen", "in.wav", "-o", "out.wav"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(
        outcome.out.find("out.wav: 2500 samples at 48000 Hz, 0.0520833 s, 16-bit; base frequency 38600 Hz"),
        std::string::npos)
        << outcome.out;
    const Wav wav = readWav(sandbox / "out.wav");
    EXPECT_EQ(wav.channels, 1);
    EXPECT_EQ(wav.sampleRate, 48000);
    EXPECT_EQ(wav.bits, 16);
    EXPECT_EQ(wav.integers.size(), 2500U);
    EXPECT_EQ(wav.integers, heard(sound));
    EXPECT_EQ(sandbox.contents(), (Names{"in.wav", "out.wav"}));
}

TEST(Listen, ShiftsAToneDownByTheBaseFrequency)
{
    const Sandbox sandbox;
    write(sandbox / "in.wav", tone(48000, 42100.0, 0.1));

    ASSERT_EQ(sandbox.run({"listen", "in.wav", "-o", "out.wav", "--base", "40000"}).status, 0);

    const Integers sound = readWav(sandbox / "out.wav").integers;
    const double wanted = powerAt(sound, 2100.0, 48000.0);
    for (const double other : {700.0, 1400.0, 2800.0, 3500.0, 4200.0, 5900.0}) {
        EXPECT_GT(wanted, 1000.0 * powerAt(sound, other, 48000.0)) << other;
    }
}

TEST(Listen, RoundsTheBaseFrequencyToItsStepsAndSaysSo)
{
    const Sandbox sandbox;
    const Samples sound = noise(4096, 0.3, 2);
    write(sandbox / "in.wav", sound);

    const Outcome outcome = sandbox.run({"listen", "in.wav", "-o", "out.wav", "--base", "38650"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("base frequency 38700 Hz"), std::string::npos) << outcome.out;
    EXPECT_EQ(readWav(sandbox / "out.wav").integers, heard(sound, 38700.0F));
}

TEST(Listen, GivesTheSameForThe16BitsOfASoundAndForItsFloats)
{
    const Sandbox sandbox;
    std::vector<std::int16_t> integers;
    Samples floats;
    for (const float value : noise(4096, 0.9, 3)) {
        integers.push_back(static_cast<std::int16_t>(value * 32768.0F));
        floats.push_back(static_cast<float>(integers.back()) / 32768.0F);
    }
    writeFile(sandbox / "16.wav", shortWav(integers, 1, 96000));
    write(sandbox / "float.wav", floats);

    ASSERT_EQ(sandbox.run({"listen", "16.wav", "-o", "a.wav"}).status, 0);
    ASSERT_EQ(sandbox.run({"listen", "float.wav", "-o", "b.wav"}).status, 0);

    EXPECT_EQ(readFile(sandbox / "a.wav"), readFile(sandbox / "b.wav"));
    EXPECT_EQ(readWav(sandbox / "a.wav").integers, heard(floats));
}

TEST(Listen, TakesTheChannelThatIsAskedFor)
{
    const Sandbox sandbox;
    const std::vector<Samples> channels{noise(3000, 0.2, 4), noise(3000, 0.2, 5), noise(3000, 0.2, 6)};
    write(sandbox / "in.wav", interleaved(channels), 3);

    ASSERT_EQ(sandbox.run({"listen", "in.wav", "-o", "out.wav", "--channel", "2"}).status, 0);

    EXPECT_EQ(readWav(sandbox / "out.wav").integers, heard(channels[1]));
}

TEST(Listen, TakesTheMeanOfAllChannelsUnlessOneIsAskedFor)
{
    const Sandbox sandbox;
    const Samples one = noise(3000, 0.2, 7);
    const Samples other = noise(3000, 0.2, 8);
    Samples mean;
    for (std::size_t i = 0; i < one.size(); ++i) {
        mean.push_back(one[i] / 2.0F + other[i] / 2.0F);
    }
    write(sandbox / "in.wav", interleaved({one, other}), 2);

    ASSERT_EQ(sandbox.run({"listen", "in.wav", "-o", "out.wav"}).status, 0);

    EXPECT_EQ(readWav(sandbox / "out.wav").integers, heard(mean));
}

TEST(Listen, TakesAMicrophoneOfAFolderOfArrayAudio)
{
    const Sandbox sandbox;
    std::vector<Samples> microphones;
    for (unsigned i = 0; i < 16; ++i) {
        microphones.push_back(noise(2048, 0.1, 10 + i));
    }
    writeArray(sandbox / "array", microphones);

    ASSERT_EQ(sandbox.run({"listen", "array", "-o", "first.wav"}).status, 0);
    ASSERT_EQ(sandbox.run({"listen", "array", "-o", "eleven.wav", "--microphone", "11"}).status, 0);

    EXPECT_EQ(readWav(sandbox / "first.wav").integers, heard(microphones[0]));
    EXPECT_EQ(readWav(sandbox / "eleven.wav").integers, heard(microphones[11]));
}

TEST(Listen, ReplacesNoMicrophoneOfTheFolder)
{
    const Sandbox sandbox;
    writeArray(sandbox / "array", std::vector<Samples>(16, noise(2048, 0.1, 10)));
    const std::string other = readFile(sandbox / "array/data-1.wav");

    const Outcome outcome = sandbox.run({"listen", "array", "-o", "array/data-1.wav"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_EQ(readFile(sandbox / "array/data-1.wav"), other);
}

TEST(Listen, MakesTheSoundLouderByTheVolume)
{
    const Sandbox sandbox;
    const Samples sound = noise(4096, 1e-5, 9);  // below where the limiter begins
    write(sandbox / "in.wav", sound);

    const Outcome outcome = sandbox.run({"listen", "in.wav", "-o", "out.wav", "--volume", "20"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out.find("clipped"), std::string::npos) << outcome.out;
    EXPECT_EQ(readWav(sandbox / "out.wav").integers, heard(sound, 38600.0F, 20.0F));
}

TEST(Listen, ClipsWhatTheMonitorWouldLetWrapAround)
{
    const Sandbox sandbox;
    const Samples sound = tone(8192, 41000.0, 0.5);
    write(sandbox / "in.wav", sound);
    const Integers plain = heard(sound, 38600.0F, 0.0F);
    const double gain = std::pow(10.0, 36.0 / 20.0);

    const Outcome outcome = sandbox.run({"listen", "in.wav", "-o", "out.wav", "--volume", "36"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("samples clipped"), std::string::npos) << outcome.out;
    const Integers loud = readWav(sandbox / "out.wav").integers;
    ASSERT_EQ(loud.size(), plain.size());
    int clipped = 0;
    for (std::size_t i = 0; i < loud.size(); ++i) {
        const double wanted = std::clamp(plain[i] * gain, -32767.0, 32767.0);
        ASSERT_NEAR(loud[i], wanted, gain + 1.0) << i;  // the plain one is a whole number
        clipped += std::abs(loud[i]) == 32767 ? 1 : 0;
    }
    EXPECT_GT(clipped, 1000);
}

TEST(Monitor, NeverWrapsAroundAtZeroDecibels)
{
    // A single sample is the sharpest peak that a block can have.
    kovtools::Monitor monitor(38600.0, 0.0);
    Samples block(1024, 0.0F);
    int largest = 0;
    for (const float height : {1.0F, -1.0F, 1e6F, -1e6F}) {
        for (const std::size_t at :
             {std::size_t{0}, std::size_t{500}, std::size_t{1020}, std::size_t{1022}}) {
            std::fill(block.begin(), block.end(), 0.0F);
            block[at] = height;
            for (const std::int16_t sample : monitor.hear(block)) {
                largest = std::max(largest, std::abs(static_cast<int>(sample)));
            }
        }
    }

    EXPECT_GT(largest, 10000);
    EXPECT_LT(largest, 31100);
}

TEST(Listen, SurvivesSamplesFarBeyondFullScale)
{
    const Sandbox sandbox;
    Samples sound = noise(4096, 30000.0, 12);
    write(sandbox / "in.wav", sound);

    const Outcome outcome = sandbox.run({"listen", "in.wav", "-o", "out.wav"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(readWav(sandbox / "out.wav").integers, heard(sound));
}

TEST(Listen, TakesSamplesThatAreNoNumbersAsSilenceAndSaysSo)
{
    const Sandbox sandbox;
    Samples sound = noise(4096, 0.1, 13);
    Samples cleaned = sound;
    sound[100] = std::numeric_limits<float>::quiet_NaN();
    sound[2000] = -std::numeric_limits<float>::infinity();
    sound[3000] = 1e30F;
    for (const std::size_t at : {100U, 2000U, 3000U}) {
        cleaned[at] = 0.0F;
    }
    write(sandbox / "in.wav", sound);

    const Outcome outcome = sandbox.run({"listen", "in.wav", "-o", "out.wav"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("holds 3 samples that are no usable numbers"), std::string::npos)
        << outcome.err;
    EXPECT_EQ(readWav(sandbox / "out.wav").integers, heard(cleaned));
}

TEST(Listen, NamesTheRateOfASoundThatItCannotTake)
{
    const Sandbox sandbox;
    write(sandbox / "in.wav", noise(3000, 0.1, 14), 1, 44100);

    const Outcome outcome = sandbox.run({"listen", "in.wav", "-o", "out.wav"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    EXPECT_NE(outcome.err.find("has 44100 samples per second"), std::string::npos) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"in.wav"});
}

TEST(Listen, RefusesAChannelThatIsNotThere)
{
    const Sandbox sandbox;
    write(sandbox / "in.wav", noise(3000, 0.1, 15));

    const Outcome outcome = sandbox.run({"listen", "in.wav", "-o", "out.wav", "--channel", "2"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("has 1 channel, there is no channel 2"), std::string::npos) << outcome.err;
    EXPECT_EQ(sandbox.contents(), Names{"in.wav"});
}

TEST(Listen, TellsChannelsOfFilesFromMicrophonesOfFolders)
{
    const Sandbox sandbox;
    write(sandbox / "in.wav", noise(3000, 0.1, 16));
    std::filesystem::create_directory(sandbox / "array");

    const Outcome file = sandbox.run({"listen", "in.wav", "-o", "out.wav", "--microphone", "0"});
    const Outcome folder = sandbox.run({"listen", "array", "-o", "out.wav", "--channel", "1"});
    const Outcome empty = sandbox.run({"listen", "array", "-o", "out.wav"});

    EXPECT_EQ(file.status, 2);
    EXPECT_NE(file.err.find("--channel"), std::string::npos) << file.err;
    EXPECT_EQ(folder.status, 2);
    EXPECT_NE(folder.err.find("--microphone"), std::string::npos) << folder.err;
    EXPECT_EQ(empty.status, 1);
    EXPECT_NE(empty.err.find("data-0.wav' does not exist"), std::string::npos) << empty.err;
}

TEST(Listen, MakesMeasuredBatCallsAudible)
{
    const std::filesystem::path file =
        std::filesystem::path(KOVDOA_SHARED_DATA_DIR) / "ultrasound-bat-96k.wav";
    if (!std::filesystem::exists(file)) {
        GTEST_SKIP() << "shared/data is absent";
    }
    const Sandbox sandbox;
    const Samples ultrasound = readWav(file).values;

    ASSERT_EQ(sandbox.run({"listen", file.string(), "-o", "out.wav", "--base", "22000"}).status, 0);

    // The three calls sweep down to 24 kHz. Their last parts become whistles of 2 kHz, which stand out of the noise of
    // the blocks between them.
    const Integers audible = readWav(sandbox / "out.wav").integers;
    ASSERT_EQ(audible.size(), ultrasound.size() / 2);
    for (const int block : {5, 17, 26}) {
        const Peak call = peakOf(ultrasound, block, 1024, 20000.0, 96000.0);
        const Peak whistle = peakOf(audible, block, 512, 500.0, 48000.0);
        EXPECT_NEAR(whistle.frequency, call.frequency - 22000.0, 200.0) << block;
        EXPECT_GT(whistle.share, 0.8) << block;
    }
    for (const int block : {10, 14, 22, 30}) {
        EXPECT_LT(peakOf(audible, block, 512, 500.0, 48000.0).share, 0.4) << block;
    }
}

}  // namespace
