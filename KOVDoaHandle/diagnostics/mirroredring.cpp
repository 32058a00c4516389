#include <KOVDoaHandle/diagnostics/mirroredring_p.h>

#include <algorithm>

namespace KOVPrivate {

MirroredRing::MirroredRing() : m_samples(std::size_t{2} * capacity, 0.0F) {}

void MirroredRing::append(const float* samples, int n)
{
    m_total += n;
    while (m_write + static_cast<std::int64_t>(n) > capacity) {
        const int fitting = capacity - m_write;
        store(samples, fitting);
        m_write = 0;
        samples += fitting;
        n -= fitting;
    }
    store(samples, n);
}

void MirroredRing::store(const float* samples, int n)
{
    std::copy_n(samples, n, m_samples.begin() + m_write);
    std::copy_n(samples, n, m_samples.begin() + capacity + m_write);
    m_write += n;
}

void MirroredRing::restart()
{
    m_write = 0;
    m_total = 0;
}

const float* MirroredRing::oldest() const
{
    return m_total < capacity ? m_samples.data() : m_samples.data() + m_write;
}

const float* MirroredRing::endingAt(std::int64_t last, int count) const
{
    const std::int64_t newer = m_total - 1 - last;
    return m_samples.data() + (capacity + m_write - newer - count);
}

}  // namespace KOVPrivate
