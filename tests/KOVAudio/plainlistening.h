// The listening chain written from its description, one statement a step, and readings of a monitor.
#ifndef KOVDOA_TESTS_KOVAUDIO_PLAINLISTENING_H
#define KOVDOA_TESTS_KOVAUDIO_PLAINLISTENING_H

#include <memory>
#include <random>
#include <span>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovsuperheterodyne.h>
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

namespace listening {

using Samples = std::vector<float>;
using Sound = std::vector<short>;

constexpr int bufferSize = 102400;
constexpr int mostKept = 101376;

class PlainChain
{
public:
    explicit PlainChain(float baseFrequency, float volumeDecibels = 0.0F);

    // One reading of these pending samples.
    Sound read(Samples work);

    // As a stopped monitor changes its base frequency: the rumble filter and the phase run on.
    void retune(float baseFrequency);

    int phase() const { return m_phase; }

private:
    std::unique_ptr<KOVFilter> m_band;
    std::unique_ptr<KOVFilter> m_lowPasses[4];
    std::unique_ptr<KOVFilter> m_rumble;
    float m_base = 0.0F;
    float m_volumeGain = 1.0F;
    int m_phase = 0;
};

float plainDeviation(const Samples& x);

Samples noise(std::size_t count, float amplitude, unsigned seed);

// amplitude * cos(2 pi frequency i / 96000)
Samples tone(std::size_t count, double frequency, double amplitude);

// Pieces of random sizes, empty ones among them, that together are `whole`.
std::vector<Samples> cut(const Samples& whole, int largestPiece, unsigned seed);

// Feeds in blocks of at most 1024.
void feed(KOVSuperHeterodyne& monitor, std::span<const float> samples);

// A copy of the next reading.
Sound readFrom(KOVSuperHeterodyne& monitor);

// A started monitor.
std::unique_ptr<KOVSuperHeterodyne> startedMonitor(float baseFrequency = 38600.0F,
                                                   float volumeDecibels = 0.0F);

}  // namespace listening

#endif
