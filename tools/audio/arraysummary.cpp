#include "tools/audio/arraysummary.h"

#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <future>
#include <iomanip>
#include <memory>
#include <numeric>
#include <sstream>

#include <KOVDoaHandle/diagnostics/kovblas.h>

#include "tools/arrayaudio/arrayrecording.h"
#include "tools/support/errors.h"
#include "tools/support/inquotes.h"
#include "tools/support/interrupt.h"
#include "tools/support/wording.h"
#include "tools/support/workspace.h"

namespace kovtools {

namespace fs = std::filesystem;
using nlohmann::ordered_json;

namespace {

constexpr const char* linkName = "array";
constexpr std::chrono::milliseconds nudgeInterval{2};

// A source of a reader, taken back and deleted in the end.
class Source
{
public:
    explicit Source(KOVHwMultAudio& reader)
        : m_reader(reader), m_source(reader.createReaderSource(QStringLiteral("info")))
    {
    }
    ~Source()
    {
        m_reader.releaseReaderSource(m_source);
        delete dynamic_cast<KOVAudioSource*>(m_source);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    QVariant read() { return m_source->readData(); }

private:
    KOVHwMultAudio& m_reader;
    IKOVServerReaderSource* m_source;
};

// Lets a reader publish until it goes.
class Publishing
{
public:
    explicit Publishing(KOVHwMultAudio& reader) : m_reader(reader) { m_reader.start(); }
    ~Publishing() { m_reader.close(); }
    Publishing(const Publishing&) = delete;
    Publishing& operator=(const Publishing&) = delete;

private:
    KOVHwMultAudio& m_reader;
};

// The block that a host receives for index 0.
KOVAudioBuffer firstPublished(KOVHwMultAudio& reader)
{
    Source source(reader);
    const Publishing publishing(reader);
    std::future<QVariant> received = std::async(std::launch::async, [&source] { return source.read(); });
    // A wake is lost on a worker that is not waiting yet, so it is repeated until the block is there.
    while (received.wait_for(nudgeInterval) != std::future_status::ready) {
        reader.setCurrentIndex(0);
    }
    throwIfInterrupted();
    const QVariant variant = received.get();
    if (!variant.canConvert<KOVAudioBuffer>()) {
        throw DataError("the library's reader published nothing");
    }
    return variant.value<KOVAudioBuffer>();
}

// The reader takes its figures from fixed places of the files and trusts them. Whether it found what the files really
// hold shows in the samples.
void checkPublished(ArrayRecording& files, KOVAudioBuffer& block, const fs::path& folder)
{
    const int count = static_cast<int>(std::min<std::int64_t>(block.samples(), files.samples()));
    std::vector<std::vector<float>> expected(static_cast<std::size_t>(files.channels()),
                                             std::vector<float>(static_cast<std::size_t>(count)));
    std::vector<float*> rows;
    for (std::vector<float>& row : expected) {
        rows.push_back(row.data());
    }
    files.read(0, count, rows.data());
    for (int channel = 0; channel < files.channels(); ++channel) {
        if (!std::equal(rows[static_cast<std::size_t>(channel)],
                        rows[static_cast<std::size_t>(channel)] + count, block.data(channel))) {
            throw DataError(
                inQuotes(fileOfSet(folder, channel / channelsPerFile)) +
                " is not laid out as the library reads it: a header of 44 bytes, then 32-bit floats");
        }
    }
}

std::vector<float> levelsOf(KOVAudioBuffer& block)
{
    std::vector<float> levels;
    for (int channel = 0; channel < block.channels(); ++channel) {
        levels.push_back(20.0F * std::log10(KOVBlas::Rms(block.data(channel), block.samples(), true)));
    }
    return levels;
}

std::string decibels(float level)
{
    std::ostringstream text;
    if (std::isfinite(level)) {
        text << std::fixed << std::setprecision(1) << level << " dB";
    } else {
        text << "silence";
    }
    return text.str();
}

std::string levelText(const std::vector<float>& levels)
{
    std::vector<std::size_t> order(levels.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(),
                     [&levels](std::size_t a, std::size_t b) { return levels[a] < levels[b]; });
    const std::size_t quietest = order.front();
    const std::size_t loudest = order.back();
    return decibels(levels[order[order.size() / 2]]) + " re full scale in the middle, from " +
           decibels(levels[quietest]) + " (microphone " + std::to_string(quietest) + ") to " +
           decibels(levels[loudest]) + " (microphone " + std::to_string(loudest) + ")";
}

}  // namespace

ArraySummary summariseArray(const fs::path& folder, int channels)
{
    ArrayRecording files(folder, channels);
    ArraySummary summary;
    summary.folder = folder.string();
    summary.channels = channels;
    summary.files = channels / channelsPerFile;
    summary.sampleRate = files.sampleRate();
    summary.samples = files.samples();

    Workspace::link(folder, linkName);
    KOVHwMultAudio reader(channels);
    if (!reader.init(linkName)) {
        throw DataError("the library cannot load the files in " + inQuotes(folder) +
                        ": each must have a header of 44 bytes, 32-bit floats and all the samples that it "
                        "announces, and all of them must fit into memory");
    }
    summary.blocks = reader.getTotalDataFrame();
    KOVAudioBuffer block = firstPublished(reader);
    checkPublished(files, block, folder);
    summary.blockSize = block.samples();
    summary.levels = levelsOf(block);
    return summary;
}

std::string summaryText(const ArraySummary& summary)
{
    std::ostringstream text;
    text << "folder     " << printable(summary.folder) << '\n'
         << "channels   " << summary.channels << " in " << counted(summary.files, "file") << '\n'
         << "rate       " << summary.sampleRate << " Hz\n"
         << "samples    " << summary.samples << " of each channel\n"
         << "duration   " << summary.durationSeconds() << " s\n"
         << "blocks     " << summary.blocks << " whole ones of " << summary.blockSize << " samples\n"
         << "level      " << levelText(summary.levels) << "; first block\n";
    return text.str();
}

ordered_json summaryJson(const ArraySummary& summary)
{
    return {
        {"folder", summary.folder},
        {"channels", summary.channels},
        {"files", summary.files},
        {"sample_rate_hz", summary.sampleRate},
        {"samples", summary.samples},
        {"duration_s", summary.durationSeconds()},
        {"blocks", summary.blocks},
        {"block_size", summary.blockSize},
        {"first_block_levels_db", summary.levels},
    };
}

}  // namespace kovtools
