// A reader with a source that is drained by a thread of its own.
#ifndef KOVDOA_TESTS_PLAYBACK_H
#define KOVDOA_TESTS_PLAYBACK_H

#include <QtCore/QString>
#include <QtCore/QVariant>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

namespace StreamTesting {

// Reads all blocks of a new source of a reader. Takes the source back and deletes it when it goes, unless told not to.
class Listener
{
public:
    explicit Listener(KOVHwMultAudio& reader)
        : m_reader(&reader),
          m_source(dynamic_cast<KOVAudioSource*>(reader.createReaderSource(QStringLiteral("listener")))),
          m_thread([this] { listen(); })
    {
    }

    ~Listener()
    {
        m_isStopping = true;
        while (!m_hasStopped) {
            m_source->onDataReady();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        m_thread.join();
        if (m_reader != nullptr) {
            m_reader->releaseReaderSource(m_source);
        }
        delete m_source;
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // The reader goes first, or is not to know that the source does.
    void forgetReader() { m_reader = nullptr; }

    KOVAudioSource* source() { return m_source; }

    std::size_t count()
    {
        const std::lock_guard lock(m_mutex);
        return m_blocks.size();
    }

    KOVAudioBuffer block(std::size_t i)
    {
        const std::lock_guard lock(m_mutex);
        return m_blocks.at(i);
    }

    // False when there are still fewer after `patience`.
    bool awaitCount(std::size_t count, std::chrono::milliseconds patience)
    {
        std::unique_lock lock(m_mutex);
        return m_came.wait_for(lock, patience, [&] { return m_blocks.size() >= count; });
    }

private:
    void listen()
    {
        while (!m_isStopping) {
            const QVariant read = m_source->readData();
            if (read.isValid()) {
                const std::lock_guard lock(m_mutex);
                m_blocks.push_back(read.value<KOVAudioBuffer>());
                m_came.notify_all();
            }
        }
        m_hasStopped = true;
    }

    KOVHwMultAudio* m_reader;
    KOVAudioSource* m_source;
    std::mutex m_mutex;
    std::condition_variable m_came;
    std::vector<KOVAudioBuffer> m_blocks;
    std::atomic<bool> m_isStopping{false};
    std::atomic<bool> m_hasStopped{false};
    std::thread m_thread;
};

// A wake is lost while the worker is not waiting, and that cannot be seen: give it a moment before, and be ready to
// wake it again.
inline void letTheWorkerWait()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

// Publishes one block and returns it; the reader has been started.
inline KOVAudioBuffer publishOne(KOVHwMultAudio& reader, Listener& listener, int index)
{
    const std::size_t before = listener.count();
    do {
        letTheWorkerWait();
        reader.setCurrentIndex(index);
    } while (!listener.awaitCount(before + 1, std::chrono::seconds(2)));
    return listener.block(before);
}

}  // namespace StreamTesting

#endif
