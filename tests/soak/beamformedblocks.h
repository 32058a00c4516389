// Energy maps from blocks of array audio as they come from the reader.
#ifndef KOVDOA_TESTS_BEAMFORMEDBLOCKS_H
#define KOVDOA_TESTS_BEAMFORMEDBLOCKS_H

#include <algorithm>
#include <cmath>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>
#include "tools/beamform/arraybeamformer.h"
#include "tools/beamform/blockspectra.h"
#include "tools/beamform/delayandsum.h"
#include "tools/scene/framefields.h"

namespace soak {

constexpr int mapRows = 48;
constexpr int mapCols = 64;
constexpr int fftLength = 512;
constexpr int pictureWidth = 640;
constexpr int pictureHeight = 480;

// The beamformer of the kovdoa program on three half-overlapping blocks of a publication.
class BeamformedBlocks
{
public:
    explicit BeamformedBlocks(const std::vector<kovtools::Microphone>& array)
        : m_beamformer(array,
                       kovtools::FieldOfView(pictureWidth, pictureHeight).cellDirections(mapRows, mapCols),
                       distance),
          m_spectra(static_cast<int>(array.size()), fftLength, kovtools::WindowKind::Hann),
          m_rows(array.size())
    {
    }

    // Fills the frame's map, spectrum and levels.
    void fill(KOVAudioBuffer& block, EngMapResult& frame)
    {
        for (std::size_t m = 0; m < m_rows.size(); ++m) {
            const float* const samples = block.data(static_cast<int>(m));
            m_rows[m].assign(samples, samples + block.samples());
        }
        const int hop = fftLength / 2;
        const int blocks = (block.samples() - fftLength) / hop + 1;
        m_spectra.analyse(m_rows, hop, blocks);

        const std::vector<double>& powers = m_spectra.meanPowers();
        std::vector<kovtools::BeamformedBin> bins;
        for (const auto& [bin, weight] :
             kovtools::representativeBins(powers, firstBin, lastBin, beamformedBins)) {
            bins.push_back(
                {bin * 96000.0 / fftLength, static_cast<float>(weight / blocks), m_spectra.atBin(bin)});
        }
        std::vector<float> map(m_beamformer.looks());
        m_beamformer.addPowers(bins, blocks, map);
        std::transform(map.begin(), map.end(), map.begin(),
                       [](float power) { return std::max(std::sqrt(power), 1e-8F); });
        kovtools::fillFrameFields({firstBin, lastBin, static_cast<float>(distance)}, map,
                                  std::vector<float>(powers.begin(), powers.end()), frame);
    }

private:
    static constexpr double distance = 5.0;  // m
    static constexpr int firstBin = 43;      // 8 kHz
    static constexpr int lastBin = 170;      // 32 kHz
    static constexpr int beamformedBins = 6;

    kovtools::DelayAndSum m_beamformer;
    kovtools::BlockSpectra m_spectra;
    std::vector<std::vector<float>> m_rows;
};

}  // namespace soak

#endif
