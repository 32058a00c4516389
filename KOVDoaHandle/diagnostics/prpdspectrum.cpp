#include <KOVDoaHandle/diagnostics/prpdspectrum_p.h>

#include <cmath>
#include <span>

#include <KOVDoaHandle/diagnostics/kovblas.h>

namespace KOVPrivate {

namespace {

constexpr unsigned mainsBin = pageCount;
constexpr unsigned harmonicCount = 8;
// Share of the power above DC that the harmonics together, and one of the first two alone, must exceed.
constexpr float harmonicShare = 0.25F;
constexpr float lineShare = 0.05F;

// From the magnitude of a line to an amplitude per sample: a bin holds eight samples, the frame `size` bins.
float amplitude(float power, int size)
{
    return std::sqrt(power) / static_cast<float>(binSamples * size);
}

// Single precision. `power` ends below half the sampling rate of the envelope; its DC term is left out of the
// total. A frame without power gives 0 / 0 and is not bound.
bool standsOut(std::span<float> power)
{
    const float total = KOVBlas::Sum(power.data(), static_cast<int>(power.size()));
    float harmonics = 0.0F;
    for (unsigned k = 1; k <= harmonicCount; ++k) {
        harmonics += power[k * mainsBin];
    }
    const float least = lineShare * total;
    return harmonics / total > harmonicShare && (power[mainsBin] > least || power[2 * mainsBin] > least);
}

}  // namespace

PrpdSpectrum::Transform::Transform(int size)
    : frame(size), spectrum(size), plan(frame, spectrum, FFTDirection::Forward)
{
}

PrpdSpectrum::PrpdSpectrum() : m_frame50(mains50.frameSize()), m_frame60(mains60.frameSize()), m_power{} {}

MainsLines PrpdSpectrum::analyse(const float* frame, const MainsGeometry& mains)
{
    const int size = mains.frameSize();
    Transform& transform = size == mains50.frameSize() ? m_frame50 : m_frame60;
    float(*const in)[2] = transform.frame.data();
    for (int i = 0; i < size; ++i) {
        in[i][0] = frame[i];
    }
    transform.plan.execute();

    const float(*const out)[2] = transform.spectrum.data();
    const std::span<float> power(m_power.data(), static_cast<std::size_t>(size / 2));
    for (std::size_t k = 0; k < power.size(); ++k) {
        power[k] = out[k][0] * out[k][0] + out[k][1] * out[k][1];
    }

    MainsLines lines{};
    lines.f1 = amplitude(power[mainsBin], size);
    lines.f2 = amplitude(power[2 * mainsBin], size);
    lines.phaseBound = std::isfinite(lines.f1) && std::isfinite(lines.f2) && standsOut(power);
    return lines;
}

}  // namespace KOVPrivate
