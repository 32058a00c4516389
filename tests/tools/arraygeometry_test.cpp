#include "tools/scene/arraygeometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

using kovtools::Microphone;
using kovtools::sunflowerSpiral;

TEST(ArrayGeometry, HasTwoHundredAndEightMicrophonesWithinItsAperture)
{
    const std::vector<Microphone> array = sunflowerSpiral();

    ASSERT_EQ(array.size(), 208U);
    double widest = 0.0;
    for (const Microphone& microphone : array) {
        widest = std::max(widest, std::hypot(microphone.x, microphone.y));
    }
    EXPECT_LE(widest, 0.10);
    EXPECT_GT(widest, 0.099);
}

TEST(ArrayGeometry, GivesEveryMicrophoneTheSameArea)
{
    const std::vector<Microphone> array = sunflowerSpiral();

    // A circle of a third of the area holds a third of the microphones.
    const double radius = 0.10 / std::sqrt(3.0);
    const auto inside = std::count_if(array.begin(), array.end(),
                                      [&](const Microphone& m) { return std::hypot(m.x, m.y) < radius; });

    EXPECT_NEAR(static_cast<double>(inside), 208.0 / 3.0, 1.0);
}

TEST(ArrayGeometry, KeepsMicrophonesApart)
{
    const std::vector<Microphone> array = sunflowerSpiral();

    double closest = 1.0;
    for (std::size_t i = 0; i < array.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            closest = std::min(closest, std::hypot(array[i].x - array[j].x, array[i].y - array[j].y));
        }
    }

    EXPECT_GT(closest, 0.009);  // m; a capsule needs room
}

TEST(ArrayGeometry, IsCentredOnTheCamera)
{
    double x = 0.0;
    double y = 0.0;
    for (const Microphone& microphone : sunflowerSpiral()) {
        x += microphone.x / 208.0;
        y += microphone.y / 208.0;
    }

    EXPECT_NEAR(x, 0.0, 0.001);
    EXPECT_NEAR(y, 0.0, 0.001);
}

}  // namespace
