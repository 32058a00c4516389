// Each loop is written once, as an always-inlined function, and instantiated per instruction set by a thin
// wrapper that carries the target attribute; the vectoriser does the rest. Only what it leaves alone, the packing of
// pixels and the interpolation along a row, is written out.
#include <KOVDoaHandle/imaging/pixelkernels_p.h>

#include <algorithm>
#include <array>
#include <cstring>

#if defined(__x86_64__)
#    include <immintrin.h>
#endif

namespace KOVPrivate {

namespace {

#define KOVDOA_INLINE [[gnu::always_inline]] inline

// Largest float below one half: adding it and cutting off rounds halves away from zero exactly, for every
// non-negative number up to 2^22. (Adding one half itself would round 0.49999997 up.)
constexpr float justBelowHalf = 0x1.fffffep-2F;

KOVDOA_INLINE void interpolateRowLoop(const float* source, const int* first, int step, const float* lower,
                                      const float* upper, float* __restrict destination, int count)
{
    for (int i = 0; i < count; ++i) {
        destination[i] = source[first[i]] * lower[i] + source[first[i] + step] * upper[i];
    }
}

void interpolateRowPortable(const float* source, const int* first, int step, const float* lower,
                            const float* upper, float* destination, int count)
{
    interpolateRowLoop(source, first, step, lower, upper, destination, count);
}

#if defined(__x86_64__)
// Neighbours in a wide row lie between the same few cells of the source: eight cells are loaded at once and put where
// they are needed. What does not fit into eight, as when a map is made smaller, goes one by one.
[[gnu::target("avx2")]] void interpolateRowPermuted(const float* source, const int* first, int step,
                                                    const float* lower, const float* upper,
                                                    float* destination, int count)
{
    constexpr int width = 8;
    const int lastCell = count > 0 ? first[count - 1] + step : 0;
    const __m256i steps = _mm256_set1_epi32(step);
    const __m256i reach = _mm256_set1_epi32(width - 1 - step);
    int i = 0;
    for (; i + width <= count && lastCell >= width - 1; i += width) {
        // At the end of the row the eight cells end with it.
        const int base = std::min(first[i], lastCell - (width - 1));
        const __m256i offsets = _mm256_sub_epi32(
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(first + i)), _mm256_set1_epi32(base));
        const __m256i isWithin = _mm256_cmpeq_epi32(_mm256_max_epu32(offsets, reach), reach);
        if (_mm256_movemask_epi8(isWithin) != -1) {
            interpolateRowLoop(source, first + i, step, lower + i, upper + i, destination + i, width);
            continue;
        }
        const __m256 cells = _mm256_loadu_ps(source + base);
        const __m256 below = _mm256_permutevar8x32_ps(cells, offsets);
        const __m256 above = _mm256_permutevar8x32_ps(cells, _mm256_add_epi32(offsets, steps));
        _mm256_storeu_ps(destination + i, _mm256_add_ps(_mm256_mul_ps(below, _mm256_loadu_ps(lower + i)),
                                                        _mm256_mul_ps(above, _mm256_loadu_ps(upper + i))));
    }
    interpolateRowLoop(source, first + i, step, lower + i, upper + i, destination + i, count - i);
}
#endif

KOVDOA_INLINE void blendRowsLoop(const float* upper, const float* lower, float upperWeight, float lowerWeight,
                                 float* __restrict destination, int count)
{
    for (int i = 0; i < count; ++i) {
        destination[i] = upper[i] * upperWeight + lower[i] * lowerWeight;
    }
}

KOVDOA_INLINE std::int32_t indexOf(float level, IndexRule rule)
{
    const float position = (level - rule.floor) * rule.scale;
    // Written so that a position that is not a number ends at the top: the index stays inside the table
    // whatever the range is.
    const float belowTop = position < rule.top ? position : rule.top;
    const float inside = belowTop > 0.0F ? belowTop : 0.0F;
    const auto index = static_cast<std::int32_t>(inside + justBelowHalf) + 1;
    return level > rule.floor ? index : 0;
}

KOVDOA_INLINE void indexLevelsLoop(const float* levels, IndexRule rule, std::int32_t* __restrict indices,
                                   int count)
{
    for (int i = 0; i < count; ++i) {
        indices[i] = indexOf(levels[i], rule);
    }
}

KOVDOA_INLINE void indexBlendedRowsLoop(const float* upper, const float* lower, float upperWeight,
                                        float lowerWeight, IndexRule rule, std::int32_t* __restrict indices,
                                        int count)
{
    for (int i = 0; i < count; ++i) {
        indices[i] = indexOf(upper[i] * upperWeight + lower[i] * lowerWeight, rule);
    }
}

void packPixelsPortable(const std::int32_t* indices, const std::uint32_t* table, std::uint8_t* pixels,
                        int count)
{
    // Four bytes at a time, each store's fourth byte overwritten by the next pixel; the last pixel takes care
    // of not writing behind the row.
    for (int i = 0; i < count - 1; ++i) {
        std::memcpy(pixels + 3 * static_cast<std::ptrdiff_t>(i), &table[indices[i]], 4);
    }
    if (count > 0) {
        std::memcpy(pixels + 3 * static_cast<std::ptrdiff_t>(count - 1), &table[indices[count - 1]], 3);
    }
}

#if defined(__x86_64__)
// Four pixels a store. Gathering the entries would be a little faster on some processors and many times slower on
// those that guard their gathers against leaks.
[[gnu::target("sse4.1")]] void packPixelsShuffled(const std::int32_t* indices, const std::uint32_t* table,
                                                  std::uint8_t* pixels, int count)
{
    const __m128i threeOfFour = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const auto entry = [table, indices](int at) { return static_cast<int>(table[indices[at]]); };
    int i = 0;
    // A store's last four bytes are those of the next pixels: two more must follow.
    for (; i + 6 <= count; i += 4) {
        const __m128i first = _mm_insert_epi32(_mm_cvtsi32_si128(entry(i)), entry(i + 1), 1);
        const __m128i second = _mm_insert_epi32(_mm_cvtsi32_si128(entry(i + 2)), entry(i + 3), 1);
        const __m128i packed = _mm_shuffle_epi8(_mm_unpacklo_epi64(first, second), threeOfFour);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 3 * static_cast<std::ptrdiff_t>(i)), packed);
    }
    packPixelsPortable(indices + i, table, pixels + 3 * static_cast<std::ptrdiff_t>(i), count - i);
}
#endif

KOVDOA_INLINE void addSaturatingLoop(std::uint8_t* __restrict sums, const std::uint8_t* addends,
                                     std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned sum = unsigned{sums[i]} + addends[i];
        sums[i] = static_cast<std::uint8_t>(sum > 255U ? 255U : sum);
    }
}

// One set of wrappers: `suffix` names it, `interpolateRow` and `packPixels` are its own, `attributes` choose the
// instruction set of the others.
#define KOVDOA_PIXEL_KERNELS(suffix, interpolateRow, packPixels, attributes)                                \
    attributes void blendRows##suffix(const float* upper, const float* lower, float upperWeight,            \
                                      float lowerWeight, float* destination, int count)                     \
    {                                                                                                       \
        blendRowsLoop(upper, lower, upperWeight, lowerWeight, destination, count);                          \
    }                                                                                                       \
    attributes void indexLevels##suffix(const float* levels, IndexRule rule, std::int32_t* indices,         \
                                        int count)                                                          \
    {                                                                                                       \
        indexLevelsLoop(levels, rule, indices, count);                                                      \
    }                                                                                                       \
    attributes void indexBlendedRows##suffix(const float* upper, const float* lower, float upperWeight,     \
                                             float lowerWeight, IndexRule rule, std::int32_t* indices,      \
                                             int count)                                                     \
    {                                                                                                       \
        indexBlendedRowsLoop(upper, lower, upperWeight, lowerWeight, rule, indices, count);                 \
    }                                                                                                       \
    attributes void addSaturating##suffix(std::uint8_t* sums, const std::uint8_t* addends,                  \
                                          std::size_t count)                                                \
    {                                                                                                       \
        addSaturatingLoop(sums, addends, count);                                                            \
    }                                                                                                       \
    constexpr PixelKernels kernels##suffix{                                                                 \
        #suffix,    interpolateRow,       blendRows##suffix, indexLevels##suffix, indexBlendedRows##suffix, \
        packPixels, addSaturating##suffix};

KOVDOA_PIXEL_KERNELS(Portable, interpolateRowPortable, packPixelsPortable, )
#if defined(__x86_64__)
KOVDOA_PIXEL_KERNELS(Avx2, interpolateRowPermuted, packPixelsShuffled, [[gnu::target("avx2")]])
#    if defined(__clang__)
KOVDOA_PIXEL_KERNELS(Avx512, interpolateRowPermuted, packPixelsShuffled,
                     [[gnu::target("avx512f,avx512bw,avx512dq,avx512vl")]])
#    else
// GCC would otherwise keep to half of the width.
KOVDOA_PIXEL_KERNELS(Avx512, interpolateRowPermuted, packPixelsShuffled,
                     [[gnu::target("avx512f,avx512bw,avx512dq,avx512vl,prefer-vector-width=512")]])
#    endif
#endif

// Fastest last.
std::span<const PixelKernels> supportedKernels()
{
#if defined(__x86_64__)
    static constexpr std::array all{kernelsPortable, kernelsAvx2, kernelsAvx512};
    std::size_t count = 1;
    if (__builtin_cpu_supports("avx2") != 0) {
        count = 2;
        // The byte permutes came with the first processors that do not slow down for vectors of this width.
        if (__builtin_cpu_supports("avx512vbmi") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
            __builtin_cpu_supports("avx512dq") != 0 && __builtin_cpu_supports("avx512vl") != 0) {
            count = 3;
        }
    }
    return std::span(all).first(count);
#else
    static constexpr std::array all{kernelsPortable};
    return all;
#endif
}

}  // namespace

const PixelKernels& pixelKernels()
{
    static const PixelKernels& best = supportedKernels().back();
    return best;
}

std::span<const PixelKernels> pixelKernelVariants()
{
    return supportedKernels();
}

}  // namespace KOVPrivate
