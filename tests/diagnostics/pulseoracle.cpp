#include "pulseoracle.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace pulseoracle {

namespace {

constexpr std::size_t bufferSamples = 36863;

}  // namespace

Samples filtered(const Samples& x, const Samples& a, const Samples& b)
{
    Samples y;
    for (std::size_t i = 0; i < x.size(); ++i) {
        float forward = 0.0F;
        float back = 0.0F;
        for (std::size_t k = 0; k < b.size() && k <= i; ++k) {
            const float product = b[k] * x[i - k];
            forward = forward + product;
        }
        for (std::size_t k = 1; k < a.size() && k <= i; ++k) {
            const float product = a[k] * y[i - k];
            back = back + product;
        }
        y.push_back(forward - back);
    }
    return y;
}

float meanSquare(const Samples& x)
{
    float sum = 0.0F;
    for (const float value : x) {
        const float square = value * value;
        sum = sum + square;
    }
    return sum / static_cast<float>(x.size());
}

float noiseFloor(const Samples& x)
{
    return meanSquare(
        filtered(x, {1.0F, -1.9075016F, 0.9115945F}, {0.0010232177F, 0.0020464354F, 0.0010232177F}));
}

Samples rescaled(const Samples& x)
{
    float max = 0.0F;
    float min = 99999.0F;
    for (const float value : x) {
        max = value > max ? value : max;
        min = value < min ? value : min;
    }
    Samples out;
    for (const float value : x) {
        const float scaled = (value - min) / (max - min);
        out.push_back(scaled < 0.2F ? 0.0F : scaled);
    }
    return out;
}

Oracle::Oracle(int segmentLength, int channels)
    : m_length(segmentLength),
      m_channels(static_cast<std::size_t>(channels), Samples(bufferSamples, 0.0F)),
      m_detection(bufferSamples, 0.0F)
{
}

void Oracle::feed(const std::vector<Samples>& block, int detectChannel)
{
    for (std::size_t ch = 0; ch < m_channels.size(); ++ch) {
        for (std::size_t i = 0; i < block[ch].size(); ++i) {
            m_channels[ch].at(static_cast<std::size_t>(buffered) + i) = block[ch][i];
        }
    }
    const Samples& detected = block[static_cast<std::size_t>(detectChannel)];
    for (std::size_t i = 0; i < detected.size(); ++i) {
        m_detection.at(static_cast<std::size_t>(buffered) + i) = detected[i];
    }
    buffered += static_cast<int>(detected.size());
    if (buffered > 32767) {
        flushPulse();
        flushSignal();
    }
}

void Oracle::flushSignal()
{
    if (buffered <= m_length) {
        buffered = 0;
        return;
    }
    for (int i = 0; i < m_length; ++i) {
        const auto to = static_cast<std::size_t>(i);
        m_detection[to] = 0.0F;
        for (Samples& channel : m_channels) {
            channel[to] = channel[static_cast<std::size_t>(buffered - m_length + i)];
        }
    }
    buffered = m_length;
}

void Oracle::flushPulse()
{
    m_bestPeak = 0.0F;
    m_count = 0;
}

std::vector<Samples> Oracle::getPulse(int& count)
{
    Samples envelope;
    for (int i = 0; i < buffered; ++i) {
        envelope.push_back(std::fabs(m_detection[static_cast<std::size_t>(i)]));
    }
    search(rescaled(envelope));
    count = m_count;
    std::vector<Samples> segments;
    for (std::size_t ch = 0; count > 0 && ch < m_channels.size(); ++ch) {
        const auto first = m_channels[ch].begin() + m_start;
        segments.emplace_back(first, first + m_length);
    }
    flushPulse();
    flushSignal();
    return segments;
}

void Oracle::search(Samples envelope)
{
    const auto n = static_cast<int>(envelope.size());
    const auto e = [&envelope](int i) { return envelope[static_cast<std::size_t>(i)]; };
    while (true) {
        float rawMax = 0.0F;
        int p = -1;
        float peak = 0.0F;
        for (int i = 0; i < n; ++i) {
            rawMax = std::max(rawMax, m_detection[static_cast<std::size_t>(i)]);
            if (e(i) > peak) {
                peak = e(i);
                p = i;
            }
        }
        if (p < 0) {
            return;
        }
        int start = 0;
        for (int i = p, quiet = 0; i > 0; --i) {
            quiet = e(i) < 0.2F ? quiet + 1 : 0;
            if (quiet == 50) {
                start = i + 50;
                break;
            }
        }
        int end = n;
        for (int i = p, quiet = 0; i < n; ++i) {
            quiet = e(i) < 0.2F ? quiet + 1 : 0;
            if (quiet == 50) {
                end = i - 50;
                break;
            }
        }
        int s = std::max(p - 3 * m_length / 4, 0);
        if (s + m_length > n) {
            s = n - m_length;
        }
        const Samples work(m_detection.begin() + s, m_detection.begin() + s + m_length);
        const float energy = meanSquare(work);
        if (noiseFloor(work) / energy > 0.2F || peak < 0.2F) {
            return;
        }
        ++searched;
        if (rawMax > m_bestPeak) {
            m_bestPeak = rawMax;
            m_reference = energy;
            m_start = s;
        }
        if (energy / m_reference > 0.05F) {
            ++m_count;
        }
        for (int i = std::max(start - m_length / 2, 0); i < std::min(end + m_length / 2, n); ++i) {
            envelope[static_cast<std::size_t>(i)] = 0.0F;
        }
        envelope[static_cast<std::size_t>(p)] = 0.0F;
    }
}

}  // namespace pulseoracle
