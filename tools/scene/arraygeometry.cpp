#include "tools/scene/arraygeometry.h"

#include <cmath>
#include <numbers>

namespace kovtools {

std::vector<Microphone> sunflowerSpiral(int microphones, double aperture)
{
    const double goldenAngle = std::numbers::pi * (3.0 - std::sqrt(5.0));  // rad, 137.5 degrees
    std::vector<Microphone> array;
    for (int m = 0; m < microphones; ++m) {
        const double radius = 0.5 * aperture * std::sqrt((m + 0.5) / microphones);
        array.push_back({radius * std::cos(m * goldenAngle), radius * std::sin(m * goldenAngle)});
    }
    return array;
}

}  // namespace kovtools
