// Writes array recordings as the set of WAV files that ArrayRecording reads.
#ifndef KOVTOOLS_ARRAYWRITER_H
#define KOVTOOLS_ARRAYWRITER_H

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

namespace kovtools {

class PartialFile;

constexpr std::size_t wavHeaderBytes = 44;

// The header of a file of `samples` per channel: RIFF, a format chunk of 16 bytes with tag 3 (32-bit float), data. The
// library reads its fields by fixed offsets, so there must be nothing else, not even the fact chunk that other
// writers add for floats.
std::array<unsigned char, wavHeaderBytes> wavHeader(int channels, int sampleRate, std::int64_t samples);

// Samples per channel that the 32-bit sizes of a file of the set have room for.
constexpr std::int64_t longestWav = (0xFFFFFFFFLL - 36) / (8 * 4);

// The set appears whole or not at all: every file is written under a hidden name and renamed at the end.
class ArrayWriter
{
public:
    // Creates `folder` (absolute) unless it is there. Throws DataError when it cannot be written to, or when it holds
    // files of a larger set, which would be taken for a part of the new one.
    ArrayWriter(const std::filesystem::path& folder, int channels, int sampleRate, std::int64_t samples);

    // Removes what was not finished, the folder too when it was not there before.
    ~ArrayWriter();
    ArrayWriter(const ArrayWriter&) = delete;
    ArrayWriter& operator=(const ArrayWriter&) = delete;

    // Appends `count` samples to each channel. Throws DataError when the disk is full.
    void append(const float* const* rows, int count);

    // Puts the set in its place once all announced samples are there. Throws DataError.
    void commit();

private:
    class CreatedFolder;

    std::filesystem::path m_folder;
    int m_channels;
    std::unique_ptr<CreatedFolder> m_created;  // outlives the files in it
    std::vector<std::unique_ptr<PartialFile>> m_files;
    std::vector<std::ofstream> m_streams;
    std::vector<float> m_interleaved;
};

}  // namespace kovtools

#endif
