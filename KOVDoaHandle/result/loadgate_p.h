// Lets the owner of an object wait until no worker uses it any more.
#ifndef KOVDOA_LOADGATE_P_H
#define KOVDOA_LOADGATE_P_H

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace KOVResult {

// Shared between the object and its workers, so that the last worker can leave through it while the object
// goes.
class LoadGate
{
public:
    // A worker will be started.
    void enter()
    {
        const std::lock_guard lock(m_mutex);
        ++m_workers;
    }

    // The worker's last act. Notifies under the lock, since the waiting side may be gone right after it.
    void leave()
    {
        const std::lock_guard lock(m_mutex);
        --m_workers;
        m_left.notify_all();
    }

    // Workers look at this between two records.
    bool stopRequested() const { return m_stop; }

    void stopAndWait()
    {
        m_stop = true;
        std::unique_lock lock(m_mutex);
        m_left.wait(lock, [this] { return m_workers == 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_left;
    int m_workers = 0;
    std::atomic<bool> m_stop{false};
};

}  // namespace KOVResult

#endif
