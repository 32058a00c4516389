#include "tools/scene/scenesimulation.h"

#include <algorithm>
#include <cmath>

namespace kovtools {

namespace {

// Frames per go: enough snapshots to make the price of the steering phases small, few enough to stay in the
// cache.
constexpr int framesPerGo = 16;

// Nothing is quieter than this, Pa: without noise a cell could otherwise be 0, and levels are ratios.
constexpr float quietestLevel = 1e-9F;

}  // namespace

SceneSimulation::SceneSimulation(const SceneOptions& options)
    : m_options(options),
      m_view(options.pictureWidth, options.pictureHeight),
      m_random(options.seed),
      m_array(sunflowerSpiral()),
      m_sources(makeSources(options.sources, m_random)),
      m_beamformer(m_array, m_view.cellDirections(options.rows, options.cols)),
      m_firstBandBin(static_cast<int>(std::ceil(bandLow * options.fftLength / sampleRate))),
      m_lastBandBin(static_cast<int>(std::floor(bandHigh * options.fftLength / sampleRate)))
{
    for (const SoundSource& source : m_sources) {
        double sum = 0.0;
        for (int bin = m_firstBandBin; bin <= m_lastBandBin; ++bin) {
            sum += source.powerDensity(binFrequency(bin));
        }
        m_bandDensity.push_back(sum);
    }
    // The middles of equal parts of the band, each on the nearest bin.
    for (int i = 0; i < beamformedFrequencies; ++i) {
        const double part = (i + 0.5) / beamformedFrequencies;
        m_bins.push_back(m_firstBandBin + static_cast<int>(part * bandBins()));
    }
}

// Mean square pressure of a source in one bin.
double SceneSimulation::sourcePower(std::size_t source, int bin, double level) const
{
    return level * level * m_sources[source].powerDensity(binFrequency(bin)) / m_bandDensity[source];
}

SimulatedFrame SceneSimulation::startFrame(int number)
{
    SimulatedFrame frame;
    const double time = number / m_options.frameRate;
    for (const SoundSource& source : m_sources) {
        frame.sources.push_back({source.positionAt(time), source.levelAt(time)});
    }
    frame.spectrum.resize(static_cast<std::size_t>(m_options.fftLength / 2 + 1));
    return frame;
}

// What the microphones receive at one beamformed bin: the waves of the sources, whose amplitudes change from
// snapshot to snapshot as those of any hiss do, and each microphone's own noise.
void SceneSimulation::hearFrequency(SimulatedFrame& frame, int bin, int firstSnapshot,
                                    MicrophoneSpectra& spectra)
{
    const double frequency = binFrequency(bin);
    std::vector<std::vector<std::complex<double>>> waves;  // per source and microphone, for an amplitude of 1
    for (const SourceState& source : frame.sources) {
        const Direction direction = m_view.direction(source.position);
        std::vector<std::complex<double>>& wave = waves.emplace_back();
        for (const Microphone& microphone : m_array) {
            wave.push_back(std::polar(1.0, -steeringPhase(microphone, direction, frequency)));
        }
    }
    const double noise = m_options.noise / std::sqrt(static_cast<double>(bandBins()));
    double meanSquare = 0.0;
    for (int snapshot = 0; snapshot < snapshotsPerFrame; ++snapshot) {
        std::vector<std::complex<double>> amplitudes;
        for (std::size_t s = 0; s < waves.size(); ++s) {
            amplitudes.push_back(m_random.complexNormal() *
                                 std::sqrt(sourcePower(s, bin, frame.sources[s].level)));
        }
        for (std::size_t m = 0; m < m_array.size(); ++m) {
            std::complex<double> heard = m_random.complexNormal() * noise;
            for (std::size_t s = 0; s < waves.size(); ++s) {
                heard += amplitudes[s] * waves[s][m];
            }
            meanSquare += std::norm(heard);
            spectra.set(static_cast<int>(m), firstSnapshot + snapshot, std::complex<float>(heard));
        }
    }
    const double terms = static_cast<double>(m_array.size()) * snapshotsPerFrame;
    frame.spectrum[static_cast<std::size_t>(bin)] = static_cast<float>(meanSquare / terms);
}

// The bins that are not beamformed only appear in the spectrum. Averaged over the microphones, the noise
// shows its mean power and the products of different sources vanish, so no microphone needs to be simulated
// for them.
void SceneSimulation::fillOtherBins(SimulatedFrame& frame)
{
    const double noisePower = m_options.noise * m_options.noise / bandBins();
    for (int bin = 0; bin <= m_options.fftLength / 2; ++bin) {
        if (std::find(m_bins.begin(), m_bins.end(), bin) != m_bins.end()) {
            continue;
        }
        double power = noisePower;
        for (std::size_t s = 0; s < m_sources.size(); ++s) {
            double meanSquare = 0.0;
            for (int snapshot = 0; snapshot < snapshotsPerFrame; ++snapshot) {
                meanSquare += std::norm(m_random.complexNormal());
            }
            power += sourcePower(s, bin, frame.sources[s].level) * meanSquare / snapshotsPerFrame;
        }
        frame.spectrum[static_cast<std::size_t>(bin)] = static_cast<float>(power);
    }
}

void SceneSimulation::hearFrame(SimulatedFrame& frame, int firstSnapshot, std::vector<BeamformedBin>& bins)
{
    for (std::size_t i = 0; i < m_bins.size(); ++i) {
        hearFrequency(frame, m_bins[i], firstSnapshot, bins[i].spectra);
    }
    fillOtherBins(frame);
}

std::vector<SimulatedFrame> SceneSimulation::nextFrames()
{
    const int count = std::min(framesPerGo, m_options.frames - m_nextFrame);
    std::vector<SimulatedFrame> frames;
    if (count <= 0) {
        return frames;
    }
    // Each beamformed bin stands for its part of the band; so the map shows pressures over the whole band.
    const float weight = static_cast<float>(bandBins()) / (beamformedFrequencies * snapshotsPerFrame);
    std::vector<BeamformedBin> bins;
    for (const int bin : m_bins) {
        bins.push_back(
            {binFrequency(bin), weight, MicrophoneSpectra(arrayMicrophones, count * snapshotsPerFrame)});
    }
    for (int i = 0; i < count; ++i) {
        frames.push_back(startFrame(m_nextFrame++));
        hearFrame(frames.back(), i * snapshotsPerFrame, bins);
    }

    std::vector<float> powers(m_beamformer.looks() * static_cast<std::size_t>(count));
    m_beamformer.addPowers(bins, snapshotsPerFrame, powers);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        for (std::size_t look = 0; look < m_beamformer.looks(); ++look) {
            frames[i].map.push_back(std::max(std::sqrt(powers[look * frames.size() + i]), quietestLevel));
        }
    }
    return frames;
}

}  // namespace kovtools
