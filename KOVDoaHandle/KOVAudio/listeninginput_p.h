// What the listener has been fed and has not read yet.
#ifndef KOVDOA_LISTENINGINPUT_P_H
#define KOVDOA_LISTENINGINPUT_P_H

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

namespace KOVPrivate {

// A bounded list of samples between the thread that feeds and the thread that reads. Every call takes the
// lock, so each sees the others whole. Holds nothing, and takes nothing, before allocate().
class ListeningInput
{
public:
    static constexpr int capacity = 102400;
    // A feed that finds more than this pending drops all of it: there might be no room for one more block.
    static constexpr int mostKept = capacity - 1024;

    // Makes room for `capacity` samples, once; what was pending is dropped.
    void allocate()
    {
        const std::lock_guard lock(m_lock);
        if (!m_samples) {
            m_samples = std::make_unique_for_overwrite<float[]>(capacity);
        }
        m_count = 0;
    }

    // Appends convert(data[0]) ... convert(data[n - 1]); those that find no room are dropped.
    template <typename Sample, typename Convert>
    void append(const Sample* data, int n, Convert convert)
    {
        const std::lock_guard lock(m_lock);
        if (m_count > mostKept) {
            m_count = 0;
        }
        if (!m_samples) {
            return;
        }
        const int taken = std::clamp(n, 0, capacity - m_count);
        std::transform(data, data + taken, m_samples.get() + m_count, convert);
        m_count += taken;
    }

    // Hands everything pending over in exchange for `emptied`, an array of the same capacity, without
    // copying. Returns how many samples there are.
    int take(std::unique_ptr<float[]>& emptied)
    {
        const std::lock_guard lock(m_lock);
        if (m_count > 0) {
            m_samples.swap(emptied);
        }
        return std::exchange(m_count, 0);
    }

    void drop()
    {
        const std::lock_guard lock(m_lock);
        m_count = 0;
    }

    // Returns once a feed that has begun is complete.
    void awaitFeed() { const std::lock_guard lock(m_lock); }

private:
    std::mutex m_lock;
    std::unique_ptr<float[]> m_samples;
    int m_count = 0;
};

}  // namespace KOVPrivate

#endif
