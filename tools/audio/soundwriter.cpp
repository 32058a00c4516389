#include "tools/audio/soundwriter.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <sstream>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/wording.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

// Sizes in a WAV file are 32 bits; the last kilobyte is left to the header.
constexpr long long mostBytes = (1LL << 32) - 1024;

int soundFileFormat(SampleFormat format)
{
    switch (format) {
        case SampleFormat::Integer8:
            return SF_FORMAT_WAV | SF_FORMAT_PCM_U8;
        case SampleFormat::Integer16:
            return SF_FORMAT_WAV | SF_FORMAT_PCM_16;
        case SampleFormat::Integer24:
            return SF_FORMAT_WAV | SF_FORMAT_PCM_24;
        case SampleFormat::Integer32:
            return SF_FORMAT_WAV | SF_FORMAT_PCM_32;
        case SampleFormat::Float32:
            return SF_FORMAT_WAV | SF_FORMAT_FLOAT;
        case SampleFormat::Float64:
            break;
    }
    return SF_FORMAT_WAV | SF_FORMAT_DOUBLE;
}

void checkSize(const fs::path& target, const SoundShape& shape, long long samples)
{
    const long long perSample = static_cast<long long>(shape.channels) * bytesPerSample(shape.format);
    if (samples > mostBytes / perSample) {
        throw DataError(inQuotes(target) + " would become larger than WAV files can be (4 GiB)");
    }
}

}  // namespace

SoundWriter::SoundWriter(const fs::path& target, const SoundShape& shape, long long samples)
    : m_shape(shape), m_target(target), m_partial(target)
{
    checkSize(target, shape, samples);
    SF_INFO info{};
    info.channels = shape.channels;
    info.samplerate = shape.sampleRate;
    info.format = soundFileFormat(shape.format);
    if (sf_format_check(&info) == SF_FALSE) {
        throw DataError("WAV files cannot hold " + std::to_string(shape.channels) + " channels of " +
                        formatName(shape.format) + " samples at " + std::to_string(shape.sampleRate) + " Hz");
    }
    m_file.reset(sf_open(m_partial.path().c_str(), SFM_WRITE, &info));
    if (!m_file) {
        throw DataError("cannot write to " + inQuotes(target));
    }
    // The peak chunk carries the time of day.
    sf_command(m_file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
}

void SoundWriter::write(const std::vector<float>& block)
{
    const auto count = static_cast<long long>(block.size());
    const int bits = integerBits(m_shape.format);
    if (bits == 0) {
        checkWritten(sf_write_float(m_file.get(), block.data(), count), count);
        return;
    }
    // Converted here, because libsndfile either lets what is too loud wrap around or does not round. It takes the
    // highest bits of 32.
    const double scale = std::ldexp(1.0, bits - 1);
    const double unit = std::ldexp(1.0, 32 - bits);
    m_integers.resize(block.size());
    for (std::size_t i = 0; i < block.size(); ++i) {
        const double wanted = std::nearbyint(static_cast<double>(block[i]) * scale);
        const double held = std::clamp(wanted, -scale, scale - 1.0);
        m_clipped += held != wanted ? 1 : 0;
        m_integers[i] = static_cast<std::int32_t>(held * unit);
    }
    checkWritten(sf_write_int(m_file.get(), m_integers.data(), count), count);
}

void SoundWriter::write(const std::int16_t* samples, int count)
{
    checkWritten(sf_write_short(m_file.get(), samples, count), count);
}

void SoundWriter::checkWritten(long long count, long long wanted)
{
    if (count != wanted) {
        throw DataError("cannot write " + inQuotes(m_target) + " (is the disk full?)");
    }
    m_written += count / m_shape.channels;
}

void SoundWriter::finish()
{
    const bool closed = sf_close(m_file.release()) == 0;
    std::error_code error;
    const auto size = static_cast<long long>(fs::file_size(m_partial.path(), error));
    const long long expected = m_written * m_shape.channels * bytesPerSample(m_shape.format);
    checkWritten(!closed || error || size < expected ? -1 : 0, 0);
    m_partial.commit();
}

std::string SoundWriter::summary() const
{
    std::ostringstream text;
    text << ": " << counted(m_written, "sample");
    if (m_shape.channels > 1) {
        text << " of " << counted(m_shape.channels, "channel");
    }
    text << " at " << m_shape.sampleRate << " Hz, " << static_cast<double>(m_written) / m_shape.sampleRate
         << " s, " << formatName(m_shape.format);
    return text.str();
}

void checkWavName(const std::string& option, const fs::path& target)
{
    std::string extension = target.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    if (extension != ".wav") {
        throw UsageError(option + " " + inQuotes(target.filename()) +
                         " is a WAV file; its name must end in .wav");
    }
}

}  // namespace kovtools
