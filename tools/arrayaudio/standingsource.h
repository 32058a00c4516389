// The sources of simulated array audio: they stand still and sound all the time.
#ifndef KOVTOOLS_STANDINGSOURCE_H
#define KOVTOOLS_STANDINGSOURCE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/scene/arraygeometry.h"
#include "tools/scene/fieldofview.h"

namespace kovtools {

enum class SourceKind : int { Leak, Tone, Pulses };

struct StandingSource
{
    SourceKind kind = SourceKind::Leak;
    double azimuth = 0.0;        // degrees to the right of straight ahead
    double elevation = 0.0;      // degrees upwards
    double distance = 5.0;       // m from the middle of the array
    double level = 0.15;         // Pa, root mean square at a distance of 1 m; of leaks over the working band
    double frequency = 20000.0;  // Hz: the leak's hump, the tone, or the middle of the pulses' spectrum

    Direction direction() const;
    Microphone position() const;  // m, in the coordinates of the array
};

// "A", "B" and so on.
std::string sourceName(std::size_t index);

// A leak and a weaker one, on pipes of the camera picture.
std::vector<StandingSource> defaultSources();

// KIND@AZIMUTH,ELEVATION,DISTANCE[,LEVEL[,FREQUENCY]], KIND one of leak, tone and pulses. Throws UsageError, one
// sentence that says what is wrong.
StandingSource parseSource(const std::string& text);

// Nearer to a microphone than this, m, no law of distance holds; at none at all it would be infinitely loud.
constexpr double leastWay = 0.01;

// Throws UsageError that names the first source and microphone that are nearer to each other than that.
void checkWays(const std::vector<StandingSource>& sources, const std::vector<Microphone>& array);

// "leak", "tone" or "pulses".
std::string kindName(SourceKind kind);

// Power density of a leak at a frequency relative to that at its hump; the hump is 8 kHz wide to half its power on
// either side.
double leakDensity(double frequency, double hump);

// Pulses are short tones with a Gaussian envelope, as often as partial discharges of a machine at 50 Hz.
constexpr double pulseRate = 100.0;    // per second
constexpr double pulseWidth = 100e-6;  // s, standard deviation of the envelope of the pressure

}  // namespace kovtools

#endif
