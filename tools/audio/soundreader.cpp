#include "tools/audio/soundreader.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <string_view>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"
#include "tools/support/wording.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

// 120 dB beyond full scale. Squares of larger values soon leave the range of single precision.
constexpr float largestUsable = 1e6F;

std::uint32_t littleEndian(const char* bytes)
{
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = (value << 8U) | static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

// How many bytes of its samples a WAV file lacks at its end; 0 for other files. libsndfile reads what there is and
// does not tell. Writers that cannot go back to the header leave the size at 0 or at its largest; that is no damage.
long long missingBytes(const fs::path& path)
{
    std::ifstream stream = openForReading(path);
    const auto size = static_cast<long long>(fs::file_size(path));
    std::array<char, 12> riff{};
    if (!stream.read(riff.data(), riff.size()) || std::string_view(riff.data(), 4) != "RIFF" ||
        std::string_view(riff.data() + 8, 4) != "WAVE") {
        return 0;
    }
    std::array<char, 8> chunk{};
    long long at = 12;
    while (stream.seekg(at) && stream.read(chunk.data(), chunk.size())) {
        const std::uint32_t length = littleEndian(chunk.data() + 4);
        at += 8;
        if (std::string_view(chunk.data(), 4) == "data") {
            return length == UINT32_MAX ? 0 : std::max(0LL, at + length - size);
        }
        at += length + (length & 1U);  // chunks begin at even places
    }
    return 0;
}

SampleFormat formatOf(int soundFileFormat)
{
    switch (soundFileFormat & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
            return SampleFormat::Integer8;
        case SF_FORMAT_PCM_24:
            return SampleFormat::Integer24;
        case SF_FORMAT_PCM_32:
            return SampleFormat::Integer32;
        case SF_FORMAT_FLOAT:
            return SampleFormat::Float32;
        case SF_FORMAT_DOUBLE:
            return SampleFormat::Float64;
        default:  // compressed samples are worth no more
            return SampleFormat::Integer16;
    }
}

}  // namespace

void CloseSoundFile::operator()(sf_private_tag* file) const
{
    sf_close(file);
}

SoundReader::SoundReader(const fs::path& path) : m_path(path)
{
    m_missingBytes = missingBytes(path);
    SF_INFO info{};
    m_file.reset(sf_open(path.c_str(), SFM_READ, &info));
    if (!m_file) {
        throw DataError(inQuotes(path) + " is no sound file that can be read here");
    }
    if (info.channels < 1 || info.samplerate < 1 || info.frames < 1) {
        throw DataError(inQuotes(path) + " holds no samples");
    }
    m_channels = info.channels;
    m_sampleRate = info.samplerate;
    m_samples = info.frames;
    m_format = formatOf(info.format);
}

void SoundReader::read(int count, std::vector<float>& block)
{
    block.resize(static_cast<std::size_t>(count) * static_cast<std::size_t>(channels()));
    const sf_count_t got = std::max<sf_count_t>(sf_readf_float(m_file.get(), block.data(), count), 0);
    block.resize(static_cast<std::size_t>(got) * static_cast<std::size_t>(channels()));
    m_read += got;
    for (float& value : block) {
        if (!(std::abs(value) <= largestUsable)) {
            value = 0.0F;
            ++m_unusable;
        }
    }
    if (m_read == 0) {
        throw DataError("no samples of " + inQuotes(m_path) + " can be read");
    }
    m_endsEarly = got < count && m_read < samples();
}

std::string SoundReader::complaint() const
{
    if (m_missingBytes > 0) {
        return inQuotes(m_path) + " ends " + counted(m_missingBytes, "byte") +
               " before its samples do; the " + std::to_string(m_read) + " that are there were used";
    }
    if (m_endsEarly) {
        return inQuotes(m_path) + " is damaged behind sample " + std::to_string(m_read) + " of " +
               std::to_string(samples()) + "; what comes before that was used";
    }
    if (m_unusable > 0) {
        return inQuotes(m_path) + " holds " + counted(m_unusable, "sample") +
               (m_unusable == 1 ? " that is no usable number; it was taken as silence"
                                : " that are no usable numbers; they were taken as silence");
    }
    return {};
}

void takeChannel(const std::vector<float>& block, int channels, int channel, std::vector<float>& samples)
{
    const auto step = static_cast<std::size_t>(channels);
    samples.resize(block.size() / step);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = block[i * step + static_cast<std::size_t>(channel)];
    }
}

}  // namespace kovtools
