// Four files of a measured recording, 32 channels at 96 kHz.
#include <gtest/gtest.h>

#include <QtCore/QFile>

#include <cmath>
#include <cstring>

#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

#include "playback.h"

namespace {

using StreamTesting::Listener;
using StreamTesting::publishOne;

const QString folder = QStringLiteral(KOVDOA_SHARED_DATA_DIR "/array-wav");
constexpr int channels = 32;
constexpr int recordedSamples = 28'800;

TEST(MeasuredArray, IsPublishedSampleBySampleAsItStandsInItsFiles)
{
    if (!QFile::exists(folder)) {
        GTEST_SKIP() << "the measured recordings are not here";
    }
    KOVHwMultAudio reader(channels);
    ASSERT_TRUE(reader.init(folder.toUtf8()));
    EXPECT_EQ(reader.getTotalDataFrame(), recordedSamples / 1024);
    EXPECT_EQ(reader.getTotalDataSize(), recordedSamples / 1024 * 1024);
    Listener listener(reader);
    reader.start();

    KOVAudioBuffer block = publishOne(reader, listener, 27);
    reader.close();

    EXPECT_EQ(block.timeStamp(), 288.0F);
    ASSERT_EQ(block.channels(), channels);
    ASSERT_EQ(block.samples(), 1024);
    float energy = 0.0F;
    for (int channel = 0; channel < channels; ++channel) {
        QFile file(folder + QStringLiteral("/data-%1.wav").arg(channel / 8));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        for (int i = 0; i < 1024; ++i) {
            float stored = 0.0F;
            std::memcpy(&stored, bytes.constData() + 44 + (8 * i + channel % 8) * 4, sizeof stored);
            ASSERT_EQ(block.data(channel)[i], stored) << "channel " << channel << ", sample " << i;
            energy += stored * stored;
        }
    }
    EXPECT_GT(std::sqrt(energy / (channels * 1024)), 1e-4F);  // not silence
}

}  // namespace
