#include "tools/audio/resampling.h"

#include <algorithm>
#include <numeric>

#include "tools/audio/soundreader.h"

namespace kovtools {

namespace {

constexpr int longestBlock = 409600;  // samples; the resampler's work buffer
constexpr int usualBlock = 8192;      // samples of the faster side; stays in the cache
constexpr long long longestOutput = 1LL << 24;

// What the resampler picks for output `k`.
int pickedIndex(int k, float ratio)
{
    return static_cast<int>(static_cast<float>(k) * ratio);
}

// Whether single precision gives the resampler the very index that whole numbers give, for every output of a block.
bool isPickedExactly(int inputRate, int outputRate, ResamplingBlock block)
{
    const float ratio = static_cast<float>(inputRate) / static_cast<float>(outputRate);
    for (int k = 0; k < block.output; ++k) {
        const long long exact = static_cast<long long>(k) * block.input / block.output;
        if (pickedIndex(k, ratio) != exact) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<ResamplingBlock> resamplingBlock(int inputRate, int outputRate)
{
    const int common = std::gcd(inputRate, outputRate);
    const int input = inputRate / common;
    const int output = outputRate / common;
    for (int cycles = std::max(1, usualBlock / std::max(input, output)); cycles > 0; cycles /= 2) {
        const ResamplingBlock block{cycles * input, cycles * output};
        if (block.input <= longestBlock && block.output <= longestOutput &&
            isPickedExactly(inputRate, outputRate, block)) {
            return block;
        }
    }
    return std::nullopt;
}

Resampling::Resampling(const ResamplingOptions& options, ResamplingBlock block, int channels)
    : m_options(options), m_block(block)
{
    for (int channel = 0; channel < channels; ++channel) {
        m_channels.push_back(std::make_unique<KOVAudioReSample>(options.inputRate, options.outputRate,
                                                                static_cast<float>(options.gain),
                                                                options.aliasing, options.dc));
    }
}

const std::vector<float>& Resampling::resample(const std::vector<float>& block)
{
    const std::size_t channels = m_channels.size();
    const auto samples = static_cast<int>(block.size() / channels);
    const auto picked = static_cast<std::size_t>(resampledLength(samples, m_block));
    m_interleaved.resize(picked * channels);
    m_out.resize(picked);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        takeChannel(block, static_cast<int>(channels), static_cast<int>(channel), m_in);
        m_channels[channel]->doReSample(m_in.data(), samples, m_out.data(), static_cast<int>(picked));
        for (std::size_t i = 0; i < picked; ++i) {
            m_interleaved[i * channels + channel] = m_out[i];
        }
    }
    return m_interleaved;
}

long long resampledLength(long long samples, ResamplingBlock block)
{
    // The outputs k with k * input / output < samples.
    return (samples * block.output + block.input - 1) / block.input;
}

}  // namespace kovtools
