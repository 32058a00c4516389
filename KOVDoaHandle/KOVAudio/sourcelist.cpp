#include <KOVDoaHandle/KOVAudio/sourcelist_p.h>

#include <algorithm>

#include <KOVDoaHandle/KOVAudio/kovaudiosource_p.h>

namespace KOVAudio {

void SourceList::add(const KOVAudioSource& source)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_entries, [](const Entry& entry) { return entry.queue.expired(); });
    m_entries.push_back({&source, source.d->queue});
}

void SourceList::remove(const IKOVServerReaderSource* source)
{
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [source](const Entry& entry) {
        return entry.source == source && !entry.queue.expired();
    });
    if (found != m_entries.end()) {
        m_entries.erase(found);
    }
}

void SourceList::append(const KOVAudioBuffer& buffer)
{
    const std::lock_guard lock(m_mutex);
    for (const Entry& entry : m_entries) {
        const std::shared_ptr<AudioQueue> queue = entry.queue.lock();
        if (queue != nullptr && queue->append(buffer)) {
            queue->wakeForAppended();
        }
    }
}

}  // namespace KOVAudio
