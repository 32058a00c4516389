#include "tests/tools/sounds.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <random>

#include "tests/tools/program.h"

namespace kovtools::tests {

namespace {

template <typename Number>
void append(std::string& bytes, Number value)
{
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename Number>
Number numberAt(const std::string& bytes, std::size_t at)
{
    Number value{};
    if (at + sizeof value <= bytes.size()) {
        std::memcpy(&value, bytes.data() + at, sizeof value);
    }
    return value;
}

template <typename Sample>
std::string wav(const std::vector<Sample>& values, int channels, int sampleRate, int formatTag)
{
    const int bytesPerFrame = channels * static_cast<int>(sizeof(Sample));
    const auto size = static_cast<std::uint32_t>(values.size() * sizeof(Sample));
    std::string bytes = "RIFF";
    append(bytes, size + 36U);
    bytes += "WAVEfmt ";
    append(bytes, std::uint32_t{16});
    append(bytes, static_cast<std::uint16_t>(formatTag));
    append(bytes, static_cast<std::uint16_t>(channels));
    append(bytes, static_cast<std::uint32_t>(sampleRate));
    append(bytes, static_cast<std::uint32_t>(sampleRate * bytesPerFrame));
    append(bytes, static_cast<std::uint16_t>(bytesPerFrame));
    append(bytes, static_cast<std::uint16_t>(8 * sizeof(Sample)));
    bytes += "data";
    append(bytes, size);
    bytes.append(reinterpret_cast<const char*>(values.data()), size);
    return bytes;
}

std::int32_t integerAt(const std::string& bytes, std::size_t at, int bits)
{
    std::uint32_t value = 0;
    for (int i = bits / 8 - 1; i >= 0; --i) {
        value = (value << 8U) | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
    }
    const std::uint32_t sign = 1U << static_cast<unsigned>(bits - 1);
    return static_cast<std::int32_t>((value ^ sign) - sign);
}

void takeFormat(const std::string& bytes, std::size_t at, Wav& wav)
{
    wav.isFloat = numberAt<std::uint16_t>(bytes, at) == 3;
    wav.channels = numberAt<std::uint16_t>(bytes, at + 2);
    wav.sampleRate = static_cast<int>(numberAt<std::uint32_t>(bytes, at + 4));
    wav.bits = numberAt<std::uint16_t>(bytes, at + 14);
}

void takeSamples(const std::string& bytes, std::size_t at, std::size_t size, Wav& wav)
{
    const auto step = static_cast<std::size_t>(wav.bits / 8);
    for (std::size_t i = at; i + step <= at + size && i + step <= bytes.size(); i += step) {
        if (wav.isFloat) {
            wav.values.push_back(numberAt<float>(bytes, i));
        } else {
            wav.integers.push_back(integerAt(bytes, i, wav.bits));
        }
    }
}

}  // namespace

std::string floatWav(const Samples& interleaved, int channels, int sampleRate)
{
    return wav(interleaved, channels, sampleRate, 3);
}

std::string shortWav(const std::vector<std::int16_t>& interleaved, int channels, int sampleRate)
{
    return wav(interleaved, channels, sampleRate, 1);
}

Wav readWav(const std::filesystem::path& file)
{
    const std::string bytes = readFile(file);
    Wav wav;
    EXPECT_EQ(bytes.substr(0, 4), "RIFF") << file;
    EXPECT_EQ(bytes.size(), numberAt<std::uint32_t>(bytes, 4) + 8U) << file;
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        const std::size_t size = numberAt<std::uint32_t>(bytes, at + 4);
        const std::string name = bytes.substr(at, 4);
        if (name == "fmt ") {
            takeFormat(bytes, at + 8, wav);
        } else if (name == "data") {
            takeSamples(bytes, at + 8, size, wav);
            return wav;
        }
        at += 8 + size + size % 2;
    }
    ADD_FAILURE() << file << " holds no samples";
    return wav;
}

Samples tone(int samples, double frequency, double amplitude, int sampleRate)
{
    Samples result;
    for (int i = 0; i < samples; ++i) {
        result.push_back(
            static_cast<float>(amplitude * std::cos(2.0 * std::numbers::pi * frequency * i / sampleRate)));
    }
    return result;
}

Samples noise(int samples, double amplitude, unsigned seed)
{
    std::minstd_rand random(seed);
    Samples result;
    for (int i = 0; i < samples; ++i) {
        const double share = static_cast<double>(random()) / static_cast<double>(std::minstd_rand::max());
        result.push_back(static_cast<float>(amplitude * (2.0 * share - 1.0)));
    }
    return result;
}

Samples interleaved(const std::vector<Samples>& channels)
{
    Samples result;
    for (std::size_t i = 0; i < channels.front().size(); ++i) {
        for (const Samples& channel : channels) {
            result.push_back(channel[i]);
        }
    }
    return result;
}

}  // namespace kovtools::tests
