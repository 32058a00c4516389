#include <KOVDoaHandle/KOVAudio/wavheader_p.h>

#include <cstddef>

namespace KOVAudio {

namespace {

constexpr std::size_t channelsAt = 22;
constexpr std::size_t sampleRateAt = 24;
constexpr std::size_t bitsPerSampleAt = 34;
constexpr std::size_t dataBytesAt = 40;

using Raw = std::array<unsigned char, WavHeader::bytes>;

// The files are little-endian, whatever the machine.
quint32 read16(const Raw& raw, std::size_t at)
{
    return quint32{raw[at]} | quint32{raw[at + 1]} << 8;
}

quint32 read32(const Raw& raw, std::size_t at)
{
    return read16(raw, at) | read16(raw, at + 2) << 16;
}

}  // namespace

WavHeader::WavHeader(const Raw& raw)
    : channels(static_cast<int>(read16(raw, channelsAt))),
      sampleRateHz(static_cast<int>(read32(raw, sampleRateAt))),
      bitsPerSample(static_cast<int>(read16(raw, bitsPerSampleAt))),
      dataBytes(qint64{read32(raw, dataBytesAt)})
{
}

bool WavHeader::describesFileOf(qint64 fileBytes) const
{
    return channels > 0 && bitsPerSample >= 8 && dataBytes <= fileBytes - bytes;
}

}  // namespace KOVAudio
