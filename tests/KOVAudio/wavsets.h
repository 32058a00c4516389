// Recordings of the array written by tests: a folder of 8-channel files whose every sample says where it belongs.
#ifndef KOVDOA_TESTS_WAVSETS_H
#define KOVDOA_TESTS_WAVSETS_H

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtEndian>

#include <array>
#include <cstring>

namespace StreamTesting {

// The fields of the canonical header, and what else makes a file.
struct WavFile
{
    int channels = 8;
    int rate = 96000;
    int bits = 32;
    int frames = 2048;      // sample frames that the file really holds
    qint64 dataBytes = -1;  // said in the header; -1: what the file holds
    bool hasMagicWords = true;
};

// The sample of a channel of the array; exact in single precision.
inline float sampleOf(int arrayChannel, int frame)
{
    return static_cast<float>(10'000 * arrayChannel + frame + 1);
}

inline QByteArray headerOf(const WavFile& file)
{
    const int frameBytes = file.channels * file.bits / 8;
    std::array<char, 44> raw{};
    const auto put = [&raw](int at, const auto value) { qToLittleEndian(value, raw.data() + at); };
    if (file.hasMagicWords) {
        std::memcpy(raw.data(), "RIFF", 4);
        std::memcpy(raw.data() + 8, "WAVEfmt ", 8);
        std::memcpy(raw.data() + 36, "data", 4);
    }
    put(16, quint32{16});
    put(20, quint16{3});
    put(22, static_cast<quint16>(file.channels));
    put(24, static_cast<quint32>(file.rate));
    put(28, static_cast<quint32>(file.rate * frameBytes));
    put(32, static_cast<quint16>(frameBytes));
    put(34, static_cast<quint16>(file.bits));
    put(40, static_cast<quint32>(file.dataBytes < 0 ? qint64{file.frames} * file.bits : file.dataBytes));
    return QByteArray(raw.data(), static_cast<int>(raw.size()));
}

// The bytes of the file with the given number in a set: its header and `frames` frames of eight samples.
inline QByteArray bytesOf(const WavFile& file, int number)
{
    const int sampleBytes = file.bits / 8;
    QByteArray bytes = headerOf(file);
    bytes.append(file.frames * 8 * sampleBytes, '\x11');
    for (int i = 0; file.bits == 32 && i < file.frames * 8; ++i) {
        const float value = sampleOf(8 * number + i % 8, i / 8);
        std::memcpy(bytes.data() + 44 + i * sampleBytes, &value, sizeof value);
    }
    return bytes;
}

// A folder that goes with the test.
class WavFolder
{
public:
    QByteArray path() const { return m_folder.path().toUtf8(); }
    QString file(int number) const { return m_folder.filePath(QStringLiteral("data-%1.wav").arg(number)); }

    void writeBytes(int number, const QByteArray& bytes) const
    {
        QFile out(file(number));
        out.open(QIODevice::WriteOnly);
        out.write(bytes);
    }
    void write(int number, const WavFile& wav) const { writeBytes(number, bytesOf(wav, number)); }
    // The same for each of the first `files` files.
    void writeSet(int files, const WavFile& wav = {}) const
    {
        for (int number = 0; number < files; ++number) {
            write(number, wav);
        }
    }

private:
    QTemporaryDir m_folder;
};

}  // namespace StreamTesting

#endif
