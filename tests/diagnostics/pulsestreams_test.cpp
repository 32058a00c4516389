// The pulse detector against the plain one in pulseoracle.cpp, over long random streams.
#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <vector>

#include "pulsefixture.h"
#include "pulseoracle.h"

namespace {

using namespace pulsefixture;

struct RandomRun
{
    int segment;
    int channels;
    const char* name;
};

class PulseStreams : public ::testing::TestWithParam<RandomRun>
{
};

TEST_P(PulseStreams, GiveTheSameBitsAsThePlainDetector)
{
    const auto channelCount = static_cast<std::size_t>(GetParam().channels);
    KOVPluseDetection detector(96000, GetParam().segment, GetParam().channels);
    pulseoracle::Oracle oracle(GetParam().segment, GetParam().channels);
    std::mt19937 random(17);
    std::normal_distribution<float> normal(0.0F, 0.002F);
    int pulses = 0;

    for (int step = 0; step < 400; ++step) {
        const std::size_t n = 1 + random() % 4096;
        std::vector<Samples> block(channelCount, Samples(n));
        for (Samples& channel : block) {
            for (float& sample : channel) {
                sample = normal(random);
            }
            for (unsigned burst = random() % 4; burst > 0; --burst) {
                const float amplitude = 0.05F + static_cast<float>(random() % 1000) / 1000.0F;
                addBurst(channel, random() % n, random() % 3 == 0 ? -amplitude : amplitude);
            }
        }
        const int detected = static_cast<int>(random() % channelCount);
        oracle.feed(block, detected);
        feed(detector, block, detected);
        if (random() % 20 == 0) {
            oracle.flushPulse();
            detector.FlushPulse();
        }
        if (random() % 30 == 0) {
            oracle.flushSignal();
            detector.FlushSignal();
        }
        if (random() % 6 == 0 && oracle.buffered >= GetParam().segment && oracle.buffered > 0) {
            int expectedCount = -1;
            const std::vector<Samples> expected = oracle.getPulse(expectedCount);
            const Pulse found =
                getPulse(detector, channelCount, static_cast<std::size_t>(GetParam().segment));
            ASSERT_EQ(found.count, expectedCount) << "step " << step;
            ASSERT_EQ(found.found, expectedCount >= 1) << "step " << step;
            for (std::size_t ch = 0; ch < expected.size(); ++ch) {
                ASSERT_EQ(found.segments[ch], expected[ch]) << "step " << step << ", channel " << ch;
            }
            pulses += expectedCount;
        }
    }

    EXPECT_GT(pulses, 50);
    EXPECT_GT(oracle.searched, pulses) << "no burst was ever too weak";
}

INSTANTIATE_TEST_SUITE_P(Segments, PulseStreams,
                         ::testing::Values(RandomRun{1, 2, "OneSample"}, RandomRun{2, 1, "TwoSamples"},
                                           RandomRun{64, 3, "SixtyFour"}, RandomRun{333, 4, "Odd"},
                                           RandomRun{2048, 2, "Long"}),
                         [](const auto& run) { return run.param.name; });

}  // namespace
