// The bounded queue inside an audio source.
#ifndef KOVDOA_AUDIOQUEUE_P_H
#define KOVDOA_AUDIOQUEUE_P_H

#include <QtCore/QString>

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>

#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>

namespace KOVAudio {

// Holds the oldest blocks and refuses new ones when it is full. One lock guards everything, so that between
// "there is no block" and "now I wait" no wake can get lost.
//
// It is an object apart from the source because the array reader's worker shares it: should a host delete a source
// while a block is being handed out, the worker still finds a queue, a closed one.
//
// Threads: any number of producers and consumers. Timing: append() allocates nothing unless it has to report.
class AudioQueue
{
public:
    // A consumer that is slower than the stream by more than this loses blocks.
    static constexpr int mostBlocks = 10;

    explicit AudioQueue(const QString& name) : m_name(name) {}

    // Appends a handle onto the block or, if the queue is full, counts the refusal and reports every 250th,
    // beginning with the first. Returns false, and does nothing, when the queue is closed. Wakes nobody yet.
    bool append(const KOVAudioBuffer& buffer);

    // Follows an append() and ends the waits that were going on when the block came. Who began to wait after that,
    // perhaps with this very block in his hands, waits on.
    void wakeForAppended();

    // Ends all waits that are going on, block or no block.
    void wakeAll();

    // The oldest block. Where there is none, waits for a wake, for 30 s at most (then that is reported), and looks
    // once more.
    std::optional<KOVAudioBuffer> take();

    void clear();

    // Refuses all further blocks, ends all waits, and returns when nobody is inside take() any more.
    void close();

private:
    void push(const KOVAudioBuffer& buffer);
    std::optional<KOVAudioBuffer> pop();
    // False after 30 s without a wake.
    bool waitForWake(std::unique_lock<std::mutex>& lock);

    const QString m_name;
    std::mutex m_mutex;
    std::condition_variable m_woken;
    std::condition_variable m_left;
    // A ring: a list would move or allocate now and then.
    std::array<std::optional<KOVAudioBuffer>, mostBlocks> m_blocks;
    int m_first = 0;
    int m_count = 0;
    std::uint32_t m_refused = 0;  // since construction; may wrap around after years
    // What ends a wait: either has changed since it began. They also tell a wake from a condition variable's chance
    // return.
    std::uint64_t m_appended = 0;
    std::uint64_t m_wakes = 0;
    int m_takers = 0;
    bool m_isClosed = false;
};

}  // namespace KOVAudio

#endif
