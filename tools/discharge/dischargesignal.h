// What an ultrasonic microphone hears of a partial discharge, simulated.
#ifndef KOVTOOLS_DISCHARGESIGNAL_H
#define KOVTOOLS_DISCHARGESIGNAL_H

#include <cstdint>
#include <vector>

#include "tools/discharge/dischargephases.h"
#include "tools/discharge/mains.h"
#include "tools/scene/random.h"

namespace kovtools {

struct DischargeSignalOptions
{
    DischargeKind kind = DischargeKind::Corona;
    Mains mains = Mains::Hz50;
    std::uint64_t seed = 1;
    double level = 0.1;    // amplitude of a typical burst, full scale 1
    double noise = 0.002;  // background, white, root mean square, full scale 1
    double drift = 0.02;   // Hz, the furthest that the mains frequency strays from its nominal value
    double phase = 0.0;    // degrees, of the mains voltage (a sine) at the first sample
};

// A stream at 96 kHz. Every discharge is heard as a burst that rises in some ten microseconds, rings at a
// resonance between 30 and 45 kHz and dies away within a millisecond: that is what microphones for the 40 kHz
// band make of a short click. Bursts come at the phases that are typical of the kind; bursts and noise add
// up.
class DischargeSignal
{
public:
    explicit DischargeSignal(const DischargeSignalOptions& options);

    // The next `count` samples. How the stream is cut makes no difference.
    void next(int count, std::vector<float>& samples);

private:
    // A burst on its way: a decaying tone less the same tone decaying faster, which makes the rise.
    struct Burst
    {
        std::int64_t start;  // sample
        double amplitude;
        double slow;  // what is left of the decays
        double fast;
        double cosine;  // of the tone
        double sine;
        double stepCosine;  // by which a sample turns the tone
        double stepSine;
    };

    double mainsFrequency(double time) const;
    void addCycle();
    void addBurst(double time, double amplitude);
    double noiseSample();
    double burstSample(Burst& burst) const;

    DischargeSignalOptions m_options;
    Random m_random;
    DischargePhases m_phases;
    double m_resonance;   // Hz
    double m_slowStep;    // decay per sample
    double m_fastStep;    // decay per sample
    double m_driftPhase;  // radians
    double m_cycleStart;  // s, of the cycle that comes next
    double m_spareNoise = 0.0;
    bool m_hasSpareNoise = false;
    std::int64_t m_position = 0;  // samples given so far
    std::vector<Burst> m_bursts;  // that sound or will
};

}  // namespace kovtools

#endif
