#include <KOVDoaHandle/KOVAudio/channelsums_p.h>

#include <algorithm>
#include <cmath>

namespace KOVPrivate {

namespace {

// Intervals whose areas are worked out before they are added up: the table of one group stays in the
// first-level cache.
constexpr int pieceSize = 256;

using Areas = std::array<std::array<float, pieceSize>, channelGroup>;

// Adds row[first ... first + count - 1] of each row to its sum, in index order.
void addInOrder(const ChannelRows& rows, std::ptrdiff_t first, std::ptrdiff_t count, ChannelValues& sums)
{
    ChannelValues running = sums;
    for (std::ptrdiff_t i = first; i < first + count; ++i) {
        for (std::size_t channel = 0; channel < channelGroup; ++channel) {
            running[channel] += rows[channel][i];
        }
    }
    sums = running;
}

// areas[i] = (x[i] - mean)^2 + (x[i + 1] - mean)^2: twice what the trapezoid rule counts for interval i.
void doubledAreas(const float* x, float mean, int count, float* areas)
{
    for (int i = 0; i < count; ++i) {
        const float left = x[i] - mean;
        const float right = x[i + 1] - mean;
        areas[i] = left * left + right * right;
    }
}

}  // namespace

ChannelValues rmsAboutMean(const ChannelRows& rows, int n)
{
    ChannelValues means{};
    addInOrder(rows, 0, n, means);
    for (float& mean : means) {
        mean /= static_cast<float>(n);
    }

    Areas areas;
    ChannelRows areaRows;
    for (std::size_t channel = 0; channel < channelGroup; ++channel) {
        areaRows[channel] = areas[channel].data();
    }
    ChannelValues sums{};
    for (int first = 0; first < n - 1; first += pieceSize) {
        const int count = std::min(pieceSize, n - 1 - first);
        for (std::size_t channel = 0; channel < channelGroup; ++channel) {
            doubledAreas(rows[channel] + first, means[channel], count, areas[channel].data());
        }
        addInOrder(areaRows, 0, count, sums);
    }
    for (float& sum : sums) {
        sum = std::sqrt(0.5F * sum / static_cast<float>(n - 1));
    }
    return sums;
}

}  // namespace KOVPrivate
