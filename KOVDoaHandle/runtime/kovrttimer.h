// A periodic timer on the monotonic clock that does not drift, and a stopwatch.
#ifndef KOVDOA_KOVRTTIMER_H
#define KOVDOA_KOVRTTIMER_H

#include <cstdint>
#include <ctime>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// A loop calls sleepToNextTime() once per period; the deadline advances by the interval, whatever the loop's
// own run time was. Intervals up to 4,294,967 us (about 4.29 s) are supported; longer ones wrap. One timer
// belongs to one thread. The clock is CLOCK_MONOTONIC.
class KOVDOA_EXPORT KOVRtTimer
{
public:
    // Arms the timer: the first deadline is one interval from now. intervalUs in microseconds.
    explicit KOVRtTimer(unsigned long intervalUs);

    unsigned long intervalUs() const;
    // The deadline that is set already stays; the new interval counts from the next advance.
    void setIntervalUs(unsigned long us);

    // Starts a period now.
    void reset();

    // Waits for the deadline and returns true; or, when it has passed already, drops the missed periods,
    // starts one now and returns false at once. A sleep that a signal interrupts is not resumed.
    bool sleepToNextTime();

    // Milliseconds since the period began. The interval's part below one millisecond is left out, so with an
    // interval of 1500 us the stopwatch is 0.5 ms behind.
    float timeMs();

    // Adds ns nanoseconds. A sum of exactly 1,000,000,000 ns stays as it is, unnormalised; every operation
    // here handles such a value.
    void add_timespec(timespec* t, unsigned long ns);

private:
    timespec m_next{};
    std::uint32_t m_intervalUs = 0;
};

// Seconds first, then nanoseconds.
KOVDOA_EXPORT bool operator<(const timespec& a, const timespec& b);
KOVDOA_EXPORT bool operator>(const timespec& a, const timespec& b);
KOVDOA_EXPORT bool operator==(const timespec& a, const timespec& b);
// Difference and sum in milliseconds, single precision; fractions are kept.
KOVDOA_EXPORT float operator-(const timespec& a, const timespec& b);
KOVDOA_EXPORT float operator+(const timespec& a, const timespec& b);

#endif
