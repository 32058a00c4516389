#include <KOVDoaHandle/foundation/engine/kovfilterkernel_p.h>

#include <cstring>

#ifdef __x86_64__
#    include <immintrin.h>
#endif

namespace filterkernel {

namespace {

using Pair = double __attribute__((vector_size(16)));
using FloatQuad = float __attribute__((vector_size(16)));
using Quad = double __attribute__((vector_size(32)));

Pair both(double value)
{
    return Pair{value, value};
}

Pair pairAt(const double* values)
{
    return Pair{values[0], values[1]};
}

void storePair(Pair value, double* out)
{
    out[0] = value[0];
    out[1] = value[1];
}

// (second of a, first of b)
Pair between(Pair a, Pair b)
{
    return __builtin_shufflevector(a, b, 1, 2);
}

}  // namespace

void filterPairs(const Section& section, State& state, const float* in, float* out, std::ptrdiff_t groups)
{
    const Pair none = both(0.0);
    const Pair b0 = both(section.b0);
    const Pair b1 = both(section.b1);
    const Pair b2 = both(section.b2);
    const Pair h1 = both(section.h1);
    const Pair h2 = both(section.h2);
    const Pair h3 = both(section.h3);
    // What h2 and h3 make of the zeros shifted in: 0, but its sign counts when all else is a zero too.
    const Pair shiftedIn = h2 * none + h3 * none;
    const Pair earlier1Of01 = pairAt(section.earlier1.data());
    const Pair earlier1Of23 = pairAt(section.earlier1.data() + 2);
    const Pair earlier2Of01 = pairAt(section.earlier2.data());
    const Pair earlier2Of23 = pairAt(section.earlier2.data() + 2);
    Pair xBefore = pairAt(state.x.data());
    Pair yBefore = pairAt(state.y.data());

    for (std::ptrdiff_t i = 0; i < groups * groupSize; i += groupSize) {
        FloatQuad block;
        std::memcpy(&block, in + i, sizeof block);
        const Quad x = __builtin_convertvector(block, Quad);
        const Pair x01 = __builtin_shufflevector(x, x, 0, 1);
        const Pair x23 = __builtin_shufflevector(x, x, 2, 3);

        const Pair w01 = b0 * x01 + b1 * between(xBefore, x01) + b2 * xBefore;
        const Pair w23 = b0 * x23 + b1 * between(x01, x23) + b2 * x01;
        const Pair noneAndFirst = __builtin_shufflevector(none, w01, 0, 2);
        const Pair u01 = w01 + h1 * noneAndFirst + shiftedIn;
        const Pair u23 = w23 + h1 * between(w01, w23) + h2 * w01 + h3 * noneAndFirst;
        const Pair y1 = __builtin_shufflevector(yBefore, yBefore, 1, 1);
        const Pair y2 = __builtin_shufflevector(yBefore, yBefore, 0, 0);
        const Pair y01 = u01 + earlier2Of01 * y2 + earlier1Of01 * y1;
        const Pair y23 = u23 + earlier2Of23 * y2 + earlier1Of23 * y1;

        block = __builtin_convertvector(__builtin_shufflevector(y01, y23, 0, 1, 2, 3), FloatQuad);
        std::memcpy(out + i, &block, sizeof block);
        xBefore = x23;
        yBefore = y23;
    }
    storePair(xBefore, state.x.data());
    storePair(yBefore, state.y.data());
}

#ifdef __x86_64__

namespace {

// The same with a whole group in one register. Not contracted to fused operations: those round once less.
__attribute__((target("avx2"))) void filterQuadsAvx2(const Section& section, State& state, const float* in,
                                                     float* out, std::ptrdiff_t groups)
{
    const __m256d none = _mm256_setzero_pd();
    const __m256d b0 = _mm256_set1_pd(section.b0);
    const __m256d b1 = _mm256_set1_pd(section.b1);
    const __m256d b2 = _mm256_set1_pd(section.b2);
    const __m256d h1 = _mm256_set1_pd(section.h1);
    const __m256d h2 = _mm256_set1_pd(section.h2);
    const __m256d h3 = _mm256_set1_pd(section.h3);
    const __m256d earlier1 = _mm256_load_pd(section.earlier1.data());
    const __m256d earlier2 = _mm256_load_pd(section.earlier2.data());
    // The samples before the group stand in the upper half, as after a group.
    __m256d xBefore = _mm256_insertf128_pd(none, _mm_load_pd(state.x.data()), 1);
    __m256d yBefore = _mm256_insertf128_pd(none, _mm_load_pd(state.y.data()), 1);

    for (std::ptrdiff_t i = 0; i < groups * groupSize; i += groupSize) {
        const __m256d x = _mm256_cvtps_pd(_mm_loadu_ps(in + i));
        const __m256d x2 = _mm256_permute2f128_pd(xBefore, x, 0x21);
        const __m256d x1 = _mm256_shuffle_pd(x2, x, 0x5);

        const __m256d w = b0 * x + b1 * x1 + b2 * x2;
        const __m256d w2 = _mm256_permute2f128_pd(none, w, 0x21);
        const __m256d w1 = _mm256_shuffle_pd(w2, w, 0x5);
        const __m256d w3 = _mm256_shuffle_pd(none, w2, 0x5);
        const __m256d u = w + h1 * w1 + h2 * w2 + h3 * w3;
        const __m256d y1 = _mm256_permute4x64_pd(yBefore, 0xFF);
        const __m256d y2 = _mm256_permute4x64_pd(yBefore, 0xAA);
        const __m256d y = u + earlier2 * y2 + earlier1 * y1;

        _mm_storeu_ps(out + i, _mm256_cvtpd_ps(y));
        xBefore = x;
        yBefore = y;
    }
    _mm_store_pd(state.x.data(), _mm256_extractf128_pd(xBefore, 1));
    _mm_store_pd(state.y.data(), _mm256_extractf128_pd(yBefore, 1));
}

}  // namespace

const Kernel filterQuads = filterQuadsAvx2;

Kernel fastest()
{
    return __builtin_cpu_supports("avx2") ? filterQuads : filterPairs;
}

#else

const Kernel filterQuads = nullptr;

Kernel fastest()
{
    return filterPairs;
}

#endif

}  // namespace filterkernel
