#include <KOVDoaHandle/KOVAudio/kovmultmiccheck.h>

#include <KOVDoaHandle/KOVAudio/channelalignment_p.h>
#include <KOVDoaHandle/KOVAudio/channelsums_p.h>
#include <KOVDoaHandle/runtime/kovrttimer.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace {

constexpr int channelCount = 208;
constexpr int capacity = 96000;       // samples per channel: one second
constexpr int fewestSamples = 48000;  // what a test needs
constexpr unsigned long stopwatchInterval = 1000000;

// One step of 16 bits; 1 / 32767 to the digits that are agreed.
constexpr float int16Step = 3.051851e-5F;

constexpr float smallestSum = 0.0001F;  // of absolute samples, for two channels to count as different
constexpr float quietestLevel = 30.0F;  // dB relative to a millionth
constexpr int largestLag = 99;          // samples: about 1 ms, much more than the way across the array

struct ChannelPair
{
    std::size_t first;
    std::size_t second;
};

// The agreed table has a hundred more pairs, all (0, 0): channel 0 compared with itself.
constexpr std::array alignedPairs{ChannelPair{0, 4}, ChannelPair{1, 5}, ChannelPair{2, 7}, ChannelPair{3, 6}};
constexpr ChannelPair selfPair{0, 0};
constexpr int selfLag = 0;

template <typename Sample, typename Convert>
bool append(KOVMultMicCheckPrivate& store, Sample** data, int n, Convert convert)
{
    const int taken = std::clamp(n, 0, capacity - store.fillCount);
    for (std::size_t channel = 0; taken > 0 && channel < channelCount; ++channel) {
        float* row = store.samples->data[channel] + store.fillCount;
        std::transform(data[channel], data[channel] + taken, row, convert);
    }
    store.fillCount += taken;
    return taken < n;
}

// Runs a test on an empty result if there are samples enough, and takes its time.
template <typename Test>
MicCheckResult timed(const KOVMultMicCheckPrivate& store, Test test)
{
    KOVRtTimer stopwatch(stopwatchInterval);
    MicCheckResult result{};
    if (store.fillCount >= fewestSamples) {
        test(result);
    }
    result.elapsed = stopwatch.timeMs();
    return result;
}

struct AbsoluteSums
{
    float first = 0.0F;
    float second = 0.0F;
    bool differ = false;
};

AbsoluteSums sumUntilDifferent(const float* first, const float* second, int n)
{
    AbsoluteSums sums;
    for (int i = 0; i < n && !sums.differ; ++i) {
        sums.first += std::fabs(first[i]);
        sums.second += std::fabs(second[i]);
        sums.differ = std::fabs(sums.first - sums.second) > smallestSum && sums.first > smallestSum &&
                      sums.second > smallestSum;
    }
    return sums;
}

void setLag(MicCheckResult& result, ChannelPair pair, int lag)
{
    result.values[pair.first] = result.values[pair.second] = static_cast<float>(lag);
    if (-largestLag <= lag && lag <= largestLag) {
        result.flags[pair.first] = result.flags[pair.second] = true;
    }
}

}  // namespace

KOVMultMicCheckPrivate::KOVMultMicCheckPrivate()
    : samples(create_mat2d_fp32(channelCount, capacity)), fillCount(0)
{
}

KOVMultMicCheckPrivate::~KOVMultMicCheckPrivate()
{
    destroy_mat2d_fp32(samples);
}

void KOVMultMicCheckPrivate::fftforward(float* x, float out[][2])
{
    if (fillCount > 0) {
        KOVPrivate::WindowedSpectrum spectrum(fillCount);
        std::memcpy(out, spectrum.of(x), static_cast<std::size_t>(fillCount) * sizeof(*out));
    }
}

void KOVMultMicCheckPrivate::fftBackward(float in[][2], float* out)
{
    if (fillCount > 0) {
        KOVPrivate::BackwardMagnitudes backward(fillCount);
        std::memcpy(backward.bins(), in, static_cast<std::size_t>(fillCount) * sizeof(*in));
        backward.magnitudes(out);
    }
}

int KOVMultMicCheckPrivate::gccphat(float* a, float* b)
{
    return fillCount > 0 ? KOVPrivate::ChannelAlignment(fillCount).lag(a, b) : 0;
}

KOVMultMicCheck::KOVMultMicCheck() : d(std::make_unique<KOVMultMicCheckPrivate>()) {}

KOVMultMicCheck::~KOVMultMicCheck() = default;

bool KOVMultMicCheck::fillAudio(short** data, int n)
{
    return append(*d, data, n, [](short sample) { return static_cast<float>(sample) * int16Step; });
}

bool KOVMultMicCheck::fillAudio(float** data, int n)
{
    return append(*d, data, n, [](float sample) { return sample; });
}

MicCheckResult KOVMultMicCheck::checkSame()
{
    return timed(*d, [this](MicCheckResult& result) {
        const auto count = static_cast<float>(d->fillCount);
        const auto value = [count](float sum) { return sum * 32767.0F * 96000.0F / count; };
        for (std::size_t channel = 0; channel < channelCount; channel += 2) {
            float* const* pair = d->samples->data + channel;
            const AbsoluteSums sums = sumUntilDifferent(pair[0], pair[1], d->fillCount);
            result.flags[channel] = result.flags[channel + 1] = sums.differ;
            result.values[channel] = value(sums.first);
            result.values[channel + 1] = value(sums.second);
        }
    });
}

MicCheckResult KOVMultMicCheck::checkRMS()
{
    using namespace KOVPrivate;
    static_assert(channelCount % channelGroup == 0);
    return timed(*d, [this](MicCheckResult& result) {
        for (std::size_t first = 0; first < channelCount; first += channelGroup) {
            ChannelRows rows;
            std::copy_n(d->samples->data + first, channelGroup, rows.begin());
            const ChannelValues rms = rmsAboutMean(rows, d->fillCount);
            for (std::size_t i = 0; i < channelGroup; ++i) {
                const auto level = static_cast<float>(20.0 * double{std::log10(rms[i])} + 120.0);
                result.values[first + i] = level;
                result.flags[first + i] = level > quietestLevel;
            }
        }
    });
}

MicCheckResult KOVMultMicCheck::checkXcorr()
{
    return timed(*d, [this](MicCheckResult& result) {
        KOVPrivate::ChannelAlignment alignment(d->fillCount);
        for (const ChannelPair pair : alignedPairs) {
            float* const* rows = d->samples->data;
            setLag(result, pair, alignment.lag(rows[pair.first], rows[pair.second]));
        }
        // A channel is aligned with itself, silent or not: no need to transform it a hundred times.
        setLag(result, selfPair, selfLag);
    });
}
