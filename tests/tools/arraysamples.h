// Array audio for the tests.
#ifndef KOVTOOLS_TESTS_ARRAYSAMPLES_H
#define KOVTOOLS_TESTS_ARRAYSAMPLES_H

#include <filesystem>
#include <string>
#include <vector>

#include "tools/arrayaudio/arraysimulation.h"

namespace kovtools::tests {

// The default scene of 208 microphones.
ArraySimulationOptions defaultArrayScene(std::uint64_t seed);

// Writes a set of `samples` per channel into the folder, which is made.
void writeArray(const std::filesystem::path& folder, const ArraySimulationOptions& options, int samples);

// The same for samples that the test makes itself.
void writeArray(const std::filesystem::path& folder, const std::vector<std::vector<float>>& rows,
                int sampleRate = 96000);

// `samples` of every microphone.
std::vector<std::vector<float>> simulated(const ArraySimulationOptions& options, int samples);

}  // namespace kovtools::tests

#endif
