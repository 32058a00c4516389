// The inner loops of the beamformer, with vector instructions where the processor has them.
#ifndef KOVTOOLS_BEAMKERNELS_H
#define KOVTOOLS_BEAMKERNELS_H

#include <span>

namespace kovtools {

struct BeamKernels
{
    static constexpr int lanes = 8;  // snapshots that are summed side by side
    static constexpr int looks = 4;  // look directions that share what is loaded of the spectra

    const char* name;

    // real[i] + i imaginary[i] = exp(i 2 pi frequency advances[i]) within 1e-6, for up to 2^22 turns.
    void (*steer)(const float* advances, int count, float frequency, float* real, float* imaginary);

    // `group`: for each microphone `lanes` real parts, then `lanes` imaginary parts. `real` and `imaginary`: for each
    // of the `looks` directions a row of `microphones` steering factors. Adds
    // weight |sum over m of group[m] factor[look][m]|^2 to powers[look * lanes + lane].
    void (*addPowers)(const float* group, int microphones, const float* real, const float* imaginary,
                      float weight, float* powers);
};

// The fastest that this processor runs, and all that it runs.
const BeamKernels& beamKernels();
std::span<const BeamKernels> beamKernelVariants();

}  // namespace kovtools

#endif
