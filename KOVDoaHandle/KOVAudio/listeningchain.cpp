#include <KOVDoaHandle/KOVAudio/listeningchain_p.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace KOVPrivate {

namespace {

constexpr float sampleRate = 96000.0F;
constexpr float halfRate = 48000.0F;
constexpr float gain = 1.0F;
constexpr float rumbleCutoff = 100.0F;

// Two seconds, after which an oscillator at any multiple of 0.5 Hz is back where it began.
constexpr int phaseCycle = 192000;
// Two seconds and as much as one reading can ask for, so that a reading never wraps.
constexpr std::size_t oscillatorLength = 409600;
// Added to every sample of the oscillator; would let some of the unmixed band through.
constexpr float oscillatorOffset = 0.0F;

// Samples that one stage takes before the next one gets them; a multiple of the four that a filter works on
// at once.
constexpr int pieceSize = 64;

std::unique_ptr<KOVFilter> lowPass(float cutoff, float q)
{
    return std::make_unique<KOVFilter>(KOVIIRDesigner::createLowPass(cutoff, q, gain, sampleRate));
}

std::unique_ptr<KOVFilter> highPass(float cutoff, float q)
{
    return std::make_unique<KOVFilter>(KOVIIRDesigner::createHighPass(cutoff, q, gain, sampleRate));
}

}  // namespace

void ListeningChain::build(float baseFrequency)
{
    designBand(baseFrequency);
    m_filters[Rumble] = highPass(rumbleCutoff, 1.0F);
    fillOscillator(baseFrequency);
    m_phase = 0;
}

void ListeningChain::retune(float baseFrequency)
{
    designBand(baseFrequency);
    fillOscillator(baseFrequency);
}

void ListeningChain::designBand(float baseFrequency)
{
    // The band between base frequency and half the rate comes out below its width.
    const float bandwidth = halfRate - baseFrequency;
    m_filters[Band] = highPass(baseFrequency, 1.0F);
    m_filters[LowPass1] = lowPass(bandwidth - 4540.0F, 0.7F);
    m_filters[LowPass2] = lowPass(bandwidth + 2500.0F, 2.0F);
    m_filters[LowPass3] = lowPass(bandwidth + 1500.0F, 2.0F);
    m_filters[LowPass4] = lowPass(bandwidth + 500.0F, 1.0F);
}

void ListeningChain::fillOscillator(float baseFrequency)
{
    m_oscillator.resize(oscillatorLength);
    for (std::size_t i = 0; i < oscillatorLength; ++i) {
        // Agreed down to the bit: cycles are counted in single precision (good to a hundredth of a cycle at
        // the end of what is read), the angle in double.
        const float cycles = static_cast<float>(i) / sampleRate * baseFrequency;
        const double angle = 2.0 * (std::numbers::pi * double{cycles});
        m_oscillator[i] = static_cast<float>(double{oscillatorOffset} + std::cos(angle));
    }
}

void ListeningChain::reset()
{
    for (const auto& filter : m_filters) {
        if (filter) {
            filter->reset();
        }
    }
    m_phase = 0;
}

void ListeningChain::mix(float* samples, int first, int n) const
{
    const float* oscillator = m_oscillator.data() + m_phase + first;
    for (int i = 0; i < n; ++i) {
        samples[first + i] *= oscillator[i];
    }
}

float ListeningChain::process(float* samples, int n)
{
    // Each stage waits for itself most of the time: a filter for its last outputs, the sum for its last
    // addition. So all of them work side by side, each on the piece that the stage before it has just left,
    // and the processor fills the waits of one with the work of the others. The bits are those of whole
    // blocks.
    constexpr int stageCount = int{filterCount} + 1;
    const int pieces = (n + pieceSize - 1) / pieceSize;
    float sum = 0.0F;
    for (int step = 0; step < pieces + stageCount - 1; ++step) {
        const int firstStage = std::max(0, step - pieces + 1);
        const int lastStage = std::min(step, stageCount - 1);
        for (int stage = lastStage; stage >= firstStage; --stage) {
            const int first = (step - stage) * pieceSize;
            const int count = std::min(pieceSize, n - first);
            if (stage == filterCount) {
                for (int i = 0; i < count; ++i) {
                    sum += samples[first + i];
                }
                continue;
            }
            m_filters[static_cast<std::size_t>(stage)]->filter(samples + first, samples + first, count);
            if (stage == Band) {
                mix(samples, first, count);
            }
        }
    }
    m_phase = (m_phase + n) % phaseCycle;
    return sum;
}

}  // namespace KOVPrivate
