// WAV files, written through libsndfile.
#ifndef KOVTOOLS_SOUNDWRITER_H
#define KOVTOOLS_SOUNDWRITER_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/audio/sampleformat.h"
#include "tools/audio/soundreader.h"
#include "tools/support/partialfile.h"

namespace kovtools {

struct SoundShape
{
    int channels;
    int sampleRate;  // Hz
    SampleFormat format;
};

// A WAV file that appears whole or not at all. The same samples give the same bytes.
class SoundWriter
{
public:
    // `samples` of each channel is how much is going to be written. Throws DataError when nothing can be written at
    // `target` (absolute), or when that much does not fit into a WAV file.
    SoundWriter(const std::filesystem::path& target, const SoundShape& shape, long long samples);

    // Appends interleaved samples; the length is a multiple of the channels. Full scale is 1: what lies beyond is
    // clipped where the file holds integers, and counted. Throws DataError, as when the disk is full.
    void write(const std::vector<float>& block);

    // Appends samples that are 16 bits already, as they are; for files of that format.
    void write(const std::int16_t* samples, int count);

    // Puts the file in its place. Throws DataError.
    void finish();

    long long clipped() const { return m_clipped; }

    // ": 4800 samples at 48000 Hz, 0.1 s, 16-bit": what was written, to stand behind its name.
    std::string summary() const;

private:
    void checkWritten(long long count, long long wanted);

    SoundShape m_shape;
    std::filesystem::path m_target;
    PartialFile m_partial;
    SoundFile m_file;
    std::vector<std::int32_t> m_integers;
    long long m_written = 0;  // samples of each channel
    long long m_clipped = 0;  // values
};

// Throws UsageError when the name of a WAV file, given with `option`, does not end in .wav.
void checkWavName(const std::string& option, const std::filesystem::path& target);

}  // namespace kovtools

#endif
