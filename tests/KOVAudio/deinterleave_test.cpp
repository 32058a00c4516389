// The transposed copy against a plain one, bit for bit.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <random>
#include <vector>

#include <KOVDoaHandle/KOVAudio/deinterleave_p.h>

namespace {

class Deinterleave : public ::testing::TestWithParam<std::size_t>
{
};

TEST_P(Deinterleave, MovesEveryBitOfEveryFrameAndNothingElse)
{
    const std::size_t frames = GetParam();
    constexpr std::size_t channels = KOVAudio::fileChannels;
    constexpr std::uint32_t untouched = 0xdeadbeef;
    std::mt19937 random(static_cast<unsigned>(frames));
    // Any bits, signalling NaNs among them; one float off, so that nothing is aligned by chance.
    std::vector<float> interleaved(frames * channels + 1);
    for (float& value : interleaved) {
        value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    }
    const std::size_t stride = frames + 3;
    std::vector<float> taken(channels * stride, std::bit_cast<float>(untouched));
    KOVAudio::ChannelPointers to{};
    for (std::size_t channel = 0; channel < channels; ++channel) {
        to[channel] = taken.data() + channel * stride + 1;
    }

    KOVAudio::deinterleave(interleaved.data() + 1, frames, to);

    for (std::size_t channel = 0; channel < channels; ++channel) {
        const float* const row = taken.data() + channel * stride;
        EXPECT_EQ(std::bit_cast<std::uint32_t>(row[0]), untouched);
        for (std::size_t frame = 0; frame < frames; ++frame) {
            ASSERT_EQ(std::bit_cast<std::uint32_t>(row[1 + frame]),
                      std::bit_cast<std::uint32_t>(interleaved[1 + frame * channels + channel]))
                << "channel " << channel << ", frame " << frame;
        }
        EXPECT_EQ(std::bit_cast<std::uint32_t>(row[1 + frames]), untouched);
    }
}

INSTANTIATE_TEST_SUITE_P(Frames, Deinterleave,
                         ::testing::Values(0, 1, 2, 3, 4, 5, 7, 8, 9, 63, 64, 127, 1023, 1024, 1031));

}  // namespace
