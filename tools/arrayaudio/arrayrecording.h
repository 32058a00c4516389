// Recordings of a microphone array, as the folder of WAV files that the instrument keeps.
#ifndef KOVTOOLS_ARRAYRECORDING_H
#define KOVTOOLS_ARRAYRECORDING_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kovtools {

constexpr int channelsPerFile = 8;

// How many files hold `channels` channels, and what the file of an index is called.
int filesOfSet(int channels);
std::filesystem::path fileOfSet(const std::filesystem::path& folder, int index);

// A folder of 8-channel WAV files data-0.wav, data-1.wav, ...: file i, channel j is microphone 8 i + j. Samples are
// read in order or anywhere; a recording of any length needs the memory of one request. One thread at a time.
class ArrayRecording
{
public:
    // Opens the files that `channels` (at least 1) channels need; channels of the last file beyond that are
    // ignored, files beyond it are not looked at. Throws DataError, one sentence that names the file, when one is
    // missing, unreadable, no WAV file, does not have 8 channels or has another sample rate than the first.
    ArrayRecording(const std::filesystem::path& folder, int channels);
    ~ArrayRecording();
    ArrayRecording(const ArrayRecording&) = delete;
    ArrayRecording& operator=(const ArrayRecording&) = delete;

    int channels() const { return m_channels; }
    int sampleRate() const { return m_sampleRate; }  // Hz

    // Per channel: those of the shortest file.
    std::int64_t samples() const { return m_samples; }

    // The sentence about files that hold less than others, by which the recording is shorter than it was made; names
    // the shortest. Empty when all is well.
    std::string complaint() const;

    // Fills rows[c][0 .. count - 1] for each channel c with the samples from `first` (>= 0) on; first + count within
    // samples(). Throws DataError when a file cannot be read to there, or holds samples that are no finite numbers.
    void read(std::int64_t first, int count, float* const* rows);

private:
    class File;

    int m_channels;
    int m_sampleRate = 0;
    std::int64_t m_samples = 0;
    std::vector<std::unique_ptr<File>> m_files;
    std::vector<float> m_interleaved;
};

}  // namespace kovtools

#endif
