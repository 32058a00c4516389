#include <KOVDoaHandle/KOVAudio/audioqueue_p.h>

#include <chrono>

#include <KOVDoaHandle/foundation/kovlog_p.h>

namespace KOVAudio {

namespace {

constexpr const char* source = "kovaudiosource";
constexpr std::chrono::seconds longestWait{30};
constexpr std::uint32_t refusalsPerReport = 250;

}  // namespace

bool AudioQueue::append(const KOVAudioBuffer& buffer)
{
    bool isReportDue = false;
    {
        const std::lock_guard lock(m_mutex);
        if (m_isClosed) {
            return false;
        }
        if (m_count < mostBlocks) {
            push(buffer);
        } else {
            isReportDue = ++m_refused % refusalsPerReport == 1;
        }
    }
    if (isReportDue) {
        KOVDOA_LOGGER(source).warning() << "KOVAudioSource::appendData : append data fail, buffer is full,"
                                        << "in" << m_name;
    }
    return true;
}

void AudioQueue::wakeForAppended()
{
    m_woken.notify_all();
}

void AudioQueue::wakeAll()
{
    const std::lock_guard lock(m_mutex);
    ++m_wakes;
    m_woken.notify_all();
}

std::optional<KOVAudioBuffer> AudioQueue::take()
{
    std::unique_lock lock(m_mutex);
    ++m_takers;
    if (m_count == 0 && !waitForWake(lock)) {
        lock.unlock();
        KOVDOA_LOGGER(source).warning() << "KOVAudioSource::readData timeout";
        lock.lock();
    }
    std::optional<KOVAudioBuffer> block = pop();
    --m_takers;
    // Under the lock: whoever closes the queue may free it right after.
    m_left.notify_all();
    return block;
}

bool AudioQueue::waitForWake(std::unique_lock<std::mutex>& lock)
{
    const std::uint64_t appendedBefore = m_appended;
    const std::uint64_t wakesBefore = m_wakes;
    // The deadline of the steady clock: neither chance returns nor a change of the wall clock lengthen the wait.
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    return m_woken.wait_until(
        lock, deadline, [&] { return m_appended != appendedBefore || m_wakes != wakesBefore || m_isClosed; });
}

void AudioQueue::clear()
{
    const std::lock_guard lock(m_mutex);
    while (m_count > 0) {
        pop();
    }
}

void AudioQueue::close()
{
    std::unique_lock lock(m_mutex);
    m_isClosed = true;
    m_woken.notify_all();
    m_left.wait(lock, [this] { return m_takers == 0; });
}

void AudioQueue::push(const KOVAudioBuffer& buffer)
{
    m_blocks[static_cast<std::size_t>((m_first + m_count) % mostBlocks)].emplace(buffer);
    ++m_count;
    ++m_appended;
}

std::optional<KOVAudioBuffer> AudioQueue::pop()
{
    std::optional<KOVAudioBuffer> block;
    if (m_count > 0) {
        std::optional<KOVAudioBuffer>& oldest = m_blocks[static_cast<std::size_t>(m_first)];
        block.swap(oldest);
        m_first = (m_first + 1) % mostBlocks;
        --m_count;
    }
    return block;
}

}  // namespace KOVAudio
