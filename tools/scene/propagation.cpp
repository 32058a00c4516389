#include "tools/scene/propagation.h"

#include <cmath>

namespace kovtools {

double advance(const Microphone& microphone, const Direction& direction, double distance)
{
    const double along = microphone.x * direction.x + microphone.y * direction.y + microphone.z * direction.z;
    if (distance == infinitelyFar) {
        return along / speedOfSound;
    }
    const double square =
        microphone.x * microphone.x + microphone.y * microphone.y + microphone.z * microphone.z;
    // distance - |source - microphone|, as a quotient: of two nearly equal lengths the difference would lose digits.
    const double path = std::sqrt(distance * distance - 2.0 * distance * along + square);
    return (2.0 * distance * along - square) / (distance + path) / speedOfSound;
}

}  // namespace kovtools
