// Four frames of four channels form a square that is transposed in registers, so that the input is read once, in
// order, and each channel is written 16 bytes at a time. (Eight passes over the input, one a channel, take several
// times as long, and a plain loop over frames spends one store on every sample.)
#include <KOVDoaHandle/KOVAudio/deinterleave_p.h>

#ifdef __SSE2__
#    include <emmintrin.h>
#endif

namespace KOVAudio {

namespace {

#ifdef __SSE2__

constexpr std::size_t squareSide = 4;

// Four frames; `first` is the first of four neighbouring channels. Values are only moved, so any bits pass unchanged.
void transposeSquare(const float* interleaved, std::size_t first, std::size_t frame,
                     const ChannelPointers& channels)
{
    const float* const from = interleaved + frame * fileChannels + first;
    __m128 a = _mm_loadu_ps(from);
    __m128 b = _mm_loadu_ps(from + fileChannels);
    __m128 c = _mm_loadu_ps(from + 2 * fileChannels);
    __m128 d = _mm_loadu_ps(from + 3 * fileChannels);
    _MM_TRANSPOSE4_PS(a, b, c, d);
    _mm_storeu_ps(channels[first] + frame, a);
    _mm_storeu_ps(channels[first + 1] + frame, b);
    _mm_storeu_ps(channels[first + 2] + frame, c);
    _mm_storeu_ps(channels[first + 3] + frame, d);
}

// Returns how many frames it has done.
std::size_t deinterleaveSquares(const float* interleaved, std::size_t frames, const ChannelPointers& channels)
{
    // A copy: the compiler need not fear that a store changes a pointer.
    const ChannelPointers to = channels;
    std::size_t frame = 0;
    for (; frame + squareSide <= frames; frame += squareSide) {
        transposeSquare(interleaved, 0, frame, to);
        transposeSquare(interleaved, squareSide, frame, to);
    }
    return frame;
}

#else

std::size_t deinterleaveSquares(const float*, std::size_t, const ChannelPointers&)
{
    return 0;
}

#endif

}  // namespace

void deinterleave(const float* interleaved, std::size_t frames, const ChannelPointers& channels)
{
    for (std::size_t frame = deinterleaveSquares(interleaved, frames, channels); frame < frames; ++frame) {
        for (std::size_t channel = 0; channel < fileChannels; ++channel) {
            channels[channel][frame] = interleaved[frame * fileChannels + channel];
        }
    }
}

}  // namespace KOVAudio
