#include "tools/support/realtransform.h"

#include <fftw3.h>

namespace kovtools {

namespace {

fftwf_complex* fftwPointer(HalfSpectrum& spectrum)
{
    return reinterpret_cast<fftwf_complex*>(spectrum.data());
}

}  // namespace

struct RealTransform::Plans
{
    fftwf_plan forward = nullptr;
    fftwf_plan backward = nullptr;

    ~Plans()
    {
        fftwf_destroy_plan(forward);
        fftwf_destroy_plan(backward);
    }
};

RealTransform::RealTransform(int length) : m_length(length), m_plans(std::make_unique<Plans>())
{
    RealSignal signal(static_cast<std::size_t>(length));
    HalfSpectrum spectrum(static_cast<std::size_t>(bins()));
    // Estimated plans are the same every time; measured ones would change the last digits from run to run.
    m_plans->forward = fftwf_plan_dft_r2c_1d(length, signal.data(), fftwPointer(spectrum),
                                             FFTW_ESTIMATE | FFTW_PRESERVE_INPUT);
    m_plans->backward = fftwf_plan_dft_c2r_1d(length, fftwPointer(spectrum), signal.data(), FFTW_ESTIMATE);
    if (m_plans->forward == nullptr || m_plans->backward == nullptr) {
        throw std::bad_alloc();
    }
}

RealTransform::~RealTransform() = default;

void RealTransform::forward(const RealSignal& signal, HalfSpectrum& spectrum) const
{
    spectrum.resize(static_cast<std::size_t>(bins()));
    // The plan leaves its input alone.
    fftwf_execute_dft_r2c(m_plans->forward, const_cast<float*>(signal.data()), fftwPointer(spectrum));
}

void RealTransform::backward(HalfSpectrum& spectrum, RealSignal& signal) const
{
    signal.resize(static_cast<std::size_t>(m_length));
    fftwf_execute_dft_c2r(m_plans->backward, fftwPointer(spectrum), signal.data());
}

}  // namespace kovtools
