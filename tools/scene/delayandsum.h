// The delay-and-sum beamformer, in the frequency domain.
#ifndef KOVTOOLS_DELAYANDSUM_H
#define KOVTOOLS_DELAYANDSUM_H

#include <complex>
#include <vector>

#include "tools/scene/arraygeometry.h"
#include "tools/scene/fieldofview.h"

namespace kovtools {

constexpr double speedOfSound = 343.0;  // m/s, dry air at 20 degrees Celsius

// Phase by which a plane wave from `direction` reaches a microphone before the middle of the array, rad. With
// the time dependence exp(-i w t) the microphone's spectrum is the wave's times exp(-i phase).
double steeringPhase(const Microphone& microphone, const Direction& direction, double frequency);

// Spectra of all microphones at one frequency, of several snapshots at once. Snapshots lie in groups of eight
// so that one vector instruction works on as many of them as the machine has lanes.
class MicrophoneSpectra
{
public:
    static constexpr int lanes = 8;

    MicrophoneSpectra(int microphones, int snapshots);

    int microphones() const { return m_microphones; }
    int snapshots() const { return m_snapshots; }
    int groups() const { return (m_snapshots + lanes - 1) / lanes; }

    void set(int microphone, int snapshot, std::complex<float> value);

    // For each microphone in turn `lanes` real parts, then `lanes` imaginary parts; unused lanes are 0.
    const float* group(int index) const { return m_values.data() + groupOffset(index); }

private:
    std::size_t groupOffset(int index) const;

    int m_microphones;
    int m_snapshots;
    std::vector<float> m_values;
};

// y(look) = 1/M sum over the microphones m of x_m exp(+i phase of m for look): waves from `look` add up in
// step.
class DelayAndSum
{
public:
    DelayAndSum(std::vector<Microphone> array, std::vector<Direction> looks);

    std::size_t looks() const { return m_looks.size(); }

    // Adds |y|^2 to powers[look * spectra.snapshots() + snapshot].
    void addPowers(const MicrophoneSpectra& spectra, double frequency, std::vector<float>& powers) const;

private:
    std::vector<Microphone> m_array;
    std::vector<Direction> m_looks;
};

}  // namespace kovtools

#endif
