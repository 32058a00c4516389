#include "plainlistening.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace listening {

namespace {

std::unique_ptr<KOVFilter> lowPass(float cutoff, float q)
{
    return std::make_unique<KOVFilter>(KOVIIRDesigner::createLowPass(cutoff, q, 1.0F, 96000.0F));
}

std::unique_ptr<KOVFilter> highPass(float cutoff, float q)
{
    return std::make_unique<KOVFilter>(KOVIIRDesigner::createHighPass(cutoff, q, 1.0F, 96000.0F));
}

float oscillator(int i, float base)
{
    const float seconds = static_cast<float>(i) / 96000.0F;
    const float cycles = seconds * base;
    const double halfTurns = double{cycles} * std::numbers::pi;
    const double angle = halfTurns * 2.0;
    return static_cast<float>(std::cos(angle));
}

short truncatedToLow16Bits(float value)
{
    const double whole = std::trunc(double{value});
    if (!(whole >= -2147483648.0 && whole <= 2147483647.0)) {
        return 0;
    }
    const auto bits = static_cast<std::uint64_t>(static_cast<std::int64_t>(whole)) & 0xFFFFU;
    return static_cast<short>(bits >= 0x8000U ? static_cast<int>(bits) - 0x10000 : static_cast<int>(bits));
}

}  // namespace

PlainChain::PlainChain(float baseFrequency, float volumeDecibels)
{
    const float exponent = volumeDecibels * 0.05F;
    m_volumeGain = static_cast<float>(std::pow(10.0, double{exponent}));
    m_rumble = highPass(100.0F, 1.0F);
    retune(baseFrequency);
}

void PlainChain::retune(float baseFrequency)
{
    m_base = baseFrequency;
    const float width = 48000.0F - baseFrequency;
    m_band = highPass(baseFrequency, 1.0F);
    m_lowPasses[0] = lowPass(width - 4540.0F, 0.7F);
    m_lowPasses[1] = lowPass(width + 2500.0F, 2.0F);
    m_lowPasses[2] = lowPass(width + 1500.0F, 2.0F);
    m_lowPasses[3] = lowPass(width + 500.0F, 1.0F);
}

Sound PlainChain::read(Samples work)
{
    const int n = static_cast<int>(work.size());
    m_band->filter(work.data(), work.data(), n);
    for (int i = 0; i < n; ++i) {
        float& sample = work[static_cast<std::size_t>(i)];
        sample = sample * oscillator(m_phase + i, m_base);
    }
    for (const auto& filter : m_lowPasses) {
        filter->filter(work.data(), work.data(), n);
    }
    m_rumble->filter(work.data(), work.data(), n);

    const float level = static_cast<float>(20.0 * double{std::log10(plainDeviation(work))} + 120.0);
    float gain = static_cast<float>(double{m_volumeGain} * 29.54242509);
    if (level > 60.0F) {
        const float exponent = static_cast<float>((60.0 - double{level}) * 0.05);
        const float factor = static_cast<float>(std::pow(10.0, double{exponent}));
        gain = gain * factor;
    }
    Sound out(work.size() / 2);
    for (std::size_t k = 0; k < out.size(); ++k) {
        const float scaled = work[2 * k] * 32767.0F;
        const float amplified = scaled * gain;
        out[k] = truncatedToLow16Bits(amplified);
    }
    m_phase = (m_phase + n) % 192000;
    return out;
}

float plainDeviation(const Samples& x)
{
    const float count = static_cast<float>(x.size());
    float sum = 0.0F;
    for (const float value : x) {
        sum = sum + value;
    }
    const float mean = sum / count;
    float squares = 0.0F;
    for (const float value : x) {
        const float difference = value - mean;
        const double square = std::pow(double{difference}, 2.0);
        squares = squares + static_cast<float>(square);
    }
    return static_cast<float>(std::pow(double{squares / count}, 0.5));
}

Samples noise(std::size_t count, float amplitude, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> uniform(-amplitude, amplitude);
    Samples samples(count);
    for (float& sample : samples) {
        sample = uniform(random);
    }
    return samples;
}

Samples tone(std::size_t count, double frequency, double amplitude)
{
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double cycles = frequency * static_cast<double>(i) / 96000.0;
        samples[i] = static_cast<float>(amplitude * std::cos(2.0 * std::numbers::pi * cycles));
    }
    return samples;
}

std::vector<Samples> cut(const Samples& whole, int largestPiece, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::ptrdiff_t> size(0, largestPiece);
    std::vector<Samples> pieces;
    for (auto begin = whole.begin(); begin != whole.end();) {
        const auto end = begin + std::min(size(random), whole.end() - begin);
        pieces.emplace_back(begin, end);
        begin = end;
    }
    return pieces;
}

void feed(KOVSuperHeterodyne& monitor, std::span<const float> samples)
{
    Samples copy(samples.begin(), samples.end());
    for (std::size_t first = 0; first < copy.size(); first += 1024) {
        monitor.feedSignal(copy.data() + first,
                           static_cast<int>(std::min<std::size_t>(1024, copy.size() - first)));
    }
}

Sound readFrom(KOVSuperHeterodyne& monitor)
{
    int count = -2;
    const short* sound = monitor.readAll(count);
    return count > 0 ? Sound(sound, sound + count) : Sound();
}

std::unique_ptr<KOVSuperHeterodyne> startedMonitor(float baseFrequency, float volumeDecibels)
{
    auto monitor = std::make_unique<KOVSuperHeterodyne>();
    monitor->setBaseFrequency(baseFrequency);
    monitor->setVolume(volumeDecibels);
    monitor->init();
    monitor->start();
    return monitor;
}

}  // namespace listening
