// Sound files for the tests, written and read without the program's own means.
#ifndef KOVTOOLS_TESTS_SOUNDS_H
#define KOVTOOLS_TESTS_SOUNDS_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace kovtools::tests {

using Samples = std::vector<float>;

struct Wav
{
    int channels = 0;
    int sampleRate = 0;  // Hz
    int bits = 0;        // of a sample
    bool isFloat = false;
    std::vector<float> values;           // interleaved; of a file of floats
    std::vector<std::int32_t> integers;  // interleaved; of a file of 16 or 24 bits
};

// The bytes of a WAV file with the canonical header of 44 bytes: 32-bit floats, or 16 bits.
std::string floatWav(const Samples& interleaved, int channels, int sampleRate);
std::string shortWav(const std::vector<std::int16_t>& interleaved, int channels, int sampleRate);

// Reads a WAV file of 16 or 24 bits or of 32-bit floats. Fails the test when it is none.
Wav readWav(const std::filesystem::path& file);

// amplitude * cos(2 pi f i / rate)
Samples tone(int samples, double frequency, double amplitude, int sampleRate = 96000);

// Uniform between -amplitude and amplitude; another seed is another sound.
Samples noise(int samples, double amplitude, unsigned seed);

// Channels side by side to interleaved samples. All have the same length.
Samples interleaved(const std::vector<Samples>& channels);

}  // namespace kovtools::tests

#endif
