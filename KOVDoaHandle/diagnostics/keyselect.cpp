// A histogram over the keys' own range names the bucket that holds the k-th key; only that bucket is kept.
// Each round divides the range by at least 1024, so after four rounds nothing is left of 32 bits, whatever
// the values. A comparison-based selection mispredicts about every second branch on noise; a histogram has
// none to predict.
#include <KOVDoaHandle/diagnostics/keyselect_p.h>

#include <algorithm>
#include <array>
#include <bit>

namespace KOVPrivate {

namespace {

constexpr int bucketBits = 11;
constexpr std::size_t bucketCount = std::size_t{1} << bucketBits;

// Below this many keys the histogram costs more than it saves.
constexpr std::size_t fewKeys = 96;

struct Range
{
    std::int32_t lowest;
    std::int32_t highest;
};

Range rangeOf(const std::int32_t* keys, std::size_t count)
{
    Range range{keys[0], keys[0]};
    for (std::size_t i = 1; i < count; ++i) {
        range.lowest = std::min(range.lowest, keys[i]);
        range.highest = std::max(range.highest, keys[i]);
    }
    return range;
}

// Distance of a key from the lowest one; the range of all floats needs the full 32 bits.
std::uint32_t offsetOf(std::int32_t key, std::int32_t lowest)
{
    return static_cast<std::uint32_t>(key) - static_cast<std::uint32_t>(lowest);
}

// Moves the keys of one bucket to the front and returns their number. Every key is stored, and only the
// position advances or not: no branch on the data.
std::size_t keepBucket(std::int32_t* keys, std::size_t count, std::int32_t lowest, int shift,
                       std::uint32_t bucket)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t key = keys[i];
        keys[kept] = key;
        kept += static_cast<std::size_t>((offsetOf(key, lowest) >> shift) == bucket);
    }
    return kept;
}

}  // namespace

std::int32_t selectKey(std::int32_t* keys, std::size_t count, std::size_t k)
{
    while (count > fewKeys) {
        const Range range = rangeOf(keys, count);
        const std::uint32_t span = offsetOf(range.highest, range.lowest);
        const int shift = std::max(static_cast<int>(std::bit_width(span)) - bucketBits, 0);

        std::array<std::uint32_t, bucketCount> histogram{};
        for (std::size_t i = 0; i < count; ++i) {
            ++histogram[offsetOf(keys[i], range.lowest) >> shift];
        }
        std::uint32_t bucket = 0;
        while (k >= histogram[bucket]) {
            k -= histogram[bucket];
            ++bucket;
        }
        if (shift == 0) {
            return static_cast<std::int32_t>(static_cast<std::uint32_t>(range.lowest) + bucket);
        }
        count = keepBucket(keys, count, range.lowest, shift, bucket);
    }
    std::nth_element(keys, keys + k, keys + count);
    return keys[k];
}

}  // namespace KOVPrivate
