// Statistics of many channels at once, with the bits of one channel after the other.
#ifndef KOVDOA_CHANNELSUMS_P_H
#define KOVDOA_CHANNELSUMS_P_H

#include <array>
#include <cstddef>

namespace KOVPrivate {

// Channels taken side by side. Sums in single precision grow in index order, each addition waiting for the
// one before it; as many independent sums as the processor can have under way hide that wait.
constexpr std::size_t channelGroup = 8;

using ChannelRows = std::array<const float*, channelGroup>;
using ChannelValues = std::array<float, channelGroup>;

// KOVBlas::Rms(row, n, true) of each row: root mean square about the mean by the trapezoid rule; NaN for
// n = 1.
ChannelValues rmsAboutMean(const ChannelRows& rows, int n);

}  // namespace KOVPrivate

#endif
