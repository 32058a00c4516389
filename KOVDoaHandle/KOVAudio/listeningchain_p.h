// The filters and the mixer that bring an ultrasonic band down to what can be heard.
#ifndef KOVDOA_LISTENINGCHAIN_P_H
#define KOVDOA_LISTENINGCHAIN_P_H

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include <KOVDoaHandle/foundation/engine/kovfilter.h>

namespace KOVPrivate {

// 96 kHz in, 96 kHz out. Threads: one at a time.
class ListeningChain
{
public:
    // Builds everything for a base frequency in Hz: all filters cleared, phase 0.
    void build(float baseFrequency);
    bool isBuilt() const { return !m_oscillator.empty(); }

    // Another base frequency. The rumble filter keeps its state and the oscillator its phase.
    void retune(float baseFrequency);

    // Clears every filter and the phase.
    void reset();

    // Runs n samples through band filter, mixer, low-passes and rumble filter, in place, and advances the
    // phase. Returns the sum of what comes out, added up in index order in single precision.
    float process(float* samples, int n);

private:
    // In the order the signal takes; the mixer stands behind the first.
    enum Stage : std::size_t { Band, LowPass1, LowPass2, LowPass3, LowPass4, Rumble, filterCount };

    void designBand(float baseFrequency);
    void fillOscillator(float baseFrequency);
    void mix(float* samples, int first, int n) const;

    std::array<std::unique_ptr<KOVFilter>, filterCount> m_filters;
    std::vector<float> m_oscillator;
    int m_phase = 0;  // index into the oscillator of the next sample
};

}  // namespace KOVPrivate

#endif
