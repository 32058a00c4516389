// The latest samples of a stream, always readable as one contiguous run.
#ifndef KOVDOA_MIRROREDRING_P_H
#define KOVDOA_MIRROREDRING_P_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace KOVPrivate {

// Every sample is stored twice, half the buffer apart, so a run that would wrap round in the first half goes
// on into the second. Stream indices count from 0 since the last restart. No lock of its own.
class MirroredRing
{
public:
    // Samples kept: five seconds at 96 kHz.
    static constexpr int capacity = 480000;

    MirroredRing();

    // Appends n >= 0 samples; of a block longer than the ring the last `capacity` remain.
    void append(const float* samples, int n);

    // Starts a new stream. What the old one left stays in the memory until it is overwritten.
    void restart();

    // Samples appended since the last restart.
    std::int64_t total() const { return m_total; }

    // The oldest sample kept; once the ring has been filled, `capacity` samples in order start here.
    const float* oldest() const;

    // `count` samples of which the last has stream index `last`, behind the newest by less than capacity -
    // count. Before index 0 lies what the end of the memory holds: silence, or, where a stream before a restart
    // has come so far, its samples.
    const float* endingAt(std::int64_t last, int count) const;

private:
    void store(const float* samples, int n);

    std::vector<float> m_samples;  // two halves of `capacity`
    int m_write = 0;               // next position in the first half, up to `capacity`
    std::int64_t m_total = 0;
};

}  // namespace KOVPrivate

#endif
