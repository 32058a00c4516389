// The shared block and its reference count. The count is atomic instead of locked: copies are made on the
// publishing thread, which must not wait for a consumer.
#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace {

// Every channel starts at a cache line of its own, whatever the number of samples.
constexpr std::size_t lineBytes = 64;
constexpr std::size_t lineFloats = lineBytes / sizeof(float);

struct FreeAligned
{
    void operator()(float* samples) const { ::operator delete[](samples, std::align_val_t{lineBytes}); }
};

// One allocation for all channels, and where each of them starts in it.
struct Arrays
{
    Arrays(std::size_t channelCount, std::size_t sampleCount)
    {
        const std::size_t stride = (sampleCount + lineFloats - 1) / lineFloats * lineFloats;
        samples.reset(static_cast<float*>(
            ::operator new[](channelCount* stride * sizeof(float), std::align_val_t{lineBytes})));
        channels.reserve(channelCount);
        for (std::size_t channel = 0; channel < channelCount; ++channel) {
            channels.push_back(samples.get() + channel * stride);
        }
    }

    std::unique_ptr<float[], FreeAligned> samples;
    std::vector<float*> channels;
};

}  // namespace

struct KOVAudioBuffer::Block
{
    void retain() { holders.fetch_add(1, std::memory_order_relaxed); }

    // What every holder did with the block happens before it is freed.
    void release()
    {
        if (holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

    std::atomic<int> holders{1};
    int samples = 0;
    int channels = 0;
    float timeStampMs = 0.0F;
    float** data = nullptr;      // of the newest arrays
    std::vector<Arrays> arrays;  // more than one only where init() was called again
};

KOVAudioBuffer::KOVAudioBuffer() : m_block(new Block) {}

KOVAudioBuffer::KOVAudioBuffer(const KOVAudioBuffer& other) : m_block(other.m_block)
{
    m_block->retain();
}

KOVAudioBuffer::~KOVAudioBuffer()
{
    m_block->release();
}

KOVAudioBuffer& KOVAudioBuffer::operator=(const KOVAudioBuffer& other)
{
    if (m_block != other.m_block) {
        m_block->release();
        m_block = other.m_block;
        m_block->retain();
    }
    return *this;
}

KOVAudioBuffer& KOVAudioBuffer::operator=(KOVAudioBuffer& other)
{
    return *this = std::as_const(other);
}

void KOVAudioBuffer::init(int channels, int samples)
{
    Arrays& arrays = m_block->arrays.emplace_back(static_cast<std::size_t>(std::max(channels, 0)),
                                                  static_cast<std::size_t>(std::max(samples, 0)));
    m_block->channels = channels;
    m_block->samples = samples;
    m_block->data = arrays.channels.data();
}

float** KOVAudioBuffer::data()
{
    return m_block->data;
}

float* KOVAudioBuffer::data(int channel)
{
    const bool isThere = channel >= 0 && channel < m_block->channels;
    return isThere ? m_block->data[channel] : nullptr;
}

int KOVAudioBuffer::samples()
{
    return m_block->samples;
}

int KOVAudioBuffer::channels()
{
    return m_block->channels;
}

float KOVAudioBuffer::timeStamp()
{
    return m_block->timeStampMs;
}

void KOVAudioBuffer::setTimeStamp(float milliseconds)
{
    m_block->timeStampMs = milliseconds;
}
