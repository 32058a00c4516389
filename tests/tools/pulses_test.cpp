// kovdoa pulses, as a child process, against the library's detector.
#include <gtest/gtest.h>

#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/tools/program.h"
#include "tests/tools/sounds.h"

namespace {

using kovtools::tests::floatWav;
using kovtools::tests::interleaved;
using kovtools::tests::isOneSentence;
using kovtools::tests::Outcome;
using kovtools::tests::readWav;
using kovtools::tests::Samples;
using kovtools::tests::Sandbox;
using kovtools::tests::Wav;
using kovtools::tests::writeFile;
using nlohmann::json;

constexpr int rate = 96000;              // Hz
constexpr std::size_t capacity = 32767;  // samples of a buffer

// A burst of 25 kHz around `at`, 40 samples long.
void addBurst(Samples& samples, std::size_t at, float amplitude)
{
    for (std::size_t i = 0; i < 40; ++i) {
        const double phase = 2.0 * 3.141592653589793 * 25000.0 * (static_cast<double>(i) - 20.0) / rate;
        const double envelope = std::exp(-0.01 * std::pow(static_cast<double>(i) - 20.0, 2.0));
        samples[at - 20 + i] += amplitude * static_cast<float>(envelope * std::cos(phase));
    }
}

Samples silence(std::size_t count)
{
    return Samples(count, 0.0F);
}

// Two channels; the first one's bursts are the second one's, turned over and half as strong.
std::vector<Samples> twoChannels(const std::vector<std::pair<std::size_t, float>>& bursts, std::size_t count)
{
    std::vector<Samples> channels(2, silence(count));
    for (const auto& [at, amplitude] : bursts) {
        addBurst(channels[1], at, amplitude);
        addBurst(channels[0], at, -0.5F * amplitude);
    }
    return channels;
}

void writeSound(const Sandbox& sandbox, const std::vector<Samples>& channels)
{
    writeFile(sandbox / "in.wav", floatWav(interleaved(channels), static_cast<int>(channels.size()), rate));
}

// Counts and segments, one behind the other, as the library gives them for buffers filled to the brim.
struct Detected
{
    std::vector<int> counts;
    Samples segments;  // interleaved
};

Detected detectedByLibrary(std::vector<Samples> channels, int segment, int channel)
{
    KOVPluseDetection detector(rate, segment, static_cast<int>(channels.size()));
    std::vector<Samples> cut(channels.size(), silence(static_cast<std::size_t>(segment)));
    Detected detected;
    std::size_t room = capacity;
    for (std::size_t fed = 0; fed < channels[0].size();) {
        const std::size_t count = std::min(room, channels[0].size() - fed);
        std::vector<float*> in;
        std::vector<float*> out;
        for (std::size_t ch = 0; ch < channels.size(); ++ch) {
            in.push_back(channels[ch].data() + fed);
            out.push_back(cut[ch].data());
        }
        detector.FeedSignal(in.data(), static_cast<int>(count), channel);
        fed += count;
        int found = 0;
        if (detector.GetPulse(out.data(), found)) {
            const Samples block = interleaved(cut);
            detected.segments.insert(detected.segments.end(), block.begin(), block.end());
        }
        detected.counts.push_back(found);
        room = capacity - static_cast<std::size_t>(segment);
    }
    return detected;
}

TEST(Pulses, CountsWhatTheLibraryFindsInEachFullBuffer)
{
    const Sandbox sandbox;
    const std::vector<Samples> channels =
        twoChannels({{5000, 0.5F}, {9000, 0.4F}, {20000, 0.3F}, {40000, 0.2F}, {80000, 0.6F}}, 90001);
    writeSound(sandbox, channels);
    const Detected expected = detectedByLibrary(channels, 1024, 1);

    const Outcome outcome = sandbox.run({"pulses", "in.wav", "--channel", "2", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const json answer = json::parse(outcome.out);
    EXPECT_EQ(answer["pulses"], 5);
    EXPECT_EQ(answer["sample_rate_hz"], rate);
    ASSERT_EQ(answer["buffers"].size(), expected.counts.size());
    for (std::size_t i = 0; i < expected.counts.size(); ++i) {
        EXPECT_EQ(answer["buffers"][i]["pulses"], expected.counts[i]);
        EXPECT_DOUBLE_EQ(answer["buffers"][i]["time_s"], static_cast<double>(i * (capacity - 1024)) / rate);
    }
    EXPECT_EQ(answer["buffers"][0]["samples"], capacity);
    EXPECT_NEAR(answer["buffers"][0]["peak_dbfs"], 20.0 * std::log10(0.5), 1e-3);
}

TEST(Pulses, CutsTheStrongestBurstOfEachBufferOutOfAllChannels)
{
    const Sandbox sandbox;
    const std::vector<Samples> channels = twoChannels({{5000, 0.2F}, {9000, 0.4F}, {50000, 0.3F}}, 60000);
    writeSound(sandbox, channels);

    const Outcome outcome =
        sandbox.run({"pulses", "in.wav", "--channel", "2", "--segment", "400", "-o", "out.wav"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Wav cut = readWav(sandbox / "out.wav");
    EXPECT_EQ(cut.channels, 2);
    EXPECT_EQ(cut.sampleRate, rate);
    EXPECT_EQ(cut.values, detectedByLibrary(channels, 400, 1).segments);
    ASSERT_EQ(cut.values.size(), 2U * 2U * 400U);
    // The bursts' highest samples at three quarters.
    EXPECT_NEAR(cut.values[2 * 300 + 1], 0.4, 1e-6);
    EXPECT_NEAR(cut.values[2 * 300], -0.2, 1e-6);
    EXPECT_NEAR(cut.values[2 * 700 + 1], 0.3, 1e-6);
}

TEST(Pulses, TellWhatStandsOutFromHissByTheLevelOfEachBuffer)
{
    const Sandbox sandbox;
    Samples sound = kovtools::tests::noise(50000, 0.01, 5);
    addBurst(sound, 40000, 0.5F);  // in the second buffer; the first one's "burst" is hiss
    writeSound(sandbox, {sound});

    const Outcome outcome = sandbox.run({"pulses", "in.wav", "--json"});

    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const json buffers = json::parse(outcome.out)["buffers"];
    ASSERT_EQ(buffers.size(), 2U);
    const auto rms = [&sound](std::size_t begin, std::size_t end) {
        double squares = 0.0;
        for (std::size_t i = begin; i < end; ++i) {
            squares += std::pow(static_cast<double>(sound[i]), 2.0);
        }
        return 10.0 * std::log10(squares / static_cast<double>(end - begin));
    };
    EXPECT_NEAR(buffers[0]["level_dbfs"], rms(0, capacity), 1e-4);
    EXPECT_NEAR(buffers[1]["level_dbfs"], rms(capacity, sound.size()), 1e-4);
    EXPECT_EQ(buffers[0]["pulses"], 1);
    EXPECT_LT(buffers[0]["peak_dbfs"].get<double>() - buffers[0]["level_dbfs"].get<double>(), 15.0);
    EXPECT_GT(buffers[1]["peak_dbfs"].get<double>() - buffers[1]["level_dbfs"].get<double>(), 25.0);
}

TEST(Pulses, FindNothingInSilence)
{
    const Sandbox sandbox;
    writeSound(sandbox, {silence(40000)});

    const Outcome outcome = sandbox.run({"pulses", "in.wav", "-o", "out.wav"});

    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("0 pulses in 2 buffers"), std::string::npos) << outcome.out;
    EXPECT_EQ(readWav(sandbox / "out.wav").values.size(), 0U);
}

TEST(Pulses, TakesSoundsOfASingleSampleAndOfWholeBuffers)
{
    const Sandbox sandbox;
    for (const std::size_t count :
         {std::size_t{1}, std::size_t{1023}, capacity, capacity + 1, 2 * capacity - 1024}) {
        std::vector<Samples> channels{silence(count)};
        channels[0][count / 2] = 0.5F;
        writeSound(sandbox, channels);

        const Outcome outcome = sandbox.run({"pulses", "in.wav", "--json"});

        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const json buffers = json::parse(outcome.out)["buffers"];
        const Detected expected = detectedByLibrary(channels, 1024, 0);
        ASSERT_EQ(buffers.size(), expected.counts.size()) << count;
        for (std::size_t i = 0; i < expected.counts.size(); ++i) {
            EXPECT_EQ(buffers[i]["pulses"], expected.counts[i]) << count;
        }
    }
}

TEST(Pulses, UsesWhatADamagedFileHolds)
{
    const Sandbox sandbox;
    const std::vector<Samples> channels = twoChannels({{5000, 0.5F}}, 20000);
    const std::string whole = floatWav(interleaved(channels), 2, rate);
    writeFile(sandbox / "in.wav", whole.substr(0, whole.size() / 2));

    const Outcome outcome = sandbox.run({"pulses", "in.wav"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("1 pulse in 1 buffer"), std::string::npos) << outcome.out;
    EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
}

TEST(Pulses, RefusesWrongArgumentsAndFiles)
{
    const Sandbox sandbox;
    writeSound(sandbox, {silence(2000)});
    writeFile(sandbox / "text.wav", "hello");
    const std::vector<std::pair<std::vector<std::string>, int>> cases{
        {{"pulses"}, 2},
        {{"pulses", "in.wav", "--channel", "2"}, 2},
        {{"pulses", "in.wav", "--channel", "0"}, 2},
        {{"pulses", "in.wav", "--segment", "7"}, 2},
        {{"pulses", "in.wav", "--segment", "16385"}, 2},
        {{"pulses", "in.wav", "-o", "out.mp3"}, 2},
        {{"pulses", "in.wav", "-o", "in.wav"}, 2},
        {{"pulses", "text.wav"}, 1},
        {{"pulses", "missing.wav"}, 1}};

    for (const auto& [arguments, status] : cases) {
        const Outcome outcome = sandbox.run(arguments);

        EXPECT_EQ(outcome.status, status) << arguments.back();
        EXPECT_EQ(outcome.out, "") << arguments.back();
        EXPECT_TRUE(isOneSentence(outcome.err)) << outcome.err;
    }
}

}  // namespace
