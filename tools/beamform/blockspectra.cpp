#include "tools/beamform/blockspectra.h"

#include <cmath>
#include <numbers>

#include "tools/support/parallel.h"

namespace kovtools {

namespace {

// Weights of the constant, the first and the second harmonic.
struct CosineWindow
{
    double constant;
    double first;
    double second;
};

constexpr CosineWindow windows[] = {
    {0.5, 0.5, 0.0},
    {0.42, 0.5, 0.08},
    {1.0, 0.0, 0.0},
};

}  // namespace

std::vector<float> windowCoefficients(WindowKind kind, int length)
{
    const CosineWindow& shape = windows[static_cast<std::size_t>(kind)];
    std::vector<float> coefficients;
    for (int i = 0; i < length; ++i) {
        const double angle = 2.0 * std::numbers::pi * i / length;
        coefficients.push_back(static_cast<float>(shape.constant - shape.first * std::cos(angle) +
                                                  shape.second * std::cos(2.0 * angle)));
    }
    return coefficients;
}

BlockSpectra::BlockSpectra(int microphones, int fftLength, WindowKind window)
    : m_microphones(microphones), m_transform(fftLength), m_window(windowCoefficients(window, fftLength))
{
    double squares = 0.0;
    for (const float coefficient : m_window) {
        squares += static_cast<double>(coefficient) * static_cast<double>(coefficient);
    }
    const auto scale = static_cast<float>(std::sqrt(2.0 / (squares * fftLength)));
    for (float& coefficient : m_window) {
        coefficient *= scale;
    }
}

void BlockSpectra::analyse(const std::vector<std::vector<float>>& rows, int hop, int blocks)
{
    m_blocks = blocks;
    m_spectra.resize(static_cast<std::size_t>(m_microphones * blocks));
    const auto bins = static_cast<std::size_t>(m_transform.bins());
    const auto length = static_cast<std::size_t>(fftLength());
    constexpr float edge = std::numbers::sqrt2_v<float> / 2.0F;  // bins without a mirror image
    inParallel(m_microphones, 1, [&](int first, int end) {
        RealSignal signal(length);
        for (int m = first; m < end; ++m) {
            for (int block = 0; block < blocks; ++block) {
                const float* const samples =
                    rows[static_cast<std::size_t>(m)].data() + static_cast<std::ptrdiff_t>(block) * hop;
                for (std::size_t i = 0; i < length; ++i) {
                    signal[i] = m_window[i] * samples[i];
                }
                HalfSpectrum& values = spectrum(m, block);
                m_transform.forward(signal, values);
                values.front() *= edge;
                if (length % 2 == 0) {
                    values.back() *= edge;
                }
            }
        }
    });
    // Each bin's terms in a fixed order, whatever the number of cores.
    m_meanPowers.assign(bins, 0.0);
    inParallel(static_cast<int>(bins), 64, [&](int first, int end) {
        for (const HalfSpectrum& values : m_spectra) {
            for (auto k = static_cast<std::size_t>(first); k < static_cast<std::size_t>(end); ++k) {
                m_meanPowers[k] += static_cast<double>(std::norm(values[k]));
            }
        }
    });
    for (double& power : m_meanPowers) {
        power /= static_cast<double>(m_spectra.size());
    }
}

MicrophoneSpectra BlockSpectra::atBin(int bin) const
{
    MicrophoneSpectra packed(m_microphones, m_blocks);
    std::size_t index = 0;
    for (int m = 0; m < m_microphones; ++m) {
        for (int block = 0; block < m_blocks; ++block) {
            packed.set(m, block, std::conj(m_spectra[index++][static_cast<std::size_t>(bin)]));
        }
    }
    return packed;
}

}  // namespace kovtools
