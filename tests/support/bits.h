// Comparing floats by their bits, and pictures pixel by pixel.
#ifndef KOVDOA_TESTS_SUPPORT_BITS_H
#define KOVDOA_TESTS_SUPPORT_BITS_H

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <span>

#include <KOVDoaHandle/foundation/engine/containers.h>

namespace testsupport {

inline ::testing::AssertionResult sameBits(float expected, float found)
{
    if (std::bit_cast<std::uint32_t>(expected) == std::bit_cast<std::uint32_t>(found)) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "expected " << std::hexfloat << expected << ", found " << found;
}

inline ::testing::AssertionResult samePoint(const fpoint2d& expected, const fpoint2d& found)
{
    if (sameBits(expected.value, found.value) && expected.row == found.row && expected.col == found.col) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "expected " << expected.value << " at (" << expected.row << ", " << expected.col << "), found "
           << found.value << " at (" << found.row << ", " << found.col << ")";
}

// Compares two pictures of `width` pixels a row; a failure names the first differing pixels.
inline ::testing::AssertionResult samePicture(std::span<const std::uint8_t> expected,
                                              std::span<const std::uint8_t> found, int width,
                                              int channels = 3)
{
    if (expected.size() != found.size()) {
        return ::testing::AssertionFailure()
               << "expected " << expected.size() << " bytes, found " << found.size();
    }
    constexpr int mostNamed = 5;
    const auto pixelBytes = static_cast<std::size_t>(channels);
    int different = 0;
    ::testing::AssertionResult failure = ::testing::AssertionFailure();
    for (std::size_t first = 0; first + pixelBytes <= expected.size(); first += pixelBytes) {
        const auto expectedPixel = expected.subspan(first, pixelBytes);
        const auto foundPixel = found.subspan(first, pixelBytes);
        if (std::equal(expectedPixel.begin(), expectedPixel.end(), foundPixel.begin())) {
            continue;
        }
        if (++different <= mostNamed) {
            const std::size_t pixel = first / pixelBytes;
            const auto columns = static_cast<std::size_t>(width);
            failure << "\npixel (x " << pixel % columns << ", y " << pixel / columns << "): expected";
            for (const int byte : expectedPixel) {
                failure << ' ' << byte;
            }
            failure << ", found";
            for (const int byte : foundPixel) {
                failure << ' ' << byte;
            }
        }
    }
    if (different == 0) {
        return ::testing::AssertionSuccess();
    }
    return failure << '\n' << different << " pixels differ";
}

}  // namespace testsupport

#endif
