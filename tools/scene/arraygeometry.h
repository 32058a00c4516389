// Where the microphones of the simulated array are.
#ifndef KOVTOOLS_ARRAYGEOMETRY_H
#define KOVTOOLS_ARRAYGEOMETRY_H

#include <vector>

namespace kovtools {

// Metres, seen from behind the array as the camera looks: x to the right, y up, z towards the scene, the origin in
// the middle of the array, where the camera is.
struct Microphone
{
    double x;
    double y;
    double z = 0.0;
};

constexpr int arrayMicrophones = 208;
constexpr double largestArrayRadius = 10.0;  // m, of any array; simulated sections have room for such delays
constexpr double arrayAperture = 0.20;       // m, diameter of the circle that holds every microphone

// A sunflower (Vogel) spiral: microphone m of M at radius R sqrt((m + 1/2) / M), R half the aperture, and
// angle m times the golden angle, counted counter-clockwise from the x axis. Each microphone stands for the
// same area, so no weighting is needed, and no two spacings repeat, so there are no grating lobes, only a
// low, irregular carpet of side lobes.
std::vector<Microphone> sunflowerSpiral(int microphones = arrayMicrophones, double aperture = arrayAperture);

}  // namespace kovtools

#endif
