// The discharge analysis. Feeding is compared with its two filters alone over the same samples; a poll with
// one pass of magnitudes, RMS and bins over its span and one planned transform of a frame. The counter says
// how many seconds of audio are dealt with in a second.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include <KOVDoaHandle/api/prpd.h>
#include <KOVDoaHandle/diagnostics/kovblas.h>
#include <KOVDoaHandle/diagnostics/kovprpdprocess.h>
#include <KOVDoaHandle/foundation/engine/kovfilter.h>

#include "bench/realtime.h"

using bench::countRealTime;

namespace {

constexpr int blockSamples = 1024;
constexpr int span = 60544;
constexpr int measured = 4864;
constexpr int frameSize = 2400;

// Ten seconds of noise with bursts at so many phases of a 50 Hz cycle.
std::vector<float> discharges(int burstsACycle)
{
    std::mt19937 random(5);
    std::normal_distribution<float> normal(0.0F, 0.002F);
    std::vector<float> samples(960 * blockSamples);
    float burst = 0.0F;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (burstsACycle > 0 && i % static_cast<std::size_t>(1920 / burstsACycle) == 300) {
            burst = 0.3F;
        }
        const double angle = 2.0 * std::numbers::pi * 35.0 / 96.0 * static_cast<double>(i);
        samples[i] = normal(random) + burst * static_cast<float>(std::sin(angle));
        burst *= 0.97F;
    }
    return samples;
}

// A folder with a model of a hundred vectors.
class Models
{
public:
    Models()
    {
        QFile file(m_folder.filePath(QStringLiteral("SVM2.txt")));
        if (file.open(QIODevice::WriteOnly)) {
            file.write("4 100 0.05 0\n");
            for (int i = 0; i < 100; ++i) {
                file.write(i % 2 == 0 ? "0.5\n" : "-0.5\n");
            }
            for (int i = 0; i < 100; ++i) {
                file.write(QByteArray::number(0.05 + 0.001 * i) + " 3.5 " + QByteArray::number(5 + 0.2 * i) +
                           " 2.5\n");
            }
        }
    }

    std::unique_ptr<KOVPrpdProcess> analyser() const
    {
        return std::make_unique<KOVPrpdProcess>(m_folder.path().toUtf8().constData());
    }

private:
    QTemporaryDir m_folder;
};

// A stream in blocks, over and over.
class Blocks
{
public:
    explicit Blocks(int burstsACycle) : m_samples(discharges(burstsACycle)) {}

    float* next()
    {
        m_at = (m_at + blockSamples) % m_samples.size();
        return m_samples.data() + m_at;
    }

private:
    std::vector<float> m_samples;
    std::size_t m_at = 0;
};

void feedOurs(benchmark::State& state)
{
    const Models models;
    const auto analyser = models.analyser();
    Blocks blocks(2);
    for ([[maybe_unused]] auto iteration : state) {
        PRPDFeedAudio(analyser.get(), blocks.next(), blockSamples);
    }
    countRealTime(state, blockSamples);
}

void feedPeer(benchmark::State& state)
{
    const IIRCoef_t design = KOVIIRDesigner::createHighPass(25000.0F, 0.707F, 1.0F, 96000.0F);
    KOVFilter first(design);
    KOVFilter second(design);
    std::vector<float> filtered(blockSamples);
    Blocks blocks(2);
    for ([[maybe_unused]] auto iteration : state) {
        first.filter(blocks.next(), filtered.data(), blockSamples);
        second.filter(filtered.data(), filtered.data(), blockSamples);
        benchmark::DoNotOptimize(filtered.data());
        benchmark::ClobberMemory();
    }
}

// With two bursts a cycle every poll goes through the features and the classifier; with one it is called
// corona; with none it is noise.
void poll(benchmark::State& state, int burstsACycle)
{
    const Models models;
    const auto analyser = models.analyser();
    Blocks blocks(burstsACycle);
    for (int i = 0; i < 200; ++i) {
        PRPDFeedAudio(analyser.get(), blocks.next(), blockSamples);
    }
    for (int i = 0; i < 30; ++i) {
        PRPDUpdatePdd(analyser.get());
    }
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(PRPDUpdatePdd(analyser.get()));
    }
    const PRPDResult result = analyser->getPddFrameData(nullptr, 0);
    state.counters["corona"] = result.coronaPercent;
    state.counters["classified"] = result.alongSurfacePercent + result.suspensionPercent;
}

void pollPeer(benchmark::State& state)
{
    const std::vector<float> samples = discharges(2);
    std::vector<float> magnitudes(span);
    std::vector<float> bins(span / 8);
    fftwf_complex* const in = fftwf_alloc_complex(frameSize);
    fftwf_complex* const out = fftwf_alloc_complex(frameSize);
    const fftwf_plan plan = fftwf_plan_dft_1d(frameSize, in, out, FFTW_FORWARD, FFTW_ESTIMATE);
    for (int i = 0; i < frameSize; ++i) {
        in[i][0] = samples[static_cast<std::size_t>(i)];
        in[i][1] = 0.0F;
    }
    for ([[maybe_unused]] auto iteration : state) {
        for (std::size_t i = 0; i < magnitudes.size(); ++i) {
            magnitudes[i] = std::fabs(samples[i]);
        }
        benchmark::DoNotOptimize(KOVBlas::Rms(magnitudes.data(), measured, false));
        for (std::size_t i = 0; i < bins.size(); ++i) {
            float sum = 0.0F;
            for (std::size_t k = 1; k < 8; ++k) {
                sum += magnitudes[8 * i + k];
            }
            bins[i] = sum;
        }
        benchmark::DoNotOptimize(bins.data());
        fftwf_execute(plan);
        benchmark::ClobberMemory();
    }
    fftwf_destroy_plan(plan);
    fftwf_free(in);
    fftwf_free(out);
}

// The transform of a poll alone, planned beforehand.
void transformAlone(benchmark::State& state)
{
    fftwf_complex* const in = fftwf_alloc_complex(frameSize);
    fftwf_complex* const out = fftwf_alloc_complex(frameSize);
    const fftwf_plan plan = fftwf_plan_dft_1d(frameSize, in, out, FFTW_FORWARD, FFTW_ESTIMATE);
    for (int i = 0; i < frameSize; ++i) {
        in[i][0] = static_cast<float>(i % 7);
        in[i][1] = 0.0F;
    }
    for ([[maybe_unused]] auto iteration : state) {
        fftwf_execute(plan);
        benchmark::ClobberMemory();
    }
    fftwf_destroy_plan(plan);
    fftwf_free(in);
    fftwf_free(out);
}

// A host that polls twenty times a second.
void wholeMode(benchmark::State& state)
{
    const Models models;
    const auto analyser = models.analyser();
    Blocks blocks(2);
    constexpr int blocksAPoll = 5;
    for ([[maybe_unused]] auto iteration : state) {
        for (int i = 0; i < blocksAPoll; ++i) {
            PRPDFeedAudio(analyser.get(), blocks.next(), blockSamples);
        }
        benchmark::DoNotOptimize(PRPDUpdatePdd(analyser.get()));
    }
    countRealTime(state, blocksAPoll * blockSamples);
}

}  // namespace

BENCHMARK(feedOurs)->Name("Prpd/FeedAudio/1024");
BENCHMARK(feedPeer)->Name("Prpd/FeedAudio/1024/peer");
BENCHMARK_CAPTURE(poll, classified, 2)->Name("Prpd/UpdatePdd/50Hz");
BENCHMARK(pollPeer)->Name("Prpd/UpdatePdd/50Hz/peer");
BENCHMARK(transformAlone)->Name("Prpd/UpdatePdd/50Hz/bound");
BENCHMARK_CAPTURE(poll, corona, 1)->Name("Prpd/UpdatePdd/50HzCorona");
BENCHMARK_CAPTURE(poll, noise, 0)->Name("Prpd/UpdatePdd/50HzNoise");
BENCHMARK(wholeMode)->Name("Prpd/FeedAndPoll");
