// Buffers a multichannel signal and cuts out its strongest burst.
#include <KOVDoaHandle/diagnostics/kovplusedetection.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

#include <KOVDoaHandle/foundation/fftplan_p.h>

namespace {

constexpr int capacity = 32767;      // samples; with more the buffer is flushed
constexpr int blockHeadroom = 4096;  // samples that a block may go beyond it
constexpr int bufferSamples = capacity + blockHeadroom;
constexpr int quietGap = 50;  // quiet samples that end a burst
constexpr int initialPulseChannel = 207;

constexpr float quietBelow = 0.2F;  // of the rescaled envelope
// Share of a segment's energy that the low-pass lets through: with more it is rumble and no burst.
constexpr float mostFloorShare = 0.2F;
// Energy that a burst must have to be counted, relative to the strongest one's.
constexpr float leastEnergyShare = 0.05F;
// Where the searches for the smallest value start: above everything that microphones deliver.
constexpr float beyondAll = 99999.0F;
// A leading filter coefficient this close to 1 needs no normalisation.
constexpr float normalisedTolerance = 1e-7F;

// The first sample of the burst around `peak`. Index 0 itself is not looked at.
int burstStart(const float* envelope, int peak)
{
    int quiet = 0;
    for (int i = peak; i > 0; --i) {
        quiet = envelope[i] < quietBelow ? quiet + 1 : 0;
        if (quiet == quietGap) {
            return i + quiet;
        }
    }
    return 0;
}

// Where the quiet behind the burst around `peak` begins, one less than one may expect: index of the last
// quiet sample looked at minus their number.
int burstEnd(const float* envelope, int n, int peak)
{
    int quiet = 0;
    for (int i = peak; i < n; ++i) {
        quiet = envelope[i] < quietBelow ? quiet + 1 : 0;
        if (quiet == quietGap) {
            return i - quiet;
        }
    }
    return n;
}

// Length of a transform that holds n samples: a power of two, by a logarithm that may round up to the next
// one.
int transformLength(int n)
{
    const double bits = std::ceil(std::log10(static_cast<double>(n)) / 0.3010299956639812);
    return static_cast<int>(std::exp2(bits));
}

}  // namespace

class KOVPluseDetection::Private
{
public:
    Private(int segmentLength, int channelCount);

    void append(float** block, int offset, int n, int detectChannel);
    void flushSignal();
    void flushPulse();
    void copyPulse(float** out) const;

    std::mutex mutex;
    const int segment;  // samples
    std::vector<std::vector<float>> channels;
    std::vector<float> detection;
    std::vector<float> envelope;
    int buffered = 0;

    float bestPeak = 0.0F;  // largest raw value of the strongest segment
    int pulseCount = 0;
    float referenceEnergy = 0.0F;  // mean square of the strongest segment
    int pulseStart = 0;            // its first sample

    std::atomic<int> pulseChannel = initialPulseChannel;
};

KOVPluseDetection::Private::Private(int segmentLength, int channelCount)
    : segment(std::max(segmentLength, 0)),
      channels(static_cast<std::size_t>(std::max(channelCount, 0)), std::vector<float>(bufferSamples, 0.0F)),
      detection(bufferSamples, 0.0F),
      envelope(bufferSamples, 0.0F)
{
}

void KOVPluseDetection::Private::append(float** block, int offset, int n, int detectChannel)
{
    for (std::size_t ch = 0; ch < channels.size(); ++ch) {
        std::copy_n(block[ch] + offset, n, channels[ch].begin() + buffered);
    }
    const auto destination = detection.begin() + buffered;
    if (detectChannel >= 0 && static_cast<std::size_t>(detectChannel) < channels.size()) {
        std::copy_n(block[detectChannel] + offset, n, destination);
    } else {
        std::fill_n(destination, n, 0.0F);
    }
    buffered += n;
}

void KOVPluseDetection::Private::flushSignal()
{
    if (buffered <= segment) {
        buffered = 0;
        return;
    }
    // Not shifted on purpose: what was there has been searched already.
    std::fill_n(detection.begin(), segment, 0.0F);
    for (std::vector<float>& channel : channels) {
        std::copy_n(channel.begin() + (buffered - segment), segment, channel.begin());
    }
    buffered = segment;
}

void KOVPluseDetection::Private::flushPulse()
{
    bestPeak = 0.0F;
    pulseCount = 0;
}

void KOVPluseDetection::Private::copyPulse(float** out) const
{
    const int available = std::min(segment, bufferSamples - pulseStart);
    for (std::size_t ch = 0; ch < channels.size(); ++ch) {
        std::copy_n(channels[ch].begin() + pulseStart, available, out[ch]);
        std::fill_n(out[ch] + available, segment - available, 0.0F);
    }
}

// The sampling rate does not matter to the detection, which counts in samples.
KOVPluseDetection::KOVPluseDetection([[maybe_unused]] int rate, int segmentLength, int channels)
    : d(std::make_unique<Private>(segmentLength, channels))
{
}

KOVPluseDetection::~KOVPluseDetection() = default;

void KOVPluseDetection::FeedSignal(float** channels, int n, int detectChannel)
{
    const std::lock_guard lock(d->mutex);
    int taken = 0;
    while (taken < n) {
        const int fitting = std::min(n - taken, bufferSamples - d->buffered);
        d->append(channels, taken, fitting, detectChannel);
        taken += fitting;
        if (d->buffered > capacity) {
            d->flushPulse();
            d->flushSignal();
        }
    }
}

bool KOVPluseDetection::GetPulse(float** out, int& count)
{
    const std::lock_guard lock(d->mutex);
    if (d->buffered <= 0 || out == nullptr) {
        return false;
    }
    KOV_DetectPulse();
    count = d->pulseCount;
    if (count > 0) {
        d->copyPulse(out);
    }
    d->flushPulse();
    d->flushSignal();
    return count >= 1;
}

void KOVPluseDetection::FlushSignal()
{
    const std::lock_guard lock(d->mutex);
    d->flushSignal();
}

void KOVPluseDetection::FlushPulse()
{
    const std::lock_guard lock(d->mutex);
    d->flushPulse();
}

void KOVPluseDetection::setPulseChannel(int channel)
{
    d->pulseChannel = channel;
}

int KOVPluseDetection::pulseChannel()
{
    return d->pulseChannel;
}

void KOVPluseDetection::KOV_Abs(float* out, int n)
{
    const int available = std::min(n, bufferSamples);
    for (int i = 0; i < available; ++i) {
        out[i] = std::fabs(d->detection[static_cast<std::size_t>(i)]);
    }
}

void KOVPluseDetection::KOV_Rescale(float* x, int n)
{
    int index = 0;
    const float max = KOV_FindMax(x, n, index);
    const float min = KOV_FindMin(x, n, index);
    const float range = max - min;
    for (int i = 0; i < n; ++i) {
        const float scaled = (x[i] - min) / range;
        x[i] = scaled < quietBelow ? 0.0F : scaled;
    }
}

void KOVPluseDetection::KOV_STE(float* x, int n, float& energy)
{
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        sum += x[i] * x[i];
    }
    energy = sum / static_cast<float>(std::max(n, 0));
}

void KOVPluseDetection::KOV_Filter(float* x, int n, float* a, float* b, int order)
{
    if (order < 1) {
        return;
    }
    if (std::fabs(a[0] - 1.0F) > normalisedTolerance) {
        const float leading = a[0];
        for (int k = 0; k < order; ++k) {
            a[k] /= leading;
            b[k] /= leading;
        }
    }
    // The forward part from the end on, so that it can stand in the place of its input.
    for (int i = std::max(n, 0) - 1; i >= 0; --i) {
        float sum = 0.0F;
        for (int k = 0; k <= std::min(i, order - 1); ++k) {
            sum += b[k] * x[i - k];
        }
        x[i] = sum;
    }
    for (int i = 0; i < n; ++i) {
        float sum = 0.0F;
        for (int k = 1; k <= std::min(i, order - 1); ++k) {
            sum += a[k] * x[i - k];
        }
        x[i] -= sum;
    }
    a[0] = 1.0F;
}

void KOVPluseDetection::KOV_NoiseFloor(float* x, int n, float& floor)
{
    // A second-order Butterworth low-pass at 0.01 of the sampling rate: 1 kHz at 96 kHz.
    float b[3] = {0.0010232177F, 0.0020464354F, 0.0010232177F};
    float a[3] = {1.0F, -1.9075016F, 0.9115945F};
    std::vector<float> filtered(x, x + std::max(n, 0));
    KOV_Filter(filtered.data(), n, a, b, 3);
    KOV_STE(filtered.data(), n, floor);
}

void KOVPluseDetection::KOV_MaxPulseSegment(float* env, int n)
{
    n = std::min(n, bufferSamples);
    const std::int64_t length = d->segment;
    int index = 0;
    const float rawMax = KOV_FindMax(d->detection.data(), n, index);
    while (true) {
        int peakAt = 0;
        const float peak = KOV_FindMax(env, n, peakAt);
        if (peakAt < 0 || peak < quietBelow) {
            return;
        }
        // Three quarters of the segment lie before the peak. With fewer samples than a segment all of them
        // are taken.
        const std::int64_t ahead = std::max<std::int64_t>(peakAt - 3 * length / 4, 0);
        const auto start = static_cast<int>(std::max<std::int64_t>(std::min(ahead, n - length), 0));
        const auto samples = static_cast<int>(std::min<std::int64_t>(length, n - start));
        float* const segment = d->detection.data() + start;
        float floor = 0.0F;
        float energy = 0.0F;
        KOV_NoiseFloor(segment, samples, floor);
        KOV_STE(segment, samples, energy);
        if (floor / energy > mostFloorShare) {
            return;
        }
        if (rawMax > d->bestPeak) {
            d->bestPeak = rawMax;
            d->referenceEnergy = energy;
            d->pulseStart = start;
        }
        if (energy / d->referenceEnergy > leastEnergyShare) {
            ++d->pulseCount;
        }
        // The peak itself goes in any case: segments of one sample leave nothing around it.
        const std::int64_t from = burstStart(env, peakAt) - length / 2;
        const std::int64_t to = std::max<std::int64_t>(burstEnd(env, n, peakAt) + length / 2, peakAt + 1);
        std::fill(env + std::max<std::int64_t>(from, 0), env + std::min<std::int64_t>(to, n), 0.0F);
    }
}

float KOVPluseDetection::KOV_FindMax(float* x, int n, int& index)
{
    index = -1;
    float largest = 0.0F;
    for (int i = 0; i < n; ++i) {
        if (x[i] > largest) {
            largest = x[i];
            index = i;
        }
    }
    return largest;
}

float KOVPluseDetection::KOV_FindMin(float* x, int n, int& index)
{
    float smallest = beyondAll;
    for (int i = 0; i < n; ++i) {
        if (x[i] < smallest) {
            smallest = x[i];
            index = i;
        }
    }
    return smallest;
}

void KOVPluseDetection::KOV_DetectPulse()
{
    float* const envelope = d->envelope.data();
    KOV_Abs(envelope, d->buffered);
    KOV_Rescale(envelope, d->buffered);
    KOV_MaxPulseSegment(envelope, d->buffered);
}

void KOVPluseDetection::KOV_Hilbert(float* x, int n)
{
    if (n <= 0) {
        return;
    }
    const int length = transformLength(n);
    KOVPrivate::FFTArray signal(length);
    KOVPrivate::FFTArray spectrum(length);
    KOVPrivate::FFTPlan forward(signal, spectrum, KOVPrivate::FFTDirection::Forward);
    KOVPrivate::FFTPlan backward(spectrum, signal, KOVPrivate::FFTDirection::Backward);
    for (int i = 0; i < n; ++i) {
        signal.data()[i][0] = x[i];
    }
    forward.execute();
    for (int k = 1; k < length; ++k) {
        const float weight = 2 * k == length ? 1.0F : 2 * k < length ? 2.0F : 0.0F;
        spectrum.data()[k][0] *= weight;
        spectrum.data()[k][1] *= weight;
    }
    backward.execute();
    for (int i = 0; i < n; ++i) {
        const float re = signal.data()[i][0] / static_cast<float>(length);
        const float im = signal.data()[i][1] / static_cast<float>(length);
        x[i] = std::pow(re * re + im * im, 0.5F);
    }
}
