#include <KOVDoaHandle/diagnostics/dischargefilters_p.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace KOVPrivate {

namespace {

constexpr float sampleRateHz = 96000.0F;
// Discharges are broadband; what people and machines are heard by lies below. Most of the energy of
// mechanical noise ends at 20 kHz, which the 25 kHz pair keeps out.
constexpr float wideCutoffHz = 25000.0F;
constexpr float midCutoffHz = 10000.0F;
constexpr float lowCutoffHz = 2000.0F;
constexpr float quality = 0.707F;
constexpr float gain = 1.0F;

// Samples that stand for enough memory that blocks of ordinary size never need more.
constexpr std::size_t ordinaryBlock = 8192;

constexpr int levelSamples = 8;
constexpr float fullScale = 32767.0F;

// |x| as a 16-bit number. The comparison is false for NaN.
float magnitude16(float x)
{
    const float scaled = std::fabs(x) * fullScale;
    return scaled > 0.0F ? std::trunc(std::min(scaled, fullScale)) : 0.0F;
}

}  // namespace

DischargeBand bandFor(bool selected, int value)
{
    if (!selected || value > 20000) {
        return DischargeBand::Wide;
    }
    return value > 8000 ? DischargeBand::Mid : DischargeBand::Low;
}

float blockLevel(const float* samples, int n)
{
    float level = 0.0F;
    for (int i = std::max(n - levelSamples, 0); i < n; ++i) {
        level += magnitude16(samples[i]);
    }
    return level;
}

DischargeFilters::Pair::Pair(float cutoffHz)
    : first(KOVIIRDesigner::createHighPass(cutoffHz, quality, gain, sampleRateHz)),
      second(KOVIIRDesigner::createHighPass(cutoffHz, quality, gain, sampleRateHz))
{
}

DischargeFilters::DischargeFilters()
    : m_wide(wideCutoffHz), m_mid(midCutoffHz), m_low(lowCutoffHz), m_filtered(ordinaryBlock)
{
    reset();
}

DischargeFilters::Pair& DischargeFilters::pairOf(DischargeBand band)
{
    switch (band) {
        case DischargeBand::Low:
            return m_low;
        case DischargeBand::Mid:
            return m_mid;
        case DischargeBand::Wide:
            break;
    }
    return m_wide;
}

float* DischargeFilters::run(DischargeBand band, float* samples, int n)
{
    if (m_filtered.size() < static_cast<std::size_t>(n)) {
        m_filtered.resize(static_cast<std::size_t>(n));
    }
    Pair& pair = pairOf(band);
    pair.first.filter(samples, m_filtered.data(), n);
    pair.second.filter(m_filtered.data(), m_filtered.data(), n);
    return m_filtered.data();
}

void DischargeFilters::reset()
{
    for (Pair* pair : {&m_wide, &m_mid, &m_low}) {
        pair->first.reset();
        pair->second.reset();
    }
}

}  // namespace KOVPrivate
