// The wait that nobody ends, apart from the other tests because it takes its 30 s, and the first read of a process, for
// which no other test may have read before.
#include <gtest/gtest.h>

#include <QtCore/QMetaType>

#include <chrono>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>

#include "streamtesting.h"

namespace {

TEST(AudioSourceTimeout, EndsAWaitAfterThirtySecondsWithAnInvalidVariantAndAWarning)
{
    const StreamTesting::Messages messages;
    KOVAudioSource source(QStringLiteral("s"), 96000, 2);

    const auto start = std::chrono::steady_clock::now();
    const QVariant read = source.readData();
    const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - start;

    EXPECT_FALSE(read.isValid());
    EXPECT_GE(waited.count(), 29.99);
    EXPECT_LT(waited.count(), 35.0);
    EXPECT_EQ(messages.count(QtWarningMsg, QStringLiteral("KOVAudioSource::readData timeout")), 1);
    EXPECT_EQ(messages.all().size(), 1U);
}

TEST(AudioSourceFirstRead, MakesTheBufferKnownToQtAndNothingBeforeItDoes)
{
    KOVAudioSource source(QStringLiteral("s"), 96000, 2);
    source.appendData(StreamTesting::makeBlock(1.0F));
    ASSERT_EQ(QMetaType::type("KOVAudioBuffer"), static_cast<int>(QMetaType::UnknownType));

    const QVariant read = source.readData();

    EXPECT_NE(QMetaType::type("KOVAudioBuffer"), static_cast<int>(QMetaType::UnknownType));
    EXPECT_EQ(read.userType(), QMetaType::type("KOVAudioBuffer"));
}

}  // namespace
