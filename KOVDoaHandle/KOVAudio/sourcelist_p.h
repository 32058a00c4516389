// The sources that hosts have created on a reader.
#ifndef KOVDOA_SOURCELIST_P_H
#define KOVDOA_SOURCELIST_P_H

#include <memory>
#include <mutex>
#include <vector>

#include <KOVDoaHandle/KOVAudio/audioqueue_p.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>

namespace KOVAudio {

// Knows sources by their queues, which it does not own: a host may delete a source at any time, also while append()
// is at it, without taking it back first. (A QPointer would not do: it is cleared only when nearly all of the object
// is gone.)
//
// Threads: any. The lock is held while a block is distributed, so a source gets no more blocks after remove().
class SourceList
{
public:
    void add(const KOVAudioSource& source);

    // Takes the first living source at this address from the list; does nothing when there is none. The pointer is
    // compared only, so it may be null, somebody else's, or no longer valid.
    void remove(const IKOVServerReaderSource* source);

    // Appends a handle onto the block to every source that exists, and wakes their readers. Allocates nothing, unless
    // a queue has to report that it is full.
    void append(const KOVAudioBuffer& buffer);

private:
    struct Entry
    {
        const IKOVServerReaderSource* source;
        std::weak_ptr<AudioQueue> queue;
    };

    std::mutex m_mutex;
    std::vector<Entry> m_entries;
};

}  // namespace KOVAudio

#endif
