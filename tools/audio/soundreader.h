// Sound files, read through libsndfile.
#ifndef KOVTOOLS_SOUNDREADER_H
#define KOVTOOLS_SOUNDREADER_H

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/audio/sampleformat.h"

struct sf_private_tag;  // of libsndfile

namespace kovtools {

struct CloseSoundFile
{
    void operator()(sf_private_tag* file) const;
};
using SoundFile = std::unique_ptr<sf_private_tag, CloseSoundFile>;

// Reads one file from its beginning to its end. Full scale is 1, whatever the file's own samples are. Samples that are
// no numbers, or so far beyond full scale that sums of them would no longer be numbers, are read as silence and
// counted.
class SoundReader
{
public:
    // Opens the file at `path` (absolute). Throws DataError when it is missing, is no sound file or holds no samples.
    explicit SoundReader(const std::filesystem::path& path);

    const std::filesystem::path& path() const { return m_path; }
    int channels() const { return m_channels; }
    int sampleRate() const { return m_sampleRate; }   // Hz
    long long samples() const { return m_samples; }   // of each channel, as far as the file goes
    SampleFormat format() const { return m_format; }  // the one to write a WAV file of the same kind in
    double seconds() const { return static_cast<double>(samples()) / sampleRate(); }

    // Reads the next `count` samples of every channel, interleaved, into `block`, which is resized to what there is:
    // empty at the end. Throws DataError when there is nothing at all.
    void read(int count, std::vector<float>& block);

    // The sentence about what is wrong with the file, as far as it has been read: it ends early, or some of its samples
    // are unusable. Empty when all is well.
    std::string complaint() const;

private:
    std::filesystem::path m_path;
    SoundFile m_file;
    int m_channels = 0;
    int m_sampleRate = 0;     // Hz
    long long m_samples = 0;  // of each channel
    SampleFormat m_format = SampleFormat::Float32;
    long long m_missingBytes = 0;  // that the header announces and the file does not have
    long long m_read = 0;          // samples of each channel
    bool m_endsEarly = false;      // there was less to read than samples() says
    long long m_unusable = 0;      // values
};

// One channel, from 0, of an interleaved block.
void takeChannel(const std::vector<float>& block, int channels, int channel, std::vector<float>& samples);

}  // namespace kovtools

#endif
