// Random numbers that are the same for a seed wherever the program is built.
#ifndef KOVTOOLS_RANDOM_H
#define KOVTOOLS_RANDOM_H

#include <complex>
#include <cstdint>
#include <random>

namespace kovtools {

// The standard fixes the numbers of std::mt19937_64, but not those of the distributions on top of it; so
// these are written here.
class Random
{
public:
    explicit Random(std::uint64_t seed) : m_engine(seed) {}

    // Evenly spread in [0, 1): the upper 53 bits.
    double uniform() { return static_cast<double>(m_engine() >> 11U) * 0x1.0p-53; }
    double uniform(double low, double high) { return low + (high - low) * uniform(); }

    // Circular complex normal numbers with a mean square of 1 (Box and Muller's method gives both parts at
    // once).
    std::complex<double> complexNormal();

private:
    std::mt19937_64 m_engine;
};

}  // namespace kovtools

#endif
