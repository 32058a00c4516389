#include <KOVDoaHandle/KOVAudio/channelalignment_p.h>

#include <KOVDoaHandle/diagnostics/kovblas.h>

#include <cmath>
#include <cstddef>
#include <cstring>

namespace KOVPrivate {

WindowedSpectrum::WindowedSpectrum(int n)
    : m_window(n, FFT_WINDOW_HANN, 0.0F, 0.0F, 0.0F),
      m_block(n),
      m_bins(n),
      m_plan(m_block, m_bins, FFTDirection::Forward)
{
}

float (*WindowedSpectrum::of(const float* x))[2]
{
    const float* window = m_window.data()->data;
    float(*block)[2] = m_block.data();
    for (int i = 0; i < m_block.size(); ++i) {
        block[i][0] = x[i] * window[i];
        block[i][1] = 0.0F;
    }
    m_plan.execute();
    return m_bins.data();
}

BackwardMagnitudes::BackwardMagnitudes(int n)
    : m_bins(n), m_values(n), m_plan(m_bins, m_values, FFTDirection::Backward)
{
}

void BackwardMagnitudes::magnitudes(float* out)
{
    m_plan.execute();
    const float(*values)[2] = m_values.data();
    for (int i = 0; i < m_values.size(); ++i) {
        out[i] = std::sqrt(values[i][0] * values[i][0] + values[i][1] * values[i][1]);
    }
}

ChannelAlignment::ChannelAlignment(int n)
    : m_size(n),
      m_spectrum(n),
      m_correlation(n),
      m_magnitudes(std::make_unique_for_overwrite<float[]>(static_cast<std::size_t>(n)))
{
}

int ChannelAlignment::lag(const float* a, const float* b)
{
    float(*product)[2] = m_correlation.bins();
    std::memcpy(product, m_spectrum.of(a), static_cast<std::size_t>(m_size) * sizeof(*product));
    KOVBlas::CplxConJMul(product, m_spectrum.of(b), product, m_size);
    KOVBlas::CplxNomal(product, m_size);
    m_correlation.magnitudes(m_magnitudes.get());

    int place = 0;
    KOVBlas::findMax(m_magnitudes.get(), m_size, place);
    // The upper half of the circular correlation holds the negative lags.
    const int half = m_size / 2;
    return (place + half) % m_size - half;
}

}  // namespace KOVPrivate
