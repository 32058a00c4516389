// What the array reader's worker does.
#ifndef KOVDOA_ARRAYPLAYER_P_H
#define KOVDOA_ARRAYPLAYER_P_H

#include <QtCore/QtGlobal>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>
#include <KOVDoaHandle/KOVAudio/sourcelist_p.h>
#include <KOVDoaHandle/KOVAudio/wavset_p.h>

namespace KOVAudio {

// Publishes one block of a recording each time it is woken, from one start of the reader to the next close. Every
// start makes a player of its own: the worker of an earlier one may still be ending.
//
// Threads: run() on the worker, which shares the ownership, the rest on any other. publish() is for the worker.
class ArrayPlayer
{
public:
    // A consumer may keep a block until this many more have been published; then its samples are overwritten.
    static constexpr int poolBlocks = 60;

    ArrayPlayer(std::shared_ptr<const WavSet> recording, std::shared_ptr<SourceList> sources, qint64 index);

    // Waits and publishes until stop().
    void run();

    // Makes the worker publish one block with this index's time. A wake that meets a busy worker is lost; the index is
    // not.
    void setIndex(qint64 index);

    // Ends run(): at once if the worker is busy or has not begun to wait, otherwise after one more block.
    void stop();

    // Copies the recording's first block into the pool's next one and hands it to all sources. Allocates nothing. Does
    // nothing when no recording is loaded.
    void publish();

private:
    void wake();
    float timeStampMs() const;

    const std::shared_ptr<const WavSet> m_recording;
    const std::shared_ptr<SourceList> m_sources;
    std::vector<KOVAudioBuffer> m_pool;
    std::size_t m_next = 0;

    std::atomic<qint64> m_index;
    std::mutex m_mutex;
    std::condition_variable m_woken;
    bool m_isWorking = true;
    bool m_isWaiting = false;  // cleared by whoever wakes: tells a wake from a chance return
};

}  // namespace KOVAudio

#endif
