// What the benchmarks of filters and of what is built on them share: the peer's filter, and noise to filter.
#ifndef KOVDOA_BENCH_PLAINFILTER_H
#define KOVDOA_BENCH_PLAINFILTER_H

#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

namespace bench {

using Samples = std::vector<float>;

inline Samples noise(std::size_t count)
{
    std::mt19937 random(17);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    Samples samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return uniform(random); });
    return samples;
}

// What a first version of a filter looks like, and every compiler makes good code of.
class PlainFilter
{
public:
    explicit PlainFilter(const IIRCoef_t& c)
        : m_b0(c.b0 / c.a0), m_b1(c.b1 / c.a0), m_b2(c.b2 / c.a0), m_a1(c.a1 / c.a0), m_a2(c.a2 / c.a0)
    {
    }

    void filter(const float* in, float* out, int n)
    {
        float x1 = m_x1;
        float x2 = m_x2;
        float y1 = m_y1;
        float y2 = m_y2;
        for (int i = 0; i < n; ++i) {
            const float x = in[i];
            const float y = m_b0 * x + m_b1 * x1 + m_b2 * x2 - m_a1 * y1 - m_a2 * y2;
            x2 = x1;
            x1 = x;
            y2 = y1;
            y1 = y;
            out[i] = y;
        }
        m_x1 = x1;
        m_x2 = x2;
        m_y1 = y1;
        m_y2 = y2;
    }

private:
    float m_b0;
    float m_b1;
    float m_b2;
    float m_a1;
    float m_a2;
    float m_x1 = 0.0F;
    float m_x2 = 0.0F;
    float m_y1 = 0.0F;
    float m_y2 = 0.0F;
};

}  // namespace bench

#endif
