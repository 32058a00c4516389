// One block of multichannel audio, shared by all who hold it.
#ifndef KOVDOA_KOVAUDIOBUFFER_H
#define KOVDOA_KOVAUDIOBUFFER_H

#include <QtCore/QMetaType>

#include <KOVDoaHandle/foundation/kovdoaexport.h>

// A handle, one pointer wide, onto `channels` arrays of `samples` floats each (channel by channel, not
// interleaved) and a time stamp. Copies share the block: nothing is ever copied deeply, and what is written
// through one handle is seen through all. The last handle to go frees the block.
//
// A host finds it in the variants that sources return: variant.value<KOVAudioBuffer>(). Qt knows the type by the
// name "KOVAudioBuffer" from the first time that a source hands out a block (or the host asks for its id).
//
// Threads: handles onto one block may be copied, assigned and destroyed on different threads at once; a single
// handle, the samples and the time stamp are not guarded. A producer fills a block before it shares it.
// Timing: copying and destroying lock and allocate nothing; the last destruction frees.
class KOVDOA_EXPORT KOVAudioBuffer
{
public:
    // A block of its own: no arrays, 0 channels, 0 samples, time stamp 0.
    KOVAudioBuffer();
    KOVAudioBuffer(const KOVAudioBuffer& other);
    ~KOVAudioBuffer();
    // Both share the other's block and let go of the own one. Nothing happens when the two are the same.
    KOVAudioBuffer& operator=(const KOVAudioBuffer& other);
    KOVAudioBuffer& operator=(KOVAudioBuffer& other);

    // Allocates the arrays of the block that the handle holds, in place, uninitialised. To be called once, on a
    // new handle, before it is copied. (Called again it stores the new counts and arrays; the former arrays stay
    // allocated until the block goes.) Counts of 0 or less are stored too and have no arrays or no samples.
    void init(int channels, int samples);

    // The `channels()` array pointers; null before init(). Owned by the block.
    float** data();
    // The `samples()` samples of one channel; null when there is no such channel.
    float* data(int channel);
    int samples();
    int channels();
    // Time of the first sample in milliseconds since the start of the stream, as the producer set it.
    float timeStamp();
    void setTimeStamp(float milliseconds);

private:
    struct KOVDOA_LOCAL Block;
    Block* m_block;
};

Q_DECLARE_TYPEINFO(KOVAudioBuffer, Q_MOVABLE_TYPE);
Q_DECLARE_METATYPE(KOVAudioBuffer)

#endif
