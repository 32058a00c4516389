// What hosts get from a recording: counts, blocks, sources, and the controls of a device that is not there.
#include <gtest/gtest.h>

#include <QtCore/QMetaMethod>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

#include "playback.h"
#include "streamtesting.h"
#include "wavsets.h"

namespace {

using StreamTesting::Listener;
using StreamTesting::Messages;
using StreamTesting::objectSlots;
using StreamTesting::publishOne;
using StreamTesting::sampleOf;
using StreamTesting::slotOf;
using StreamTesting::WavFile;
using StreamTesting::WavFolder;

// What a block must hold when every file has `frames` frames.
void expectFirstBlock(KOVAudioBuffer block, int channels, int samples, int frames)
{
    ASSERT_EQ(block.channels(), channels);
    ASSERT_EQ(block.samples(), samples);
    for (int channel = 0; channel < channels; ++channel) {
        for (int i = 0; i < samples; ++i) {
            const float expected = i < frames && channel < channels / 8 * 8 ? sampleOf(channel, i) : 0.0F;
            ASSERT_EQ(block.data(channel)[i], expected) << "channel " << channel << ", sample " << i;
        }
    }
}

TEST(KOVHwMultAudio, HasItsSlotsBehindThoseOfQObjectAndItsBasesInOrder)
{
    KOVHwMultAudio reader(8);
    const auto offsetOf = [&reader](auto* base) {
        return reinterpret_cast<char*>(base) - reinterpret_cast<char*>(&reader);
    };

    EXPECT_EQ(slotOf(&KOVHwMultAudio::isWorking), objectSlots);
    EXPECT_EQ(slotOf(&KOVHwMultAudio::createReaderSource), objectSlots + 1);
    EXPECT_EQ(slotOf(&KOVHwMultAudio::releaseReaderSource), objectSlots + 2);
    EXPECT_EQ(slotOf(&KOVHwMultAudio::start), objectSlots + 3);
    EXPECT_EQ(slotOf(&KOVHwMultAudio::close), objectSlots + 4);
    EXPECT_EQ(offsetOf(static_cast<QObject*>(&reader)), 0);
    EXPECT_EQ(offsetOf(static_cast<IKOVCoreServer*>(&reader)), 16);
    EXPECT_EQ(offsetOf(static_cast<IKOVServerReader*>(&reader)), 32);
    EXPECT_EQ(sizeof(KOVHwMultAudio), 48U);
}

TEST(KOVHwMultAudio, PublishesTheFirstBlockOfEveryChannel)
{
    const WavFolder folder;
    folder.writeSet(2, {.frames = 5000});
    KOVHwMultAudio reader(16);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    KOVAudioBuffer block = publishOne(reader, listener, 3);
    reader.close();

    expectFirstBlock(block, 16, 1024, 5000);
    EXPECT_EQ(block.timeStamp(), 3.0F * 1024.0F * 1000.0F / 96000.0F);
    EXPECT_EQ(reader.getTotalDataFrame(), 4);
    EXPECT_EQ(reader.getTotalDataSize(), 4 * 1024);
}

TEST(KOVHwMultAudio, ServesTheArrayOf208ChannelsUnlessToldOtherwise)
{
    const WavFolder folder;
    folder.writeSet(26, {.frames = 1100});
    KOVHwMultAudio reader;
    const Messages messages;

    ASSERT_TRUE(reader.init(folder.path()));

    std::vector<QString> opened;
    for (const auto& message : messages.all()) {
        if (message.type == QtDebugMsg && message.text.startsWith(QStringLiteral("OPEN AUDIO FILE :"))) {
            opened.push_back(message.text);
            EXPECT_EQ(message.category, QStringLiteral("default"));
        }
    }
    ASSERT_EQ(opened.size(), 26U);
    EXPECT_EQ(opened[25], QStringLiteral("OPEN AUDIO FILE : \"%1\"").arg(folder.file(25)));
    Listener listener(reader);
    reader.start();
    expectFirstBlock(publishOne(reader, listener, 0), 208, 1024, 1100);
    reader.close();
}

struct Rate
{
    int rate;
    int blockSize;
};

class ReaderRates : public ::testing::TestWithParam<Rate>
{
};

TEST_P(ReaderRates, SetTheBlockSizeAndTheTimeOfABlock)
{
    const auto [rate, blockSize] = GetParam();
    const WavFolder folder;
    folder.writeSet(1, {.rate = rate, .frames = 3 * blockSize + 7});
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    for (const int index : {0, 1, 7, 123'457, -2}) {
        KOVAudioBuffer block = publishOne(reader, listener, index);

        const float blockSamples = static_cast<float>(index) * static_cast<float>(blockSize);
        EXPECT_EQ(block.timeStamp(), blockSamples * 1000.0F / static_cast<float>(rate));
        expectFirstBlock(block, 8, blockSize, 3 * blockSize + 7);
    }
    reader.close();
    EXPECT_EQ(reader.getTotalDataFrame(), 3);
    EXPECT_EQ(reader.getTotalDataSize(), 3 * blockSize);
}

INSTANTIATE_TEST_SUITE_P(Known, ReaderRates,
                         ::testing::Values(Rate{96'000, 1024}, Rate{192'000, 2048}, Rate{208'000, 2080},
                                           Rate{44'100, 1024}),
                         [](const auto& of) { return "At" + std::to_string(of.param.rate) + "Hz"; });

TEST(KOVHwMultAudio, KeepsTheBlockSizeOfAnEarlierFileAtAnUnknownRate)
{
    const WavFolder folder;
    folder.write(0, {.rate = 192'000, .frames = 4096});
    folder.write(1, {.rate = 44'100, .frames = 6144});
    KOVHwMultAudio reader(16);

    ASSERT_TRUE(reader.init(folder.path()));

    EXPECT_EQ(reader.getTotalDataFrame(), 2);
    EXPECT_EQ(reader.getTotalDataSize(), 2 * 2048);
}

TEST(KOVHwMultAudio, CountsTheBlocksOfTheShortestFileThatHoldsOne)
{
    const WavFolder folder;
    folder.write(0, {.frames = 5 * 1024});
    folder.write(1, {.frames = 100});
    folder.write(2, {.frames = 3 * 1024 + 1023});
    folder.write(3, {.frames = 4 * 1024});
    KOVHwMultAudio reader(32);

    ASSERT_TRUE(reader.init(folder.path()));

    EXPECT_EQ(reader.getTotalDataFrame(), 3);
}

TEST(KOVHwMultAudio, CountsByTheChannelsThatTheHeaderNames)
{
    const WavFolder folder;
    folder.write(0, {.channels = 4, .frames = 2048});  // 2048 frames of 8, or 4096 of 4
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    expectFirstBlock(publishOne(reader, listener, 0), 8, 1024, 2048);
    reader.close();

    EXPECT_EQ(reader.getTotalDataFrame(), 4);
}

TEST(KOVHwMultAudio, FillsABlockThatTheRecordingIsTooShortForWithZeros)
{
    const WavFolder folder;
    folder.writeSet(1, {.frames = 1023});
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    expectFirstBlock(publishOne(reader, listener, 0), 8, 1024, 1023);
    reader.close();

    EXPECT_EQ(reader.getTotalDataFrame(), 0);
}

TEST(KOVHwMultAudio, PublishesNoMoreThanTheHeaderSaysThatTheFileHolds)
{
    const WavFolder folder;
    folder.writeSet(1, {.frames = 1024, .dataBytes = 10 * 32 + 31});
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    expectFirstBlock(publishOne(reader, listener, 0), 8, 1024, 10);
    reader.close();
}

TEST(KOVHwMultAudio, ReadsOneFileForTwelveChannelsAndLeavesTheLastFourSilent)
{
    const WavFolder folder;
    folder.writeSet(1);
    KOVHwMultAudio reader(12);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    expectFirstBlock(publishOne(reader, listener, 0), 12, 1024, 2048);
    reader.close();
}

TEST(KOVHwMultAudio, FailsAtOnceForFewerThanEightChannels)
{
    const WavFolder folder;
    folder.writeSet(1);
    const Messages messages;

    EXPECT_FALSE(KOVHwMultAudio(7).init(folder.path()));
    EXPECT_FALSE(KOVHwMultAudio(0).init(folder.path()));
    EXPECT_FALSE(KOVHwMultAudio(-8).init(folder.path()));
    EXPECT_TRUE(messages.all().empty());
}

TEST(KOVHwMultAudio, LoadsOtherBitDepthsAsSilence)
{
    const WavFolder folder;
    folder.write(0, {.bits = 16, .frames = 2048});
    folder.write(1, {.bits = 24, .frames = 4096});
    folder.write(2, {.frames = 4096});
    KOVHwMultAudio reader(24);
    ASSERT_TRUE(reader.init(folder.path()));
    EXPECT_EQ(reader.getTotalDataFrame(), 2);
    Listener listener(reader);
    reader.start();

    KOVAudioBuffer block = publishOne(reader, listener, 0);
    reader.close();

    for (int i = 0; i < 1024; ++i) {
        ASSERT_EQ(block.data(0)[i], 0.0F);
        ASSERT_EQ(block.data(15)[i], 0.0F);
        ASSERT_EQ(block.data(16)[i], sampleOf(16, i));
    }
}

TEST(KOVHwMultAudio, DoesNotCompareMagicWords)
{
    const WavFolder folder;
    folder.writeSet(1, {.hasMagicWords = false});
    KOVHwMultAudio reader(8);

    EXPECT_TRUE(reader.init(folder.path()));
    EXPECT_EQ(reader.getTotalDataFrame(), 2);
}

TEST(KOVHwMultAudio, PublishesNothingBeforeItIsStarted)
{
    const WavFolder folder;
    folder.writeSet(1);
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);

    reader.setCurrentIndex(9);
    EXPECT_FALSE(listener.awaitCount(1, std::chrono::milliseconds(50)));
    reader.start();
    KOVAudioBuffer first = publishOne(reader, listener, 1);
    reader.close();

    EXPECT_EQ(first.timeStamp(), 1024.0F * 1000.0F / 96000.0F);
}

TEST(KOVHwMultAudio, PublishesTheSameBlockTwiceForTheSameIndexTwice)
{
    const WavFolder folder;
    folder.writeSet(1);
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    KOVAudioBuffer first = publishOne(reader, listener, 5);
    KOVAudioBuffer second = publishOne(reader, listener, 5);
    reader.close();

    expectFirstBlock(first, 8, 1024, 2048);
    expectFirstBlock(second, 8, 1024, 2048);
    EXPECT_EQ(first.timeStamp(), second.timeStamp());
    EXPECT_NE(first.data(), second.data());
}

TEST(KOVHwMultAudio, RotatesThroughSixtyBlocks)
{
    const WavFolder folder;
    folder.writeSet(1);
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();

    for (int i = 0; i < 61; ++i) {
        publishOne(reader, listener, i);
    }
    reader.close();

    for (std::size_t i = 1; i < 60; ++i) {
        EXPECT_NE(listener.block(i).data(), listener.block(0).data());
    }
    EXPECT_EQ(listener.block(60).data(), listener.block(0).data());
}

TEST(KOVHwMultAudio, FillsABlockWhoseChannelsAConsumerHasExchanged)
{
    const WavFolder folder;
    folder.writeSet(1);
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener listener(reader);
    reader.start();
    KOVAudioBuffer first = publishOne(reader, listener, 0);
    std::swap(first.data()[0], first.data()[7]);

    for (int i = 1; i <= 60; ++i) {
        publishOne(reader, listener, i);
    }
    reader.close();

    KOVAudioBuffer again = listener.block(60);
    ASSERT_EQ(again.data(), first.data());
    expectFirstBlock(again, 8, 1024, 2048);
}

TEST(KOVHwMultAudio, SharesOneBlockAmongAllSources)
{
    const WavFolder folder;
    folder.writeSet(1);
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener one(reader);
    Listener other(reader);
    reader.start();

    KOVAudioBuffer block = publishOne(reader, one, 0);
    ASSERT_TRUE(other.awaitCount(1, std::chrono::seconds(20)));
    reader.close();

    EXPECT_EQ(other.block(0).data(), block.data());
}

TEST(KOVHwMultAudio, GivesNoMoreBlocksToASourceThatWasReleased)
{
    const WavFolder folder;
    folder.writeSet(1);
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener kept(reader);
    Listener released(reader);
    reader.start();
    publishOne(reader, kept, 0);
    ASSERT_TRUE(released.awaitCount(1, std::chrono::seconds(20)));

    reader.releaseReaderSource(released.source());
    publishOne(reader, kept, 1);
    publishOne(reader, kept, 2);
    reader.close();

    EXPECT_EQ(released.count(), 1U);
}

// Somebody's stream that is no KOVAudioSource.
class OtherStream : public IKOVServerReaderSource
{
public:
    QVariant readData() override { return {}; }
    void onDataReady() override {}
};

TEST(KOVHwMultAudio, IgnoresWhatItDidNotCreateWhenASourceIsReleased)
{
    const WavFolder folder;
    folder.writeSet(1);
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(folder.path()));
    Listener kept(reader);
    KOVAudioSource foreign(QStringLiteral("foreign"), 96000, 8);
    OtherStream other;

    reader.releaseReaderSource(nullptr);
    reader.releaseReaderSource(&foreign);
    reader.releaseReaderSource(&other);
    reader.start();

    expectFirstBlock(publishOne(reader, kept, 0), 8, 1024, 2048);
    reader.close();
}

TEST(KOVHwMultAudio, CreatesSourcesAloud)
{
    KOVHwMultAudio reader(8);
    const Messages messages;

    IKOVServerReaderSource* const created = reader.createReaderSource(QStringLiteral("view"));
    const std::unique_ptr<KOVAudioSource> source(dynamic_cast<KOVAudioSource*>(created));

    ASSERT_NE(source, nullptr);
    EXPECT_EQ(messages.count(QtDebugMsg,
                             QStringLiteral("KOVMultAudioReader::createAudioSource audio source created")),
              1);
    EXPECT_EQ(messages.all().size(), 1U);
}

TEST(KOVHwMultAudio, ReplacesTheRecordingWhenLoadedAgain)
{
    const WavFolder first;
    first.writeSet(1, {.frames = 1024});
    const WavFolder second;
    second.writeSet(1, {.rate = 192'000, .frames = 6 * 2048});
    KOVHwMultAudio reader(8);
    ASSERT_TRUE(reader.init(first.path()));

    ASSERT_TRUE(reader.init(second.path()));

    EXPECT_EQ(reader.getTotalDataFrame(), 6);
    Listener listener(reader);
    reader.start();
    expectFirstBlock(publishOne(reader, listener, 0), 8, 2048, 6 * 2048);
    reader.close();
}

TEST(KOVHwMultAudio, AnswersForTheDeviceThatIsNotThere)
{
    KOVHwMultAudio reader(8);
    unsigned char buffer[4] = {1, 2, 3, 4};
    reader.GPIO_1_Set(false);
    reader.GPIO_2_Set(false);
    reader.GPIO_3_Set(false);
    reader.GPIO_4_Set(false);
    reader.GPIO_Analog_Set(false);
    reader.GPIO_LED_Set(false);
    reader.GPIO_MIC_Set(false);
    reader.ModeAnalogClkOutConfig(true);
    reader.ModeDigitalAnalogSwitch(true);
    reader.read_pcm_data(buffer, sizeof buffer);

    EXPECT_TRUE(reader.GPIO_1_Get());
    EXPECT_TRUE(reader.GPIO_2_Get());
    EXPECT_TRUE(reader.GPIO_3_Get());
    EXPECT_TRUE(reader.GPIO_4_Get());
    EXPECT_TRUE(reader.GPIO_Analog_Get());
    EXPECT_TRUE(reader.GPIO_LED_Get());
    EXPECT_TRUE(reader.GPIO_MIC_Get());
    EXPECT_TRUE(reader.SetLast64ChannelMode(false));
    EXPECT_TRUE(reader.ModeOverFreqConfig(false));
    EXPECT_TRUE(reader.ModeFakeDataConfig(false));
    EXPECT_TRUE(reader.ModeBclkOutConfig(false));
    EXPECT_EQ(reader.get_fifo_data_size(nullptr), 0);
    EXPECT_EQ(buffer[0] + 10 * buffer[1] + 100 * buffer[2] + 1000 * buffer[3], 4321);
}

}  // namespace
