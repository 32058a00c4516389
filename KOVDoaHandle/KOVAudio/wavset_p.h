// A recording of the microphone array: a folder of 8-channel WAV files, held in memory channel by channel.
#ifndef KOVDOA_WAVSET_P_H
#define KOVDOA_WAVSET_P_H

#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <cstddef>
#include <vector>

#include <KOVDoaHandle/KOVAudio/samplememory_p.h>
#include <KOVDoaHandle/KOVAudio/wavheader_p.h>

class QFile;

namespace KOVAudio {

class WavSet
{
public:
    // Holds silence. `sampleRateHz` and `blockSize` (samples per channel) are what stays where the files say nothing.
    WavSet(int channels, int sampleRateHz, int blockSize);

    // Reads folder/data-0.wav ... data-(channels / 8 - 1).wav. Returns true when every file could be used; the
    // channels of the others are silent. Only 32-bit samples are read (as floating point); the channels of a file of
    // another depth are silent too. Once, on a new object.
    bool load(const QString& folder);

    int channels() const { return m_channels; }
    int sampleRateHz() const { return m_sampleRateHz; }
    int blockSize() const { return m_blockSize; }
    // Whole blocks in the shortest file that holds one at all.
    qint64 totalFrames() const { return m_totalFrames; }

    // The first `blockSize()` samples of each channel, one channel behind the other; silence where a recording is
    // shorter. Empty before load().
    const std::vector<float>& firstBlock() const { return m_firstBlock; }

private:
    // Eight channels, one behind the other, uninitialised at first.
    struct Samples
    {
        SampleMemory memory;
        std::size_t stride = 0;  // floats from one channel to the next
        std::size_t frames = 0;  // of each channel that have been read
    };

    bool loadFile(const QString& name, Samples& samples);
    void takeOver(const WavHeader& header);
    void collectFirstBlock();

    int m_channels;
    int m_sampleRateHz;
    int m_blockSize;
    qint64 m_totalFrames = 0;
    std::vector<Samples> m_files;
    std::vector<float> m_firstBlock;
};

}  // namespace KOVAudio

#endif
