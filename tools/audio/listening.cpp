#include "tools/audio/listening.h"

#include <cmath>
#include <limits>

namespace kovtools {

namespace {

constexpr double largest = std::numeric_limits<std::int16_t>::max();

void startMonitor(KOVSuperHeterodyne& monitor, double baseFrequency, double volume)
{
    monitor.init();
    monitor.setBaseFrequency(static_cast<float>(baseFrequency));
    monitor.setVolume(static_cast<float>(volume));
    monitor.start();
}

// Whether the sample that is `quiet` (truncated to a whole number) before a gain exceeds 16 bits after it, where it
// has come out as `loud`. As long as it is less than twice too large, wrapping around has changed its sign.
bool hasWrapped(std::int16_t quiet, double gain, std::int16_t loud)
{
    const double least = std::abs(static_cast<double>(quiet)) * gain;
    return least > largest || (least > 0.5 * largest && (quiet > 0) != (loud > 0));
}

}  // namespace

Monitor::Monitor(double baseFrequency, double volume) : m_gain(std::pow(10.0, 0.05 * volume))
{
    startMonitor(m_monitor, baseFrequency, volume);
    if (m_gain > 1.0) {
        startMonitor(m_quiet, baseFrequency, 0.0);
    }
}

const std::vector<std::int16_t>& Monitor::hear(std::vector<float>& block)
{
    int count = 0;
    m_monitor.feedSignal(block.data(), static_cast<int>(block.size()));
    const short* const heard = m_monitor.readAll(count);
    m_output.assign(heard, heard + count);
    if (m_gain > 1.0) {
        clipWhatWrapped(block);
    }
    return m_output;
}

void Monitor::clipWhatWrapped(std::vector<float>& block)
{
    int count = 0;
    m_quiet.feedSignal(block.data(), static_cast<int>(block.size()));
    const short* const quiet = m_quiet.readAll(count);
    for (int i = 0; i < count; ++i) {
        std::int16_t& loud = m_output[static_cast<std::size_t>(i)];
        if (hasWrapped(quiet[i], m_gain, loud)) {
            loud = static_cast<std::int16_t>(quiet[i] > 0 ? largest : -largest);
            ++m_clipped;
        }
    }
}

}  // namespace kovtools
