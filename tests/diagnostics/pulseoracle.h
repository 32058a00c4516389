// The pulse detector once more, as plainly as it can be written: every search from the start, one statement a
// rounding. The library must agree with it bit for bit.
#ifndef KOVDOA_TESTS_PULSEORACLE_H
#define KOVDOA_TESTS_PULSEORACLE_H

#include <vector>

namespace pulseoracle {

using Samples = std::vector<float>;

// Recursive filter from rest; the coefficients as they are.
Samples filtered(const Samples& x, const Samples& a, const Samples& b);
float meanSquare(const Samples& x);
float noiseFloor(const Samples& x);
// Smallest onto 0, largest onto 1, below 0.2 onto 0.
Samples rescaled(const Samples& x);

// For blocks of at most 4096 samples, and never fewer than a segment buffered at a search.
class Oracle
{
public:
    Oracle(int segmentLength, int channels);

    void feed(const std::vector<Samples>& block, int detectChannel);
    // The segments of all channels, empty when there is no pulse.
    std::vector<Samples> getPulse(int& count);
    void flushSignal();
    void flushPulse();

    int buffered = 0;
    int searched = 0;  // bursts looked at

private:
    void search(Samples envelope);

    int m_length;
    std::vector<Samples> m_channels;
    Samples m_detection;
    float m_bestPeak = 0.0F;
    float m_reference = 0.0F;
    int m_start = 0;
    int m_count = 0;
};

}  // namespace pulseoracle

#endif
