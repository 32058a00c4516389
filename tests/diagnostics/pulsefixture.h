// Multichannel signals with bursts, for the tests of the pulse detector.
#ifndef KOVDOA_TESTS_PULSEFIXTURE_H
#define KOVDOA_TESTS_PULSEFIXTURE_H

#include <cmath>
#include <cstddef>
#include <vector>

#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

namespace pulsefixture {

using Samples = std::vector<float>;

inline std::vector<float*> pointers(std::vector<Samples>& channels)
{
    std::vector<float*> rows;
    for (Samples& channel : channels) {
        rows.push_back(channel.data());
    }
    return rows;
}

// `first`, `first` + 1, ...: tells where in a channel a segment comes from.
inline Samples counting(int first, std::size_t n)
{
    Samples samples;
    for (std::size_t i = 0; i < n; ++i) {
        samples.push_back(static_cast<float>(first) + static_cast<float>(i));
    }
    return samples;
}

// Adds a burst that starts with its largest value and decays, changing its sign with every sample.
inline void addBurst(Samples& samples, std::size_t at, float amplitude)
{
    for (std::size_t i = at; i < samples.size() && i < at + 30; ++i) {
        samples[i] += amplitude;
        amplitude *= -0.8F;
    }
}

inline void feed(KOVPluseDetection& detector, std::vector<Samples> channels, int detectChannel)
{
    std::vector<float*> rows = pointers(channels);
    detector.FeedSignal(rows.data(), static_cast<int>(channels[0].size()), detectChannel);
}

struct Pulse
{
    bool found = false;
    int count = -1;
    std::vector<Samples> segments;
};

inline Pulse getPulse(KOVPluseDetection& detector, std::size_t channels, std::size_t length)
{
    Pulse pulse;
    pulse.segments.assign(channels, Samples(length, -1.0F));
    std::vector<float*> rows = pointers(pulse.segments);
    pulse.found = detector.GetPulse(rows.data(), pulse.count);
    return pulse;
}

}  // namespace pulsefixture

#endif
