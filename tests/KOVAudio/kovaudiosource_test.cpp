// The queue as one consumer sees it.
#include <gtest/gtest.h>

#include <QtCore/QFileInfo>
#include <QtCore/QMetaType>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>

#include "streamtesting.h"

namespace {

using StreamTesting::makeBlock;
using StreamTesting::Messages;

const QString refusal =
    QStringLiteral("KOVAudioSource::appendData : append data fail, buffer is full, in \"left wing\"");

class AudioSource : public ::testing::Test
{
protected:
    void append(int blocks)
    {
        for (int i = 0; i < blocks; ++i) {
            source->appendData(makeBlock(static_cast<float>(++appended)));
        }
    }
    float readTimeStamp() { return source->readData().value<KOVAudioBuffer>().timeStamp(); }
    // Would wait if the queue were empty.
    std::vector<float> readTimeStamps(int blocks)
    {
        std::vector<float> times;
        for (int i = 0; i < blocks; ++i) {
            times.push_back(readTimeStamp());
        }
        return times;
    }

    int appended = 0;
    Messages messages;
    std::unique_ptr<KOVAudioSource> source =
        std::make_unique<KOVAudioSource>(QStringLiteral("left wing"), 96000, 2);
};

TEST_F(AudioSource, GivesBackTheBlocksInTheirOrderWithoutCopyingSamples)
{
    KOVAudioBuffer first = makeBlock(1.0F);
    source->appendData(first);
    append(2);

    auto read = source->readData().value<KOVAudioBuffer>();

    EXPECT_EQ(read.data(), first.data());
    EXPECT_EQ(readTimeStamps(2), (std::vector<float>{1.0F, 2.0F}));
}

TEST_F(AudioSource, HandsOutVariantsOfTheTypeKOVAudioBuffer)
{
    append(1);

    const QVariant block = source->readData();

    EXPECT_STREQ(block.typeName(), "KOVAudioBuffer");
    const QMetaType::TypeFlags flags = QMetaType::typeFlags(block.userType());
    EXPECT_TRUE(flags & QMetaType::MovableType);
    EXPECT_TRUE(flags & QMetaType::NeedsConstruction);
    EXPECT_TRUE(flags & QMetaType::NeedsDestruction);
}

TEST_F(AudioSource, KeepsTheTenOldestBlocksAndReportsTheFirstRefusal)
{
    append(11);

    EXPECT_EQ(messages.count(QtWarningMsg, refusal), 1);
    EXPECT_EQ(messages.all().size(), 1U);
    EXPECT_EQ(messages.all().front().category, QStringLiteral("default"));
    EXPECT_EQ(messages.all().front().file, QStringLiteral("kovaudiosource"));
    EXPECT_EQ(readTimeStamps(10), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    source->onDataReady();
    append(1);
    EXPECT_EQ(readTimeStamp(), 12.0F);  // the refused block is gone
}

TEST_F(AudioSource, ReportsEvery250thRefusalFromTheFirstOn)
{
    append(10 + 1);
    ASSERT_EQ(messages.count(QtWarningMsg, refusal), 1);

    append(249);
    EXPECT_EQ(messages.count(QtWarningMsg, refusal), 1);
    append(1);
    EXPECT_EQ(messages.count(QtWarningMsg, refusal), 2);
    append(249);
    EXPECT_EQ(messages.count(QtWarningMsg, refusal), 2);
    append(1);
    EXPECT_EQ(messages.count(QtWarningMsg, refusal), 3);
}

TEST_F(AudioSource, GoesOnCountingRefusalsAfterTheQueueHadRoomAgain)
{
    append(11);
    readTimeStamps(10);
    append(10);

    append(249);
    EXPECT_EQ(messages.count(QtWarningMsg, refusal), 1);
    append(1);
    EXPECT_EQ(messages.count(QtWarningMsg, refusal), 2);
}

TEST_F(AudioSource, TakesANewBlockForEveryOneThatWasRead)
{
    append(10);
    for (int i = 1; i <= 35; ++i) {
        EXPECT_EQ(readTimeStamp(), static_cast<float>(i));
        append(1);
    }

    EXPECT_TRUE(messages.all().empty());
}

TEST_F(AudioSource, LetsGoOfTheBlocksItDrops)
{
    KOVAudioBuffer block = makeBlock(1.0F);
    source->appendData(block);
    append(1);

    source->clearData();

    append(1);
    EXPECT_EQ(readTimeStamp(), 2.0F);
    append(10);
    EXPECT_TRUE(messages.all().empty());  // the room is there again
}

// A host's own source.
class CountingSource : public KOVAudioSource
{
public:
    CountingSource() : KOVAudioSource(QStringLiteral("counting"), 96000, 2) {}
    void onDataReady() override
    {
        ++calls;
        KOVAudioSource::onDataReady();
    }
    int calls = 0;
};

TEST_F(AudioSource, CallsAnOverriddenOnDataReadyAfterEveryAppendAndRefusal)
{
    CountingSource counting;
    for (int i = 0; i < 12; ++i) {
        counting.appendData(makeBlock(0.0F));
    }

    EXPECT_EQ(counting.calls, 12);
}

TEST_F(AudioSource, NeverEmitsReadyRead)
{
    int emitted = 0;
    QObject::connect(source.get(), &KOVAudioSource::readyRead, [&] { ++emitted; });

    append(2);
    readTimeStamps(2);

    EXPECT_EQ(emitted, 0);
}

TEST_F(AudioSource, KeepsTheSavingFlagAndWritesNothing)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("audio.wav"));
    EXPECT_FALSE(source->isSaving());

    source->startSave(path);
    append(1);
    EXPECT_TRUE(source->isSaving());
    EXPECT_TRUE(messages.all().empty());
    source->stopSave();

    EXPECT_FALSE(source->isSaving());
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(messages.count(QtDebugMsg, QStringLiteral("save audio complete")), 1);
}

TEST_F(AudioSource, StopsSavingWhenItGoes)
{
    source->startSave(QStringLiteral("x"));
    source.reset();

    EXPECT_EQ(messages.count(QtDebugMsg, QStringLiteral("save audio complete")), 1);
}

TEST_F(AudioSource, GoesSilentlyWhenItIsNotSaving)
{
    append(3);
    source.reset();

    EXPECT_TRUE(messages.all().empty());
}

TEST_F(AudioSource, LeavesABlockToTheConsumerThatHasReadIt)
{
    append(1);
    const QVariant read = source->readData();
    source.reset();

    auto block = read.value<KOVAudioBuffer>();
    EXPECT_EQ(block.data(1)[2], 103.0F);
}

}  // namespace
