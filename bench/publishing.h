// The array reader's worker without its thread, and consumers for its blocks.
#ifndef KOVDOA_BENCH_PUBLISHING_H
#define KOVDOA_BENCH_PUBLISHING_H

#include <QtCore/QString>

#include <memory>
#include <vector>

#include <KOVDoaHandle/KOVAudio/arrayplayer_p.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>

#include "bench/arrayrecording.h"

namespace bench {

class Publishing
{
public:
    // Blocks of `blockSize` samples in each of 8 channels a file, for so many sources; a source holds ten blocks.
    Publishing(int files, int blockSize, int sources)
    {
        constexpr int rate = ArrayRecording::sampleRateHz;
        const int channels = files * ArrayRecording::fileChannels;
        const ArrayRecording recording(files, blockSize);
        const auto set = std::make_shared<KOVAudio::WavSet>(channels, rate, blockSize);
        set->load(QString::fromStdString(recording.folder()));
        const auto list = std::make_shared<KOVAudio::SourceList>();
        for (int i = 0; i < sources; ++i) {
            m_consumers.push_back(
                std::make_unique<KOVAudioSource>(QStringLiteral("consumer"), rate, channels));
            list->add(*m_consumers.back());
        }
        m_player = std::make_unique<KOVAudio::ArrayPlayer>(set, list, 0);
        // Once around the pool, whose memory has not been touched before.
        for (int i = 0; i < KOVAudio::ArrayPlayer::poolBlocks; ++i) {
            m_player->publish();
        }
        drain();
    }

    void publish() { m_player->publish(); }

    void drain()
    {
        for (const auto& consumer : m_consumers) {
            consumer->clearData();
        }
    }

private:
    std::vector<std::unique_ptr<KOVAudioSource>> m_consumers;
    std::unique_ptr<KOVAudio::ArrayPlayer> m_player;
};

}  // namespace bench

#endif
