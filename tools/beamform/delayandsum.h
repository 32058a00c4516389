// The delay-and-sum beamformer, in the frequency domain.
#ifndef KOVTOOLS_DELAYANDSUM_H
#define KOVTOOLS_DELAYANDSUM_H

#include <complex>
#include <vector>

#include "tools/beamform/beamkernels.h"
#include "tools/scene/arraygeometry.h"
#include "tools/scene/fieldofview.h"
#include "tools/scene/propagation.h"

namespace kovtools {

// Phase by which a plane wave from `direction` reaches a microphone before the middle of the array, rad. With
// the time dependence exp(-i w t) the microphone's spectrum is the wave's times exp(-i phase).
double steeringPhase(const Microphone& microphone, const Direction& direction, double frequency);

// Spectra of all microphones at one frequency, of several snapshots at once, with the time dependence exp(-i w t).
// Snapshots lie in groups so that one vector instruction works on as many of them as the machine has lanes.
class MicrophoneSpectra
{
public:
    static constexpr int lanes = BeamKernels::lanes;

    MicrophoneSpectra(int microphones, int snapshots);

    int microphones() const { return m_microphones; }
    int snapshots() const { return m_snapshots; }
    int groups() const { return (m_snapshots + lanes - 1) / lanes; }

    void set(int microphone, int snapshot, std::complex<float> value);
    std::complex<float> at(int microphone, int snapshot) const;

    // For each microphone in turn `lanes` real parts, then `lanes` imaginary parts; unused lanes are 0.
    const float* group(int index) const { return m_values.data() + groupOffset(index); }

private:
    std::size_t groupOffset(int index) const;
    std::size_t offset(int microphone, int snapshot) const;  // of the real part

    int m_microphones;
    int m_snapshots;
    std::vector<float> m_values;
};

// One frequency that is beamformed, and what its power counts for.
struct BeamformedBin
{
    double frequency;  // Hz
    float weight;
    MicrophoneSpectra spectra;
};

// y(look) = 1/M sum over the microphones m of x_m exp(+i phase of m for look): waves from `look` add up in
// step.
class DelayAndSum
{
public:
    // The array looks at points in the given directions, all at `distance` metres from its middle.
    DelayAndSum(std::vector<Microphone> array, std::vector<Direction> looks, double distance = infinitelyFar);

    std::size_t looks() const { return m_looks.size(); }

    // The bins have the same number of snapshots, whose powers are summed in runs of `run` (the last may be shorter):
    // adds to sums[look * runs + r] the weight |y|^2 of all bins and of the snapshots run r, ... Uses all cores; the
    // result is the same on any number of them. Throws Interrupted after Ctrl-C.
    void addPowers(const std::vector<BeamformedBin>& bins, int run, std::vector<float>& sums) const;

private:
    struct Tile;

    void addTile(const std::vector<BeamformedBin>& bins, int run, std::size_t firstLook, Tile& tile,
                 std::vector<float>& sums) const;

    std::vector<Microphone> m_array;
    std::vector<Direction> m_looks;
    double m_distance;
};

}  // namespace kovtools

#endif
