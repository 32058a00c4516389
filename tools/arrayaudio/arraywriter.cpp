#include "tools/arrayaudio/arraywriter.h"

#include <algorithm>
#include <bit>
#include <string_view>
#include <system_error>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/partialfile.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

constexpr int bytesPerSample = 4;
constexpr std::uint32_t floatFormat = 3;

static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");

void putText(unsigned char*& at, std::string_view text)
{
    at = std::copy(text.begin(), text.end(), at);
}

void putNumber(unsigned char*& at, std::uint32_t number, int bytes)
{
    for (int i = 0; i < bytes; ++i) {
        *at++ = static_cast<unsigned char>(number >> (8 * i));
    }
}

// The first file in the folder that a set of `files` files does not have; empty when there is none.
fs::path fileOfLargerSet(const fs::path& folder, int files)
{
    constexpr int farthest = 1000;
    std::error_code error;
    for (int i = files; i < files + farthest; ++i) {
        const fs::path file = fileOfSet(folder, i);
        if (fs::exists(fs::symlink_status(file, error))) {
            return file;
        }
    }
    return {};
}

}  // namespace

std::array<unsigned char, wavHeaderBytes> wavHeader(int channels, int sampleRate, std::int64_t samples)
{
    const auto frameBytes = static_cast<std::uint32_t>(channels * bytesPerSample);
    const auto dataBytes = static_cast<std::uint32_t>(samples * frameBytes);
    std::array<unsigned char, wavHeaderBytes> header{};
    unsigned char* at = header.data();
    putText(at, "RIFF");
    putNumber(at, dataBytes + 36, 4);
    putText(at, "WAVEfmt ");
    putNumber(at, 16, 4);
    putNumber(at, floatFormat, 2);
    putNumber(at, static_cast<std::uint32_t>(channels), 2);
    putNumber(at, static_cast<std::uint32_t>(sampleRate), 4);
    putNumber(at, static_cast<std::uint32_t>(sampleRate) * frameBytes, 4);
    putNumber(at, frameBytes, 2);
    putNumber(at, 8 * bytesPerSample, 2);
    putText(at, "data");
    putNumber(at, dataBytes, 4);
    return header;
}

// The folder of the set, if it had to be made.
class ArrayWriter::CreatedFolder
{
public:
    explicit CreatedFolder(fs::path folder) : m_folder(std::move(folder))
    {
        std::error_code error;
        m_isNew = fs::create_directory(m_folder, error);
        if (error || !fs::is_directory(m_folder, error)) {
            throw DataError("cannot create the folder " + inQuotes(m_folder));
        }
    }
    ~CreatedFolder()
    {
        std::error_code ignored;  // a folder in which somebody else has put something stays
        if (m_isNew) {
            fs::remove(m_folder, ignored);
        }
    }
    CreatedFolder(const CreatedFolder&) = delete;
    CreatedFolder& operator=(const CreatedFolder&) = delete;

    void keep() { m_isNew = false; }

private:
    fs::path m_folder;
    bool m_isNew = false;
};

ArrayWriter::ArrayWriter(const fs::path& folder, int channels, int sampleRate, std::int64_t samples)
    : m_folder(folder), m_channels(channels), m_created(std::make_unique<CreatedFolder>(folder))
{
    const int files = filesOfSet(channels);
    if (const fs::path larger = fileOfLargerSet(folder, files); !larger.empty()) {
        throw DataError(inQuotes(larger) +
                        " belongs to a larger set of array audio; remove it or choose another folder");
    }
    const auto header = wavHeader(channelsPerFile, sampleRate, samples);
    for (int i = 0; i < files; ++i) {
        const auto& file = m_files.emplace_back(std::make_unique<PartialFile>(fileOfSet(folder, i)));
        std::ofstream& stream = m_streams.emplace_back(file->path(), std::ios::binary | std::ios::trunc);
        stream.write(reinterpret_cast<const char*>(header.data()),
                     static_cast<std::streamsize>(header.size()));
    }
}

ArrayWriter::~ArrayWriter()
{
    m_streams.clear();
    m_files.clear();
}

void ArrayWriter::append(const float* const* rows, int count)
{
    m_interleaved.assign(static_cast<std::size_t>(count) * channelsPerFile, 0.0F);
    for (std::size_t f = 0; f < m_streams.size(); ++f) {
        const int firstChannel = static_cast<int>(f) * channelsPerFile;
        for (int channel = 0; channel < channelsPerFile; ++channel) {
            // Channels of the last file that no microphone stands for are silent.
            const float* const row =
                firstChannel + channel < m_channels ? rows[firstChannel + channel] : nullptr;
            float* at = m_interleaved.data() + channel;
            for (int i = 0; i < count; ++i, at += channelsPerFile) {
                *at = row != nullptr ? row[i] : 0.0F;
            }
        }
        m_streams[f].write(reinterpret_cast<const char*>(m_interleaved.data()),
                           static_cast<std::streamsize>(m_interleaved.size() * sizeof(float)));
        if (!m_streams[f]) {
            throw DataError("cannot write " + inQuotes(fileOfSet(m_folder, static_cast<int>(f))) +
                            " (is the disk full?)");
        }
    }
}

void ArrayWriter::commit()
{
    for (std::size_t f = 0; f < m_streams.size(); ++f) {
        m_streams[f].close();
        if (!m_streams[f]) {
            throw DataError("cannot write " + inQuotes(fileOfSet(m_folder, static_cast<int>(f))) +
                            " (is the disk full?)");
        }
    }
    for (const auto& file : m_files) {
        file->commit();
    }
    m_created->keep();
}

}  // namespace kovtools
