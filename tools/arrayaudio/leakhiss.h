// The hiss of a leak, so that it can be delayed by any fraction of a sample.
#ifndef KOVTOOLS_LEAKHISS_H
#define KOVTOOLS_LEAKHISS_H

#include "tools/scene/random.h"
#include "tools/support/realtransform.h"

namespace kovtools {

// Gaussian noise in sections of `content` samples, one every `step` = content / 2. Each fades in and out as a half
// sine, and sections are independent, so that their sum has the same power everywhere. A section stands in the
// middle of a transform of `transformLength` samples. What it looks like at a microphone is that spectrum times a
// phase: an exact delay, because the section has died away before it could come round the end.
struct HissLayout
{
    static constexpr int transformLength = 32768;
    static constexpr int content = 24576;
    static constexpr int step = content / 2;
    static constexpr int margin = (transformLength - content) / 2;
};

class LeakHiss
{
public:
    // `level`: Pa, root mean square over the working band, at 1 m; `hump` in Hz.
    LeakHiss(double level, double hump, std::uint64_t seed);

    // The spectrum of the next section, scaled for an unnormalised transform backwards to give pascals at 1 m.
    const HalfSpectrum& next(const RealTransform& padded, const RealTransform& section);

private:
    Random m_random;
    std::vector<double> m_amplitudes;  // of each bin of a section's noise, Pa
    RealSignal m_noise;
    RealSignal m_padded;
    HalfSpectrum m_bins;
    HalfSpectrum m_spectrum;
};

}  // namespace kovtools

#endif
