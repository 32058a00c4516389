// What the library's reader makes of a recording of a microphone array, in figures.
#ifndef KOVTOOLS_ARRAYSUMMARY_H
#define KOVTOOLS_ARRAYSUMMARY_H

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace kovtools {

struct ArraySummary
{
    std::string folder;
    int channels = 0;
    int files = 0;
    int sampleRate = 0;     // Hz
    long long samples = 0;  // of each channel, in the shortest file
    long long blocks = 0;   // whole ones, as the reader counts them
    int blockSize = 0;      // samples of each channel
    std::vector<float>
        levels;  // of each microphone in the block that the reader publishes first: dB re full scale,
                 // root mean square, mean removed; minus infinity for silence

    double durationSeconds() const { return static_cast<double>(samples) / sampleRate; }
};

// `channels` is a multiple of 8. Loads the folder (absolute) through the library's reader, has it publish a block and takes that from a source. The
// working directory must be a Workspace. Throws DataError, one sentence that names the file, when one is missing or is
// not what the reader can load.
ArraySummary summariseArray(const std::filesystem::path& folder, int channels);

// For people, several lines; and for machines.
std::string summaryText(const ArraySummary& summary);
nlohmann::ordered_json summaryJson(const ArraySummary& summary);

}  // namespace kovtools

#endif
