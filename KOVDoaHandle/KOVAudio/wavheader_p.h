// The canonical 44-byte header of the recording's WAV files.
#ifndef KOVDOA_WAVHEADER_P_H
#define KOVDOA_WAVHEADER_P_H

#include <QtCore/QtGlobal>

#include <array>

namespace KOVAudio {

// The fields that the reader needs, taken from fixed offsets: no chunk is searched for and no magic word compared. The
// instrument writes this header and no other; whatever stands at these offsets is judged by whether it can be used.
struct WavHeader
{
    static constexpr int bytes = 44;

    explicit WavHeader(const std::array<unsigned char, bytes>& raw);

    // False when nothing can be computed from the header (no channels, less than one byte per sample) or when it
    // promises more data than a file of this size holds.
    bool describesFileOf(qint64 fileBytes) const;

    int channels;       // 0 ... 65535
    int sampleRateHz;   // any value, also negative
    int bitsPerSample;  // 0 ... 65535
    qint64 dataBytes;   // 0 ... 2^32 - 1
};

}  // namespace KOVAudio

#endif
