// Each file is read through a window that stays in the processor's cache and is taken apart there, so that the
// samples cross the memory once.
#include <KOVDoaHandle/KOVAudio/wavset_p.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <array>

#include <KOVDoaHandle/KOVAudio/deinterleave_p.h>
#include <KOVDoaHandle/foundation/kovlog_p.h>

namespace KOVAudio {

namespace {

constexpr const char* source = "kovhwmultaudio";
constexpr qint64 frameBytes = fileChannels * sizeof(float);
// 128 KiB: far below the second-level cache of any processor we run on, far above the cost of a system call.
constexpr qint64 windowFrames = 4096;

// Samples per channel and block at the rates of the instrument; other rates keep the size they meet.
int blockSizeAt(int sampleRateHz, int otherwise)
{
    switch (sampleRateHz) {
        case 96'000:
            return 1024;
        case 192'000:
            return 2048;
        case 208'000:
            return 2080;
        default:
            return otherwise;
    }
}

// Channels begin at cache lines, an odd number of them apart: were it a multiple of 4096 bytes, the eight channels
// would fight for the same few places of the cache while they are written.
std::size_t strideOf(std::size_t frames)
{
    constexpr std::size_t lineFloats = 16;
    const std::size_t lines = (frames + lineFloats - 1) / lineFloats;
    return (lines | 1) * lineFloats;
}

// Reads as many whole frames as there are, `frames` at most, and returns their number.
qint64 readFrames(QFile& file, qint64 frames, float* memory, std::size_t stride)
{
    std::vector<float> window(static_cast<std::size_t>(std::min(frames, windowFrames)) * fileChannels);
    ChannelPointers channels{};
    qint64 done = 0;
    while (done < frames) {
        const qint64 wanted = std::min(frames - done, windowFrames);
        const qint64 read =
            file.read(reinterpret_cast<char*>(window.data()), wanted * frameBytes) / frameBytes;
        if (read <= 0) {
            break;
        }
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            channels[channel] = memory + channel * stride + done;
        }
        deinterleave(window.data(), static_cast<std::size_t>(read), channels);
        done += read;
        if (read < wanted) {
            break;
        }
    }
    return done;
}

}  // namespace

WavSet::WavSet(int channels, int sampleRateHz, int blockSize)
    : m_channels(channels), m_sampleRateHz(sampleRateHz), m_blockSize(blockSize)
{
}

bool WavSet::load(const QString& folder)
{
    m_files.resize(static_cast<std::size_t>(m_channels / fileChannels));
    bool isComplete = true;
    for (std::size_t i = 0; i < m_files.size(); ++i) {
        const QString name = folder + QStringLiteral("/data-") + QString::number(i) + QStringLiteral(".wav");
        KOVDOA_DEBUG(source) << "OPEN AUDIO FILE :" << name;
        isComplete = loadFile(name, m_files[i]) && isComplete;
    }
    collectFirstBlock();
    return isComplete;
}

bool WavSet::loadFile(const QString& name, Samples& samples)
{
    QFile file(name);
    std::array<unsigned char, WavHeader::bytes> raw{};
    // Asked before it is opened: opening a pipe would wait until somebody writes to it. The file itself is unbuffered:
    // all reads are large, and a buffer in between would copy everything once more.
    if (name.contains(QChar(0)) || !QFileInfo(file).isFile() ||
        !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || file.size() == 0) {
        return false;
    }
    const qint64 headerBytes = file.read(reinterpret_cast<char*>(raw.data()), WavHeader::bytes);
    const WavHeader header(raw);
    if (headerBytes != WavHeader::bytes || !header.describesFileOf(file.size())) {
        KOVDOA_DEBUG(source) << "the header does not fit the file, left out:" << name;
        return false;
    }
    takeOver(header);
    if (header.bitsPerSample != 32) {
        return true;
    }
    const qint64 frames = header.dataBytes / frameBytes;
    const std::size_t stride = strideOf(static_cast<std::size_t>(frames));
    samples.memory = allocateSamples(stride * fileChannels);
    if (samples.memory == nullptr) {
        KOVDOA_DEBUG(source) << "no memory for the samples, left out:" << name;
        return false;
    }
    samples.stride = stride;
    samples.frames = static_cast<std::size_t>(readFrames(file, frames, samples.memory.get(), samples.stride));
    return samples.frames == static_cast<std::size_t>(frames);
}

void WavSet::takeOver(const WavHeader& header)
{
    m_sampleRateHz = header.sampleRateHz;
    m_blockSize = blockSizeAt(m_sampleRateHz, m_blockSize);
    const qint64 frames =
        header.dataBytes / header.channels / (qint64{m_blockSize} * (header.bitsPerSample / 8));
    if (m_totalFrames == 0 || (frames != 0 && frames < m_totalFrames)) {
        m_totalFrames = frames;
    }
}

void WavSet::collectFirstBlock()
{
    const auto blockSize = static_cast<std::size_t>(m_blockSize);
    m_firstBlock.assign(static_cast<std::size_t>(m_channels) * blockSize, 0.0F);
    float* to = m_firstBlock.data();
    for (const Samples& file : m_files) {
        for (std::size_t channel = 0; channel < fileChannels; ++channel, to += blockSize) {
            std::copy_n(file.memory.get() + channel * file.stride, std::min(file.frames, blockSize), to);
        }
    }
}

}  // namespace KOVAudio
