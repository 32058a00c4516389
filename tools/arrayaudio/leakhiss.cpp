#include "tools/arrayaudio/leakhiss.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tools/arrayaudio/standingsource.h"
#include "tools/scene/scenesimulation.h"

namespace kovtools {

namespace {

constexpr double highestFrequency = 47000.0;  // Hz

}  // namespace

LeakHiss::LeakHiss(double level, double hump, std::uint64_t seed)
    : m_random(seed), m_amplitudes(HissLayout::content / 2 + 1)
{
    const double spacing = sampleRate / HissLayout::content;
    double inBand = 0.0;
    // No constant pressure, and nothing near half the rate, where a shifted phase would be lost.
    for (std::size_t k = 1; static_cast<double>(k) * spacing < highestFrequency; ++k) {
        const double frequency = static_cast<double>(k) * spacing;
        m_amplitudes[k] = leakDensity(frequency, hump);
        inBand += frequency >= bandLow && frequency <= bandHigh ? m_amplitudes[k] : 0.0;
    }
    // A bin of amplitude a and its mirror image give a mean square of 2 a^2.
    for (double& amplitude : m_amplitudes) {
        amplitude = level * std::sqrt(0.5 * amplitude / inBand);
    }
}

const HalfSpectrum& LeakHiss::next(const RealTransform& padded, const RealTransform& section)
{
    m_bins.resize(m_amplitudes.size());
    for (std::size_t k = 0; k < m_bins.size(); ++k) {
        m_bins[k] = std::complex<float>(m_random.complexNormal() * m_amplitudes[k]);
    }
    section.backward(m_bins, m_noise);
    m_padded.assign(HissLayout::transformLength, 0.0F);
    for (int i = 0; i < HissLayout::content; ++i) {
        const double fade = std::sin(std::numbers::pi * (i + 0.5) / HissLayout::content);
        m_padded[static_cast<std::size_t>(HissLayout::margin + i)] =
            static_cast<float>(fade * m_noise[static_cast<std::size_t>(i)]);
    }
    padded.forward(m_padded, m_spectrum);
    constexpr float scale = 1.0F / HissLayout::transformLength;
    for (std::complex<float>& bin : m_spectrum) {
        bin *= scale;
    }
    return m_spectrum;
}

}  // namespace kovtools
