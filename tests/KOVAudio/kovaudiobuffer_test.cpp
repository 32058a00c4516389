// The block that is shared, never copied.
#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>

#include "streamtesting.h"

namespace {

TEST(KOVAudioBuffer, IsOnePointerWideAndMayBeMovedByItsBytes)
{
    EXPECT_EQ(sizeof(KOVAudioBuffer), sizeof(void*));
    EXPECT_FALSE(QTypeInfo<KOVAudioBuffer>::isStatic);
    EXPECT_TRUE(QTypeInfo<KOVAudioBuffer>::isComplex);
}

TEST(KOVAudioBuffer, HoldsNothingAtFirst)
{
    KOVAudioBuffer buffer;

    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(buffer.data(0), nullptr);
    EXPECT_EQ(buffer.channels(), 0);
    EXPECT_EQ(buffer.samples(), 0);
    EXPECT_EQ(buffer.timeStamp(), 0.0F);
}

TEST(KOVAudioBuffer, HasOneArrayOfItsOwnPerChannel)
{
    constexpr int channels = 5;
    constexpr int samples = 17;
    KOVAudioBuffer buffer;
    buffer.init(channels, samples);

    for (int channel = 0; channel < channels; ++channel) {
        for (int i = 0; i < samples; ++i) {
            buffer.data(channel)[i] = static_cast<float>(1000 * channel + i);
        }
    }

    EXPECT_EQ(buffer.channels(), channels);
    EXPECT_EQ(buffer.samples(), samples);
    for (int channel = 0; channel < channels; ++channel) {
        EXPECT_EQ(buffer.data()[channel], buffer.data(channel));
        for (int i = 0; i < samples; ++i) {
            EXPECT_EQ(buffer.data(channel)[i], static_cast<float>(1000 * channel + i));
        }
    }
}

TEST(KOVAudioBuffer, HasNoChannelBelowZeroOrFromTheChannelCountOn)
{
    KOVAudioBuffer buffer;
    buffer.init(4, 8);

    EXPECT_EQ(buffer.data(-1), nullptr);
    EXPECT_NE(buffer.data(3), nullptr);
    EXPECT_EQ(buffer.data(4), nullptr);
    EXPECT_EQ(buffer.data(1 << 30), nullptr);
}

TEST(KOVAudioBuffer, TakesCountsOfZeroAndLess)
{
    KOVAudioBuffer noSamples;
    noSamples.init(2, 0);
    KOVAudioBuffer negative;
    negative.init(-3, -4);

    EXPECT_NE(noSamples.data(1), nullptr);
    EXPECT_EQ(negative.channels(), -3);
    EXPECT_EQ(negative.samples(), -4);
    EXPECT_EQ(negative.data(0), nullptr);
}

TEST(KOVAudioBuffer, KeepsEarlierArraysWhenInitialisedAgain)
{
    KOVAudioBuffer buffer;
    buffer.init(1, 4);
    float* const earlier = buffer.data(0);
    earlier[3] = 7.0F;

    buffer.init(2, 6);

    EXPECT_EQ(buffer.channels(), 2);
    EXPECT_EQ(buffer.samples(), 6);
    EXPECT_NE(buffer.data(0), earlier);
    EXPECT_EQ(earlier[3], 7.0F);
}

TEST(KOVAudioBuffer, ShowsACopyWhatIsWrittenThroughTheOriginalLater)
{
    KOVAudioBuffer original = StreamTesting::makeBlock(1.0F);
    KOVAudioBuffer copy(original);

    original.data(1)[2] = 42.0F;
    original.setTimeStamp(9.5F);

    EXPECT_EQ(copy.data(), original.data());
    EXPECT_EQ(copy.data(1)[2], 42.0F);
    EXPECT_EQ(copy.timeStamp(), 9.5F);
}

TEST(KOVAudioBuffer, SharesAlsoTheArraysOfACopyMadeBeforeInit)
{
    KOVAudioBuffer original;
    KOVAudioBuffer copy(original);

    original.init(3, 5);

    EXPECT_EQ(copy.channels(), 3);
    EXPECT_EQ(copy.data(2), original.data(2));
}

TEST(KOVAudioBuffer, IsSharedByBothAssignments)
{
    KOVAudioBuffer source = StreamTesting::makeBlock(2.0F);
    const KOVAudioBuffer& readOnly = source;
    KOVAudioBuffer first = StreamTesting::makeBlock(3.0F);
    KOVAudioBuffer second;

    KOVAudioBuffer& firstResult = first = source;
    KOVAudioBuffer& secondResult = second = readOnly;

    EXPECT_EQ(first.data(), source.data());
    EXPECT_EQ(second.data(), source.data());
    EXPECT_EQ(&firstResult, &first);
    EXPECT_EQ(&secondResult, &second);
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<KOVAudioBuffer&>() = std::declval<KOVAudioBuffer&>()),
                                KOVAudioBuffer&>));
}

TEST(KOVAudioBuffer, StaysWhenAssignedToItselfOrToACopy)
{
    KOVAudioBuffer buffer = StreamTesting::makeBlock(4.0F);
    KOVAudioBuffer copy(buffer);
    float** const arrays = buffer.data();
    KOVAudioBuffer& same = buffer;

    buffer = same;
    buffer = copy;

    EXPECT_EQ(buffer.data(), arrays);
    EXPECT_EQ(buffer.data(1)[0], 104.0F);
}

TEST(KOVAudioBuffer, OutlivesTheHandleItWasMadeWith)
{
    KOVAudioBuffer survivor;
    {
        KOVAudioBuffer made = StreamTesting::makeBlock(5.0F);
        survivor = made;
    }

    EXPECT_EQ(survivor.data(1)[2], 107.0F);
    EXPECT_EQ(survivor.timeStamp(), 5.0F);
}

}  // namespace
