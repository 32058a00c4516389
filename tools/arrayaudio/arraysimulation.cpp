#include "tools/arrayaudio/arraysimulation.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "tools/scene/propagation.h"
#include "tools/scene/scenesimulation.h"
#include "tools/support/parallel.h"

namespace kovtools {

namespace {

constexpr double fullTurn = 2.0 * std::numbers::pi;
constexpr float deadNoise = 1e-6F;  // Pa; a converter without a microphone still has its last bits
constexpr int warmUpSections = 2;   // before the first sample has all the sections that belong to it
constexpr double pulseReach =
    6.0;  // envelope widths on either side; beyond them there is less than 2e-8 of the peak

static_assert(largestArrayRadius / speedOfSound * sampleRate < HissLayout::margin / 1.4,
              "a delayed section must die away inside its margin");

// Numbers that no other stream of the same seed gives.
std::uint64_t streamSeed(std::uint64_t seed, std::uint64_t stream)
{
    std::uint64_t mixed = seed + 0x9E3779B97F4A7C15ULL * (stream + 1);
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBULL;
    return mixed ^ (mixed >> 31U);
}

constexpr std::uint64_t sourceStreams = 1ULL << 32U;  // microphones have the numbers below

}  // namespace

struct ArraySimulation::Scratch
{
    HalfSpectrum spectrum;
    RealSignal signal;
};

ArraySimulation::ArraySimulation(ArraySimulationOptions options)
    : m_options(std::move(options)), m_padded(HissLayout::transformLength), m_section(HissLayout::content)
{
    for (std::size_t s = 0; s < m_options.sources.size(); ++s) {
        const StandingSource& source = m_options.sources[s];
        const std::uint64_t seed = streamSeed(m_options.seed, sourceStreams + s);
        m_starts.push_back(Random(seed).uniform());
        if (source.kind == SourceKind::Leak) {
            m_leaks.push_back(s);
            m_hisses.emplace_back(source.level, source.frequency, seed);
        }
    }
    m_spectra.resize(m_leaks.size());
    for (std::size_t m = 0; m < m_options.array.size(); ++m) {
        m_noises.emplace_back(streamSeed(m_options.seed, m));
        m_samples.emplace_back(step);
        m_overlaps.emplace_back(m_leaks.empty() ? 0 : HissLayout::transformLength);
        m_rows.push_back(nullptr);
    }
    for (int i = 0; i < warmUpSections && !m_leaks.empty(); ++i) {
        nextSections();
        inParallel(channels(), 1, [this](int first, int end) {
            Scratch scratch;
            for (int m = first; m < end; ++m) {
                addLeaks(static_cast<std::size_t>(m), scratch);
            }
        });
    }
}

const float* const* ArraySimulation::next()
{
    nextSections();
    inParallel(channels(), 1, [this](int first, int end) {
        Scratch scratch;
        for (int m = first; m < end; ++m) {
            record(static_cast<std::size_t>(m), scratch);
        }
    });
    breakMicrophones();
    m_position += step;
    return m_rows.data();
}

ArraySimulation::Path ArraySimulation::path(const StandingSource& source, std::size_t microphone) const
{
    const double early = advance(m_options.array[microphone], source.direction(), source.distance);
    return {early, 1.0 / (source.distance - early * speedOfSound)};
}

void ArraySimulation::nextSections()
{
    for (std::size_t i = 0; i < m_hisses.size(); ++i) {
        m_spectra[i] = m_hisses[i].next(m_padded, m_section);
    }
}

// All that one microphone hears, and its own noise.
void ArraySimulation::record(std::size_t microphone, Scratch& scratch)
{
    float* const row = m_samples[microphone].data();
    std::fill_n(row, step, 0.0F);
    if (!m_leaks.empty()) {
        addLeaks(microphone, scratch);
        std::copy_n(m_samples[microphone].data(), step, row);
    }
    for (std::size_t s = 0; s < m_options.sources.size(); ++s) {
        const StandingSource& source = m_options.sources[s];
        if (source.kind == SourceKind::Tone) {
            addTone(source, s, microphone, row);
        } else if (source.kind == SourceKind::Pulses) {
            addPulses(source, s, microphone, row);
        }
    }
    addNoise(microphone, row);
}

// Delays the present section of every leak as far as it takes to this microphone, and leaves in its samples what no
// later section will change.
void ArraySimulation::addLeaks(std::size_t microphone, Scratch& scratch)
{
    constexpr double spacing = sampleRate / HissLayout::transformLength;
    scratch.spectrum.assign(static_cast<std::size_t>(m_padded.bins()), {});
    for (std::size_t i = 0; i < m_leaks.size(); ++i) {
        const Path way = path(m_options.sources[m_leaks[i]], microphone);
        const std::complex<double> turn = std::polar(1.0, fullTurn * spacing * way.advance);
        std::complex<double> phase = way.gain;
        const HalfSpectrum& source = m_spectra[i];
        for (std::size_t k = 0; k < source.size(); ++k) {
            const double re = source[k].real();
            const double im = source[k].imag();
            scratch.spectrum[k] +=
                std::complex<float>(static_cast<float>(re * phase.real() - im * phase.imag()),
                                    static_cast<float>(re * phase.imag() + im * phase.real()));
            phase = {phase.real() * turn.real() - phase.imag() * turn.imag(),
                     phase.real() * turn.imag() + phase.imag() * turn.real()};
        }
    }
    m_padded.backward(scratch.spectrum, scratch.signal);
    RealSignal& overlap = m_overlaps[microphone];
    for (std::size_t i = 0; i < overlap.size(); ++i) {
        overlap[i] += scratch.signal[i];
    }
    std::copy_n(overlap.begin(), step, m_samples[microphone].begin());
    std::copy(overlap.begin() + step, overlap.end(), overlap.begin());
    std::fill(overlap.end() - step, overlap.end(), 0.0F);
}

void ArraySimulation::addTone(const StandingSource& source, std::size_t index, std::size_t microphone,
                              float* row) const
{
    const Path way = path(source, microphone);
    const double amplitude = std::numbers::sqrt2 * source.level * way.gain;
    const double turns =
        source.frequency * (static_cast<double>(m_position) / sampleRate + way.advance) + m_starts[index];
    const std::complex<double> turn = std::polar(1.0, fullTurn * source.frequency / sampleRate);
    std::complex<double> pointer = std::polar(amplitude, fullTurn * (turns - std::floor(turns)));
    for (int i = 0; i < step; ++i) {
        row[i] += static_cast<float>(pointer.imag());
        pointer = {pointer.real() * turn.real() - pointer.imag() * turn.imag(),
                   pointer.real() * turn.imag() + pointer.imag() * turn.real()};
    }
}

void ArraySimulation::addPulses(const StandingSource& source, std::size_t index, std::size_t microphone,
                                float* row) const
{
    const Path way = path(source, microphone);
    // A pulse of peak A and width w has the mean square A^2 w sqrt(pi) / 2 per period.
    const double peak =
        way.gain * source.level * std::sqrt(2.0 / (std::sqrt(std::numbers::pi) * pulseWidth * pulseRate));
    const double start =
        static_cast<double>(m_position) / sampleRate + way.advance;  // s, when row[0] was sent
    const double reach = pulseReach * pulseWidth;
    const double end = start + step / sampleRate + reach;
    for (double number = std::ceil((start - reach) * pulseRate - m_starts[index]);; number += 1.0) {
        const double middle = (number + m_starts[index]) / pulseRate;
        if (middle > end) {
            break;
        }
        const int first = std::max(0, static_cast<int>(std::ceil((middle - reach - start) * sampleRate)));
        const int last =
            std::min(step - 1, static_cast<int>(std::floor((middle + reach - start) * sampleRate)));
        for (int i = first; i <= last; ++i) {
            const double time = start + i / sampleRate - middle;
            const double envelope = std::exp(-0.5 * time * time / (pulseWidth * pulseWidth));
            row[i] += static_cast<float>(peak * envelope * std::cos(fullTurn * source.frequency * time));
        }
    }
}

// White up to half the sample rate.
void ArraySimulation::addNoise(std::size_t microphone, float* row)
{
    const auto& dead = m_options.broken.dead;
    const bool isDead = std::find(dead.begin(), dead.end(), static_cast<int>(microphone)) != dead.end();
    if (isDead) {
        std::fill_n(row, step, 0.0F);
    } else if (m_options.noise == 0.0) {
        return;
    }
    const double level = isDead ? static_cast<double>(deadNoise)
                                : m_options.noise * std::sqrt(0.5 * sampleRate / (bandHigh - bandLow));
    for (int i = 0; i < step; i += 2) {
        const std::complex<double> pair = std::numbers::sqrt2 * level * m_noises[microphone].complexNormal();
        row[i] += static_cast<float>(pair.real());
        row[i + 1] += static_cast<float>(pair.imag());
    }
}

void ArraySimulation::breakMicrophones()
{
    for (std::size_t m = 0; m < m_samples.size(); ++m) {
        m_rows[m] = m_samples[m].data();
    }
    for (const MicrophonePair& pair : m_options.broken.duplicates) {
        m_rows[static_cast<std::size_t>(pair.first)] =
            m_samples[static_cast<std::size_t>(pair.second)].data();
    }
    for (const MicrophonePair& pair : m_options.broken.swaps) {
        std::swap(m_rows[static_cast<std::size_t>(pair.first)],
                  m_rows[static_cast<std::size_t>(pair.second)]);
    }
}

}  // namespace kovtools
