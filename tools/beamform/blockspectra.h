// Spectra of blocks of array audio.
#ifndef KOVTOOLS_BLOCKSPECTRA_H
#define KOVTOOLS_BLOCKSPECTRA_H

#include <cstdint>
#include <vector>

#include "tools/beamform/delayandsum.h"
#include "tools/support/realtransform.h"

namespace kovtools {

enum class WindowKind : int { Hann, Blackman, Rectangular };

// The window's `length` coefficients, of the periodic form that suits spectra.
std::vector<float> windowCoefficients(WindowKind kind, int length);

// All microphones, several blocks at once. Spectra are scaled so that |X[k]|^2 is the mean square pressure of bin k
// (one-sided: g |sum of w x exp(...)|^2 / (N sum of w^2), g = 2 but for the first and the last bin), Pa^2: summed
// over the bins, tones and noise both give their mean square.
class BlockSpectra
{
public:
    BlockSpectra(int microphones, int fftLength, WindowKind window);

    int fftLength() const { return m_transform.length(); }
    int bins() const { return m_transform.bins(); }
    int blocks() const { return m_blocks; }

    // Transforms `blocks` blocks that begin every `hop` samples of the rows. Uses all cores.
    void analyse(const std::vector<std::vector<float>>& rows, int hop, int blocks);

    // Mean over microphones and blocks of |X[k]|^2, for every bin.
    const std::vector<double>& meanPowers() const { return m_meanPowers; }

    // One bin of all microphones and blocks, for the beamformer: with the time dependence exp(-i w t), that is conjugate
    // to the transform's.
    MicrophoneSpectra atBin(int bin) const;

private:
    HalfSpectrum& spectrum(int microphone, int block)
    {
        return m_spectra[static_cast<std::size_t>(microphone * m_blocks + block)];
    }

    int m_microphones;
    int m_blocks = 0;
    RealTransform m_transform;
    std::vector<float> m_window;          // with the scale of all bins but the first and the last
    std::vector<HalfSpectrum> m_spectra;  // microphones x blocks
    std::vector<double> m_meanPowers;
};

}  // namespace kovtools

#endif
