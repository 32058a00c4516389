// A stream of samples brought to another rate by the library's resampler.
#ifndef KOVTOOLS_RESAMPLING_H
#define KOVTOOLS_RESAMPLING_H

#include <KOVDoaHandle/KOVAudio/kovaudioresample.h>

#include <memory>
#include <optional>
#include <vector>

namespace kovtools {

constexpr int resamplerFilterRate = 96000;  // Hz; its filters are made for no other

struct ResamplingOptions
{
    int inputRate = 0;      // Hz
    int outputRate = 0;     // Hz
    double gain = 0.0;      // dB
    bool aliasing = false;  // the resampler's remove-aliasing flag: its 10 Hz high-pass
    bool dc = false;        // the resampler's remove-DC flag: its low-pass at the output rate
};

// How a stream is cut. The resampler picks, for each output, the sample at or before its instant, and begins anew with
// each block. Cut into whole cycles of the two rates, a stream is picked as if it were one block.
struct ResamplingBlock
{
    int input;   // samples
    int output;  // samples that the resampler makes of them
};

// None when a cycle of the two rates is longer than the resampler's blocks, or so long that single precision cannot
// count through it.
std::optional<ResamplingBlock> resamplingBlock(int inputRate, int outputRate);

// Resamples all channels of a stream alike.
class Resampling
{
public:
    // `options` are such that `block` is what resamplingBlock() gives.
    Resampling(const ResamplingOptions& options, ResamplingBlock block, int channels);

    // Resamples one interleaved block: of the length given before, except for the last.
    const std::vector<float>& resample(const std::vector<float>& block);

private:
    ResamplingOptions m_options;
    ResamplingBlock m_block;
    std::vector<std::unique_ptr<KOVAudioReSample>> m_channels;  // each has filters of its own
    std::vector<float> m_in;
    std::vector<float> m_out;
    std::vector<float> m_interleaved;
};

// How many samples become of `samples` of the stream.
long long resampledLength(long long samples, ResamplingBlock block);

}  // namespace kovtools

#endif
