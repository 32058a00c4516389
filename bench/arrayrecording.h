// A recording of a microphone array for the benchmarks: WAV files of eight channels in a temporary folder.
#ifndef KOVDOA_BENCH_ARRAYRECORDING_H
#define KOVDOA_BENCH_ARRAYRECORDING_H

#include <QtCore/QTemporaryDir>

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace bench {

// The files are in the system's cache, because they have just been written.
class ArrayRecording
{
public:
    static constexpr int fileChannels = 8;
    static constexpr int sampleRateHz = 96'000;

    // `samples` of each channel.
    ArrayRecording(int files, int samples) : m_dataBytes(std::uint32_t(samples) * frameBytes)
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        std::vector<float> interleaved(static_cast<std::size_t>(samples) * fileChannels);
        for (std::size_t i = 0; i < interleaved.size(); ++i) {
            interleaved[i] = static_cast<float>(i % 9973) * 1e-4F;
        }
        const Header header(m_dataBytes);
        for (int number = 0; number < files; ++number) {
            std::ofstream file(path(number), std::ios::binary);
            file.write(reinterpret_cast<const char*>(&header), sizeof header);
            file.write(reinterpret_cast<const char*>(interleaved.data()), m_dataBytes);
        }
    }

    std::string folder() const { return m_folder.path().toStdString(); }
    std::string path(int number) const { return folder() + "/data-" + std::to_string(number) + ".wav"; }
    // Of each file.
    std::int64_t dataBytes() const { return m_dataBytes; }

private:
    static constexpr std::uint16_t frameBytes = fileChannels * sizeof(float);

    // Little-endian, as the machines of these benchmarks are.
    struct Header
    {
        explicit Header(std::uint32_t dataBytes) : riffBytes(36 + dataBytes), bytes(dataBytes) {}

        std::array<char, 4> riff{'R', 'I', 'F', 'F'};
        std::uint32_t riffBytes;
        std::array<char, 8> wave{'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
        std::uint32_t formatBytes = 16;
        std::uint16_t format = 3;  // floating point
        std::uint16_t channelCount = fileChannels;
        std::uint32_t rate = sampleRateHz;
        std::uint32_t byteRate = sampleRateHz * frameBytes;
        std::uint16_t alignment = frameBytes;
        std::uint16_t bits = 32;
        std::array<char, 4> data{'d', 'a', 't', 'a'};
        std::uint32_t bytes;
    };
    static_assert(sizeof(Header) == 44);

    QTemporaryDir m_folder;
    std::uint32_t m_dataBytes;
};

}  // namespace bench

#endif
