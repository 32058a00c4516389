// Ultrasound made audible, as the instrument's monitor does it.
#ifndef KOVTOOLS_LISTENING_H
#define KOVTOOLS_LISTENING_H

#include <KOVDoaHandle/KOVAudio/kovsuperheterodyne.h>

#include <cstdint>
#include <vector>

namespace kovtools {

constexpr int monitorInputRate = 96000;   // Hz, what the monitor's filters are made for
constexpr int monitorOutputRate = 48000;  // Hz

// How many samples are fed before the output is read: as many as a host gets at a time. The limiter works on what is
// read in one go, so the size can be heard. Up to this one it also keeps the output from ever wrapping around at 0 dB:
// the highest peak that 1024 samples of one level can have is 32 times that level.
constexpr int monitorBlock = 1024;

// Shifts the band above a base frequency down to 0 Hz, block by block.
class Monitor
{
public:
    // `baseFrequency`, Hz, is rounded to the monitor's steps; `volume` in dB.
    Monitor(double baseFrequency, double volume);

    double baseFrequency() { return m_monitor.baseFrequency(); }

    // Feeds one block, of at most monitorBlock samples, and gives what the monitor makes of it: half as many samples.
    // The monitor lets what exceeds 16 bits wrap around, which cracks; here it is clipped instead, and counted.
    const std::vector<std::int16_t>& hear(std::vector<float>& block);

    long long clipped() const { return m_clipped; }

private:
    void clipWhatWrapped(std::vector<float>& block);

    KOVSuperHeterodyne m_monitor;
    KOVSuperHeterodyne m_quiet;  // the same at a volume at which nothing wraps around
    double m_gain;               // between the two
    std::vector<std::int16_t> m_output;
    long long m_clipped = 0;
};

}  // namespace kovtools

#endif
