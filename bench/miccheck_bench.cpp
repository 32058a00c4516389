// The array's self-test over one second of 208 channels. Peers: of the alignment test, two transforms for
// each of its 104 pairs, with arrays and plan of their own each time; of levels and neighbours, one pass of
// reading the store, summed in vectors. `Operation/size` is ours, the same name with `/peer` the peer; the
// ratio of the two is what counts.
#include <benchmark/benchmark.h>

#include <KOVDoaHandle/KOVAudio/kovmultmiccheck.h>
#include <KOVDoaHandle/foundation/engine/containers.h>

#include <fftw3.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr std::size_t channels = 208;
constexpr std::size_t samples = 96000;

// Different: neighbours are told apart within a few samples, as in a sound array. Identical: every walk goes
// to its end, the worst that can happen.
enum class Neighbours { Different, Identical };

class Store
{
public:
    explicit Store(Neighbours neighbours) : m_matrix(create_mat2d_fp32(channels, samples))
    {
        std::minstd_rand random(9);
        std::uniform_real_distribution<float> uniform(-0.1F, 0.1F);
        for (std::size_t channel = 0; channel < channels; ++channel) {
            if (neighbours == Neighbours::Identical && channel % 2 == 1) {
                std::memcpy(row(channel), row(channel - 1), samples * sizeof(float));
                continue;
            }
            for (std::size_t i = 0; i < samples; ++i) {
                row(channel)[i] = uniform(random);
            }
        }
    }

    ~Store() { destroy_mat2d_fp32(m_matrix); }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    float* row(std::size_t channel) { return m_matrix->data[channel]; }
    float** rows() { return m_matrix->data; }

private:
    mat2d_fp32* m_matrix;
};

std::unique_ptr<KOVMultMicCheck> filled(Neighbours neighbours)
{
    Store store(neighbours);
    auto check = std::make_unique<KOVMultMicCheck>();
    check->fillAudio(store.rows(), samples);
    return check;
}

void xcorrOurs(benchmark::State& state)
{
    const auto check = filled(Neighbours::Different);
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(check->checkXcorr());
    }
}

void transformOnce(const float* x)
{
    auto* in = static_cast<fftwf_complex*>(fftwf_malloc(samples * sizeof(fftwf_complex)));
    auto* out = static_cast<fftwf_complex*>(fftwf_malloc(samples * sizeof(fftwf_complex)));
    const fftwf_plan plan = fftwf_plan_dft_1d(samples, in, out, FFTW_FORWARD, FFTW_ESTIMATE);
    for (std::size_t i = 0; i < samples; ++i) {
        in[i][0] = x[i];
        in[i][1] = 0.0F;
    }
    fftwf_execute(plan);
    benchmark::DoNotOptimize(out[samples / 3][0]);
    fftwf_destroy_plan(plan);
    fftwf_free(in);
    fftwf_free(out);
}

void xcorrPeer(benchmark::State& state)
{
    Store store(Neighbours::Different);
    constexpr std::array<std::array<std::size_t, 2>, 4> firstPairs{{{0, 4}, {1, 5}, {2, 7}, {3, 6}}};
    for ([[maybe_unused]] auto iteration : state) {
        for (std::size_t pair = 0; pair < channels / 2; ++pair) {
            transformOnce(store.row(pair < 4 ? firstPairs[pair][0] : 0));
            transformOnce(store.row(pair < 4 ? firstPairs[pair][1] : 0));
        }
    }
}

// The transforms alone, two for each pair, planned beforehand.
void transformsAlone(benchmark::State& state)
{
    Store store(Neighbours::Different);
    auto* in = fftwf_alloc_complex(samples);
    auto* out = fftwf_alloc_complex(samples);
    const fftwf_plan plan = fftwf_plan_dft_1d(samples, in, out, FFTW_FORWARD, FFTW_ESTIMATE);
    for (std::size_t i = 0; i < samples; ++i) {
        in[i][0] = store.row(0)[i];
        in[i][1] = 0.0F;
    }
    for ([[maybe_unused]] auto iteration : state) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            fftwf_execute(plan);
            benchmark::ClobberMemory();
        }
    }
    fftwf_destroy_plan(plan);
    fftwf_free(in);
    fftwf_free(out);
}

void levelsOurs(benchmark::State& state, Neighbours neighbours)
{
    const auto check = filled(neighbours);
    for ([[maybe_unused]] auto iteration : state) {
        benchmark::DoNotOptimize(check->checkRMS());
        benchmark::DoNotOptimize(check->checkSame());
    }
}

void levelsPeer(benchmark::State& state)
{
    using Vector = float __attribute__((vector_size(32)));
    constexpr std::size_t lanes = 8;
    Store store(Neighbours::Different);
    for ([[maybe_unused]] auto iteration : state) {
        std::array<Vector, 4> sums{};
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const float* row = store.row(channel);
            for (std::size_t i = 0; i < samples; i += lanes * sums.size()) {
                for (std::size_t part = 0; part < sums.size(); ++part) {
                    Vector values;
                    std::memcpy(&values, row + i + part * lanes, sizeof values);
                    sums[part] += values;
                }
            }
        }
        const Vector sum = sums[0] + sums[1] + sums[2] + sums[3];
        benchmark::DoNotOptimize(sum[0]);
    }
}

}  // namespace

BENCHMARK(xcorrOurs)->Name("MicCheck/Xcorr/96000")->Unit(benchmark::kMillisecond);
BENCHMARK(xcorrPeer)->Name("MicCheck/Xcorr/96000/peer")->Unit(benchmark::kMillisecond);
BENCHMARK(transformsAlone)->Name("MicCheck/Xcorr/96000/bound")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(levelsOurs, different, Neighbours::Different)
    ->Name("MicCheck/RmsAndSame/208x96000")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(levelsPeer)->Name("MicCheck/RmsAndSame/208x96000/peer")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(levelsOurs, identical, Neighbours::Identical)
    ->Name("MicCheck/RmsAndSame/208x96000/identical")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(levelsPeer)->Name("MicCheck/RmsAndSame/208x96000/identical/peer")->Unit(benchmark::kMillisecond);
