// Eight interleaved channels taken apart.
#ifndef KOVDOA_DEINTERLEAVE_P_H
#define KOVDOA_DEINTERLEAVE_P_H

#include <array>
#include <cstddef>

namespace KOVAudio {

constexpr int fileChannels = 8;
// Where the samples of each channel go.
using ChannelPointers = std::array<float*, fileChannels>;

// Copies `frames` sample frames of eight floats each: the value of frame i and channel c, interleaved[8 * i + c], goes
// to channels[c][i], bit for bit. Any alignment; no array may overlap another.
void deinterleave(const float* interleaved, std::size_t frames, const ChannelPointers& channels);

}  // namespace KOVAudio

#endif
