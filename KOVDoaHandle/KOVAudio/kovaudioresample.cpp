#include <KOVDoaHandle/KOVAudio/kovaudioresample.h>
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace {

// What both filters are designed for, whatever the rates.
constexpr float designRate = 96000.0F;
constexpr float butterworth = 0.707F;
constexpr float highPassCorner = 10.0F;

float ratioOf(int inRate, int outRate)
{
    return static_cast<float>(inRate) / static_cast<float>(outRate);
}

// Where output k stands among the inputs. Single precision: this rounding decides which sample is picked.
inline float positionOf(int k, float ratio)
{
    return static_cast<float>(k) * ratio;
}

// How many outputs the inputs reach for. The positions run in one direction only, so those inside the block come
// first and their end can be found by halving.
int reachableOutputs(float ratio, int inCount, int outCount)
{
    // Between -1 and 0 a position is truncated to 0, which an empty block does not have either.
    if (inCount <= 0) {
        return 0;
    }
    // In double precision every count is exact. A NaN compares false.
    const auto isInside = [ratio, inCount](int k) {
        const double position = double{positionOf(k, ratio)};
        return position > -1.0 && position < static_cast<double>(inCount);
    };
    int inside = 0;
    int outside = std::max(outCount, 0);
    while (inside < outside) {
        const int middle = inside + (outside - inside) / 2;
        if (isInside(middle)) {
            inside = middle + 1;
        } else {
            outside = middle;
        }
    }
    return inside;
}

float linearGain(float decibels)
{
    const auto exponent = static_cast<float>(double{decibels} * 0.05);
    return static_cast<float>(std::pow(10.0, double{exponent}));
}

}  // namespace

class KOVAudioReSample::Private
{
public:
    Private(int inputRateHz, int outputRateHz, float gainDb, bool highPassFirst, bool lowPassThen)
        : inputRate(inputRateHz),
          outputRate(outputRateHz),
          gain(gainDb),
          rmAliasing(highPassFirst),
          rmDC(lowPassThen),
          lowPass(
              KOVIIRDesigner::createLowPass(static_cast<float>(outputRateHz), butterworth, 1.0F, designRate)),
          highPass(KOVIIRDesigner::createHighPass(highPassCorner, butterworth, 1.0F, designRate))
    {
    }

    const int inputRate;
    const int outputRate;
    float gain;
    bool rmAliasing;
    bool rmDC;
    KOVFilter lowPass;
    KOVFilter highPass;
    std::array<float, maximumBlock> work{};
};

KOVAudioReSample::KOVAudioReSample(int inputRate, int outputRate, float gain, bool rmAliasing, bool rmDC)
    : d(std::make_unique<Private>(inputRate, outputRate, gain, rmAliasing, rmDC))
{
}

KOVAudioReSample::~KOVAudioReSample() = default;

void KOVAudioReSample::doReSample(float* in, int inCount, float* out, int outCount)
{
    const int count = std::clamp(inCount, 0, maximumBlock);
    float* work = d->work.data();
    std::copy_n(in, count, work);
    if (d->rmAliasing) {
        d->highPass.filter(work, work, count);
    }
    if (d->rmDC) {
        d->lowPass.filter(work, work, count);
    }
    const float ratio = ratioOf(d->inputRate, d->outputRate);
    const float factor = linearGain(d->gain);
    const int outputs = reachableOutputs(ratio, count, outCount);
    for (int k = 0; k < outputs; ++k) {
        out[k] = work[static_cast<int>(positionOf(k, ratio))] * factor;
    }
}

void KOVAudioReSample::FastAudioReSample(float* in, int inRate, int inCount, float* out, int outRate,
                                         int outCount)
{
    const float ratio = ratioOf(inRate, outRate);
    const int outputs = reachableOutputs(ratio, inCount, outCount);
    for (int k = 0; k < outputs; ++k) {
        out[k] = in[static_cast<int>(positionOf(k, ratio))];
    }
}

float KOVAudioReSample::getGain()
{
    return d->gain;
}

void KOVAudioReSample::setGain(float gain)
{
    d->gain = gain;
}

bool KOVAudioReSample::getRmAliasingEnable()
{
    return d->rmAliasing;
}

void KOVAudioReSample::setRmAliasingEnable(bool enable)
{
    d->rmAliasing = enable;
}

bool KOVAudioReSample::getRmDCEnable()
{
    return d->rmDC;
}

void KOVAudioReSample::setRmDCEnable(bool enable)
{
    d->rmDC = enable;
}

void KOVAudioReSample::resetFilter()
{
    d->lowPass.reset();
    d->highPass.reset();
}
