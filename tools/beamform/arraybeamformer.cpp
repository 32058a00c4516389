#include "tools/beamform/arraybeamformer.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>

#include "tools/scene/fieldofview.h"
#include "tools/support/errors.h"
#include "tools/support/interrupt.h"

namespace kovtools {

namespace {

// Blocks that are worked on together hold at most so many samples per channel, so that a frame of any length needs
// the memory of a short one.
constexpr int samplesPerGo = 65536;

// Nothing is quieter than this, Pa: in digital silence a cell would otherwise be 0, and levels are ratios.
constexpr float quietestLevel = 1e-9F;

// Far more than any recording has, and few enough to be counted in an int: a file's header may name a rate of one
// sample per second.
constexpr double mostFrames = 1e9;

std::string inHertz(double frequency)
{
    std::ostringstream text;
    text << frequency << " Hz";
    return text.str();
}

}  // namespace

std::vector<std::pair<int, double>> representativeBins(const std::vector<double>& powers, int firstBin,
                                                       int lastBin, int count)
{
    const int bins = lastBin - firstBin + 1;
    const int parts = count == 0 ? bins : std::min(count, bins);
    std::vector<std::pair<int, double>> chosen;
    for (int part = 0; part < parts; ++part) {
        const auto begin = powers.begin() + firstBin + static_cast<std::int64_t>(bins) * part / parts;
        const auto end = powers.begin() + firstBin + static_cast<std::int64_t>(bins) * (part + 1) / parts;
        const auto strongest = std::max_element(begin, end);
        double sum = 0.0;
        for (auto power = begin; power != end; ++power) {
            sum += *power;
        }
        if (*strongest > 0.0) {
            chosen.emplace_back(static_cast<int>(strongest - powers.begin()), sum / *strongest);
        }
    }
    return chosen;
}

ArrayBeamformer::ArrayBeamformer(ArrayRecording& recording, const std::vector<Microphone>& array,
                                 const BeamformOptions& options)
    : m_recording(recording),
      m_options(options),
      m_beamformer(
          array,
          FieldOfView(options.pictureWidth, options.pictureHeight).cellDirections(options.rows, options.cols),
          options.distance),
      m_spectra(recording.channels(), options.fftLength, options.window),
      m_rows(static_cast<std::size_t>(recording.channels())),
      m_hop(std::max(1, static_cast<int>(std::lround(options.fftLength * (1.0 - options.overlap)))))
{
    const double binsPerHertz = options.fftLength / static_cast<double>(recording.sampleRate());
    // A band may begin anywhere; beyond the last bin it is all the same how far.
    m_firstBin =
        static_cast<int>(std::min(std::ceil(options.bandLow * binsPerHertz), m_spectra.bins() + 0.0));
    m_lastBin =
        static_cast<int>(std::min(std::floor(options.bandHigh * binsPerHertz), m_spectra.bins() - 1.0));
    if (m_lastBin < m_firstBin) {
        throw UsageError("no bin of the spectra lies in the band: at " +
                         std::to_string(recording.sampleRate()) + " samples per second they end at " +
                         inHertz(0.5 * recording.sampleRate()) + " and are " + inHertz(1.0 / binsPerHertz) +
                         " apart");
    }
    if (recording.samples() < options.fftLength) {
        throw DataError("the recording has " + std::to_string(recording.samples()) +
                        " samples per channel, less than one block of " + std::to_string(options.fftLength));
    }
    const double lastStart = static_cast<double>(recording.samples() - options.fftLength);
    m_frames =
        static_cast<int>(std::min(lastStart * options.frameRate / recording.sampleRate(), mostFrames)) + 2;
    while (frameStart(m_frames - 1) + options.fftLength > recording.samples()) {
        --m_frames;
    }
}

std::int64_t ArrayBeamformer::frameStart(int index) const
{
    return std::llround(index * static_cast<double>(m_recording.sampleRate()) / m_options.frameRate);
}

// At least one; none reaches beyond the end of the recording.
int ArrayBeamformer::blocksOf(int index) const
{
    const std::int64_t first = frameStart(index);
    const std::int64_t last =
        std::min(std::max(frameStart(index + 1) - 1, first), m_recording.samples() - m_options.fftLength);
    return static_cast<int>((last - first) / m_hop) + 1;
}

BeamformedFrame ArrayBeamformer::frame(int index)
{
    const int blocks = blocksOf(index);
    const int blocksPerGo = std::max(
        1, std::min(samplesPerGo / m_options.fftLength, (samplesPerGo - m_options.fftLength) / m_hop + 1));
    std::vector<float> powers(m_beamformer.looks());
    std::vector<double> spectrum(static_cast<std::size_t>(m_spectra.bins()));
    for (int done = 0; done < blocks; done += blocksPerGo) {
        const int count = std::min(blocksPerGo, blocks - done);
        throwIfInterrupted();
        addBlocks(frameStart(index) + static_cast<std::int64_t>(done) * m_hop, count,
                  static_cast<double>(count) / blocks, powers, spectrum);
    }
    BeamformedFrame frame;
    for (const float power : powers) {
        frame.map.push_back(std::max(std::sqrt(power), quietestLevel));
    }
    frame.spectrum.assign(spectrum.begin(), spectrum.end());
    return frame;
}

// `share`: the part of the frame's blocks that these are.
void ArrayBeamformer::addBlocks(std::int64_t first, int blocks, double share, std::vector<float>& powers,
                                std::vector<double>& spectrum)
{
    const int samples = (blocks - 1) * m_hop + m_options.fftLength;
    std::vector<float*> rows;
    for (std::vector<float>& row : m_rows) {
        row.resize(static_cast<std::size_t>(samples));
        rows.push_back(row.data());
    }
    m_recording.read(first, samples, rows.data());
    m_spectra.analyse(m_rows, m_hop, blocks);

    const std::vector<double>& mean = m_spectra.meanPowers();
    for (std::size_t k = 0; k < mean.size(); ++k) {
        spectrum[k] += share * mean[k];
    }
    const double binWidth = static_cast<double>(m_recording.sampleRate()) / m_options.fftLength;
    std::vector<BeamformedBin> bins;
    for (const auto& [bin, weight] : representativeBins(mean, m_firstBin, m_lastBin, m_options.bins)) {
        bins.push_back({bin * binWidth, static_cast<float>(weight * share / blocks), m_spectra.atBin(bin)});
    }
    m_beamformer.addPowers(bins, blocks, powers);
}

}  // namespace kovtools
