#include "tools/discharge/dischargesignal.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kovtools {

namespace {

constexpr double wholeCycle = 360.0;    // degrees
constexpr double driftPeriod = 20.0;    // s, of the slow swing of the mains frequency
constexpr double riseTime = 30e-6;      // s
constexpr double furthestEarly = 0.25;  // cycles that a strike may lie before its own
constexpr double fadedOut = 1e-4;       // of a burst's amplitude
constexpr double twoPi = 2.0 * std::numbers::pi;

}  // namespace

// The order in which the random numbers are drawn is the order of the members.
DischargeSignal::DischargeSignal(const DischargeSignalOptions& options)
    : m_options(options),
      m_random(options.seed),
      m_phases(options.kind, m_random),
      m_resonance(m_random.uniform(33e3, 42e3)),
      m_slowStep(std::exp(-1.0 / (dischargeRate * m_random.uniform(0.15e-3, 0.35e-3)))),
      m_fastStep(std::exp(-1.0 / (dischargeRate * riseTime))),
      m_driftPhase(m_random.uniform(0.0, twoPi)),
      // One cycle early: late strikes of that one may fall into the next.
      m_cycleStart(-(options.phase / wholeCycle + 1.0) / frequencyOf(options.mains))
{
}

double DischargeSignal::mainsFrequency(double time) const
{
    return frequencyOf(m_options.mains) +
           m_options.drift * std::sin(twoPi * time / driftPeriod + m_driftPhase);
}

void DischargeSignal::addCycle()
{
    const double period = 1.0 / mainsFrequency(m_cycleStart);
    for (const Strike& strike : m_phases.nextCycle(m_random)) {
        addBurst(m_cycleStart + period * strike.phase / wholeCycle, m_options.level * strike.amplitude);
    }
    m_cycleStart += period;
}

void DischargeSignal::addBurst(double time, double amplitude)
{
    // Each click excites the resonance a little differently.
    const double frequency = std::clamp(m_resonance * m_random.uniform(0.95, 1.05), 30e3, 45e3);
    const double phase = m_random.uniform(0.0, twoPi);
    const double step = twoPi * frequency / dischargeRate;
    const auto start = static_cast<std::int64_t>(std::ceil(time * dischargeRate));
    if (start >= m_position) {
        m_bursts.push_back(
            {start, amplitude, 1.0, 1.0, std::cos(phase), std::sin(phase), std::cos(step), std::sin(step)});
    }
}

double DischargeSignal::noiseSample()
{
    if (m_hasSpareNoise) {
        m_hasSpareNoise = false;
        return m_spareNoise;
    }
    // Each part has half of the mean square of 1.
    const std::complex<double> pair = std::numbers::sqrt2 * m_options.noise * m_random.complexNormal();
    m_spareNoise = pair.imag();
    m_hasSpareNoise = true;
    return pair.real();
}

double DischargeSignal::burstSample(Burst& burst) const
{
    const double value = burst.amplitude * (burst.slow - burst.fast) * burst.sine;
    burst.slow *= m_slowStep;
    burst.fast *= m_fastStep;
    const double cosine = burst.cosine * burst.stepCosine - burst.sine * burst.stepSine;
    burst.sine = burst.sine * burst.stepCosine + burst.cosine * burst.stepSine;
    burst.cosine = cosine;
    return value;
}

// Sample by sample, so that the random numbers are drawn in the same order however the stream is cut.
void DischargeSignal::next(int count, std::vector<float>& samples)
{
    samples.resize(static_cast<std::size_t>(count));
    const double early = furthestEarly / frequencyOf(m_options.mains);
    for (float& sample : samples) {
        while (m_cycleStart - early <= static_cast<double>(m_position) / dischargeRate) {
            addCycle();
        }
        double value = noiseSample();
        for (Burst& burst : m_bursts) {
            if (burst.start <= m_position) {
                value += burstSample(burst);
            }
        }
        std::erase_if(m_bursts, [](const Burst& burst) { return burst.slow < fadedOut; });
        sample = static_cast<float>(value);
        ++m_position;
    }
}

}  // namespace kovtools
