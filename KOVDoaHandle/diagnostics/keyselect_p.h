// Selecting the k-th smallest of many floats in linear time, whatever the floats are.
#ifndef KOVDOA_KEYSELECT_P_H
#define KOVDOA_KEYSELECT_P_H

#include <bit>
#include <cstddef>
#include <cstdint>

namespace KOVPrivate {

// An integer that compares as the float does: for negative floats, whose magnitude grows with their bits, all
// bits but the sign are flipped. The order is total: -0 comes just before +0, NaNs lie beyond the infinity of
// their sign.
inline std::int32_t orderedKey(float value)
{
    const auto bits = std::bit_cast<std::int32_t>(value);
    return bits ^ ((bits >> 31) & 0x7fffffff);
}

// The float that has this key.
inline float valueOfKey(std::int32_t key)
{
    return std::bit_cast<float>(key ^ ((key >> 31) & 0x7fffffff));
}

inline void orderedKeys(const float* values, std::size_t count, std::int32_t* keys)
{
    for (std::size_t i = 0; i < count; ++i) {
        keys[i] = orderedKey(values[i]);
    }
}

// The key at index k of the ascending order of `keys`, which are overwritten. k < count. Does not allocate.
std::int32_t selectKey(std::int32_t* keys, std::size_t count, std::size_t k);

}  // namespace KOVPrivate

#endif
