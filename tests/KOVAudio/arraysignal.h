// Made-up audio of the whole microphone array.
#ifndef KOVDOA_TESTS_KOVAUDIO_ARRAYSIGNAL_H
#define KOVDOA_TESTS_KOVAUDIO_ARRAYSIGNAL_H

#include <cstddef>
#include <random>
#include <vector>

namespace miccheck {

constexpr std::size_t channels = 208;
constexpr int capacity = 96000;

using Row = std::vector<float>;

inline Row noise(std::size_t count, float amplitude, unsigned seed)
{
    std::minstd_rand random(seed + 1);
    std::uniform_real_distribution<float> uniform(-amplitude, amplitude);
    Row row(count);
    for (float& sample : row) {
        sample = uniform(random);
    }
    return row;
}

// 208 channels of one length.
template <typename Sample>
class ArrayAudio
{
public:
    explicit ArrayAudio(std::size_t count) : rows(channels, std::vector<Sample>(count)) {}

    // Pointers to each channel, from sample `first` on.
    Sample** from(std::size_t first = 0)
    {
        m_pointers.clear();
        for (std::vector<Sample>& row : rows) {
            m_pointers.push_back(row.data() + first);
        }
        return m_pointers.data();
    }

    std::vector<std::vector<Sample>> rows;

private:
    std::vector<Sample*> m_pointers;
};

using ArraySignal = ArrayAudio<float>;

// Another noise in each channel.
inline ArraySignal differentNoise(std::size_t count, float amplitude)
{
    ArraySignal signal(count);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        signal.rows[channel] = noise(count, amplitude, static_cast<unsigned>(channel));
    }
    return signal;
}

// `source` late by `delay` samples (early if negative), the end brought to the front.
inline Row delayed(const Row& source, std::ptrdiff_t delay)
{
    const std::ptrdiff_t n = std::ssize(source);
    Row row(source.size());
    for (std::ptrdiff_t i = 0; i < n; ++i) {
        row[static_cast<std::size_t>(((i + delay) % n + n) % n)] = source[static_cast<std::size_t>(i)];
    }
    return row;
}

}  // namespace miccheck

#endif
