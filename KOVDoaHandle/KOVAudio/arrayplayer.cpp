#include <KOVDoaHandle/KOVAudio/arrayplayer_p.h>

#include <algorithm>
#include <utility>

namespace KOVAudio {

namespace {

// Whether each channel follows the one before without a gap, as those of a pool's buffer do unless a consumer has
// exchanged the pointers.
bool liesInOnePiece(KOVAudioBuffer& buffer)
{
    float* const* const channels = buffer.data();
    for (int channel = 1; channel < buffer.channels(); ++channel) {
        if (channels[channel] != channels[channel - 1] + buffer.samples()) {
            return false;
        }
    }
    return true;
}

// One long copy is faster than one a channel: the processor is told the whole extent.
void fill(KOVAudioBuffer& buffer, const std::vector<float>& samples)
{
    if (liesInOnePiece(buffer)) {
        std::copy(samples.begin(), samples.end(), buffer.data(0));
        return;
    }
    const float* from = samples.data();
    for (int channel = 0; channel < buffer.channels(); ++channel, from += buffer.samples()) {
        std::copy_n(from, buffer.samples(), buffer.data(channel));
    }
}

}  // namespace

ArrayPlayer::ArrayPlayer(std::shared_ptr<const WavSet> recording, std::shared_ptr<SourceList> sources,
                         qint64 index)
    : m_recording(std::move(recording)), m_sources(std::move(sources)), m_index(index)
{
    if (!m_recording->firstBlock().empty()) {
        // Not copies of one: they would all share its block.
        m_pool.resize(poolBlocks);
        for (KOVAudioBuffer& buffer : m_pool) {
            buffer.init(m_recording->channels(), m_recording->blockSize());
        }
    }
}

void ArrayPlayer::run()
{
    std::unique_lock lock(m_mutex);
    // Tested under the lock that stop() takes, so that no stop can slip in between the test and the wait.
    while (m_isWorking) {
        m_isWaiting = true;
        m_woken.wait(lock, [this] { return !m_isWaiting; });
        lock.unlock();
        publish();
        lock.lock();
    }
}

void ArrayPlayer::setIndex(qint64 index)
{
    m_index = index;
    wake();
}

void ArrayPlayer::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isWorking = false;
    }
    wake();
}

void ArrayPlayer::wake()
{
    const std::lock_guard lock(m_mutex);
    m_isWaiting = false;
    m_woken.notify_one();
}

void ArrayPlayer::publish()
{
    if (m_pool.empty()) {
        return;
    }
    KOVAudioBuffer& buffer = m_pool[m_next];
    m_next = (m_next + 1) % m_pool.size();
    buffer.setTimeStamp(timeStampMs());
    // The samples are always the recording's first block; only the time follows the index.
    fill(buffer, m_recording->firstBlock());
    m_sources->append(buffer);
}

// From the start of the recording; rounded after every step, like all that hosts compute with it.
float ArrayPlayer::timeStampMs() const
{
    constexpr float msPerSecond = 1000.0F;
    return static_cast<float>(m_index) * static_cast<float>(m_recording->blockSize()) * msPerSecond /
           static_cast<float>(m_recording->sampleRateHz());
}

}  // namespace KOVAudio
