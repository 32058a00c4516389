// The timer keeps one absolute deadline; everything else is the distance to it.
#include <KOVDoaHandle/runtime/kovrttimer.h>

namespace {

constexpr long nanosecondsPerSecond = 1'000'000'000L;
constexpr float nanosecondsPerMillisecond = 1e6F;

timespec monotonicNow()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

// Unsigned 32-bit on purpose: it is what limits the interval to about 4.29 s.
std::uint32_t nanoseconds(std::uint32_t intervalUs)
{
    return intervalUs * 1000U;
}

float milliseconds(std::int64_t seconds, std::int64_t nanosecondPart)
{
    return static_cast<float>(seconds * 1000) +
           static_cast<float>(nanosecondPart) / nanosecondsPerMillisecond;
}

}  // namespace

KOVRtTimer::KOVRtTimer(unsigned long intervalUs) : m_intervalUs(static_cast<std::uint32_t>(intervalUs))
{
    reset();
}

unsigned long KOVRtTimer::intervalUs() const
{
    return m_intervalUs;
}

void KOVRtTimer::setIntervalUs(unsigned long us)
{
    m_intervalUs = static_cast<std::uint32_t>(us);
}

void KOVRtTimer::reset()
{
    m_next = monotonicNow();
    add_timespec(&m_next, nanoseconds(m_intervalUs));
}

bool KOVRtTimer::sleepToNextTime()
{
    const timespec now = monotonicNow();
    if (now > m_next) {
        // Late: catching up would make the following periods too short.
        m_next = now;
        add_timespec(&m_next, nanoseconds(m_intervalUs));
        return false;
    }
    // The system call refuses a nanosecond part of a whole second, which add_timespec() may leave behind.
    timespec deadline = m_next;
    deadline.tv_sec += deadline.tv_nsec / nanosecondsPerSecond;
    deadline.tv_nsec %= nanosecondsPerSecond;
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr);
    add_timespec(&m_next, nanoseconds(m_intervalUs));
    return true;
}

float KOVRtTimer::timeMs()
{
    return (monotonicNow() - m_next) + static_cast<float>(m_intervalUs / 1000U);
}

void KOVRtTimer::add_timespec(timespec* t, unsigned long ns)
{
    constexpr auto second = static_cast<unsigned long>(nanosecondsPerSecond);
    t->tv_sec += static_cast<time_t>(ns / second);
    t->tv_nsec += static_cast<long>(ns % second);
    // Strictly greater: a sum of exactly one second is left as it is.
    if (t->tv_nsec > nanosecondsPerSecond) {
        t->tv_sec += t->tv_nsec / nanosecondsPerSecond;
        t->tv_nsec %= nanosecondsPerSecond;
    }
}

bool operator<(const timespec& a, const timespec& b)
{
    return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

bool operator>(const timespec& a, const timespec& b)
{
    return b < a;
}

bool operator==(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

float operator-(const timespec& a, const timespec& b)
{
    return milliseconds(a.tv_sec - b.tv_sec, a.tv_nsec - b.tv_nsec);
}

float operator+(const timespec& a, const timespec& b)
{
    return milliseconds(a.tv_sec + b.tv_sec, a.tv_nsec + b.tv_nsec);
}
