#include "tools/arrayaudio/arrayrecording.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <system_error>

#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/wording.h"

namespace kovtools {

namespace fs = std::filesystem;

namespace {

constexpr int readingStep = 4096;  // samples per channel, de-interleaved while they are still in the cache

// Throws DataError unless a regular file stands there: opening a pipe would wait for ever.
void checkFile(const fs::path& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        throw DataError(inQuotes(path) + " does not exist");
    }
    if (!fs::is_regular_file(status)) {
        throw DataError(inQuotes(path) + " is not a regular file");
    }
}

}  // namespace

// One file of the set, open.
class ArrayRecording::File
{
public:
    explicit File(fs::path path) : m_path(std::move(path))
    {
        checkFile(m_path);
        m_file = sf_open(m_path.c_str(), SFM_READ, &m_info);
        if (m_file == nullptr) {
            throw DataError("cannot read " + inQuotes(m_path) + " as a WAV file");
        }
    }
    ~File() { sf_close(m_file); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const fs::path& path() const { return m_path; }
    const SF_INFO& info() const { return m_info; }

    void checkChannels() const
    {
        if (m_info.channels != channelsPerFile) {
            throw DataError(inQuotes(m_path) + " has " + counted(m_info.channels, "channel") +
                            " where files of an array have " + std::to_string(channelsPerFile));
        }
    }

    void seek(std::int64_t first)
    {
        if (sf_seek(m_file, first, SEEK_SET) != first) {
            throw DataError("cannot read sample " + std::to_string(first) + " of " + inQuotes(m_path));
        }
    }

    void readInterleaved(int count, float* into)
    {
        if (sf_readf_float(m_file, into, count) != count) {
            throw DataError(inQuotes(m_path) + " ends before the samples that its header announces");
        }
        if (!std::all_of(into, into + count * channelsPerFile, [](float x) { return std::isfinite(x); })) {
            throw DataError(inQuotes(m_path) + " holds samples that are no finite numbers");
        }
    }

private:
    fs::path m_path;
    SF_INFO m_info{};
    SNDFILE* m_file = nullptr;
};

int filesOfSet(int channels)
{
    return (channels + channelsPerFile - 1) / channelsPerFile;
}

fs::path fileOfSet(const fs::path& folder, int index)
{
    return folder / ("data-" + std::to_string(index) + ".wav");
}

ArrayRecording::ArrayRecording(const fs::path& folder, int channels) : m_channels(channels)
{
    std::error_code error;
    if (!fs::exists(folder, error)) {
        throw DataError("the folder " + inQuotes(folder) + " does not exist");
    }
    if (!fs::is_directory(folder, error)) {
        throw DataError(inQuotes(folder) + " is not a folder of array audio");
    }
    for (int i = 0; i < filesOfSet(channels); ++i) {
        const auto& file = m_files.emplace_back(std::make_unique<File>(fileOfSet(folder, i)));
        file->checkChannels();
        const SF_INFO& info = file->info();
        if (i == 0) {
            m_sampleRate = info.samplerate;
            m_samples = info.frames;
        } else if (info.samplerate != m_sampleRate) {
            throw DataError(inQuotes(file->path()) + " has " + std::to_string(info.samplerate) +
                            " samples per second, the first file of the set has " +
                            std::to_string(m_sampleRate));
        }
        m_samples = std::min<std::int64_t>(m_samples, info.frames);
    }
}

ArrayRecording::~ArrayRecording() = default;

std::string ArrayRecording::complaint() const
{
    const auto frames = [](const std::unique_ptr<File>& file) { return file->info().frames; };
    const auto [shortest, longest] = std::ranges::minmax_element(m_files, {}, frames);
    if (frames(*shortest) == frames(*longest)) {
        return {};
    }
    return inQuotes((*shortest)->path()) + " ends after " + std::to_string(frames(*shortest)) + " of " +
           std::to_string(frames(*longest)) + " samples; the recording was used as far as that";
}

void ArrayRecording::read(std::int64_t first, int count, float* const* rows)
{
    m_interleaved.resize(static_cast<std::size_t>(readingStep) * channelsPerFile);
    for (std::size_t f = 0; f < m_files.size(); ++f) {
        File& file = *m_files[f];
        const int firstChannel = static_cast<int>(f) * channelsPerFile;
        const int used = std::min(channelsPerFile, m_channels - firstChannel);
        file.seek(first);
        for (int done = 0; done < count; done += readingStep) {
            const int step = std::min(readingStep, count - done);
            file.readInterleaved(step, m_interleaved.data());
            for (int channel = 0; channel < used; ++channel) {
                float* const row = rows[firstChannel + channel] + done;
                for (int i = 0; i < step; ++i) {
                    row[i] = m_interleaved[static_cast<std::size_t>(i * channelsPerFile + channel)];
                }
            }
        }
    }
}

}  // namespace kovtools
