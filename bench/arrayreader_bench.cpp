// The array reader beside what a host would write instead. Names: ArrayReader/<operation>/<size> and, for the peer, the
// same with /peer behind it.
//
// Loading is compared with libsndfile reading the same files into one interleaved buffer and a loop that takes the
// channels apart, into memory that is allocated without being cleared, as ours is. Both free everything outside the
// measured time. Publishing is compared with one memcpy of a block, from the same kind of place to the same number of
// destinations; the queues are drained outside the measured time.
#include <benchmark/benchmark.h>
#include <sndfile.h>

#include <QtCore/QTemporaryDir>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <KOVDoaHandle/KOVAudio/arrayplayer_p.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovhwmultaudio.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int fileCount = 26;
constexpr int fileChannels = 8;
constexpr int channels = fileCount * fileChannels;
constexpr int sampleRateHz = 96'000;
constexpr int samples = 2 * sampleRateHz;
constexpr int blockSize = 1024;
constexpr int sourceCount = 4;

void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

// The header of a file with `samples` samples of each channel, little-endian as this benchmark's machines are.
struct WavHeader
{
    std::array<char, 4> riff{'R', 'I', 'F', 'F'};
    std::uint32_t riffBytes = 36 + dataBytes;
    std::array<char, 8> wave{'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    std::uint32_t formatBytes = 16;
    std::uint16_t format = 3;  // floating point
    std::uint16_t channelCount = fileChannels;
    std::uint32_t rate = sampleRateHz;
    std::uint32_t byteRate = sampleRateHz * frameBytes;
    std::uint16_t alignment = frameBytes;
    std::uint16_t bits = 32;
    std::array<char, 4> data{'d', 'a', 't', 'a'};
    std::uint32_t bytes = dataBytes;

    static constexpr std::uint16_t frameBytes = fileChannels * sizeof(float);
    static constexpr std::uint32_t dataBytes = std::uint32_t{samples} * frameBytes;
};
static_assert(sizeof(WavHeader) == 44);

// A folder with 26 files of 2 s, in the system's cache because they have just been written.
class Recording
{
public:
    Recording()
    {
        qInstallMessageHandler(discardMessage);
        std::vector<float> interleaved(interleavedSamples);
        for (std::size_t i = 0; i < interleaved.size(); ++i) {
            interleaved[i] = static_cast<float>(i % 9973) * 1e-4F;
        }
        const WavHeader header;
        for (int number = 0; number < fileCount; ++number) {
            std::ofstream file(path(number), std::ios::binary);
            file.write(reinterpret_cast<const char*>(&header), sizeof header);
            file.write(reinterpret_cast<const char*>(interleaved.data()), WavHeader::dataBytes);
        }
    }

    std::string folder() const { return m_folder.path().toStdString(); }
    std::string path(int number) const { return folder() + "/data-" + std::to_string(number) + ".wav"; }

    static constexpr std::size_t interleavedSamples = std::size_t{samples} * fileChannels;

private:
    QTemporaryDir m_folder;
};

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void load(benchmark::State& state)
{
    const Recording recording;
    for (auto _ : state) {
        KOVHwMultAudio reader;
        const auto start = Clock::now();
        const bool isLoaded = reader.init(recording.folder().c_str());
        state.SetIterationTime(secondsSince(start));
        if (!isLoaded) {
            state.SkipWithError("not loaded");
        }
    }
    state.SetBytesProcessed(state.iterations() * fileCount * std::int64_t{WavHeader::dataBytes});
}
BENCHMARK(load)->Name("ArrayReader/Init/208x2s")->UseManualTime()->Unit(benchmark::kMillisecond);

using Channel = std::unique_ptr<float[]>;

bool loadWithSndfile(const Recording& recording, std::vector<float>& interleaved,
                     std::vector<Channel>& loaded)
{
    for (int number = 0; number < fileCount; ++number) {
        SF_INFO info{};
        SNDFILE* const file = sf_open(recording.path(number).c_str(), SFM_READ, &info);
        const sf_count_t frames = sf_readf_float(file, interleaved.data(), samples);
        sf_close(file);
        if (frames != samples || info.channels != fileChannels) {
            return false;
        }
        std::array<float*, fileChannels> to{};
        for (float*& channel : to) {
            loaded.emplace_back(new float[samples]);
            channel = loaded.back().get();
        }
        for (std::size_t i = 0; i < samples; ++i) {
            for (std::size_t channel = 0; channel < fileChannels; ++channel) {
                to[channel][i] = interleaved[i * fileChannels + channel];
            }
        }
    }
    return true;
}

void loadPeer(benchmark::State& state)
{
    const Recording recording;
    std::vector<float> interleaved(Recording::interleavedSamples);
    for (auto _ : state) {
        std::vector<Channel> loaded;
        loaded.reserve(channels);
        const auto start = Clock::now();
        const bool isLoaded = loadWithSndfile(recording, interleaved, loaded);
        state.SetIterationTime(secondsSince(start));
        if (!isLoaded) {
            state.SkipWithError("not loaded");
        }
    }
    state.SetBytesProcessed(state.iterations() * fileCount * std::int64_t{WavHeader::dataBytes});
}
BENCHMARK(loadPeer)->Name("ArrayReader/Init/208x2s/peer")->UseManualTime()->Unit(benchmark::kMillisecond);

// Blocks that are published or copied between two pauses of the clock; the queues hold ten.
constexpr int blocksPerRound = 10;

void publish(benchmark::State& state)
{
    const Recording files;
    const auto recording = std::make_shared<KOVAudio::WavSet>(channels, sampleRateHz, blockSize);
    recording->load(QString::fromStdString(files.folder()));
    const auto sources = std::make_shared<KOVAudio::SourceList>();
    std::vector<std::unique_ptr<KOVAudioSource>> consumers;
    for (int i = 0; i < sourceCount; ++i) {
        consumers.push_back(
            std::make_unique<KOVAudioSource>(QStringLiteral("consumer"), sampleRateHz, channels));
        sources->add(*consumers.back());
    }
    KOVAudio::ArrayPlayer player(recording, sources, 0);
    // Once around the pool, whose memory has not been touched before.
    for (int i = 0; i < KOVAudio::ArrayPlayer::poolBlocks; ++i) {
        player.publish();
    }
    for (const auto& consumer : consumers) {
        consumer->clearData();
    }
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < blocksPerRound; ++i) {
            player.publish();
        }
        state.SetIterationTime(secondsSince(start) / blocksPerRound);
        for (const auto& consumer : consumers) {
            consumer->clearData();
        }
    }
}
BENCHMARK(publish)->Name("ArrayReader/Publish/208x1024to4")->UseManualTime();

void publishPeer(benchmark::State& state)
{
    constexpr std::size_t blockFloats = std::size_t{channels} * blockSize;
    const std::vector<float> block(blockFloats, 0.5F);
    // As many destinations as the pool has, so that both sides write to memory that is equally far away.
    std::vector<std::vector<float>> pool(KOVAudio::ArrayPlayer::poolBlocks, std::vector<float>(blockFloats));
    std::size_t next = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (int i = 0; i < blocksPerRound; ++i) {
            std::memcpy(pool[next].data(), block.data(), blockFloats * sizeof(float));
            benchmark::ClobberMemory();
            next = (next + 1) % pool.size();
        }
        state.SetIterationTime(secondsSince(start) / blocksPerRound);
    }
}
BENCHMARK(publishPeer)->Name("ArrayReader/Publish/208x1024to4/peer")->UseManualTime();

}  // namespace
