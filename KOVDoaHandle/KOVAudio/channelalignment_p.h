// The lag between two channels, by generalised cross-correlation with phase transform.
// (C. H. Knapp, G. C. Carter, "The generalized correlation method for estimation of time delay", 1976.)
#ifndef KOVDOA_CHANNELALIGNMENT_P_H
#define KOVDOA_CHANNELALIGNMENT_P_H

#include <KOVDoaHandle/foundation/engine/kovfftwindow.h>
#include <KOVDoaHandle/foundation/fftplan_p.h>

namespace KOVPrivate {

// Spectra of blocks of n samples behind a Hann window. One plan and one window serve any number of blocks.
class WindowedSpectrum
{
public:
    explicit WindowedSpectrum(int n);

    // The n bins of x, valid until the next call.
    float (*of(const float* x))[2];

private:
    KOVFFTWindow m_window;
    FFTArray m_block;
    FFTArray m_bins;
    FFTPlan m_plan;
};

// Magnitudes of the backward transform of n bins, without the division by n.
class BackwardMagnitudes
{
public:
    explicit BackwardMagnitudes(int n);

    // To be filled with the bins before each call of magnitudes().
    float (*bins())[2] { return m_bins.data(); }
    void magnitudes(float* out);

private:
    FFTArray m_bins;
    FFTArray m_values;
    FFTPlan m_plan;
};

// Lag of b relative to a in samples, -n / 2 ... (n - 1) / 2: negative where b is late. 0 when a channel is
// silent or holds a NaN: nothing of the correlation is a number then, and the first place counts as its
// maximum.
class ChannelAlignment
{
public:
    explicit ChannelAlignment(int n);

    int lag(const float* a, const float* b);

private:
    int m_size;
    WindowedSpectrum m_spectrum;
    BackwardMagnitudes m_correlation;
    std::unique_ptr<float[]> m_magnitudes;
};

}  // namespace KOVPrivate

#endif
