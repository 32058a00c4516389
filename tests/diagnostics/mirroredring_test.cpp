// The ring behind the discharge analysis.
#include <KOVDoaHandle/diagnostics/mirroredring_p.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string>
#include <vector>

namespace {

using KOVPrivate::MirroredRing;

constexpr int capacity = MirroredRing::capacity;

// n samples that count upwards from `first`; whole numbers up to 2^24 are exact.
std::vector<float> counting(int first, int n)
{
    std::vector<float> samples(static_cast<std::size_t>(n));
    std::iota(samples.begin(), samples.end(), static_cast<float>(first));
    return samples;
}

TEST(MirroredRing, IsSilentBeforeTheStreamAtFirst)
{
    MirroredRing ring;
    const std::vector<float> samples = counting(1, 10);
    ring.append(samples.data(), 10);

    const float* span = ring.endingAt(4, 8);

    EXPECT_EQ(std::vector<float>(span, span + 8), (std::vector<float>{0, 0, 0, 1, 2, 3, 4, 5}));
}

TEST(MirroredRing, StartsAtItsFirstSampleUntilItHasBeenFilled)
{
    MirroredRing ring;
    const std::vector<float> samples = counting(1, capacity - 1);
    ring.append(samples.data(), capacity - 1);

    EXPECT_EQ(ring.oldest()[0], 1.0F);
    EXPECT_EQ(ring.oldest()[capacity - 2], static_cast<float>(capacity - 1));
}

// Blocks of one length, up to well beyond the end of the ring.
class MirroredRingBlocks : public ::testing::TestWithParam<int>
{
};

TEST_P(MirroredRingBlocks, KeepTheLatestSamplesContiguous)
{
    MirroredRing ring;
    int total = 0;

    while (total < 2 * capacity + 1000) {
        const std::vector<float> samples = counting(total, GetParam());
        ring.append(samples.data(), GetParam());
        total += GetParam();
    }

    ASSERT_EQ(ring.total(), total);
    const std::vector<float> expected = counting(total - capacity, capacity);
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), ring.oldest()));
    const float* span = ring.endingAt(total - 1000, 60544);
    const std::vector<float> expectedSpan = counting(total - 1000 - 60543, 60544);
    EXPECT_TRUE(std::equal(expectedSpan.begin(), expectedSpan.end(), span));
}

INSTANTIATE_TEST_SUITE_P(Lengths, MirroredRingBlocks,
                         ::testing::Values(999, 1024, 7919, capacity - 1, capacity, capacity + 1,
                                           2 * capacity + 12345),
                         [](const auto& length) { return std::to_string(length.param) + "Samples"; });

TEST(MirroredRing, LeavesWhatItHeldBeforeARestartBehindTheNewStream)
{
    MirroredRing ring;
    const std::vector<float> samples = counting(1, capacity);
    ring.append(samples.data(), capacity);

    ring.restart();
    const float one = -1.0F;
    ring.append(&one, 1);

    EXPECT_EQ(ring.total(), 1);
    const float* span = ring.endingAt(0, 3);
    EXPECT_EQ(std::vector<float>(span, span + 3),
              (std::vector<float>{static_cast<float>(capacity - 1), static_cast<float>(capacity), -1.0F}));
}

}  // namespace
