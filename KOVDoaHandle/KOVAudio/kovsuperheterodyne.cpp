#include <KOVDoaHandle/KOVAudio/kovsuperheterodyne.h>

#include <KOVDoaHandle/KOVAudio/listeningchain_p.h>
#include <KOVDoaHandle/KOVAudio/listeninginput_p.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

using KOVPrivate::ListeningChain;
using KOVPrivate::ListeningInput;

namespace {

constexpr float feedFullScale = 36727.0F;
// Not the inverse of the above; both are agreed.
constexpr float outputFullScale = 32767.0F;
// The decibels of 30, used as a factor: an agreed make-up gain, not to be rounded to 30.
constexpr double makeUpGain = 29.54242509;
constexpr float loudestLevel = 60.0F;  // dB on getDecibel()'s scale

// Agreed pause around a restart.
constexpr std::chrono::milliseconds settlingTime{50};

float sumInOrder(const float* x, int n)
{
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        sum += x[i];
    }
    return sum;
}

// Standard deviation of n samples whose sum is known.
float standardDeviation(const float* x, int n, float sum)
{
    const auto count = static_cast<float>(n);
    const float mean = sum / count;
    float squares = 0.0F;
    for (int i = 0; i < n; ++i) {
        // Agreed as a double square rounded to float. The product of two floats is exact in double, so that
        // is the single-precision product.
        const float deviation = x[i] - mean;
        squares += deviation * deviation;
    }
    return static_cast<float>(std::pow(double{squares / count}, 0.5));
}

float decibelOf(float x)
{
    return static_cast<float>(20.0 * double{std::log10(x)} + 120.0);
}

float limited(float gain, float level)
{
    if (!(level > loudestLevel)) {
        return gain;
    }
    const auto exponent = static_cast<float>((double{loudestLevel} - double{level}) * 0.05);
    return gain * static_cast<float>(std::pow(10.0, double{exponent}));
}

// Towards zero, low 16 bits. What does not fit into 32 bits, and NaN, has none: 0, as x86's conversion gives.
short lowBits(float value)
{
    const bool fits = value >= -2147483648.0F && value < 2147483648.0F;
    return static_cast<short>(static_cast<std::int32_t>(fits ? value : 0.0F));
}

void halveRate(const float* samples, float gain, short* out, int count)
{
    for (int k = 0; k < count; ++k) {
        out[k] = lowBits(samples[2 * static_cast<std::ptrdiff_t>(k)] * outputFullScale * gain);
    }
}

}  // namespace

// The read lock is always taken before the input's own lock, never after it.
class KOVSuperHeterodyne::Private
{
public:
    // Under the read lock.
    void start()
    {
        chain.reset();
        input.drop();
        started = true;
    }

    void stop()
    {
        input.awaitFeed();
        started = false;
    }

    template <typename Sample, typename Convert>
    void feed(const Sample* data, int n, Convert convert)
    {
        if (!started && n < 1) {
            return;
        }
        input.append(data, n, convert);
    }

    // Keeps readAll() and whatever changes filters and oscillator apart.
    std::mutex readLock;
    ListeningChain chain;
    std::unique_ptr<float[]> work;  // takes turns with the input's array
    std::unique_ptr<short[]> sound;

    ListeningInput input;
    std::atomic<float> baseFrequency{38600.0F};
    std::atomic<bool> started{false};
    std::atomic<float> volumeGain{1.0F};
    std::atomic<int> channel{127};
};

KOVSuperHeterodyne::KOVSuperHeterodyne() : d(std::make_unique<Private>()) {}

KOVSuperHeterodyne::~KOVSuperHeterodyne() = default;

void KOVSuperHeterodyne::init()
{
    const std::lock_guard lock(d->readLock);
    d->chain.build(d->baseFrequency);
    if (!d->work) {
        d->work = std::make_unique_for_overwrite<float[]>(ListeningInput::capacity);
        d->sound = std::make_unique_for_overwrite<short[]>(ListeningInput::capacity / 2);
    }
    d->input.allocate();
}

void KOVSuperHeterodyne::start()
{
    const std::lock_guard lock(d->readLock);
    d->start();
}

void KOVSuperHeterodyne::stop()
{
    d->stop();
}

bool KOVSuperHeterodyne::isStart()
{
    return d->started;
}

void KOVSuperHeterodyne::feedSignal(short* data, int n)
{
    d->feed(data, n, [](short sample) { return static_cast<float>(sample) / feedFullScale; });
}

void KOVSuperHeterodyne::feedSignal(float* data, int n)
{
    d->feed(data, n, [](float sample) { return sample; });
}

void KOVSuperHeterodyne::feedSignal(float* data, int n, float gain)
{
    d->feed(data, n, [gain](float sample) { return sample * gain; });
}

short* KOVSuperHeterodyne::readAll(int& count)
{
    const std::lock_guard lock(d->readLock);
    const int pending = d->input.take(d->work);
    if (pending == 0 && !d->started) {
        count = -1;
        return nullptr;
    }
    float* const samples = d->work.get();
    const float sum = d->chain.process(samples, pending);
    const float level = decibelOf(standardDeviation(samples, pending, sum));
    const auto gain = static_cast<float>(double{d->volumeGain} * makeUpGain);
    count = pending / 2;
    halveRate(samples, limited(gain, level), d->sound.get(), count);
    return d->sound.get();
}

void KOVSuperHeterodyne::flushBuffer()
{
    d->input.drop();
}

void KOVSuperHeterodyne::setBaseFrequency(float frequency)
{
    const std::lock_guard lock(d->readLock);
    const float rounded = std::round(frequency / 100.0F) * 100.0F;
    d->baseFrequency = rounded;
    const bool wasStarted = d->started;
    if (wasStarted) {
        d->stop();
        std::this_thread::sleep_for(settlingTime);
    }
    if (d->chain.isBuilt()) {
        d->chain.retune(rounded);
    }
    d->input.drop();
    if (wasStarted) {
        d->start();
        std::this_thread::sleep_for(settlingTime);
    }
}

float KOVSuperHeterodyne::baseFrequency()
{
    return d->baseFrequency;
}

void KOVSuperHeterodyne::setVolume(float decibels)
{
    const float exponent = decibels * 0.05F;
    d->volumeGain = static_cast<float>(std::pow(10.0, double{exponent}));
}

float KOVSuperHeterodyne::getVolume()
{
    return std::log10(d->volumeGain.load()) * 20.0F;
}

float KOVSuperHeterodyne::getDecibel(float x)
{
    return decibelOf(x);
}

float KOVSuperHeterodyne::rmsCalculate(float* x, int n)
{
    return standardDeviation(x, n, sumInOrder(x, n));
}

void KOVSuperHeterodyne::setChannel(int channel)
{
    d->channel = channel;
}

int KOVSuperHeterodyne::channel()
{
    return d->channel;
}
