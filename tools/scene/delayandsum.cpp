#include "tools/scene/delayandsum.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace kovtools {

namespace {

constexpr int lanes = MicrophoneSpectra::lanes;

struct Weight
{
    float real;
    float imaginary;
};

// Sums one group of snapshots over the microphones. Single precision is enough: 208 terms of like size.
void sumGroup(const std::vector<Weight>& weights, const float* spectra, float* real, float* imaginary)
{
    float sumReal[lanes] = {};
    float sumImaginary[lanes] = {};
    for (const Weight weight : weights) {
        const float* const re = spectra;
        const float* const im = spectra + lanes;
        for (int k = 0; k < lanes; ++k) {
            sumReal[k] += weight.real * re[k] - weight.imaginary * im[k];
            sumImaginary[k] += weight.real * im[k] + weight.imaginary * re[k];
        }
        spectra += 2 * lanes;
    }
    for (int k = 0; k < lanes; ++k) {
        real[k] = sumReal[k];
        imaginary[k] = sumImaginary[k];
    }
}

}  // namespace

double steeringPhase(const Microphone& microphone, const Direction& direction, double frequency)
{
    const double waveNumber = 2.0 * std::numbers::pi * frequency / speedOfSound;
    return waveNumber *
           (microphone.x * direction.x + microphone.y * direction.y + microphone.z * direction.z);
}

MicrophoneSpectra::MicrophoneSpectra(int microphones, int snapshots)
    : m_microphones(microphones), m_snapshots(snapshots), m_values(groupOffset(groups()))
{
}

std::size_t MicrophoneSpectra::groupOffset(int index) const
{
    return static_cast<std::size_t>(index) * static_cast<std::size_t>(m_microphones) * 2 * lanes;
}

void MicrophoneSpectra::set(int microphone, int snapshot, std::complex<float> value)
{
    float* const pair =
        m_values.data() + groupOffset(snapshot / lanes) + microphone * 2 * lanes + snapshot % lanes;
    pair[0] = value.real();
    pair[lanes] = value.imag();
}

DelayAndSum::DelayAndSum(std::vector<Microphone> array, std::vector<Direction> looks)
    : m_array(std::move(array)), m_looks(std::move(looks))
{
}

void DelayAndSum::addPowers(const MicrophoneSpectra& spectra, double frequency,
                            std::vector<float>& powers) const
{
    const auto microphones = static_cast<float>(m_array.size());
    const float scale = 1.0F / (microphones * microphones);
    std::vector<Weight> weights(m_array.size());
    for (std::size_t look = 0; look < m_looks.size(); ++look) {
        for (std::size_t m = 0; m < m_array.size(); ++m) {
            const auto phase = static_cast<float>(steeringPhase(m_array[m], m_looks[look], frequency));
            weights[m] = {std::cos(phase), std::sin(phase)};
        }
        float* power = powers.data() + look * static_cast<std::size_t>(spectra.snapshots());
        for (int group = 0; group < spectra.groups(); ++group) {
            float real[lanes];
            float imaginary[lanes];
            sumGroup(weights, spectra.group(group), real, imaginary);
            const int used = std::min(lanes, spectra.snapshots() - group * lanes);
            for (int k = 0; k < used; ++k) {
                *power++ += scale * (real[k] * real[k] + imaginary[k] * imaginary[k]);
            }
        }
    }
}

}  // namespace kovtools
