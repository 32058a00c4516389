// How sound travels from a place to the microphones.
#ifndef KOVTOOLS_PROPAGATION_H
#define KOVTOOLS_PROPAGATION_H

#include "tools/scene/arraygeometry.h"
#include "tools/scene/fieldofview.h"

namespace kovtools {

constexpr double speedOfSound = 343.0;  // m/s, dry air at 20 degrees Celsius

// A distance from the middle of the array at which wave fronts are taken to be plane.
constexpr double infinitelyFar = 0.0;

// Seconds by which sound from a direction reaches a microphone before it reaches the middle of the array. The source
// stands at `distance` metres from the middle, or infinitelyFar.
double advance(const Microphone& microphone, const Direction& direction, double distance);

}  // namespace kovtools

#endif
